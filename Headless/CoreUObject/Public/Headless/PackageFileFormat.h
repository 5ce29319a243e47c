// Harness-only: the package file format's name and version, and where its tables go.
//
// Version 2 (written): a JSON text whose "objects" hold each object's class, outer, flags and properties, and
// whose large tables sit in a binary section after the text, which "binary_size" announces. Floats are written
// so that they read back with the same bits: NaN payloads and negative zero included.
// Version 1 (read): the same JSON text without a binary section; assembly nodes carry their bone influences.
#pragma once

#include "HAL/Platform.h"

namespace UE::Headless
{
	inline constexpr const char* PackageFileFormatName = "cvai-headless-package";
	inline constexpr int32 PackageFileFormatVersion = 2;
	inline constexpr int32 OldestPackageFileFormatVersion = 1;

	// Tables of more records than this go to the binary section; smaller ones stay readable in the text.
	inline constexpr int64 PackageFileInlineRecordLimit = 1024;
}
