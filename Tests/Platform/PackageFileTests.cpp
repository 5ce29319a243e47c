// Package files: writing and reading them, saving from the editor, and what the asset registry reports.
#include "PackageFileTestUtils.h"

#include "AssetRegistry/AssetData.h"
#include "AssetRegistry/IAssetRegistry.h"
#include "CoreGlobals.h"
#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Headless/EditorRuntime.h"
#include "Headless/Faults.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/PackageFiles.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Misc/PackageName.h"
#include "Serialization/MemoryWriter.h"
#include "UObject/ObjectSaveContext.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace PackageFileTest;
using PlatformTest::Utf8;
namespace fs = std::filesystem;

namespace
{
	std::string DescribeMaterials(const UStaticMesh& Mesh)
	{
		const auto PathOf = [](const UObject* Object) { return Object ? Utf8(Object->GetPathName()) : std::string("null"); };
		std::string Text;
		for (const FStaticMaterial& Material : Mesh.GetStaticMaterials())
		{
			Text += PathOf(Material.MaterialInterface.Get()) + " " + Utf8(Material.MaterialSlotName) + " " + Utf8(Material.ImportedMaterialSlotName) + " "
				+ PathOf(Material.OverlayMaterialInterface.Get()) + (Material.UVChannelData.bInitialized ? " uv" : "");
			if (Material.UVChannelData.bOverrideDensities)
			{
				Text += " densities";
				for (const float Density : Material.UVChannelData.LocalUVDensities)
				{
					Text += " " + std::to_string(Density);
				}
			}
			Text += "\n";
		}
		return Text;
	}
}

TEST(PackageFile, WritingIsAllOrNothing)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Atomic/Rock"), TEXT("Rock"));
	const FString Filename = ContentFile(Project, TEXT("Atomic/Rock.uasset.json"));
	FString Error;
	ASSERT_TRUE(UE::Headless::WritePackageFile(*Mesh->GetPackage(), Filename, Error));
	const std::string Before = ReadText(Filename);

	// An object this build cannot save fails the write and leaves the earlier file as it was.
	NewObject<UObject>(Mesh, FName(TEXT("Plain")));
	EXPECT_FALSE(UE::Headless::WritePackageFile(*Mesh->GetPackage(), Filename, Error));
	EXPECT_EQ(Utf8(Error), "cannot save '/Game/Atomic/Rock.Rock:Plain': objects of class Object are not saved by this build");
	EXPECT_EQ(ReadText(Filename), Before);

	// A file where a folder must go: nothing is written, and no temporary file is left anywhere.
	Project.WriteFile("Content/Blocked", "not a folder");
	EXPECT_FALSE(UE::Headless::WritePackageFile(*CreatePackage(TEXT("/Game/Blocked/Rock")), ContentFile(Project, TEXT("Blocked/Rock.uasset.json")), Error));
	for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Utf8(Project.GetDir())))
	{
		EXPECT_EQ(Entry.path().filename().string().find(".tmp"), std::string::npos) << Entry.path();
	}
}

