// Harness-only: the JSON package files of this build and the mount points of the engine, game and temp roots.
#pragma once

#include "Containers/UnrealString.h"

#include <nlohmann/json_fwd.hpp>

class UClass;
class UObject;
class UPackage;

namespace UE::Headless
{
	inline constexpr const char* PackageFileFormatName = "cvai-headless-package";
	inline constexpr int PackageFileFormatVersion = 1;

	// How one class's properties are written to and read from a package file.
	struct FPackageObjectCodec
	{
		UClass* (*StaticClass)() = nullptr;
		void (*Write)(const UObject& Object, nlohmann::json& OutProperties) = nullptr;
		// Reads into a freshly constructed object; false with a message naming the faulty property.
		bool (*Read)(UObject& Object, const nlohmann::json& Properties, FString& OutError) = nullptr;
	};

	COREUOBJECT_API void RegisterPackageObjectCodec(const TCHAR* ClassName, const FPackageObjectCodec& Codec);

	// Writes the package's objects to a temporary file beside Filename and renames it into place, so that
	// a failed write never leaves a broken package behind.
	COREUOBJECT_API bool WritePackageFile(UPackage& Package, const FString& Filename, FString& OutError);

	// Creates the package's objects from its file; on any fault nothing is created and OutError says why.
	COREUOBJECT_API bool ReadPackageFile(UPackage& Package, const FString& Filename, FString& OutError);

	// Mounts /Engine/ on the engine content, /Game/ on the project's Content/, and the read-only roots
	// /Temp/ (the project's Saved/), /Script/ and /Config/.
	COREUOBJECT_API void MountDefaultRoots();

	// The existing file or folder whose path equals Path ignoring letter case, else empty.
	COREUOBJECT_API FString FindPathIgnoringCase(const FString& Path);
}
