#include "UObject/Package.h"

#include "Headless/PackageFiles.h"
#include "Logging/LogMacros.h"
#include "Misc/PackageName.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

DEFINE_LOG_CATEGORY_STATIC(LogPackage, Log, All);

FOnPackageSavedWithContext UPackage::PackageSavedWithContextEvent;
FOnPackageMarkedDirty UPackage::PackageMarkedDirtyEvent;
FOnPackageDirtyStateChanged UPackage::PackageDirtyStateChangedEvent;

void UPackage::SetDirtyFlag(bool bIsDirty)
{
	if (bDirty != bIsDirty)
	{
		bDirty = bIsDirty;
		PackageDirtyStateChangedEvent.Broadcast(this);
	}
}

void UPackage::FullyLoad()
{
	if (bHasBeenFullyLoaded)
	{
		return;
	}
	FString Filename;
	if (FPackageName::DoesPackageExist(GetName(), &Filename))
	{
		FString Error;
		if (!UE::Headless::ReadPackageFile(*this, Filename, Error))
		{
			UE_LOG(LogPackage, Error, TEXT("%s"), *Error);
		}
	}
	bHasBeenFullyLoaded = true;
}

bool UPackage::IsFullyLoaded() const
{
	return bHasBeenFullyLoaded;
}

bool UPackage::IsEmptyPackage(UPackage* Package, const UObject* LastReferencer)
{
	if (!Package)
	{
		return true;
	}
	TArray<UObject*> Inner;
	GetObjectsWithOuter(Package, Inner, false);
	for (UObject* Object : Inner)
	{
		if (Object != LastReferencer && Object->IsAsset())
		{
			return false;
		}
	}
	return true;
}