TEST(PackageFile, BrokenFilesCreateNothing)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	const std::string Header = "{\"format\": \"cvai-headless-package\", \"version\": 1, \"package\": \"/Game/Bad/Pkg\", \"objects\": ";
	const std::string GoodMaterial = "{\"name\": \"Good\", \"class\": \"Material\", \"outer\": \"\", \"flags\": [\"RF_Public\", \"RF_Standalone\"], \"properties\": {}}";
	const std::string Improper = "The JSON document has an improper structure: missing or superfluous commas, braces, missing keys, etc.";
	const struct
	{
		std::string Text;
		std::string Detail;
	} Cases[] = {
		{ Header + "[" + GoodMaterial, "its JSON text is damaged: " + Improper },
		{ "{\"format\": \"other\", \"version\": 1, \"objects\": [" + GoodMaterial + "]}", "its format is not 'cvai-headless-package'" },
		{ "[" + GoodMaterial + "]", "its format is not 'cvai-headless-package'" },
		{ "{\"format\": \"cvai-headless-package\", \"version\": \"1\", \"objects\": []}", "its version is not a whole number" },
		{ Header + "{}}", "objects is not a list" },
		{ Header + "[" + GoodMaterial + ", {\"name\": \"Pkg\", \"class\": \"StaticMesh\", \"properties\": {\"static_materials\": [], \"nanite\": "
			"{\"enabled\": false, \"assembly\": {\"parts\": [], \"nodes\": []}}, \"geometry\": {\"positions\": [], \"triangles\": [[0, 1, 2, 0]], "
			"\"polygon_groups\": [], \"sections\": []}}}]}",
			"objects[1].properties.geometry.triangles[0][0] is out of range: 0 is not from 0 to -1" },
	};
	for (const auto& Case : Cases)
	{
		Project.WriteFile("Content/Bad/Pkg.uasset.json", Case.Text);
		const FString Filename = ContentFile(Project, TEXT("Bad/Pkg.uasset.json"));
		UPackage* Package = CreatePackage(TEXT("/Game/Bad/Pkg"));
		FString Error;
		EXPECT_FALSE(UE::Headless::ReadPackageFile(*Package, Filename, Error));
		EXPECT_EQ(Utf8(Error), Utf8(FString::Printf(TEXT("'%s' is not a valid package file: "), *Filename)) + Case.Detail);
		EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Package, TEXT("Good")), nullptr) << Case.Detail;
		EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Package, TEXT("Pkg")), nullptr) << Case.Detail;
		EXPECT_FALSE(GIsEditorLoadingPackage);

		// Loading through the engine reports the same and gives nothing.
		UE::Headless::ClearEngineLog();
		EXPECT_EQ(LoadObject<UObject>(nullptr, TEXT("/Game/Bad/Pkg.Good"), {}, LOAD_Quiet), nullptr);
		const std::vector<std::string> Expected = { "Error: Failed to load package '/Game/Bad/Pkg': " + Utf8(Error) };
		EXPECT_EQ(PlatformTest::LogOf(TEXT("LogLinker")), Expected);
		Package->MarkAsGarbage();
	}
}

TEST(SavePackages, SavingClearsTheDirtyFlagAndNotifiesOncePerPackage)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* MeshA = MakeMesh(TEXT("/Game/Save/A"), TEXT("A"));
	UStaticMesh* MeshB = MakeMesh(TEXT("/Game/Save/B"), TEXT("B"));
	IAssetRegistry::GetChecked().AssetCreated(MeshA);
	UPackage* PackageA = MeshA->GetPackage();
	UPackage* PackageB = MeshB->GetPackage();
	EXPECT_TRUE(PackageA->HasAnyPackageFlags(PKG_NewlyCreated));
	MeshA->MarkPackageDirty();
	MeshB->MarkPackageDirty();

	// A package named twice is saved once, null entries are skipped, and the order is kept.
	ASSERT_TRUE(Save({ PackageB, PackageA, nullptr, PackageB }, true));
	const TArray<UE::Headless::FSavedPackageNotification>& Saved = UE::Headless::GetSavedPackageNotifications();
	ASSERT_EQ(Saved.Num(), 2);
	EXPECT_EQ(Utf8(Saved[0].PackageName + TEXT(",") + Saved[1].PackageName), "/Game/Save/B,/Game/Save/A");
	EXPECT_EQ(Saved[1].TransactionDepth, 0);
	FString OnDisk;
	ASSERT_TRUE(FPackageName::DoesPackageExist(TEXT("/Game/Save/A"), &OnDisk));
	EXPECT_EQ(Utf8(Saved[1].Filename), Utf8(OnDisk));
	EXPECT_FALSE(PackageA->IsDirty() || PackageB->IsDirty() || PackageA->HasAnyPackageFlags(PKG_NewlyCreated));
	EXPECT_TRUE(PackageA->HasAllFlags(RF_WasLoaded | RF_LoadCompleted) && MeshA->HasAllFlags(RF_WasLoaded | RF_LoadCompleted));

	// Clean packages are skipped when only dirty ones are asked for.
	UE::Headless::ClearEngineLog();
	EXPECT_TRUE(Save({ PackageA, GetTransientPackage() }, true));
	EXPECT_EQ(Saved.Num(), 2);
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogFileHelpers")), std::vector<std::string>({ "Log: All files are already saved." }));
	EXPECT_TRUE(Save({ PackageA }, false));
	EXPECT_EQ(Saved.Num(), 3);

	UE::Headless::FailNext(TEXT("SavePackages"));
	MeshB->MarkPackageDirty();
	EXPECT_FALSE(Save({ PackageB }, true));
	EXPECT_TRUE(PackageB->IsDirty());
	EXPECT_EQ(Saved.Num(), 3);

	// A file found in another letter case is the one written.
	Project.WriteFile("Content/other/c.uasset.json", "{}");
	ASSERT_TRUE(Save({ MakeMesh(TEXT("/Game/Other/C"), TEXT("C"))->GetPackage() }, false));
	EXPECT_EQ(Utf8(Saved.Last().Filename), Utf8(ContentFile(Project, TEXT("other/c.uasset.json"))));
	EXPECT_NE(ReadText(Saved.Last().Filename).find("\"name\":\"C\""), std::string::npos);
}

