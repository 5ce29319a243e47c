// Objects and packages in memory: paths, look-ups, loading, garbage, replacement, soft paths and dirtying.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "CoreGlobals.h"
#include "Engine/StaticMesh.h"
#include "Headless/ObjectRegistry.h"
#include "Materials/Material.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/SoftObjectPath.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

using PlatformTest::Utf8;

namespace
{
	const EObjectFlags AssetFlags = RF_Public | RF_Standalone;
}

TEST(ObjectWorld, PathsAndCaseInsensitiveLookups)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Meshes/Rock"));
	ASSERT_NE(Package, nullptr);
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("Rock")), AssetFlags);
	UMaterial* Sub = NewObject<UMaterial>(Mesh, FName(TEXT("Sub")));
	UMaterial* Deeper = NewObject<UMaterial>(Sub, FName(TEXT("Deeper")));

	EXPECT_EQ(Utf8(Package->GetPathName()), "/Game/Meshes/Rock");
	EXPECT_EQ(Utf8(Mesh->GetPathName()), "/Game/Meshes/Rock.Rock");
	EXPECT_EQ(Utf8(Sub->GetPathName()), "/Game/Meshes/Rock.Rock:Sub");
	EXPECT_EQ(Utf8(Deeper->GetPathName()), "/Game/Meshes/Rock.Rock:Sub.Deeper");
	EXPECT_EQ(Utf8(Deeper->GetPathName(Package)), "Rock:Sub.Deeper");
	EXPECT_EQ(Utf8(Mesh->GetFullName()), "StaticMesh /Game/Meshes/Rock.Rock");
	EXPECT_EQ(Utf8(UStaticMesh::StaticClass()->GetPathName()), "/Script/Engine.StaticMesh");
	EXPECT_EQ(Deeper->GetPackage(), Package);
	EXPECT_TRUE(Mesh->IsAsset());
	EXPECT_FALSE(Sub->IsAsset() || Package->IsAsset());

	// The same package whatever the spelling or a trailing '.'; the first spelling stays.
	EXPECT_EQ(CreatePackage(TEXT("/GAME/meshes/rock.")), Package);
	EXPECT_EQ(Utf8(Package->GetName()), "/Game/Meshes/Rock");

	UObject* Found = StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/game/MESHES/rock.ROCK"));
	EXPECT_EQ(Found, Mesh);
	EXPECT_EQ(Utf8(Found->GetName()), "Rock");
	EXPECT_EQ(StaticFindObject(UStaticMesh::StaticClass(), Package, TEXT("rock")), Mesh);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Mesh, TEXT("SUB")), Sub);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Sub, TEXT("deeper")), Deeper);
	EXPECT_EQ(FindObject<UMaterial>(nullptr, TEXT("/Game/Meshes/Rock.Rock")), nullptr);
	EXPECT_EQ(FindObject<UMaterialInterface>(Mesh, TEXT("Sub")), Sub);
	EXPECT_EQ(StaticFindObject(UMaterialInterface::StaticClass(), Mesh, TEXT("Sub"), EFindObjectFlags::ExactClass), nullptr);
	EXPECT_EQ(StaticFindObject(UMaterial::StaticClass(), Mesh, TEXT("Sub"), EFindObjectFlags::ExactClass), Sub);

	EXPECT_EQ(Cast<UStaticMesh>(Found), Mesh);
	EXPECT_EQ(Cast<UMaterial>(Found), nullptr);
	EXPECT_EQ(Cast<UMaterialInterface>(static_cast<UObject*>(Deeper)), Deeper);
	static_assert(std::is_same_v<decltype(Cast<UStaticMesh>(std::declval<const UObject*>())), const UStaticMesh*>);

	// An object without an outer goes to the transient package, which holds no assets.
	UMaterial* Loose = NewObject<UMaterial>();
	EXPECT_EQ(Loose->GetOuter(), GetTransientPackage());
	EXPECT_FALSE(NewObject<UMaterial>(GetTransientPackage(), FName(TEXT("Named")), AssetFlags)->IsAsset());
}

