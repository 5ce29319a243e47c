// What a save tells the objects and listeners around it. The engine's headers that pass these contexts
// (UObject/Package.h, UObject/Object.h) only declare them; their users include this header.
#pragma once

#include "Containers/UnrealString.h"

class UPackage;

// The data of one save, owned by the saver; the contexts are views of it.
class FObjectSaveContextData
{
public:
	FObjectSaveContextData() = default;

	FString TargetFilename;
	uint32 SaveFlags = 0;
	bool bProceduralSave = false;
	bool bSaveSucceeded = false;
};

// What a package-saved notification tells its listeners about the save.
class FObjectPostSaveContext
{
public:
	explicit FObjectPostSaveContext(const FObjectSaveContextData& InData)
		: Data(InData)
	{
	}

	[[nodiscard]] const TCHAR* GetTargetFilename() const { return *Data.TargetFilename; }
	[[nodiscard]] uint32 GetSaveFlags() const { return Data.SaveFlags; }
	[[nodiscard]] bool IsProceduralSave() const { return Data.bProceduralSave; }
	[[nodiscard]] bool SaveSucceeded() const { return Data.bSaveSucceeded; }

private:
	const FObjectSaveContextData& Data;
};