TEST(SavePackages, ReadOnlyRootsEmptyPackagesAndUnmountedNames)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Scratch = MakeMesh(TEXT("/Temp/Scratch"), TEXT("Scratch"));
	UPackage* TempPackage = Scratch->GetPackage();
	Scratch->MarkPackageDirty();
	EXPECT_FALSE(Save({ TempPackage }, false));
	EXPECT_TRUE(TempPackage->IsDirty());
	EXPECT_FALSE(fs::exists(Utf8(Project.GetDir() + TEXT("/Saved/Scratch.uasset.json"))));
	EXPECT_EQ(UE::Headless::GetSavedPackageNotifications().Num(), 0);

	// Automation tests may save to /Temp/.
	GIsAutomationTesting = true;
	const bool bSavedDuringTest = Save({ TempPackage }, false);
	GIsAutomationTesting = false;
	EXPECT_TRUE(bSavedDuringTest);
	EXPECT_TRUE(fs::exists(Utf8(Project.GetDir() + TEXT("/Saved/Scratch.uasset.json"))));

	UStaticMesh* Nowhere = MakeMesh(TEXT("/Nowhere/Rock"), TEXT("Rock"));
	EXPECT_FALSE(Save({ Nowhere->GetPackage() }, false));

	// A package without an asset is not written, and its old file goes away; that still counts as saved.
	UStaticMesh* Doomed = MakeMesh(TEXT("/Game/Empty/Doomed"), TEXT("Doomed"));
	ASSERT_TRUE(Save({ Doomed->GetPackage() }, false));
	const int32 Notifications = UE::Headless::GetSavedPackageNotifications().Num();
	ASSERT_TRUE(FPackageName::DoesPackageExist(TEXT("/Game/Empty/Doomed")));
	Doomed->MarkAsGarbage();
	EXPECT_TRUE(Save({ Doomed->GetPackage() }, false));
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("/Game/Empty/Doomed")));
	EXPECT_EQ(UE::Headless::GetSavedPackageNotifications().Num(), Notifications);
}

