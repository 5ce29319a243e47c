// The path rules scripts rely on: completion under /Game/, Package.Asset form, and the two load attempts.
#include "Shared/NaniteAssemblyAssetPaths.h"
#include "Engine/StaticMesh.h"
#include "Headless/StringUtils.h"
#include "Materials/MaterialInterface.h"
#include "TestProject.h"

#include <gtest/gtest.h>

using namespace CVAI::NaniteAssembly;

namespace
{
	using UE::Headless::ToUtf8;

	std::string ObjectPath(const TCHAR* Path)
	{
		return ToUtf8(ToObjectPath(Path));
	}

	std::string PackagePath(const TCHAR* Path)
	{
		return ToUtf8(ToPackagePath(Path));
	}
}

TEST(AssetPaths, CompletionIsTextualAndLooksOnlyAtTheLastSlashAndDot)
{
	EXPECT_EQ(ObjectPath(TEXT("SM_Rock")), "/Game/SM_Rock.SM_Rock");
	EXPECT_EQ(ObjectPath(TEXT("Meshes/SM_Rock")), "/Game/Meshes/SM_Rock.SM_Rock");
	EXPECT_EQ(ObjectPath(TEXT("/Game/Meshes/SM_Rock")), "/Game/Meshes/SM_Rock.SM_Rock");
	EXPECT_EQ(ObjectPath(TEXT("/Game/Meshes/SM_Rock.SM_Rock")), "/Game/Meshes/SM_Rock.SM_Rock");
	EXPECT_EQ(ObjectPath(TEXT("/Game/A/B.")), "/Game/A/B.");
	EXPECT_EQ(ObjectPath(TEXT("/Game/A/")), "/Game/A/");
	EXPECT_EQ(ObjectPath(TEXT("/Game/v1.2/SM")), "/Game/v1.2/SM.SM");
	EXPECT_EQ(ObjectPath(TEXT("/Engine/BasicShapes/Cube")), "/Engine/BasicShapes/Cube.Cube");
	EXPECT_EQ(ObjectPath(TEXT("/Temp/X")), "/Temp/X.X");
	EXPECT_EQ(ObjectPath(TEXT("a b")), "/Game/a b.a b");
	EXPECT_EQ(ObjectPath(TEXT("")), "");

	EXPECT_EQ(PackagePath(TEXT("/Game/Meshes/SM_Rock.SM_Rock")), "/Game/Meshes/SM_Rock");
	EXPECT_EQ(PackagePath(TEXT("Meshes/SM_Rock")), "/Game/Meshes/SM_Rock");
	EXPECT_EQ(PackagePath(TEXT("/Game/A/SM.Other")), "/Game/A/SM");
	EXPECT_EQ(PackagePath(TEXT("/Game/A/B.")), "/Game/A/B");
	EXPECT_EQ(PackagePath(TEXT("/Game/v1.2/SM")), "/Game/v1.2/SM");
	EXPECT_EQ(PackagePath(TEXT("not a package path")), "/Game/not a package path");
	EXPECT_EQ(PackagePath(TEXT("")), "");
}

TEST(AssetPaths, LoadsFindTheObjectOfTheirClassOnly)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());

	UStaticMesh* Cube = LoadStaticMeshByPath(TEXT("/Engine/BasicShapes/Cube"));
	ASSERT_NE(Cube, nullptr);
	EXPECT_EQ(LoadStaticMeshByPath(TEXT("/Engine/BasicShapes/Cube.Cube")), Cube);
	EXPECT_EQ(LoadStaticMeshByPath(TEXT("/engine/basicshapes/CUBE")), Cube);
	EXPECT_EQ(LoadStaticMeshByPath(TEXT("/Engine/BasicShapes/BasicShapeMaterial")), nullptr);
	EXPECT_EQ(LoadStaticMeshByPath(TEXT("")), nullptr);
	EXPECT_EQ(LoadStaticMeshByPath(TEXT("/Engine/BasicShapes/Cube.")), nullptr);

	UMaterialInterface* Material = LoadMaterialByPath(TEXT("/Engine/BasicShapes/BasicShapeMaterial"));
	ASSERT_NE(Material, nullptr);
	EXPECT_EQ(LoadMaterialByPath(TEXT("/Engine/BasicShapes/Cube")), nullptr);
	EXPECT_EQ(LoadObjectByPath(TEXT("/Engine/BasicShapes/BasicShapeMaterial")), (UObject*)Material);
	EXPECT_EQ(LoadObjectByPath(TEXT("/Engine/BasicShapes/Cube")), (UObject*)Cube);
	EXPECT_EQ(LoadObjectByPath(TEXT("/Engine/BasicShapes/NoSuchThing")), nullptr);
	EXPECT_EQ(LoadObjectByPath(TEXT("")), nullptr);
}