TEST(ObjectWorld, GarbageIsNeverFoundAndNamesAreReplacedAtEveryDepth)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Garbage"));
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("Garbage")), AssetFlags);
	Mesh->MarkAsGarbage();
	EXPECT_FALSE(IsValid(Mesh));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Garbage.Garbage")), nullptr);
	EXPECT_EQ(StaticLoadObject(UStaticMesh::StaticClass(), nullptr, TEXT("/Game/Garbage"), {}, LOAD_Quiet), nullptr);
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(TEXT("/Game/Garbage.Garbage")), Mesh);
	EXPECT_TRUE(UPackage::IsEmptyPackage(Package));

	UStaticMesh* Again = NewObject<UStaticMesh>(Package, FName(TEXT("Garbage")), AssetFlags);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Garbage.Garbage")), Again);
	EXPECT_FALSE(UPackage::IsEmptyPackage(Package));

	// Making an object where one already lives replaces it: the old one becomes garbage.
	UMaterial* First = NewObject<UMaterial>(Again, FName(TEXT("Sub")));
	UMaterial* Second = NewObject<UMaterial>(Again, FName(TEXT("Sub")));
	EXPECT_TRUE(First->HasAnyInternalFlags(EInternalObjectFlags::Garbage));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Again, TEXT("Sub")), Second);
	UMaterial* DeepFirst = NewObject<UMaterial>(Second, FName(TEXT("Deep")));
	UMaterial* DeepSecond = NewObject<UMaterial>(Second, FName(TEXT("Deep")));
	EXPECT_TRUE(DeepFirst->HasAnyInternalFlags(EInternalObjectFlags::Garbage));
	EXPECT_FALSE(DeepSecond->HasAnyInternalFlags(EInternalObjectFlags::Garbage));

	// Unnamed objects take the next number of their class's counter, whatever their outer, skipping a
	// name that is taken; none replaces another.
	const int32 Next = UMaterial::StaticClass()->ClassUnique;
	NewObject<UMaterial>(Again, FName(TEXT("Material"), Next + 2));
	EXPECT_EQ(Utf8(NewObject<UMaterial>(Again)->GetName()), "Material_" + std::to_string(Next));
	EXPECT_EQ(Utf8(NewObject<UMaterial>(Again)->GetName()), "Material_" + std::to_string(Next + 2));
	UMaterial* NestedFirst = NewObject<UMaterial>(Second);
	UMaterial* NestedSecond = NewObject<UMaterial>(Second);
	EXPECT_EQ(Utf8(NestedFirst->GetName()), "Material_" + std::to_string(Next + 3));
	EXPECT_EQ(Utf8(NestedSecond->GetName()), "Material_" + std::to_string(Next + 4));
	EXPECT_FALSE(NestedFirst->HasAnyInternalFlags(EInternalObjectFlags::Garbage));

	// A new editor starts without the objects of the last one; rooted objects and classes stay.
	UMaterial* Rooted = NewObject<UMaterial>(Package, FName(TEXT("Rooted")), AssetFlags);
	Rooted->AddToRoot();
	Project.Stop();
	ASSERT_TRUE(Project.Start());
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Garbage.Garbage")), nullptr);
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(TEXT("/Game/Garbage.Garbage")), nullptr);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Garbage.Rooted")), Rooted);
	EXPECT_EQ(StaticFindObject(UClass::StaticClass(), nullptr, TEXT("/Script/Engine.StaticMesh")), UStaticMesh::StaticClass());
	Rooted->RemoveFromRoot();
	Rooted->MarkAsGarbage();
}

