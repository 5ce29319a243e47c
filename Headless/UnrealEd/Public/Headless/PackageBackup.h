// Harness-only: the editor's automatic package backup (the engine's FAutoPackageBackup). Before a save replaces or
// deletes a package file, the file is kept under Saved/Backup/, in the folders of its package so that packages of
// one name in different folders keep apart: /Game/Meshes/SM_Rock is kept as
// Saved/Backup/Game/Meshes/SM_Rock_2026-11-23-10-00-00.uasset.json (local time; _1, _2, ... for more in one second).
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// Backups kept per package; the oldest go first.
	inline constexpr int32 MaxPackageBackups = 10;

	// Keeps Filename, the package's current file, when it exists. False, with the reason, when it could not be kept:
	// the save must not go on, since the file may be the only copy of what a damaged package held.
	UNREALED_API bool BackupPackageFile(const FString& PackageName, const FString& Filename, FString& OutError);
}