TEST(AssetRegistry, InMemoryAssetsComeFirstThenFiles)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	IAssetRegistry& Registry = IAssetRegistry::GetChecked();
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Registry/Rock"), TEXT("Rock"));
	const FSoftObjectPath Path(FString(TEXT("/Game/Registry/Rock.Rock")));

	// Found in memory without AssetCreated; not on disk until saved.
	FAssetData Data = Registry.GetAssetByObjectPath(Path);
	ASSERT_TRUE(Data.IsValid());
	EXPECT_EQ(Utf8(Data.PackagePath.ToString() + TEXT(" ") + Data.GetObjectPathString() + TEXT(" ") + Data.AssetClassPath.ToString()),
		"/Game/Registry /Game/Registry/Rock.Rock /Script/Engine.StaticMesh");
	EXPECT_EQ(Data.GetAsset(), Mesh);
	EXPECT_FALSE(Registry.GetAssetByObjectPath(Path, true).IsValid());

	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	EXPECT_TRUE(Registry.GetAssetByObjectPath(Path, true).IsValid());
	Mesh->MarkAsGarbage();
	Data = Registry.GetAssetByObjectPath(FSoftObjectPath(FString(TEXT("/game/registry/rock.ROCK"))));
	ASSERT_TRUE(Data.IsValid());
	EXPECT_EQ(Utf8(Data.AssetName), "Rock");
	EXPECT_FALSE(Registry.GetAssetByObjectPath(FSoftObjectPath(FString(TEXT("/Game/Registry/Rock.Other")))).IsValid());
	EXPECT_FALSE(Registry.GetAssetByObjectPath(FSoftObjectPath()).IsValid());

	// A filtered asset in memory gives nothing, without falling back to its file.
	UStaticMesh* Filtered = MakeMesh(TEXT("/Game/Registry/Rock"), TEXT("Rock"));
	Filtered->GetPackage()->SetPackageFlags(PKG_ContainsNoAsset);
	EXPECT_FALSE(Registry.GetAssetByObjectPath(Path).IsValid());
	EXPECT_EQ(Registry.GetAssetByObjectPath(Path, false, false).GetAsset(), Filtered);
}

