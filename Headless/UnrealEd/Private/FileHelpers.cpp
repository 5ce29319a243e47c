#include "FileHelpers.h"

#include "Headless/AssetRegistryState.h"
#include "CoreGlobals.h"
#include "Headless/FatalExit.h"
#include "Headless/Faults.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/PackageBackup.h"
#include "Headless/PackageFileStore.h"
#include "Headless/PackageFiles.h"
#include "Headless/StringUtils.h"
#include "Logging/LogMacros.h"
#include "Misc/PackageName.h"
#include "UObject/ObjectSaveContext.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <filesystem>

DEFINE_LOG_CATEGORY_STATIC(LogFileHelpers, Log, All);

IMPLEMENT_HEADLESS_CLASS(UEditorLoadingAndSavingUtils, "EditorLoadingAndSavingUtils")

namespace
{
	// Returns true when the package was written (or, holding no asset, had nothing to write).
	bool SaveOnePackage(UPackage* Package)
	{
		const FString PackageName = Package->GetName();
		if (UPackage::IsEmptyPackage(Package))
		{
			FString Existing;
			if (FPackageName::DoesPackageExist(PackageName, &Existing))
			{
				FString Error;
				if (!UE::Headless::BackupPackageFile(PackageName, Existing, Error))
				{
					UE_LOG(LogFileHelpers, Error, TEXT("The asset '%s' (%s) failed to save. %s"), *PackageName, *Existing, *Error);
					return false;
				}
				std::error_code RemoveError;
				std::filesystem::remove(UE::Headless::ToUtf8(Existing), RemoveError);
			}
			return true;
		}

		FString Filename;
		if (!FPackageName::IsValidLongPackageName(PackageName, GIsAutomationTesting))
		{
			UE_LOG(LogFileHelpers, Error, TEXT("The asset '%s' (%s) failed to save: '%s' is not a valid package name for saving."), *PackageName, *PackageName, *PackageName);
			return false;
		}
		// The headless engine content is generated once and never written by the editor.
		if (PackageName.StartsWith(TEXT("/Engine/")))
		{
			UE_LOG(LogFileHelpers, Error, TEXT("The asset '%s' (%s) failed to save: engine content is read-only."), *PackageName, *PackageName);
			return false;
		}
		if (!FPackageName::DoesPackageExist(PackageName, &Filename))
		{
			Filename = FPackageName::LongPackageNameToFilename(PackageName, FPackageName::GetAssetPackageExtension());
		}

		// The steps of a save: refuse a read-only file, keep the file being replaced, then write the new one beside it
		// and move it into place.
		FString Error;
		if (Filename.IsEmpty() || !UE::Headless::CanReplaceFile(Filename, Error) || !UE::Headless::BackupPackageFile(PackageName, Filename, Error)
			|| !UE::Headless::WritePackageFile(*Package, Filename, Error))
		{
			UE_LOG(LogFileHelpers, Error, TEXT("The asset '%s' (%s) failed to save. %s"), *PackageName, *Filename, *Error);
			return false;
		}

		Package->SetDirtyFlag(false);
		Package->ClearPackageFlags(PKG_NewlyCreated);
		Package->SetFlags(RF_WasLoaded | RF_LoadCompleted);
		Package->MarkAsFullyLoaded();
		TArray<UObject*> Exports;
		GetObjectsWithOuter(Package, Exports, true);
		for (UObject* Export : Exports)
		{
			Export->SetFlags(RF_WasLoaded | RF_LoadCompleted);
		}
		UE::Headless::NotePackageOnDisk(PackageName);
		FObjectSaveContextData SaveData;
		SaveData.TargetFilename = Filename;
		SaveData.bSaveSucceeded = true;
		UPackage::PackageSavedWithContextEvent.Broadcast(Filename, Package, FObjectPostSaveContext(SaveData));
		return true;
	}
}

bool UEditorLoadingAndSavingUtils::SavePackages(const TArray<UPackage*>& PackagesToSave, bool bOnlyDirty)
{
	FString FaultReason;
	if (UE::Headless::ConsumeFault(TEXT("SavePackages"), &FaultReason))
	{
		UE_LOG(LogFileHelpers, Error, TEXT("Saving failed (injected fault%s%s)."), FaultReason.IsEmpty() ? TEXT("") : TEXT(": "), *FaultReason);
		return false;
	}

	TArray<UPackage*> Packages;
	for (UPackage* Entry : PackagesToSave)
	{
		if (!Entry || Entry->HasAnyFlags(RF_ClassDefaultObject))
		{
			continue;
		}
		UPackage* Package = Entry->GetOutermost();
		if (!Package || Package == GetTransientPackage() || Package->HasAnyPackageFlags(PKG_CompiledIn) || (bOnlyDirty && !Package->IsDirty()))
		{
			continue;
		}
		Package->FullyLoad();
		Packages.AddUnique(Package);
	}
	if (Packages.IsEmpty())
	{
		UE_LOG(LogFileHelpers, Log, TEXT("All files are already saved."));
		return true;
	}

	const bool bWasUnattended = GIsRunningUnattendedScript;
	GIsRunningUnattendedScript = true;
	bool bAllSaved = true;
	for (UPackage* Package : Packages)
	{
		const UE::Headless::FScopedActivity Activity(TEXT("saving ") + Package->GetName());
		bAllSaved &= SaveOnePackage(Package);
	}
	GIsRunningUnattendedScript = bWasUnattended;
	return bAllSaved;
}
