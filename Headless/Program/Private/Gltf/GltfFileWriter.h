// A glTF document written to disk as a package is saved: into a temporary file renamed into place.
#pragma once

#include "Containers/UnrealString.h"
#include "GltfDocument.h"

namespace UE::Headless
{
	// GLB with bBinary, else glTF JSON with the buffer embedded as a data URI, so that either is one file that
	// can be moved on its own. OutBytes is the file's size.
	bool WriteGltfFile(FGltfDocument& Document, const FString& Filename, bool bBinary, int64& OutBytes, FString& OutError);
}