TEST(SavePackages, WhatWasSavedLoadsBackWholeInANewEditor)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UMaterial* Base = NewObject<UMaterial>(CreatePackage(TEXT("/Game/Round/M_Base")), FName(TEXT("M_Base")), AssetFlags);
	// A package whose first object refers to one made after it.
	UPackage* Shared = CreatePackage(TEXT("/Game/Round/Shared"));
	UMaterialInstanceConstant* First = NewObject<UMaterialInstanceConstant>(Shared, FName(TEXT("MI_First")), AssetFlags);
	First->Parent = NewObject<UMaterial>(Shared, FName(TEXT("M_Later")), AssetFlags);

	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Round/Rock"), TEXT("Rock"));
	Mesh->SetFlags(RF_Transactional);
	NewObject<UMaterial>(Mesh, FName(TEXT("Kept")));
	TArray<FStaticMaterial> Materials;
	Materials.Add(FStaticMaterial(Base, FName(TEXT("Slot_02")), FName(TEXT("Slot_2"))));
	Materials.Add(FStaticMaterial(First, FName(TEXT("Moos_\u00fc")), NAME_None, Base));
	Materials.Last().UVChannelData.bInitialized = true;
	Materials.Last().UVChannelData.bOverrideDensities = true;
	Materials.Last().UVChannelData.LocalUVDensities[2] = 0.5f;
	Mesh->SetStaticMaterials(Materials);

	FMeshNaniteSettings Settings;
	Settings.bEnabled = true;
	Settings.bExplicitTangents = true;
	Settings.bLerpUVs = false;
	Settings.bSeparable = true;
	Settings.bVoxelNDF = false;
	Settings.bVoxelOpacity = true;
	Settings.ShapePreservation = ENaniteShapePreservation::Voxelize;
	Settings.PositionPrecision = 7;
	Settings.NormalPrecision = 8;
	Settings.TangentPrecision = 9;
	Settings.BoneWeightPrecision = 10;
	Settings.TargetMinimumResidencyInKB = 4096;
	Settings.KeepPercentTriangles = 0.1f;
	Settings.TrimRelativeError = 1.0f / 3.0f;
	Settings.GenerateFallback = ENaniteGenerateFallback::Enabled;
	Settings.FallbackTarget = ENaniteFallbackTarget::RelativeError;
	Settings.FallbackPercentTriangles = 0.75f;
	Settings.FallbackRelativeError = 2.5f;
	Settings.MaxEdgeLengthFactor = 1e-3f;
	Settings.NumRays = 128;
	Settings.VoxelLevel = 3;
	Settings.RayBackUp = 0.125f;
	Settings.DisplacementUVChannel = 2;
	Settings.DisplacementMaps.Add(FMeshDisplacementMap{ 4.5f, 0.5f });
	FNaniteAssemblyData& Assembly = Settings.NaniteAssemblyData;
	Assembly.Parts.AddDefaulted_GetRef().MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
	FNaniteAssemblyPart& Remapped = Assembly.Parts.AddDefaulted_GetRef();
	Remapped.MeshObjectPath = FSoftObjectPath(FString(TEXT("/Game/Round/Other.Other")));
	Remapped.MaterialRemap = { 1, INDEX_NONE, 0 };
	for (int32 Index = 0; Index < 3; ++Index)
	{
		FNaniteAssemblyNode& Node = Assembly.Nodes.AddDefaulted_GetRef();
		Node.PartIndex = Index % 2;
		Node.Transform = FTransform3f(FTransform(FRotator(12.5 * Index, -33.3, 101), FVector(1.0 / 3.0, -2e5, 7.125 * Index), FVector(0.1, 1, 3)));
	}
	// Values at the edges of float: negative zero, a denormal, the largest finite.
	Assembly.Nodes[1].Transform.SetTranslation(FVector3f(-0.0f, 1e-40f, 3.4028235e38f));
	Assembly.Nodes[2].TransformSpace = ENaniteAssemblyNodeTransformSpace::BoneRelative;
	Assembly.Nodes[2].BoneInfluences = { { 3, 0.25f }, { 7, 0.75f } };
	Mesh->SetNaniteSettings(Settings);
	UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(*Mesh);
	Geometry = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cone, FName(TEXT("Slot_2")));
	Geometry.Positions.Add(FVector3f(-0.0f, 1.17549435e-38f, 16777217.0f));
	Geometry.Normals.Add(FVector3f(-0.0f, 0.6f, 0.8f));
	Geometry.UVs.Add(FVector2f(1e-45f, -0.0f));
	Geometry.PolygonGroupSlotNames.Add(FName(TEXT("Moos_\u00fc")));
	Geometry.SectionMaterialIndices.Add(1);

	const TArray<uint8> Saved = StateOf(*Mesh);
	const std::string SavedMaterials = DescribeMaterials(*Mesh);
	ASSERT_TRUE(Save({ Base->GetPackage(), Shared, Mesh->GetPackage() }, false));
	Project.Stop();
	ASSERT_TRUE(Project.Start());

	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Round/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	EXPECT_EQ(DescribeMaterials(*Loaded), SavedMaterials);
	EXPECT_EQ(DescribeMaterials(*Loaded),
		"/Game/Round/M_Base.M_Base Slot_02 Slot_2 null\n/Game/Round/Shared.MI_First Moos_\u00fc None /Game/Round/M_Base.M_Base uv densities 0.000000 0.000000 0.500000 0.000000\n");
	EXPECT_TRUE(Loaded->GetNaniteSettings() == Settings);
	EXPECT_TRUE(StateOf(*Loaded) == Saved);
	EXPECT_TRUE(Loaded->HasAllFlags(AssetFlags | RF_Transactional | RF_WasLoaded));
	EXPECT_NE(StaticFindObject(UMaterial::StaticClass(), Loaded, TEXT("Kept")), nullptr);
	// References are loaded with the package that holds them, a material instance's parent included.
	UMaterialInstanceConstant* LoadedFirst = FindObject<UMaterialInstanceConstant>(nullptr, TEXT("/Game/Round/Shared.MI_First"));
	ASSERT_NE(LoadedFirst, nullptr);
	EXPECT_EQ(LoadedFirst->GetMaterial(), FindObject<UMaterial>(nullptr, TEXT("/Game/Round/Shared.M_Later")));
	EXPECT_NE(LoadedFirst->GetMaterial(), nullptr);
	// Loading builds the render data.
	EXPECT_FALSE(Loaded->IsCompiling());
	EXPECT_NE(Loaded->GetRenderData(), nullptr);
}

