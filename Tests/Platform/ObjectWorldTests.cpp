// Objects and packages in memory: paths, look-ups, loading, garbage, replacement, soft paths and dirtying.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "CoreGlobals.h"
#include "Engine/StaticMesh.h"
#include "Headless/ObjectRegistry.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/SoftObjectPath.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UObjectHash.h"

#include <gtest/gtest.h>

using PlatformTest::Utf8;

namespace
{
	const EObjectFlags AssetFlags = RF_Public | RF_Standalone;

	// The names of a struct and of everything it derives from, nearest first.
	std::string SuperChain(const UStruct* Struct)
	{
		std::string Chain;
		for (; Struct; Struct = Struct->GetSuperStruct())
		{
			Chain += (Chain.empty() ? "" : ",") + Utf8(Struct->GetName());
		}
		return Chain;
	}
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

TEST(ObjectWorld, ClassesFormOneHierarchyInsideTheirScriptPackages)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UClass* Instance = UMaterialInstanceConstant::StaticClass();
	EXPECT_EQ(SuperChain(Instance), "MaterialInstanceConstant,MaterialInstance,MaterialInterface,Object");
	EXPECT_EQ(SuperChain(UClass::StaticClass()), "Class,Struct,Field,Object");
	EXPECT_EQ(SuperChain(UPackage::StaticClass()), "Package,Object");
	EXPECT_TRUE(Instance->IsChildOf(Instance) && Instance->IsChildOf(UMaterialInterface::StaticClass()) && Instance->IsChildOf<UObject>());
	EXPECT_FALSE(Instance->IsChildOf(UMaterial::StaticClass()) || UMaterialInterface::StaticClass()->IsChildOf(Instance) || Instance->IsChildOf(nullptr));

	// Every class is an object of class Class in its module's script package, which is compiled in and rooted.
	const std::vector<std::pair<UClass*, std::string>> Classes = { { UObject::StaticClass(), "Class /Script/CoreUObject.Object" },
		{ UClass::StaticClass(), "Class /Script/CoreUObject.Class" }, { UPackage::StaticClass(), "Class /Script/CoreUObject.Package" },
		{ UStaticMesh::StaticClass(), "Class /Script/Engine.StaticMesh" }, { Instance, "Class /Script/Engine.MaterialInstanceConstant" } };
	for (const auto& [Class, FullName] : Classes)
	{
		EXPECT_EQ(Utf8(Class->GetFullName()), FullName);
		EXPECT_EQ(Class->GetClass(), UClass::StaticClass()) << FullName;
		EXPECT_TRUE(Class->IsRooted()) << FullName;
		EXPECT_TRUE(Class->GetOutermost()->HasAnyPackageFlags(PKG_CompiledIn) && Class->GetOutermost()->HasAnyPackageFlags(PKG_ContainsScript)) << FullName;
		EXPECT_EQ(StaticFindObject(UClass::StaticClass(), nullptr, Class->GetPathName().ToLower()), Class) << FullName;
	}

	UMaterialInstanceConstant* Object = NewObject<UMaterialInstanceConstant>();
	EXPECT_TRUE(Object->IsA<UMaterialInterface>() && Object->IsA(UObject::StaticClass()));
	EXPECT_FALSE(Object->IsA<UMaterial>() || Object->IsA<UPackage>());
	// Abstract classes cannot be instanced.
	EXPECT_EQ(NewObject<UMaterialInterface>(GetTransientPackage(), UMaterialInterface::StaticClass()), nullptr);
}

TEST(ObjectWorld, NewObjectNamesComeFromEachClassAndNeverReuseAGarbageName)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Names/Pkg"));
	const int32 NextMesh = UStaticMesh::StaticClass()->ClassUnique;
	const int32 NextMaterial = UMaterial::StaticClass()->ClassUnique;
	const int32 NextInstance = UMaterialInstanceConstant::StaticClass()->ClassUnique;
	EXPECT_EQ(Utf8(NewObject<UMaterial>(Package)->GetName()), "Material_" + std::to_string(NextMaterial));
	EXPECT_EQ(Utf8(NewObject<UMaterialInstanceConstant>(Package)->GetName()), "MaterialInstanceConstant_" + std::to_string(NextInstance));
	EXPECT_EQ(Utf8(NewObject<UStaticMesh>(Package)->GetName()), "StaticMesh_" + std::to_string(NextMesh));

	// A garbage object keeps its name taken, as an undo may bring it back.
	UMaterial* Removed = NewObject<UMaterial>(Package, FName(TEXT("Material"), NextMaterial + 2));
	Removed->MarkAsGarbage();
	UMaterial* Unnamed = NewObject<UMaterial>(Package);
	EXPECT_EQ(Utf8(Unnamed->GetName()), "Material_" + std::to_string(NextMaterial + 2));
	EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(Removed->GetPathName()), Removed);

	// An explicit name replaces the live object there: the old one stops being an asset and is listed nowhere.
	UStaticMesh* First = NewObject<UStaticMesh>(Package, FName(TEXT("Rock")), AssetFlags);
	UStaticMesh* Second = NewObject<UStaticMesh>(Package, FName(TEXT("Rock")), AssetFlags);
	EXPECT_FALSE(IsValid(First) || First->IsAsset() || First->HasAnyFlags(RF_Public | RF_Standalone));
	EXPECT_TRUE(IsValid(Second) && Second->IsAsset());
	TArray<UObject*> Listed;
	GetObjectsWithOuter(Package, Listed, false);
	EXPECT_FALSE(Listed.Contains(First) || Listed.Contains(Removed));
	EXPECT_TRUE(Listed.Contains(Second) && Listed.Contains(Unnamed));
	EXPECT_EQ(Listed.Num(), 5);
}

