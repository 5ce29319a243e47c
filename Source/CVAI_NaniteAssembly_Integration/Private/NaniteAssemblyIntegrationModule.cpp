#include "NaniteAssemblyIntegrationModule.h"

#include "CorvaneExtensionRegistrar.h"
#include "Lua/NaniteAssemblyLuaBinding.h"
#include "Modules/ModuleManager.h"

namespace
{
	const TCHAR* const ExtensionId = TEXT("corvane.naniteassembly");
}

void FNaniteAssemblyIntegrationModule::StartupModule()
{
	FCorvaneExtensionDescriptor Descriptor;
	Descriptor.Id = ExtensionId;
	Descriptor.DisplayName = TEXT("Nanite Assembly");
	Descriptor.ModuleName = TEXT("CVAI_NaniteAssembly_Integration");
	Descriptor.Author = TEXT("Ostrel Studio");
	Descriptor.Version = TEXT("0.1.0");
	Descriptor.Category = TEXT("integration");
	Descriptor.Description = TEXT("Build Nanite Assembly static meshes from instanced parts.");
	Descriptor.bHostFlag = true;

	FCorvaneExtensionRegistrar& Registrar = FCorvaneExtensionRegistrar::Get();
	Registrar.RegisterExtension(Descriptor);

	// The session is not captured here: the host passes it to the binder for every new session.
	FCorvaneLuaBinder Binder = FCorvaneLuaBinder::CreateStatic(&CVAI::NaniteAssembly::BindNaniteAssemblyInfo);
	TArray<FLuaFunctionDoc> Docs(CVAI::NaniteAssembly::NaniteAssemblyLuaDocs);
	const FString BindingName(TEXT("NaniteAssembly"));

	// The host keeps the binding registered whatever becomes of the handle; it is not kept here.
	Registrar.RegisterLuaBinding(Descriptor.Id, BindingName, MoveTemp(Docs), MoveTemp(Binder));
}

void FNaniteAssemblyIntegrationModule::ShutdownModule()
{
	FCorvaneExtensionRegistrar& Registrar = FCorvaneExtensionRegistrar::Get();
	Registrar.UnregisterAllForExtension(ExtensionId);
}

IMPLEMENT_MODULE(FNaniteAssemblyIntegrationModule, CVAI_NaniteAssembly_Integration)
