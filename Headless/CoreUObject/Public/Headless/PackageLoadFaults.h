// Harness-only: why a package whose file exists could not be loaded, for tools that report it (cvai info).
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// The reason the last load of the package (named in any letter case) failed in this editor session, as the
	// engine log gives it; empty when it loaded or was not tried.
	COREUOBJECT_API FString GetPackageLoadFault(const FString& PackageName);

	// A new editor session starts with none.
	COREUOBJECT_API void ClearPackageLoadFaults();
}
