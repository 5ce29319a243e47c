#include "UObject/UObjectGlobals.h"

#include "Headless/Faults.h"
#include "Logging/LogMacros.h"
#include "Misc/PackageName.h"
#include "ObjectWorld.h"
#include "PackageLoad.h"
#include "UObject/Class.h"
#include "UObject/Package.h"

DEFINE_LOG_CATEGORY_STATIC(LogUObjectGlobals, Log, All);
DEFINE_LOG_CATEGORY_STATIC(LogLinker, Log, All);

namespace
{
	FString JoinPath(const UObject* Outer, FStringView Name)
	{
		if (!Outer)
		{
			return FString(Name);
		}
		const UObject* OuterOuter = Outer->GetOuter();
		const bool bSubobject = !Outer->IsA<UPackage>() && OuterOuter && OuterOuter->IsA<UPackage>();
		return Outer->GetPathName() + (bSubobject ? TEXT(":") : TEXT(".")) + FString(Name);
	}

	bool ClassMatches(const UObject* Object, const UClass* Class, EFindObjectFlags Flags)
	{
		if (!Class)
		{
			return true;
		}
		return EnumHasAnyFlags(Flags, EFindObjectFlags::ExactClass) ? Object->GetClass() == Class : Object->IsA(Class);
	}
}

UPackage* CreatePackage(const TCHAR* InPackageName)
{
	FString FaultReason;
	if (UE::Headless::ConsumeFault(TEXT("CreatePackage"), &FaultReason))
	{
		UE_LOG(LogUObjectGlobals, Error, TEXT("CreatePackage failed for '%s' (injected fault%s%s)."), InPackageName ? InPackageName : TEXT(""),
			FaultReason.IsEmpty() ? TEXT("") : TEXT(": "), *FaultReason);
		return nullptr;
	}
	FString PackageName(InPackageName);
	if (PackageName.EndsWith(TEXT(".")))
	{
		PackageName = PackageName.LeftChop(1);
	}
	if (PackageName.IsEmpty() || PackageName.Contains(TEXT("//")))
	{
		UE_LOG(LogUObjectGlobals, Error, TEXT("Attempted to create a package with name '%s' which is not a valid package name."), *PackageName);
		return nullptr;
	}
	if (UObject* Existing = StaticFindObject(UPackage::StaticClass(), nullptr, PackageName))
	{
		return (UPackage*)Existing;
	}
	// A package whose file exists is not loaded by being created (FullyLoad reads the file), and takes the
	// name its file is spelt with.
	FString Filename;
	FString CanonicalName;
	const bool bOnDisk = FPackageName::IsValidLongPackageName(PackageName, true) && FPackageName::DoesPackageExist(PackageName, &Filename);
	UPackage* Package = UE::Headless::Private::CreatePackageInternal(
		bOnDisk && FPackageName::TryConvertFilenameToLongPackageName(Filename, CanonicalName) ? CanonicalName : PackageName);
	if (bOnDisk)
	{
		Package->MarkAsUnloaded();
	}
	return Package;
}

UPackage* LoadPackage(UPackage* InOuter, const TCHAR* InLongPackageName, uint32 LoadFlags, FArchive*, const FLinkerInstancingContext*)
{
	const FString PackageName(InLongPackageName);
	UPackage* Package = (UPackage*)StaticFindObject(UPackage::StaticClass(), nullptr, PackageName);
	if (Package && Package->IsFullyLoaded())
	{
		return Package;
	}
	FString Filename;
	if (!FPackageName::IsValidLongPackageName(PackageName, true) || !FPackageName::DoesPackageExist(PackageName, &Filename))
	{
		if (!(LoadFlags & (LOAD_NoWarn | LOAD_Quiet)) && !Package)
		{
			UE_LOG(LogLinker, Warning, TEXT("Can't find file for package '%s'."), *PackageName);
		}
		return Package;
	}
	const bool bCreated = Package == nullptr;
	if (bCreated)
	{
		// The package takes the name its file is spelt with, whatever letter case the request used.
		FString CanonicalName;
		Package = UE::Headless::Private::CreatePackageInternal(
			FPackageName::TryConvertFilenameToLongPackageName(Filename, CanonicalName) ? CanonicalName : PackageName);
	}
	if (!UE::Headless::Private::LoadPackageFile(*Package, PackageName, Filename))
	{
		if (bCreated)
		{
			Package->MarkAsGarbage();
		}
		return nullptr;
	}
	Package->MarkAsFullyLoaded();
	return Package;
}

UObject* StaticFindObject(UClass* Class, UObject* InOuter, FStringView Name, EFindObjectFlags Flags)
{
	if (Name.IsEmpty())
	{
		return nullptr;
	}
	UObject* Found = UE::Headless::Private::FObjectWorld::Get().Find(JoinPath(InOuter, Name), false);
	return Found && ClassMatches(Found, Class, Flags) ? Found : nullptr;
}

UObject* StaticLoadObject(UClass* Class, UObject* InOuter, FStringView InName, FStringView Filename, uint32 LoadFlags, UPackageMap* Sandbox,
	bool bAllowObjectReconciliation, const FLinkerInstancingContext* InstancingContext)
{
	FString Name = JoinPath(InOuter, InName);
	if (Name.IsEmpty())
	{
		return nullptr;
	}
	int32 Dot = INDEX_NONE;
	if (!Name.FindChar(TEXT('.'), Dot))
	{
		if (Class && Class->IsChildOf(UPackage::StaticClass()))
		{
			return LoadPackage(nullptr, *Name, LoadFlags);
		}
		// A package path names the asset that carries the package's short name.
		Name = Name + TEXT(".") + FPackageName::GetLongPackageAssetName(Name);
		Name.FindChar(TEXT('.'), Dot);
	}

	if (UObject* Found = StaticFindObject(Class, nullptr, Name))
	{
		return Found;
	}
	const FString PackageName = Name.Left(Dot);
	if (FPackageName::IsValidLongPackageName(PackageName, true))
	{
		LoadPackage(nullptr, *PackageName, LoadFlags | LOAD_Quiet);
	}
	UObject* Found = StaticFindObject(Class, nullptr, Name);
	if (!Found && !(LoadFlags & (LOAD_NoWarn | LOAD_Quiet)))
	{
		UE_LOG(LogUObjectGlobals, Warning, TEXT("Failed to find object '%s %s'"), Class ? *Class->GetName() : TEXT("Object"), *Name);
	}
	return Found;
}
