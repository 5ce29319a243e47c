// Package files: writing and reading them, saving from the editor, and what the asset registry reports.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "AssetRegistry/AssetData.h"
#include "AssetRegistry/IAssetRegistry.h"
#include "CoreGlobals.h"
#include "Engine/StaticMesh.h"
#include "StaticMeshResources.h"
#include "FileHelpers.h"
#include "Headless/EditorRuntime.h"
#include "Headless/Faults.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/PackageFiles.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Misc/PackageName.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

using PlatformTest::Utf8;
namespace fs = std::filesystem;

namespace
{
	const EObjectFlags AssetFlags = RF_Public | RF_Standalone;

	std::string ReadText(const FString& Filename)
	{
		std::ifstream In(Utf8(Filename), std::ios::binary);
		std::stringstream Buffer;
		Buffer << In.rdbuf();
		return Buffer.str();
	}

	FString ContentFile(FTestProject& Project, const TCHAR* RelativePath)
	{
		return Project.GetDir() + TEXT("/Content/") + RelativePath;
	}

	UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* AssetName)
	{
		return NewObject<UStaticMesh>(CreatePackage(PackageName), FName(AssetName), AssetFlags);
	}

	bool Save(std::initializer_list<UPackage*> Packages, bool bOnlyDirty)
	{
		TArray<UPackage*> List;
		for (UPackage* Package : Packages)
		{
			List.Add(Package);
		}
		return UEditorLoadingAndSavingUtils::SavePackages(List, bOnlyDirty);
	}
}