TEST(SavePackages, ValuesThatAreNotFiniteSurviveASave)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Odd/Rock"), TEXT("Rock"));
	const float Infinity = std::numeric_limits<float>::infinity();
	const float NaN = std::numeric_limits<float>::quiet_NaN();
	FNaniteAssemblyNode& Node = Mesh->GetNaniteSettings().NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
	Node.PartIndex = 0;
	Node.Transform.SetTranslation(FVector3f(Infinity, -Infinity, NaN));
	Mesh->GetNaniteSettings().NaniteAssemblyData.Parts.AddDefaulted_GetRef().MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Slot")));
	UE::Headless::GetMeshGeometry(*Mesh).Positions[0] = FVector3f(NaN, Infinity, 1.0f);
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	Project.Stop();
	ASSERT_TRUE(Project.Start());

	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Odd/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	const FVector3f Translation = Loaded->GetNaniteSettings().NaniteAssemblyData.Nodes[0].Transform.GetTranslation();
	EXPECT_TRUE(std::isinf(Translation.X) && Translation.X > 0);
	EXPECT_TRUE(std::isinf(Translation.Y) && Translation.Y < 0);
	EXPECT_TRUE(std::isnan(Translation.Z));
	const FVector3f Position = UE::Headless::GetMeshGeometry(*Loaded).Positions[0];
	EXPECT_TRUE(std::isnan(Position.X) && std::isinf(Position.Y) && Position.Z == 1.0f);
}

TEST(SavePackages, ObjectsInsideTransientObjectsAreLeftOut)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Scratch/Rock"), TEXT("Rock"));
	UMaterial* Scratch = NewObject<UMaterial>(Mesh, FName(TEXT("Scratch")), RF_Transient);
	NewObject<UMaterial>(Scratch, FName(TEXT("Inner")));
	NewObject<UMaterial>(Mesh, FName(TEXT("Kept")));
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	Project.Stop();
	ASSERT_TRUE(Project.Start());

	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Scratch/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	EXPECT_NE(StaticFindObject(UObject::StaticClass(), Loaded, TEXT("Kept")), nullptr);
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(TEXT("/Game/Scratch/Rock.Rock:Scratch")), nullptr);
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(TEXT("/Game/Scratch/Rock.Rock:Scratch.Inner")), nullptr);
}

TEST(SavePackages, AFileIsReplacedWholeAndAnnouncedOnlyOnceInPlace)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Swap/Rock"), TEXT("Rock"));
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	const FString Filename = UE::Headless::GetSavedPackageNotifications().Last().Filename;
	const std::string Before = ReadText(Filename);
	// A second name for the same file: a save that wrote into the file itself would change it too.
	fs::create_hard_link(Utf8(Filename), Utf8(Filename + TEXT(".before")));

	Mesh->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("Added")), FName(TEXT("Added"))));
	Mesh->MarkPackageDirty();
	std::string AtNotification;
	const FDelegateHandle Handle = UPackage::PackageSavedWithContextEvent.AddLambda([&](const FString& Saved, UPackage*, FObjectPostSaveContext)
	{
		AtNotification = ReadText(Saved);
	});
	const bool bSaved = Save({ Mesh->GetPackage() }, true);
	UPackage::PackageSavedWithContextEvent.Remove(Handle);
	ASSERT_TRUE(bSaved);
	EXPECT_EQ(ReadText(Filename + TEXT(".before")), Before);
	EXPECT_NE(ReadText(Filename), Before);
	EXPECT_EQ(AtNotification, ReadText(Filename));
	EXPECT_EQ(FilesUnder(Project.GetDir() + TEXT("/Content/Swap")), std::vector<std::string>({ "Rock.uasset.json", "Rock.uasset.json.before" }));
	EXPECT_EQ(UE::Headless::GetSavedPackageNotifications().Num(), 2);
}