TEST(ObjectWorld, ResettingTheWorldKeepsRootedObjectsClassesAndTheTransientPackage)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Reset/Pkg"));
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("Mesh")), AssetFlags);
	UMaterial* Rooted = NewObject<UMaterial>(Package, FName(TEXT("Rooted")), AssetFlags);
	Rooted->AddToRoot();
	UMaterial* Loose = NewObject<UMaterial>(nullptr, FName(TEXT("Loose")));

	UE::Headless::ResetObjectWorld();
	// Whoever still holds a dropped object sees garbage that is no asset, and no look-up finds it.
	for (UObject* Dropped : std::initializer_list<UObject*>{ Package, Mesh, Loose })
	{
		EXPECT_FALSE(IsValid(Dropped));
		EXPECT_FALSE(Dropped->HasAnyFlags(RF_Public | RF_Standalone));
		EXPECT_EQ(UE::Headless::FindObjectIncludingGarbage(Dropped->GetPathName()), nullptr) << Utf8(Dropped->GetPathName());
	}
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Reset/Pkg.Rooted")), Rooted);
	EXPECT_TRUE(Rooted->HasAllFlags(AssetFlags));
	int32 Meshes = 0;
	ForEachObjectOfClass(UStaticMesh::StaticClass(), [&](UObject*) { ++Meshes; });
	EXPECT_EQ(Meshes, 0);

	// Objects made without an outer still land in a live transient package, and a package can be made anew.
	UPackage* Transient = GetTransientPackage();
	EXPECT_TRUE(IsValid(Transient));
	EXPECT_EQ(StaticFindObject(UPackage::StaticClass(), nullptr, TEXT("/Engine/Transient")), Transient);
	UMaterial* Again = NewObject<UMaterial>(nullptr, FName(TEXT("Loose")));
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Engine/Transient.Loose")), Again);
	UPackage* NewPackage = CreatePackage(TEXT("/Game/Reset/Pkg"));
	EXPECT_TRUE(NewPackage != Package && IsValid(NewPackage));
	Rooted->RemoveFromRoot();
	Rooted->MarkAsGarbage();
}

TEST(ObjectWorld, FindAndLoadTakePackagePathsObjectPathsAndOuters)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UPackage* Package = CreatePackage(TEXT("/Game/Find/Rock"));
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(TEXT("Rock")), AssetFlags);
	UMaterial* Sub = NewObject<UMaterial>(Mesh, FName(TEXT("Sub")));
	UMaterial* Deeper = NewObject<UMaterial>(Sub, FName(TEXT("Deeper")));

	EXPECT_EQ(StaticFindObject(UPackage::StaticClass(), nullptr, TEXT("/Game/Find/Rock")), Package);
	EXPECT_EQ(StaticFindObject(UStaticMesh::StaticClass(), nullptr, TEXT("/Game/Find/Rock")), nullptr);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), nullptr, TEXT("/Game/Find/Rock.Rock:Sub.Deeper")), Deeper);
	EXPECT_EQ(StaticFindObject(UObject::StaticClass(), Package, TEXT("")), nullptr);
	EXPECT_EQ(Utf8(Deeper->GetPathName(Mesh)), "Sub.Deeper");
	EXPECT_EQ(Utf8(Deeper->GetFullName(Package)), "Material Rock:Sub.Deeper");
	EXPECT_EQ(Utf8(Package->GetFullName()), "Package /Game/Find/Rock");
	EXPECT_EQ(Utf8(Mesh->GetPathName(Mesh)), "None");

	// Loading what is in memory finds it, whether named by package, by object path or by outer and name.
	EXPECT_EQ(StaticLoadObject(UStaticMesh::StaticClass(), nullptr, TEXT("/Game/Find/Rock")), Mesh);
	EXPECT_EQ(StaticLoadObject(UStaticMesh::StaticClass(), Package, TEXT("Rock")), Mesh);
	EXPECT_EQ(StaticLoadObject(UMaterial::StaticClass(), nullptr, TEXT("/Game/Find/Rock.Rock:Sub")), Sub);
	EXPECT_EQ(StaticLoadObject(UPackage::StaticClass(), nullptr, TEXT("/Game/Find/Rock")), Package);
	EXPECT_EQ(LoadPackage(nullptr, TEXT("/Game/Find/Rock"), LOAD_None), Package);

	// A class that does not match finds nothing, and says so unless asked to be quiet.
	UE::Headless::ClearEngineLog();
	EXPECT_EQ(StaticLoadObject(UMaterial::StaticClass(), nullptr, TEXT("/Game/Find/Rock.Rock"), {}, LOAD_Quiet), nullptr);
	EXPECT_TRUE(PlatformTest::LogOf(TEXT("LogUObjectGlobals")).empty());
	EXPECT_EQ(StaticLoadObject(UMaterial::StaticClass(), nullptr, TEXT("/Game/Find/Rock.Rock")), nullptr);
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogUObjectGlobals")), std::vector<std::string>({ "Warning: Failed to find object 'Material /Game/Find/Rock.Rock'" }));
	EXPECT_EQ(LoadPackage(nullptr, TEXT("/Game/Find/Nowhere"), LOAD_Quiet), nullptr);
	EXPECT_EQ(StaticFindObject(UPackage::StaticClass(), nullptr, TEXT("/Game/Find/Nowhere")), nullptr);
}
