#pragma once

#include "Containers/UnrealString.h"

// What a package-saved notification tells its listeners about the save.
class FObjectPostSaveContext
{
public:
	FObjectPostSaveContext() = default;
	explicit FObjectPostSaveContext(const FString& InTargetFilename, bool bInProceduralSave = false)
		: TargetFilename(InTargetFilename)
		, bProceduralSave(bInProceduralSave)
	{
	}

	[[nodiscard]] const TCHAR* GetTargetFilename() const { return *TargetFilename; }
	[[nodiscard]] bool IsProceduralSave() const { return bProceduralSave; }
	[[nodiscard]] bool SaveSucceeded() const { return true; }

private:
	FString TargetFilename;
	bool bProceduralSave = false;
};
