// Harness-only: the packages a session leaves with unsaved changes, and saving them as the editor saves them.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

class UPackage;

namespace UE::Headless
{
	// The packages with unsaved changes that closing the editor would ask about, sorted by name: neither the transient
	// package nor engine content nor script packages.
	TArray<UPackage*> GetUnsavedPackages();

	// Saves those of the packages that have unsaved changes, through the editor's own save path
	// (UEditorLoadingAndSavingUtils::SavePackages, as a build with save = true). False when one of them was not saved,
	// with the errors that the save logged.
	bool SaveChangedPackages(const TArray<UPackage*>& Packages, FString& OutError);
}