TEST(SavePackages, AFailedSaveKeepsTheOldFileAndThePackageDirty)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Failed/Rock"), TEXT("Rock"));
	Mesh->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("First")), FName(TEXT("First"))));
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	const FString Filename = UE::Headless::GetSavedPackageNotifications().Last().Filename;
	const std::string Before = ReadText(Filename);

	Mesh->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("Second")), FName(TEXT("Second"))));
	NewObject<UObject>(Mesh, FName(TEXT("Unsaveable")));
	Mesh->MarkPackageDirty();
	UE::Headless::ClearEngineLog();
	EXPECT_FALSE(Save({ Mesh->GetPackage() }, true));
	EXPECT_TRUE(Mesh->GetPackage()->IsDirty());
	EXPECT_EQ(UE::Headless::GetSavedPackageNotifications().Num(), 1);
	EXPECT_EQ(ReadText(Filename), Before);
	EXPECT_EQ(FilesUnder(Project.GetDir() + TEXT("/Content/Failed")), std::vector<std::string>({ "Rock.uasset.json" }));
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogFileHelpers")).size(), 1u);

	Project.Stop();
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Failed/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	EXPECT_EQ(DescribeMaterials(*Loaded), "null First First null\n");
}

TEST(SavePackages, EngineContentIsNeverWritten)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Cube = LoadObject<UStaticMesh>(nullptr, TEXT("/Engine/BasicShapes/Cube.Cube"));
	ASSERT_NE(Cube, nullptr);
	FString Filename;
	ASSERT_TRUE(FPackageName::DoesPackageExist(TEXT("/Engine/BasicShapes/Cube"), &Filename));
	const std::string Before = ReadText(Filename);
	Cube->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("Added")), FName(TEXT("Added"))));
	Cube->MarkPackageDirty();
	EXPECT_FALSE(Save({ Cube->GetPackage() }, true));
	EXPECT_EQ(ReadText(Filename), Before);
	EXPECT_TRUE(Cube->GetPackage()->IsDirty());
	EXPECT_EQ(UE::Headless::GetSavedPackageNotifications().Num(), 0);
}

TEST(SavePackages, ADamagedFileLoadsNothingAndASaveReplacesIt)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Damaged/Rock"), TEXT("Rock"));
	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Sphere, FName(TEXT("Slot")));
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	const FString Filename = UE::Headless::GetSavedPackageNotifications().Last().Filename;
	const std::string Whole = ReadText(Filename);
	const std::string Binary("\x00\x9f\xff{\x01\"objects\": [", 14);
	for (const std::string& Damaged : { Whole.substr(0, Whole.size() / 2), Binary, std::string() })
	{
		std::ofstream(Utf8(Filename), std::ios::binary | std::ios::trunc) << Damaged;
		Project.Stop();
		ASSERT_TRUE(Project.Start());
		UE::Headless::ClearEngineLog();
		EXPECT_EQ(LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Damaged/Rock.Rock"), {}, LOAD_Quiet), nullptr);
		EXPECT_EQ(LoadPackage(nullptr, TEXT("/Game/Damaged/Rock"), LOAD_Quiet), nullptr);
		EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Damaged/Rock.Rock")), nullptr);
		const std::vector<std::string> Errors = PlatformTest::LogOf(TEXT("LogLinker"));
		ASSERT_EQ(Errors.size(), 2u);
		EXPECT_EQ(Errors[0].rfind("Error: Failed to load package '/Game/Damaged/Rock': ", 0), 0u) << Errors[0];
	}

	// A new asset saved at the same path replaces the damaged file.
	UStaticMesh* Fresh = MakeMesh(TEXT("/Game/Damaged/Rock"), TEXT("Rock"));
	Fresh->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("Fresh")), FName(TEXT("Fresh"))));
	ASSERT_TRUE(Save({ Fresh->GetPackage() }, false));
	Project.Stop();
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Damaged/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	EXPECT_EQ(DescribeMaterials(*Loaded), "null Fresh Fresh null\n");
}

