// Writes the headless engine content: /Engine/BasicShapes with the engine's five basic shapes and the
// material they use, as package files under <engine folder>/Content.
#include "Engine/StaticMesh.h"
#include "Headless/Environment.h"
#include "Headless/PackageFiles.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "Materials/Material.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <cstdio>

namespace
{
	bool Write(UPackage& Package)
	{
		const FString Filename = FPackageName::LongPackageNameToFilename(Package.GetName(), FPackageName::GetAssetPackageExtension());
		FString Error;
		if (!UE::Headless::WritePackageFile(Package, Filename, Error))
		{
			std::fprintf(stderr, "GenerateEngineContent: %s\n", UE::Headless::ToUtf8(Error).c_str());
			return false;
		}
		return true;
	}
}

int main(int Argc, char** Argv)
{
	using namespace UE::Headless;
	if (Argc != 2)
	{
		std::fprintf(stderr, "usage: GenerateEngineContent ENGINE_DIR\n");
		return 2;
	}
	SetEngineDir(FromUtf8(Argv[1]));
	MountDefaultRoots();

	UPackage* MaterialPackage = CreatePackage(TEXT("/Engine/BasicShapes/BasicShapeMaterial"));
	UMaterial* Material = NewObject<UMaterial>(MaterialPackage, FName(TEXT("BasicShapeMaterial")), RF_Public | RF_Standalone);
	if (!Write(*MaterialPackage))
	{
		return 1;
	}

	const struct
	{
		const TCHAR* Name;
		EBasicShape Shape;
	} Shapes[] = {
		{ TEXT("Cube"), EBasicShape::Cube },
		{ TEXT("Sphere"), EBasicShape::Sphere },
		{ TEXT("Cylinder"), EBasicShape::Cylinder },
		{ TEXT("Cone"), EBasicShape::Cone },
		{ TEXT("Plane"), EBasicShape::Plane },
	};
	const FName SlotName(TEXT("BasicShapeMaterial"));
	for (const auto& Entry : Shapes)
	{
		UPackage* Package = CreatePackage(*(FString(TEXT("/Engine/BasicShapes/")) + Entry.Name));
		UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(Entry.Name), RF_Public | RF_Standalone);
		TArray<FStaticMaterial> Materials;
		Materials.Add(FStaticMaterial(Material, SlotName, SlotName));
		Mesh->SetStaticMaterials(Materials);
		GetMeshGeometry(*Mesh) = MakeBasicShapeGeometry(Entry.Shape, SlotName);
		if (!Write(*Package))
		{
			return 1;
		}
	}
	return 0;
}
