#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// A save tells the registry that the package's file changed.
	void NotePackageOnDisk(const FString& PackageName);
}
