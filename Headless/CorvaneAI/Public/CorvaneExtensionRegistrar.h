// The host's registry of extensions and their Lua bindings.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Delegates/Delegate.h"

namespace sol
{
	class state;
}

class FLuaSessionData;

struct FLuaFunctionDoc
{
	FString Signature;
	FString Description;
	FString Returns;
};

namespace UE::Headless
{
	struct FCorvaneRegistrarAccess;
}

// The record an extension fills to announce itself. The layout is the host's and fixed: seven texts at
// offsets 0 to 96, host fields from 112, bHostFlag at 126, more host fields from 127. An extension sets
// the texts and bHostFlag and leaves the host fields as the host's constructor sets them; they are the
// host's own (not part of its interface), so they cannot be named here.
struct FCorvaneExtensionDescriptor
{
	FString Id;
	FString DisplayName;
	FString ModuleName;
	FString Author;
	FString Version;
	FString Category;
	FString Description;

private:
	friend struct UE::Headless::FCorvaneRegistrarAccess;

	int32 Priority = 0;
	uint32 CapabilityFlags = 0;
	int32 MinimumHostVersion = 1;
	bool bEnabledByDefault = true;
	bool bHiddenFromCatalogue = false;

public:
	bool bHostFlag = false;

private:
	bool bRequiresEditor = true;
	TArray<FString> Tags;
};

// What RegisterLuaBinding returns; destroying it unregisters nothing. What it holds is the host's.
class CORVANEAI_API FCorvaneExtensionHandle
{
public:
	FCorvaneExtensionHandle() = default;
	~FCorvaneExtensionHandle();

private:
	friend class FCorvaneExtensionRegistrar;
	friend struct UE::Headless::FCorvaneRegistrarAccess;

	explicit FCorvaneExtensionHandle(uint64 InBindingId)
		: BindingId(InBindingId)
	{
	}

	uint64 BindingId = 0;
};

using FCorvaneLuaBinder = TDelegate<void(sol::state&, FLuaSessionData&)>;

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
