// Reading a package's file for the engine's load paths (LoadPackage, UPackage::FullyLoad), with what a failed
// read leaves: an engine-log error naming the file and the reason, and the package's load fault.
#pragma once

#include "Containers/UnrealString.h"

class UPackage;

namespace UE::Headless::Private
{
	bool LoadPackageFile(UPackage& Package, const FString& PackageName, const FString& Filename);
}
