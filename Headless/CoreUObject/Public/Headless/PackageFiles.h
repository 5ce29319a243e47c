// Harness-only: the package files of this build (PackageFileFormat.h) and the mount points of the engine, game and
// temp roots.
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/PackageFileFormat.h"

class UClass;
class UObject;
class UPackage;

namespace UE::Headless
{
	class FPackageFileWriter;
	class FPackageValue;

	// How one class's properties are written to and read from a package file.
	struct FPackageObjectCodec
	{
		UClass* (*StaticClass)() = nullptr;
		// Writes the members of the object's "properties".
		void (*Write)(const UObject& Object, FPackageFileWriter& Out) = nullptr;
		// Reads into a freshly constructed object; a fault is recorded in the value's document.
		void (*Read)(UObject& Object, const FPackageValue& Properties) = nullptr;
	};

	COREUOBJECT_API void RegisterPackageObjectCodec(const TCHAR* ClassName, const FPackageObjectCodec& Codec);

	// Streams the package's objects to a temporary file beside Filename and moves it into place (PackageFileStore.h),
	// so that a failed write never leaves a broken package behind.
	COREUOBJECT_API bool WritePackageFile(UPackage& Package, const FString& Filename, FString& OutError);

	// Creates the package's objects from its file; on any fault nothing is created and OutError says why.
	COREUOBJECT_API bool ReadPackageFile(UPackage& Package, const FString& Filename, FString& OutError);

	// What a package file holds at its top level, without loading it: the name and class of each object whose
	// outer is the package.
	struct FPackageFileAsset
	{
		FString Name;
		FString ClassName;
	};
	COREUOBJECT_API bool ReadPackageFileAssets(const FString& Filename, TArray<FPackageFileAsset>& OutAssets, FString& OutError);

	// Mounts /Engine/ on the engine content, /Game/ on the project's Content/, and the read-only roots
	// /Temp/ (the project's Saved/), /Script/ and /Config/.
	COREUOBJECT_API void MountDefaultRoots();
}
