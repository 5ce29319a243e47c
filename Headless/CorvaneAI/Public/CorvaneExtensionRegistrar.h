// The host's registry of extensions and their Lua bindings.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Delegates/Delegate.h"

#include <cstddef>

namespace sol
{
	class state;
}

class FLuaSessionData;

#ifndef CORVANEAI_API
#define CORVANEAI_API DLLEXPORT
#endif

struct FLuaFunctionDoc
{
	FString Signature;
	FString Description;
	FString Returns;
};

// The record an extension fills to announce itself. The layout is the host's and fixed: seven texts, then
// host fields that an extension leaves as the host's constructor sets them.
struct FCorvaneExtensionDescriptor
{
	FString Id;
	FString DisplayName;
	FString ModuleName;
	FString Author;
	FString Version;
	FString Category;
	FString Description;
	int32 Priority = 0;
	uint32 CapabilityFlags = 0;
	int32 MinimumHostVersion = 1;
	bool bEnabledByDefault = true;
	bool bHiddenFromCatalogue = false;
	bool bHostFlag = false;
	bool bRequiresEditor = true;
	TArray<FString> Tags;
};

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

// What RegisterLuaBinding returns; destroying it unregisters nothing.
class CORVANEAI_API FCorvaneExtensionHandle
{
public:
	FCorvaneExtensionHandle() = default;
	explicit FCorvaneExtensionHandle(uint64 InBindingId) : BindingId(InBindingId) {}
	~FCorvaneExtensionHandle();

	[[nodiscard]] bool IsValid() const { return BindingId != 0; }
	[[nodiscard]] uint64 GetBindingId() const { return BindingId; }

private:
	uint64 BindingId = 0;
};

using FCorvaneLuaBinder = TDelegate<void(sol::state&, FLuaSessionData&)>;

namespace UE::Headless
{
	struct FCorvaneRegistrarAccess;
}

class CORVANEAI_API FCorvaneExtensionRegistrar
{
public:
	static FCorvaneExtensionRegistrar& Get();

	// A second registration under the same id replaces the first.
	void RegisterExtension(const FCorvaneExtensionDescriptor& Descriptor);

	// The binder is called once for every Lua session created from now on.
	FCorvaneExtensionHandle RegisterLuaBinding(const FString& ExtensionId, const FString& BindingName, TArray<FLuaFunctionDoc> Docs, FCorvaneLuaBinder Binder);

	// Removes the extension and every binding registered under its id; returns how many were removed.
	int32 UnregisterAllForExtension(const FString& ExtensionId);

private:
	friend struct UE::Headless::FCorvaneRegistrarAccess;

	struct FBinding
	{
		uint64 Id = 0;
		FString ExtensionId;
		FString BindingName;
		TArray<FLuaFunctionDoc> Docs;
		FCorvaneLuaBinder Binder;
	};

	TArray<FCorvaneExtensionDescriptor> Extensions;
	TArray<FBinding> Bindings;
	uint64 NextBindingId = 1;
};