TEST(SavePackages, ASavedPackageIsFoundByAnySpellingButReadOnlyWhenLoaded)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	ASSERT_TRUE(Save({ MakeMesh(TEXT("/Game/Case/Rock"), TEXT("Rock"))->GetPackage() }, false));
	Project.Stop();
	ASSERT_TRUE(Project.Start());

	UPackage* Package = CreatePackage(TEXT("/game/CASE/rock"));
	ASSERT_NE(Package, nullptr);
	EXPECT_EQ(Utf8(Package->GetName()), "/Game/Case/Rock");
	EXPECT_FALSE(Package->IsFullyLoaded());
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Package, TEXT("Rock")), nullptr);
	EXPECT_EQ(CreatePackage(TEXT("/Game/Case/Rock")), Package);
	const FAssetData OnDisk = IAssetRegistry::GetChecked().GetAssetByObjectPath(FSoftObjectPath(FString(TEXT("/game/case/rock.rock"))), true);
	EXPECT_EQ(Utf8(OnDisk.GetObjectPathString() + TEXT(" ") + OnDisk.AssetClassPath.ToString()), "/Game/Case/Rock.Rock /Script/Engine.StaticMesh");

	Package->FullyLoad();
	UObject* Rock = StaticFindObject(UObject::StaticClass(), Package, TEXT("Rock"));
	ASSERT_NE(Rock, nullptr);
	EXPECT_TRUE(Rock->HasAllFlags(AssetFlags | RF_WasLoaded | RF_LoadCompleted));
	EXPECT_EQ(LoadPackage(nullptr, TEXT("/GAME/Case/Rock"), LOAD_None), Package);
	EXPECT_EQ(LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Case/Rock")), Rock);
}

TEST(SavePackages, AReferenceToAnObjectMissingFromItsOwnPackageLoadsAsNull)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Missing/Shared"));
	UMaterialInstanceConstant* Instance = NewObject<UMaterialInstanceConstant>(Package, FName(TEXT("MI_Orphan")), AssetFlags);
	UMaterial* Parent = NewObject<UMaterial>(Package, FName(TEXT("M_Removed")), AssetFlags);
	Instance->Parent = Parent;
	// The parent is deleted but still referred to, so the file names an object that it does not hold.
	Parent->MarkAsGarbage();
	ASSERT_TRUE(Save({ Package }, false));

	// Loaded through its package, made first as a script does before it loads, and through the object.
	for (const bool bThroughPackage : { true, false })
	{
		Project.Stop();
		ASSERT_TRUE(Project.Start());
		if (bThroughPackage)
		{
			CreatePackage(TEXT("/Game/Missing/Shared"))->FullyLoad();
		}
		UMaterialInstanceConstant* Loaded = LoadObject<UMaterialInstanceConstant>(nullptr, TEXT("/Game/Missing/Shared.MI_Orphan"));
		ASSERT_NE(Loaded, nullptr);
		EXPECT_EQ(Loaded->Parent.Get(), nullptr);
		TArray<UObject*> Objects;
		GetObjectsWithOuter(Loaded->GetPackage(), Objects);
		EXPECT_EQ(Objects.Num(), 1);
	}
}
