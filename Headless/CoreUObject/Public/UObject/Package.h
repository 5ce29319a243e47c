// UPackage: the unit of loading and saving; it owns the assets inside it.
#pragma once

#include "Delegates/Delegate.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

class FObjectPostSaveContext;

DECLARE_MULTICAST_DELEGATE_ThreeParams(FOnPackageSavedWithContext, const FString&, UPackage*, FObjectPostSaveContext);
DECLARE_MULTICAST_DELEGATE_TwoParams(FOnPackageMarkedDirty, UPackage*, bool);
DECLARE_MULTICAST_DELEGATE_OneParam(FOnPackageDirtyStateChanged, UPackage*);

class UPackage : public UObject
{
	DECLARE_CLASS(UPackage, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/CoreUObject"), COREUOBJECT_API)

public:
	COREUOBJECT_API void SetDirtyFlag(bool bIsDirty);
	[[nodiscard]] bool IsDirty() const { return bDirty; }

	// Loads every object of the package from its file; nothing to do for a package that has no file
	// or was loaded already.
	COREUOBJECT_API void FullyLoad();
	[[nodiscard]] COREUOBJECT_API bool IsFullyLoaded() const;
	void MarkAsFullyLoaded() { bHasBeenFullyLoaded = true; }
	// For a package made in memory whose file exists on disk: FullyLoad will read it.
	void MarkAsUnloaded() { bHasBeenFullyLoaded = false; }

	void SetPackageFlags(EPackageFlags NewFlags) { PackageFlags |= NewFlags; }
	void ClearPackageFlags(EPackageFlags FlagsToClear) { PackageFlags &= ~FlagsToClear; }
	[[nodiscard]] bool HasAnyPackageFlags(EPackageFlags FlagsToCheck) const { return (PackageFlags & FlagsToCheck) != 0; }
	[[nodiscard]] EPackageFlags GetPackageFlags() const { return PackageFlags; }

	// True when the package holds no asset.
	[[nodiscard]] static COREUOBJECT_API bool IsEmptyPackage(UPackage* Package, const UObject* LastReferencer = nullptr);

	static COREUOBJECT_API FOnPackageSavedWithContext PackageSavedWithContextEvent;
	static COREUOBJECT_API FOnPackageMarkedDirty PackageMarkedDirtyEvent;
	static COREUOBJECT_API FOnPackageDirtyStateChanged PackageDirtyStateChangedEvent;

private:
	bool bDirty = false;
	bool bHasBeenFullyLoaded = true;
	EPackageFlags PackageFlags = PKG_None;
};
