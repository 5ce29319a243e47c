// Saving packages from editor scripts.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

class UPackage;

class UEditorLoadingAndSavingUtils : public UObject
{
	DECLARE_CLASS(UEditorLoadingAndSavingUtils, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/UnrealEd"), UNREALED_API)

public:
	// Saves without prompting; true when every package was saved (or deleted as empty).
	static UNREALED_API bool SavePackages(const TArray<UPackage*>& PackagesToSave, bool bOnlyDirty);
};
