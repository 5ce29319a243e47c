#include "CorvaneExtensionRegistrar.h"

#include "Headless/CorvaneHost.h"

FCorvaneExtensionHandle::~FCorvaneExtensionHandle() = default;

FCorvaneExtensionRegistrar& FCorvaneExtensionRegistrar::Get()
{
	static FCorvaneExtensionRegistrar Registrar;
	return Registrar;
}

void FCorvaneExtensionRegistrar::RegisterExtension(const FCorvaneExtensionDescriptor& Descriptor)
{
	Extensions.RemoveAll([&Descriptor](const FCorvaneExtensionDescriptor& Existing) { return Existing.Id.Equals(Descriptor.Id); });
	Extensions.Add(Descriptor);
}

FCorvaneExtensionHandle FCorvaneExtensionRegistrar::RegisterLuaBinding(const FString& ExtensionId, const FString& BindingName, TArray<FLuaFunctionDoc> Docs,
	FCorvaneLuaBinder Binder)
{
	Bindings.RemoveAll([&](const FBinding& Existing) { return Existing.ExtensionId.Equals(ExtensionId) && Existing.BindingName.Equals(BindingName); });
	FBinding& Binding = Bindings.AddDefaulted_GetRef();
	Binding.Id = NextBindingId++;
	Binding.ExtensionId = ExtensionId;
	Binding.BindingName = BindingName;
	Binding.Docs = MoveTemp(Docs);
	Binding.Binder = MoveTemp(Binder);
	return FCorvaneExtensionHandle(Binding.Id);
}

int32 FCorvaneExtensionRegistrar::UnregisterAllForExtension(const FString& ExtensionId)
{
	const int32 RemovedExtensions = Extensions.RemoveAll([&ExtensionId](const FCorvaneExtensionDescriptor& Existing) { return Existing.Id.Equals(ExtensionId); });
	const int32 RemovedBindings = Bindings.RemoveAll([&ExtensionId](const FBinding& Existing) { return Existing.ExtensionId.Equals(ExtensionId); });
	return RemovedExtensions + RemovedBindings;
}

namespace UE::Headless
{
	const TArray<FCorvaneExtensionDescriptor>& FCorvaneRegistrarAccess::GetExtensions()
	{
		return FCorvaneExtensionRegistrar::Get().Extensions;
	}

	TArray<FRegisteredBinding> FCorvaneRegistrarAccess::GetBindings()
	{
		TArray<FRegisteredBinding> Result;
		for (const FCorvaneExtensionRegistrar::FBinding& Binding : FCorvaneExtensionRegistrar::Get().Bindings)
		{
			Result.Add(FRegisteredBinding{ Binding.ExtensionId, Binding.BindingName, Binding.Docs, Binding.Binder });
		}
		return Result;
	}
}