TEST(PackageFile, WrittenPackagesReadBackExactly)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UMaterial* Base = NewObject<UMaterial>(CreatePackage(TEXT("/Game/Files/M_Base")), FName(TEXT("M_Base")), AssetFlags);
	UMaterialInstanceConstant* Instance = NewObject<UMaterialInstanceConstant>(CreatePackage(TEXT("/Game/Files/MI_Rock")), FName(TEXT("MI_Rock")), AssetFlags);
	Instance->Parent = Base;
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Files/Rock"), TEXT("Rock"));
	Mesh->SetFlags(RF_Transactional);
	NewObject<UMaterial>(Mesh, FName(TEXT("Scratch")), RF_Transient);
	TArray<FStaticMaterial> Materials;
	Materials.Add(FStaticMaterial(Base, FName(TEXT("Base_2")), FName(TEXT("Imported"))));
	Materials.Add(FStaticMaterial(Instance, FName(TEXT("Moss")), FName(TEXT("Moss"))));
	Materials.Add(FStaticMaterial(nullptr, NAME_None, NAME_None));
	Mesh->SetStaticMaterials(Materials);
	FMeshNaniteSettings Settings;
	Settings.bEnabled = true;
	FNaniteAssemblyPart& Part = Settings.NaniteAssemblyData.Parts.AddDefaulted_GetRef();
	Part.MeshObjectPath = FSoftObjectPath(FString(TEXT("/Engine/BasicShapes/Cube.Cube")));
	Part.MaterialRemap = { 2, INDEX_NONE, 0 };
	FNaniteAssemblyNode& Node = Settings.NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
	Node.PartIndex = 0;
	Node.Transform = FTransform3f(FTransform(FRotator(12.5, -33.3, 101), FVector(1.0 / 3.0, -2e5, 7.125), FVector(0.1, 1, 3)));
	Mesh->SetNaniteSettings(Settings);
	UE::Headless::GetMeshGeometry(*Mesh) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cone, FName(TEXT("Imported")));
	const UE::Headless::FStaticMeshGeometry Geometry = UE::Headless::GetMeshGeometry(*Mesh);

	for (UPackage* Package : { Base->GetPackage(), Instance->GetPackage(), Mesh->GetPackage() })
	{
		FString Error;
		const FString Filename = FPackageName::LongPackageNameToFilename(Package->GetName(), FPackageName::GetAssetPackageExtension());
		ASSERT_TRUE(UE::Headless::WritePackageFile(*Package, Filename, Error)) << Utf8(Error);
	}

	Project.Stop();
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Loaded = LoadObject<UStaticMesh>(nullptr, TEXT("/Game/Files/Rock.Rock"));
	ASSERT_NE(Loaded, nullptr);
	ASSERT_NE(Loaded, Mesh);
	EXPECT_TRUE(Loaded->HasAllFlags(AssetFlags | RF_Transactional));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Loaded, TEXT("Scratch")), nullptr);
	const TArray<FStaticMaterial>& LoadedMaterials = Loaded->GetStaticMaterials();
	ASSERT_EQ(LoadedMaterials.Num(), 3);
	EXPECT_EQ(Utf8(LoadedMaterials[0].MaterialInterface->GetPathName() + TEXT(" ") + LoadedMaterials[0].MaterialSlotName.ToString() + TEXT(" ")
		+ LoadedMaterials[0].ImportedMaterialSlotName.ToString()), "/Game/Files/M_Base.M_Base Base_2 Imported");
	// References are loaded with the package that holds them, a material instance's parent included.
	UMaterialInstanceConstant* LoadedInstance = Cast<UMaterialInstanceConstant>(LoadedMaterials[1].MaterialInterface.Get());
	ASSERT_NE(LoadedInstance, nullptr);
	EXPECT_EQ(LoadedInstance->GetMaterial(), LoadedMaterials[0].MaterialInterface.Get());
	EXPECT_TRUE(LoadedMaterials[2].MaterialInterface.Get() == nullptr && LoadedMaterials[2].MaterialSlotName.IsNone());

	const FMeshNaniteSettings& LoadedSettings = Loaded->GetNaniteSettings();
	EXPECT_TRUE(LoadedSettings == Settings);
	ASSERT_EQ(LoadedSettings.NaniteAssemblyData.Nodes.Num(), 1);
	EXPECT_EQ(std::memcmp(&LoadedSettings.NaniteAssemblyData.Nodes[0].Transform, &Node.Transform, sizeof(FTransform3f)), 0);
	const UE::Headless::FStaticMeshGeometry& LoadedGeometry = UE::Headless::GetMeshGeometry(*Loaded);
	EXPECT_EQ(LoadedGeometry.NumSourceModels, Geometry.NumSourceModels);
	EXPECT_TRUE(LoadedGeometry.Positions == Geometry.Positions && LoadedGeometry.PolygonGroupSlotNames == Geometry.PolygonGroupSlotNames);
	ASSERT_EQ(LoadedGeometry.Triangles.Num(), Geometry.Triangles.Num());
	EXPECT_EQ(std::memcmp(LoadedGeometry.Triangles.GetData(), Geometry.Triangles.GetData(), sizeof(UE::Headless::FMeshTriangle) * Geometry.Triangles.Num()), 0);
	// Loading builds the render data.
	EXPECT_FALSE(Loaded->IsCompiling());
	ASSERT_NE(Loaded->GetRenderData(), nullptr);
	EXPECT_EQ(Loaded->GetRenderData()->LODResources[0].GetNumTriangles(), Geometry.Triangles.Num());
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
	const struct
	{
		std::string Text;
		std::string Detail;
	} Cases[] = {
		{ Header + "[" + GoodMaterial, "it is not a complete JSON document" },
		{ "{\"format\": \"other\", \"version\": 1, \"objects\": [" + GoodMaterial + "]}", "its format is not 'cvai-headless-package'" },
		{ "[" + GoodMaterial + "]", "its format is not 'cvai-headless-package'" },
		{ "{\"format\": \"cvai-headless-package\", \"version\": 2, \"objects\": [" + GoodMaterial + "]}", "its version is not 1" },
		{ "{\"format\": \"cvai-headless-package\", \"version\": \"1\", \"objects\": []}", "its version is not 1" },
		{ Header + "{}}", "'objects' is not a list" },
		{ Header + "[" + GoodMaterial + ", {\"name\": \"Pkg\", \"class\": \"Bogus\"}]}", "objects[1] has the unknown class 'Bogus'" },
		{ Header + "[" + GoodMaterial + ", {\"name\": \"Pkg\", \"class\": \"StaticMesh\", \"properties\": {\"static_materials\": [], \"nanite\": "
			"{\"enabled\": false, \"assembly\": {\"parts\": [], \"nodes\": []}}, \"geometry\": {\"positions\": [], \"triangles\": [[0, 1, 2, 0]], "
			"\"polygon_groups\": [], \"sections\": []}}}]}",
			"objects[1] (Pkg): a triangle refers to a vertex that does not exist" },
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
