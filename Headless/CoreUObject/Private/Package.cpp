#include "UObject/Package.h"

#include "Misc/PackageName.h"
#include "PackageLoad.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

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
		UE::Headless::Private::LoadPackageFile(*this, GetName(), Filename);
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
