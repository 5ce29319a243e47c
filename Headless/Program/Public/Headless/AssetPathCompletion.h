// Harness-only: asset paths completed as the module's verbs complete them, for the program's own commands.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// The package that a path names: SM_Rock, Meshes/SM_Rock and /Game/Meshes/SM_Rock.SM_Rock all name
	// /Game/Meshes/SM_Rock. A path without a leading '/' is under /Game/, and an object name after the last '.'
	// of the last segment is cut; any other '.' stays, for the package name check to refuse.
	FString CompletePackageName(const FString& Path);
}
