#include "CorvaneExtensionRegistrar.h"

#include "Headless/CorvaneHost.h"

#include <cstddef>

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
	// The descriptor mixes public and host-private fields, which offsetof accepts here with a warning.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
	void FCorvaneRegistrarAccess::CheckDescriptorLayout()
	{
		static_assert(offsetof(FCorvaneExtensionDescriptor, Id) == 0);
		static_assert(offsetof(FCorvaneExtensionDescriptor, DisplayName) == 16);
		static_assert(offsetof(FCorvaneExtensionDescriptor, ModuleName) == 32);
		static_assert(offsetof(FCorvaneExtensionDescriptor, Author) == 48);
		static_assert(offsetof(FCorvaneExtensionDescriptor, Version) == 64);
		static_assert(offsetof(FCorvaneExtensionDescriptor, Category) == 80);
		static_assert(offsetof(FCorvaneExtensionDescriptor, Description) == 96);
		static_assert(offsetof(FCorvaneExtensionDescriptor, Priority) == 112);
		static_assert(offsetof(FCorvaneExtensionDescriptor, bHostFlag) == 126);
		static_assert(offsetof(FCorvaneExtensionDescriptor, bRequiresEditor) == 127);
	}
#pragma GCC diagnostic pop

	bool FCorvaneRegistrarAccess::HasDefaultHostFields(const FCorvaneExtensionDescriptor& Descriptor)
	{
		const FCorvaneExtensionDescriptor Defaults;
		return Descriptor.Priority == Defaults.Priority && Descriptor.CapabilityFlags == Defaults.CapabilityFlags
			&& Descriptor.MinimumHostVersion == Defaults.MinimumHostVersion && Descriptor.bEnabledByDefault == Defaults.bEnabledByDefault
			&& Descriptor.bHiddenFromCatalogue == Defaults.bHiddenFromCatalogue && Descriptor.bRequiresEditor == Defaults.bRequiresEditor
			&& Descriptor.Tags.Num() == 0;
	}

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