TEST(ObjectWorld, LoadingEngineContentAndSoftPaths)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	// A path without an object name names the asset with the package's short name.
	UStaticMesh* Cube = LoadObject<UStaticMesh>(nullptr, TEXT("/Engine/BasicShapes/Cube"));
	ASSERT_NE(Cube, nullptr);
	EXPECT_EQ(Utf8(Cube->GetPathName()), "/Engine/BasicShapes/Cube.Cube");
	EXPECT_TRUE(Cube->HasAllFlags(RF_Public | RF_Standalone | RF_WasLoaded | RF_LoadCompleted));
	EXPECT_EQ(LoadObject<UStaticMesh>(nullptr, TEXT("/engine/basicshapes/cube.CUBE")), Cube);
	ASSERT_EQ(Cube->GetStaticMaterials().Num(), 1);
	const FStaticMaterial& Slot = Cube->GetStaticMaterials()[0];
	EXPECT_EQ(Utf8(Slot.MaterialSlotName), "BasicShapeMaterial");
	// The material comes in with the mesh that refers to it.
	EXPECT_EQ(Slot.MaterialInterface.Get(), StaticFindObject(UMaterial::StaticClass(), nullptr, TEXT("/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial")));
	EXPECT_NE(Slot.MaterialInterface.Get(), nullptr);

	EXPECT_EQ(LoadObject<UMaterial>(nullptr, TEXT("/Engine/BasicShapes/Sphere"), {}, LOAD_Quiet), nullptr);
	EXPECT_EQ(LoadObject<UStaticMesh>(nullptr, TEXT("/Engine/BasicShapes/Nope"), {}, LOAD_Quiet), nullptr);
	UObject* SpherePackage = StaticLoadObject(UPackage::StaticClass(), nullptr, TEXT("/Engine/BasicShapes/Sphere"));
	ASSERT_NE(SpherePackage, nullptr);
	EXPECT_TRUE(static_cast<UPackage*>(SpherePackage)->IsFullyLoaded());
	EXPECT_NE(StaticFindObject(UStaticMesh::StaticClass(), SpherePackage, TEXT("Sphere")), nullptr);

	const FSoftObjectPath CubePath(Cube);
	EXPECT_EQ(Utf8(CubePath.ToString()), "/Engine/BasicShapes/Cube.Cube");
	EXPECT_EQ(Utf8(CubePath.GetLongPackageName() + TEXT("|") + CubePath.GetAssetName()), "/Engine/BasicShapes/Cube|Cube");
	EXPECT_TRUE(CubePath.IsAsset());
	EXPECT_EQ(CubePath.ResolveObject(), Cube);
	EXPECT_TRUE(CubePath == FSoftObjectPath(FString(TEXT("/engine/BASICSHAPES/cube.cube"))));
	EXPECT_TRUE(CubePath == FSoftObjectPath(FString(TEXT("StaticMesh'/Engine/BasicShapes/Cube.Cube'"))));

	UMaterial* Sub = NewObject<UMaterial>(Cube, FName(TEXT("Sub")));
	const FSoftObjectPath SubPath(Sub);
	EXPECT_EQ(Utf8(SubPath.ToString()), "/Engine/BasicShapes/Cube.Cube:Sub");
	EXPECT_EQ(Utf8(SubPath.GetSubPathString()), "Sub");
	EXPECT_FALSE(SubPath.IsAsset());
	EXPECT_EQ(SubPath.ResolveObject(), Sub);

	const FSoftObjectPath PackageOnly(FString(TEXT("/Game/Rock")));
	EXPECT_TRUE(PackageOnly.IsValid() && !PackageOnly.IsAsset());
	EXPECT_TRUE(FSoftObjectPath(static_cast<UObject*>(nullptr)).IsNull() && FSoftObjectPath(FString(TEXT("Relative.Path"))).IsNull());

	// Resolving never loads; trying to load does.
	const FSoftObjectPath ConePath(FString(TEXT("/Engine/BasicShapes/Cone.Cone")));
	EXPECT_EQ(ConePath.ResolveObject(), nullptr);
	UObject* Cone = ConePath.TryLoad();
	ASSERT_NE(Cone, nullptr);
	EXPECT_EQ(ConePath.ResolveObject(), Cone);
}

TEST(ObjectWorld, MarkPackageDirtyFollowsTheEditorRules)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Dirty"));
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("Dirty")), AssetFlags);
	TArray<bool> WasDirty;
	const FDelegateHandle Handle = UPackage::PackageMarkedDirtyEvent.AddLambda([&](UPackage* Marked, bool bWasDirty)
	{
		if (Marked == Package)
		{
			WasDirty.Add(bWasDirty);
		}
	});

	EXPECT_FALSE(Package->IsDirty());
	EXPECT_TRUE(Mesh->MarkPackageDirty());
	EXPECT_TRUE(Package->IsDirty());
	EXPECT_TRUE(Mesh->MarkPackageDirty());
	Package->SetDirtyFlag(false);

	// Transient objects, and anything inside one, report success without dirtying.
	UMaterial* Transient = NewObject<UMaterial>(Mesh, FName(TEXT("Transient")), RF_Transient);
	UMaterial* Inner = NewObject<UMaterial>(Transient, FName(TEXT("Inner")));
	EXPECT_TRUE(Transient->MarkPackageDirty());
	EXPECT_TRUE(Inner->MarkPackageDirty());
	EXPECT_FALSE(Package->IsDirty());

	// Nothing is dirtied while an undo applies or while the editor loads a package.
	GIsTransacting = true;
	const bool bWhileTransacting = Mesh->MarkPackageDirty();
	GIsTransacting = false;
	GIsEditorLoadingPackage = true;
	const bool bWhileLoading = Mesh->MarkPackageDirty();
	GIsEditorLoadingPackage = false;
	EXPECT_FALSE(bWhileTransacting);
	EXPECT_FALSE(bWhileLoading);
	EXPECT_FALSE(Package->IsDirty());

	// Modify outside a transaction records nothing but still dirties, unless told not to.
	EXPECT_FALSE(Mesh->Modify(false));
	EXPECT_FALSE(Package->IsDirty());
	EXPECT_FALSE(Mesh->Modify());
	EXPECT_TRUE(Package->IsDirty());
	UPackage::PackageMarkedDirtyEvent.Remove(Handle);
	EXPECT_TRUE(WasDirty == TArray<bool>({ false, true, false }));

	const TArray<FString> Names = UE::Headless::DescribeObjectFlags(RF_Transient | RF_Public | RF_Transactional);
	EXPECT_EQ(Utf8(FString::Join(Names, TEXT(","))), "RF_Public,RF_Transactional,RF_Transient");
}
