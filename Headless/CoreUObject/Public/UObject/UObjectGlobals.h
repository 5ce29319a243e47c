// Creating, finding and loading objects and packages.
#pragma once

#include "Containers/StringView.h"
#include "UObject/FindObjectFlags.h"
#include "UObject/NameTypes.h"
#include "UObject/ObjectMacros.h"

// As in the engine's header, only declared here.
class UClass;
class UObject;
class UPackage;
class UPackageMap;
class FLinkerInstancingContext;
class FObjectInstancingGraph;

[[nodiscard]] COREUOBJECT_API UPackage* GetTransientPackage();
[[nodiscard]] COREUOBJECT_API UObject* GetTransientPackageAsObject();

// Finds the package of that long name in memory or creates it; a trailing '.' is ignored.
COREUOBJECT_API UPackage* CreatePackage(const TCHAR* PackageName);

COREUOBJECT_API UPackage* LoadPackage(UPackage* InOuter, const TCHAR* InLongPackageName, uint32 LoadFlags, FArchive* InReaderOverride = nullptr,
	const FLinkerInstancingContext* InstancingContext = nullptr);

// Finds an object of the class at that path in memory, else loads its package from disk. A path without
// an object name ("/Game/A/B") names the asset of the same name in that package ("/Game/A/B.B").
COREUOBJECT_API UObject* StaticLoadObject(UClass* Class, UObject* InOuter, FStringView Name, FStringView Filename = {}, uint32 LoadFlags = LOAD_None,
	UPackageMap* Sandbox = nullptr, bool bAllowObjectReconciliation = true, const FLinkerInstancingContext* InstancingContext = nullptr);

// Finds an object of the class in memory only; garbage objects are never found.
COREUOBJECT_API UObject* StaticFindObject(UClass* Class, UObject* InOuter, FStringView Name, EFindObjectFlags Flags = EFindObjectFlags::None);

struct FStaticConstructObjectParameters
{
	explicit FStaticConstructObjectParameters(const UClass* InClass)
		: Class(InClass)
	{
	}

	const UClass* Class = nullptr;
	UObject* Outer = nullptr;
	FName Name;
	EObjectFlags SetFlags = RF_NoFlags;
	UObject* Template = nullptr;
	bool bCopyTransientsFromClassDefaults = false;
	FObjectInstancingGraph* InstanceGraph = nullptr;
	UPackage* ExternalPackage = nullptr;
};

COREUOBJECT_API UObject* StaticConstructObject_Internal(const FStaticConstructObjectParameters& Params);

[[nodiscard]] COREUOBJECT_API FName MakeUniqueObjectName(UObject* Outer, const UClass* Class, FName BaseName = NAME_None);

template <class T>
T* NewObject(UObject* Outer, const UClass* Class, FName Name = NAME_None, EObjectFlags Flags = RF_NoFlags, UObject* Template = nullptr,
	bool bCopyTransientsFromClassDefaults = false, FObjectInstancingGraph* InInstanceGraph = nullptr, UPackage* InExternalPackage = nullptr)
{
	FStaticConstructObjectParameters Params(Class);
	Params.Outer = Outer;
	Params.Name = Name;
	Params.SetFlags = Flags;
	Params.Template = Template;
	Params.bCopyTransientsFromClassDefaults = bCopyTransientsFromClassDefaults;
	Params.InstanceGraph = InInstanceGraph;
	Params.ExternalPackage = InExternalPackage;
	return static_cast<T*>(StaticConstructObject_Internal(Params));
}

template <class T>
T* NewObject(UObject* Outer = GetTransientPackageAsObject())
{
	return NewObject<T>(Outer, T::StaticClass());
}

template <class T>
T* NewObject(UObject* Outer, FName Name, EObjectFlags Flags = RF_NoFlags, UObject* Template = nullptr, bool bCopyTransientsFromClassDefaults = false,
	FObjectInstancingGraph* InInstanceGraph = nullptr, UPackage* InExternalPackage = nullptr)
{
	return NewObject<T>(Outer, T::StaticClass(), Name, Flags, Template, bCopyTransientsFromClassDefaults, InInstanceGraph, InExternalPackage);
}

template <class T>
T* FindObject(UObject* Outer, FStringView Name, EFindObjectFlags Flags = EFindObjectFlags::None)
{
	return static_cast<T*>(StaticFindObject(T::StaticClass(), Outer, Name, Flags));
}

template <class T>
T* LoadObject(UObject* Outer, FStringView Name, FStringView Filename = {}, uint32 LoadFlags = LOAD_None, UPackageMap* Sandbox = nullptr,
	const FLinkerInstancingContext* InstancingContext = nullptr)
{
	return static_cast<T*>(StaticLoadObject(T::StaticClass(), Outer, Name, Filename, LoadFlags, Sandbox, true, InstancingContext));
}
