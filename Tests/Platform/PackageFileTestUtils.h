// Helpers shared by the package file tests: files of a test project as text, meshes, saves and a mesh's state.
#pragma once

#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Serialization/MemoryWriter.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace PackageFileTest
{
	inline const EObjectFlags AssetFlags = RF_Public | RF_Standalone;

	inline std::string ReadText(const FString& Filename)
	{
		std::ifstream In(PlatformTest::Utf8(Filename), std::ios::binary);
		std::stringstream Buffer;
		Buffer << In.rdbuf();
		return Buffer.str();
	}

	inline void WriteText(const FString& Filename, const std::string& Text)
	{
		std::filesystem::create_directories(std::filesystem::path(PlatformTest::Utf8(Filename)).parent_path());
		std::ofstream(PlatformTest::Utf8(Filename), std::ios::binary | std::ios::trunc) << Text;
	}

	inline FString ContentFile(FTestProject& Project, const TCHAR* RelativePath)
	{
		return Project.GetDir() + TEXT("/Content/") + RelativePath;
	}

	inline UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* AssetName)
	{
		return NewObject<UStaticMesh>(CreatePackage(PackageName), FName(AssetName), AssetFlags);
	}

	inline bool Save(std::initializer_list<UPackage*> Packages, bool bOnlyDirty)
	{
		TArray<UPackage*> List;
		for (UPackage* Package : Packages)
		{
			List.Add(Package);
		}
		return UEditorLoadingAndSavingUtils::SavePackages(List, bOnlyDirty);
	}

	// Everything a mesh keeps, bit for bit, with references by path: what its transactions record.
	inline TArray<uint8> StateOf(UStaticMesh& Mesh)
	{
		TArray<uint8> State;
		FMemoryWriter Writer(State);
		Mesh.Serialize(Writer);
		return State;
	}

	// The files and folders under Folder, as paths relative to it, in name order.
	inline std::vector<std::string> FilesUnder(const FString& Folder)
	{
		std::vector<std::string> Names;
		std::error_code Error;
		for (std::filesystem::recursive_directory_iterator It(PlatformTest::Utf8(Folder), Error), End; !Error && It != End; It.increment(Error))
		{
			Names.push_back(std::filesystem::relative(It->path(), PlatformTest::Utf8(Folder)).string());
		}
		std::sort(Names.begin(), Names.end());
		return Names;
	}
}
