// The Nanite Assembly static mesh builder: refusals, parts and nodes, material merging, slot names,
// the geometry it adds and what finishing does to the target.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "StaticMeshResources.h"
#include "Headless/EditorRuntime.h"
#include "Headless/Faults.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/Material.h"
#include "Misc/PackageName.h"
#include "NaniteAssemblyStaticMeshBuilder.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <cstring>

using PlatformTest::Utf8;

namespace
{
	using FMergeOptions = FNaniteAssemblyMaterialMergeOptions;
	using EMerge = ENaniteAssemblyPartMaterialMerge;

	class FAssemblyBuilderTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			ASSERT_TRUE(Project.Start());
			MatA = MakeMaterial(TEXT("M_A"));
			MatB = MakeMaterial(TEXT("M_B"));
			MatC = MakeMaterial(TEXT("M_C"));
			PartA = MakeMesh(TEXT("/Game/Parts/PartA"), { { MatA, TEXT("SlotA") }, { MatB, TEXT("SlotB") } });
			PartB = MakeMesh(TEXT("/Game/Parts/PartB"), { { MatB, TEXT("Other") }, { MatC, TEXT("SlotA") } });
			Target = MakeMesh(TEXT("/Game/Target"), { { MatA, TEXT("Base") } });
			UE::Headless::ClearEngineLog();
		}

		static UMaterial* MakeMaterial(const TCHAR* Name)
		{
			return NewObject<UMaterial>(CreatePackage(*(FString(TEXT("/Game/Materials/")) + Name)), FName(Name), RF_Public | RF_Standalone);
		}

		static UStaticMesh* MakeMesh(const TCHAR* PackageName, std::initializer_list<std::pair<UMaterial*, const TCHAR*>> Slots)
		{
			UStaticMesh* Mesh = NewObject<UStaticMesh>(CreatePackage(PackageName), FName(FPackageName::GetLongPackageAssetName(PackageName)), RF_Public | RF_Standalone);
			TArray<FStaticMaterial> Materials;
			for (const auto& Slot : Slots)
			{
				Materials.Add(FStaticMaterial(Slot.first, FName(Slot.second), FName(Slot.second)));
			}
			Mesh->SetStaticMaterials(Materials);
			return Mesh;
		}

		static UNaniteAssemblyStaticMeshBuilder* Begin(UStaticMesh* Mesh)
		{
			return UNaniteAssemblyStaticMeshBuilder::BeginEditStaticMeshAssemblyBuild(Mesh);
		}

		// Finishes the build and returns the final slots as "Name=Material" (None for no material).
		std::vector<std::string> Finish(UNaniteAssemblyStaticMeshBuilder* Builder)
		{
			UStaticMesh* Out = nullptr;
			EXPECT_TRUE(Builder->FinishAssemblyBuild(Out));
			EXPECT_EQ(Out, Target);
			std::vector<std::string> Slots;
			for (const FStaticMaterial& Slot : Target->GetStaticMaterials())
			{
				EXPECT_TRUE(Slot.ImportedMaterialSlotName == Slot.MaterialSlotName);
				Slots.push_back(Utf8(Slot.MaterialSlotName) + "=" + (Slot.MaterialInterface ? Utf8(Slot.MaterialInterface->GetName()) : "None"));
			}
			return Slots;
		}

		std::vector<int32> Remap(int32 PartIndex) const
		{
			const TArray<int32>& Entries = Target->GetNaniteSettings().NaniteAssemblyData.Parts[PartIndex].MaterialRemap;
			return std::vector<int32>(Entries.begin(), Entries.end());
		}

		FTestProject Project;
		UMaterial* MatA = nullptr;
		UMaterial* MatB = nullptr;
		UMaterial* MatC = nullptr;
		UStaticMesh* PartA = nullptr;
		UStaticMesh* PartB = nullptr;
		UStaticMesh* Target = nullptr;
	};

	FMergeOptions Options(EMerge Behavior, int32 Group = 0, std::initializer_list<UMaterialInterface*> Overrides = {})
	{
		FMergeOptions Result;
		Result.MergeBehavior = Behavior;
		Result.MaterialSlotGroup = Group;
		for (UMaterialInterface* Override : Overrides)
		{
			Result.MaterialOverrides.Add(Override);
		}
		return Result;
	}
}

TEST_F(FAssemblyBuilderTest, RefusalsLogTheEngineTextsInOrder)
{
	EXPECT_EQ(UNaniteAssemblyStaticMeshBuilder::BeginEditStaticMeshAssemblyBuild(nullptr), nullptr);
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	ASSERT_NE(Builder, nullptr);
	EXPECT_TRUE(Builder->IsBuildingAssembly() && Builder->GetTargetMeshObject() == Target);
	EXPECT_FALSE(Builder->BeginAssemblyBuild(PartA));

	// Finishing without parts fails, names the target anyway and keeps the builder building.
	UStaticMesh* Out = nullptr;
	EXPECT_FALSE(Builder->FinishAssemblyBuild(Out));
	EXPECT_EQ(Out, Target);
	EXPECT_TRUE(Builder->IsBuildingAssembly());

	UStaticMesh* Assembly = MakeMesh(TEXT("/Game/Parts/Assembly"), {});
	Assembly->GetNaniteSettings().bEnabled = true;
	Assembly->GetNaniteSettings().NaniteAssemblyData.Parts.AddDefaulted();
	Assembly->GetNaniteSettings().NaniteAssemblyData.Nodes.AddDefaulted();
	EXPECT_FALSE(Builder->AddAssemblyPart(nullptr, FTransform::Identity));
	EXPECT_FALSE(Builder->AddAssemblyPart(Target, FTransform::Identity));
	EXPECT_FALSE(Builder->AddAssemblyPart(Assembly, FTransform::Identity));
	// Assembly data without Nanite is no assembly; nothing else about the part is checked.
	Assembly->GetNaniteSettings().bEnabled = false;
	EXPECT_TRUE(Builder->AddAssemblyPart(Assembly, FTransform::Identity));

	ASSERT_TRUE(Builder->FinishAssemblyBuild(Out));
	EXPECT_EQ(Out, Target);
	EXPECT_FALSE(Builder->IsBuildingAssembly() || Builder->GetTargetMeshObject());
	EXPECT_FALSE(Builder->AddAssemblyPart(PartA, FTransform::Identity));
	EXPECT_FALSE(Builder->FinishAssemblyBuild(Out));
	EXPECT_EQ(Out, nullptr);

	const std::vector<std::string> Expected = {
		"Error: [BeginEditStaticMeshAssemblyBuild] Target Static Mesh is not valid.",
		"Error: [BeginStaticMeshAssemblyBuild] This builder is currently building an assembly.",
		"Display: [FinishAssemblyBuild] Assembly build failed. No assembly parts were added.",
		"Error: [AddAssemblyParts] Part mesh is not valid.",
		"Error: [AddAssemblyParts] Adding target mesh as a part not supported.",
		"Error: [AddAssemblyParts] Adding Nanite Assembly mesh as a part not currently supported. Part Mesh: /Game/Parts/Assembly.Assembly",
		"Error: [AddAssemblyParts] This builder is not currently building an assembly.",
		"Error: [FinishAssemblyBuild] This builder is not currently building an assembly.",
	};
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogNaniteAssemblyBuilder")), Expected);

	// An empty list of transforms is a programming error.
	UNaniteAssemblyStaticMeshBuilder* Again = Begin(Target);
	EXPECT_DEATH(Again->AddAssemblyParts(PartA, TArray<FTransform>()), "Assertion failed");
}

TEST_F(FAssemblyBuilderTest, PartsAreReusedOnlyForTheSameMeshAndOptions)
{
	const FTransform T1(FRotator(0, 45, 0), FVector(100.25, -3, 1e6 + 0.3), FVector(1, 2, 0.5));
	const FTransform T2(FQuat(0.1, 0.2, 0.3, 0.9), FVector(1.0 / 3.0, 0, 0));
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	ASSERT_TRUE(Builder->AddAssemblyParts(PartA, TArray<FTransform>({ T1, T2, T1 })));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartA, T2));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartA, T1, Options(EMerge::MergeIdenticalSlotNames)));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartA, T1, Options(EMerge::MergeIdenticalMaterials, 0, { MatC })));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartA, T2, Options(EMerge::MergeIdenticalMaterials, 0, { MatC })));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartB, T2));
	ASSERT_TRUE(Builder->AddAssemblyPart(PartA, T1));
	Finish(Builder);

	const FNaniteAssemblyData& Data = Target->GetNaniteSettings().NaniteAssemblyData;
	ASSERT_EQ(Data.Parts.Num(), 4);
	EXPECT_EQ(Utf8(Data.Parts[0].MeshObjectPath.ToString()), "/Game/Parts/PartA.PartA");
	EXPECT_EQ(Utf8(Data.Parts[2].MeshObjectPath.ToString()), "/Game/Parts/PartA.PartA");
	EXPECT_EQ(Utf8(Data.Parts[3].MeshObjectPath.ToString()), "/Game/Parts/PartB.PartB");
	const int32 ExpectedParts[] = { 0, 0, 0, 0, 1, 2, 2, 3, 0 };
	const FTransform* ExpectedTransforms[] = { &T1, &T2, &T1, &T2, &T1, &T1, &T2, &T2, &T1 };
	ASSERT_EQ(Data.Nodes.Num(), 9);
	for (int32 Index = 0; Index < Data.Nodes.Num(); ++Index)
	{
		const FNaniteAssemblyNode& Node = Data.Nodes[Index];
		EXPECT_EQ(Node.PartIndex, ExpectedParts[Index]) << "node " << Index;
		EXPECT_EQ(Node.TransformSpace, ENaniteAssemblyNodeTransformSpace::Local);
		EXPECT_TRUE(Node.BoneInfluences.IsEmpty());
		const FTransform3f Converted(*ExpectedTransforms[Index]);
		EXPECT_EQ(std::memcmp(&Node.Transform, &Converted, sizeof(FTransform3f)), 0) << "node " << Index;
	}
}

TEST_F(FAssemblyBuilderTest, MaterialMergeBehaviours)
{
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity);
	Builder->AddAssemblyPart(PartB, FTransform::Identity);
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "SlotB=M_B", "SlotA=M_C" }));
	EXPECT_EQ(Remap(0), std::vector<int32>({ 0, 1 }));
	EXPECT_EQ(Remap(1), std::vector<int32>({ 1, 2 }));

	Target->SetStaticMaterials({ FStaticMaterial(MatA, FName(TEXT("Base"))) });
	Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity, Options(EMerge::MergeIdenticalSlotNames));
	Builder->AddAssemblyPart(PartB, FTransform::Identity, Options(EMerge::MergeIdenticalSlotNames));
	// The slot named SlotA keeps the first part's material.
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "SlotA=M_A", "SlotB=M_B", "Other=M_B" }));
	EXPECT_EQ(Remap(0), std::vector<int32>({ 1, 2 }));
	EXPECT_EQ(Remap(1), std::vector<int32>({ 3, 1 }));

	Target->SetStaticMaterials({ FStaticMaterial(MatA, FName(TEXT("Base"))) });
	Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity, Options(EMerge::MergeMaterialIndices));
	Builder->AddAssemblyPart(PartB, FTransform::Identity, Options(EMerge::MergeMaterialIndices));
	// Slot i takes part material i; whoever fills a slot first keeps it.
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "SlotB=M_B" }));
	EXPECT_EQ(Remap(0), std::vector<int32>({ 0, 1 }));
	EXPECT_EQ(Remap(1), std::vector<int32>({ 0, 1 }));

	// Overrides replace the material but not the slot name; a null override is used as null.
	Target->SetStaticMaterials({ FStaticMaterial(MatA, FName(TEXT("Base"))) });
	Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity, Options(EMerge::MergeIdenticalMaterials, 0, { MatC, nullptr }));
	Builder->AddAssemblyPart(PartA, FTransform::Identity);
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "SlotA=M_C", "SlotB=None", "SlotB_0=M_B" }));
	EXPECT_EQ(Remap(0), std::vector<int32>({ 1, 2 }));
	EXPECT_EQ(Remap(1), std::vector<int32>({ 0, 3 }));
}

TEST_F(FAssemblyBuilderTest, SlotGroupsConcatenateAndNamesBecomeUnique)
{
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	EXPECT_EQ(Builder->AddMaterialSlotGroup(), 1);
	EXPECT_EQ(Builder->AddMaterialSlot(MatC, 1, FName(TEXT("Extra"))), 0);
	EXPECT_EQ(Builder->AddMaterialSlot(MatC, 5, FName(TEXT("Lost"))), INDEX_NONE);
	EXPECT_EQ(Builder->AddMaterialSlotGroup(), 2);
	Builder->AddAssemblyPart(PartA, FTransform::Identity, Options(EMerge::MergeIdenticalMaterials, 1));
	Builder->AddAssemblyPart(PartB, FTransform::Identity, Options(EMerge::MergeIdenticalMaterials, 0));
	// Group 0 (the base slots first), then group 1; part remaps move past the earlier groups.
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "Other=M_B", "SlotA=M_C", "Extra=M_C", "SlotA_0=M_A", "SlotB=M_B" }));
	EXPECT_EQ(Remap(0), std::vector<int32>({ 4, 5 }));
	EXPECT_EQ(Remap(1), std::vector<int32>({ 1, 2 }));

	// Three slots named M become M, M_0 and M_1; a repeat takes one past the highest number of its name.
	for (const bool bWithNumbered : { false, true })
	{
		Target->SetStaticMaterials({});
		Builder = Begin(Target);
		Builder->AddMaterialSlot(MatA, 0, FName(TEXT("M")));
		Builder->AddMaterialSlot(MatB, 0, FName(TEXT("M")));
		Builder->AddMaterialSlot(MatC, 0, FName(bWithNumbered ? TEXT("M_0") : TEXT("M")));
		Builder->AddAssemblyPart(PartA, FTransform::Identity);
		EXPECT_EQ(Finish(Builder), bWithNumbered ? std::vector<std::string>({ "M=M_A", "M_1=M_B", "M_0=M_C" }) : std::vector<std::string>({ "M=M_A", "M_0=M_B", "M_1=M_C" }));
	}

	// A base slot without a name takes its material's name; identical materials merge only within a group.
	Target->SetStaticMaterials({ FStaticMaterial(MatB) });
	Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity, Options(EMerge::MergeIdenticalMaterials, Builder->AddMaterialSlotGroup()));
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "M_B=M_B", "SlotA=M_A", "SlotB=M_B" }));

	// With no slot at all the mesh still gets one, without name or material.
	Target->SetStaticMaterials({});
	Builder = Begin(Target);
	Builder->AddAssemblyPart(MakeMesh(TEXT("/Game/Parts/Bare"), {}), FTransform::Identity);
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "None=None" }));
}

TEST_F(FAssemblyBuilderTest, SlotsWithoutGeometryGetOneDegenerateTriangle)
{
	// A target without source models gets one, and one polygon group per slot.
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	Builder->AddAssemblyPart(PartA, FTransform::Identity);
	Builder->AddAssemblyPart(PartB, FTransform::Identity);
	Finish(Builder);
	const UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(*Target);
	EXPECT_TRUE(Geometry.NumSourceModels == 1 && Geometry.bHasMeshDescription);
	ASSERT_EQ(Geometry.PolygonGroupSlotNames.Num(), 3);
	EXPECT_EQ(Utf8(Geometry.PolygonGroupSlotNames[2]), "SlotA");
	EXPECT_TRUE(Geometry.SectionMaterialIndices == TArray<int32>({ 0, 1, 2 }));
	ASSERT_EQ(Geometry.Triangles.Num(), 3);
	EXPECT_EQ(Geometry.Positions.Num(), 9);
	EXPECT_FALSE(Geometry.Positions.ContainsByPredicate([](const FVector3f& Position) { return !(Position == FVector3f(0.0f)); }));
	EXPECT_EQ(Geometry.Triangles[2].PolygonGroup, 2);
	EXPECT_EQ(Geometry.CountRealTriangles(), 0);
	EXPECT_TRUE(Geometry.Normals.IsEmpty() && Geometry.UVs.IsEmpty());

	// The base geometry stays; its groups follow their slots to the new names, and only new slots get a
	// degenerate triangle.
	UStaticMesh* Rock = MakeMesh(TEXT("/Game/Rock"), { { MatA, TEXT("M") }, { MatB, TEXT("M") } });
	Rock->GetStaticMaterials()[1].ImportedMaterialSlotName = FName(TEXT("Second"));
	UE::Headless::FStaticMeshGeometry& RockGeometry = UE::Headless::GetMeshGeometry(*Rock);
	RockGeometry = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("M")));
	RockGeometry.PolygonGroupSlotNames.Add(FName(TEXT("Second")));
	RockGeometry.SectionMaterialIndices.Add(1);
	RockGeometry.Triangles[11].PolygonGroup = 1;
	Builder = Begin(Rock);
	Builder->AddAssemblyPart(PartB, FTransform::Identity);
	UStaticMesh* Out = nullptr;
	ASSERT_TRUE(Builder->FinishAssemblyBuild(Out));
	EXPECT_EQ(Utf8(FString::Join(TArray<FString>({ RockGeometry.PolygonGroupSlotNames[0].ToString(), RockGeometry.PolygonGroupSlotNames[1].ToString(),
		RockGeometry.PolygonGroupSlotNames[2].ToString() }), TEXT(","))), "M,M_0,SlotA");
	EXPECT_TRUE(RockGeometry.SectionMaterialIndices == TArray<int32>({ 0, 1, 2 }));
	EXPECT_EQ(RockGeometry.Triangles.Num(), 13);
	EXPECT_EQ(RockGeometry.CountRealTriangles(), 12);
	// The new vertices get a normal and a UV each, as the base's have, so that the mesh still saves and loads.
	EXPECT_EQ(RockGeometry.Normals.Num(), RockGeometry.Positions.Num());
	EXPECT_EQ(RockGeometry.UVs.Num(), RockGeometry.Positions.Num());
}

TEST_F(FAssemblyBuilderTest, FinishingEnablesNaniteAndQueuesTheBuildWithoutATransaction)
{
	UNaniteAssemblyStaticMeshBuilder* Builder = Begin(Target);
	Builder->AddAssemblyParts(PartA, TArray<FTransform>({ FTransform::Identity, FTransform(FVector(200, 0, 0)) }));
	EXPECT_FALSE(Target->GetPackage()->IsDirty());
	UE::Headless::FailNext(TEXT("FinishAssemblyBuild"));
	UStaticMesh* Out = nullptr;
	EXPECT_FALSE(Builder->FinishAssemblyBuild(Out));
	EXPECT_TRUE(Builder->IsBuildingAssembly());
	ASSERT_TRUE(Builder->FinishAssemblyBuild(Out));

	EXPECT_TRUE(Target->GetNaniteSettings().bEnabled && Target->IsNaniteAssembly());
	EXPECT_TRUE(Target->GetPackage()->IsDirty());
	EXPECT_TRUE(Target->IsCompiling());
	EXPECT_TRUE(UE::Headless::GetUndoHistory().IsEmpty());
	EXPECT_TRUE(Target->HasValidNaniteData());
	EXPECT_FALSE(Target->IsCompiling());
	EXPECT_EQ(UE::Headless::FRenderDataAccess::GetNumAssemblyNodes(*Target->GetRenderData()), 2);

	// Editing an assembly replaces its parts and nodes; the slots it had become the base slots.
	Builder = Begin(Target);
	Builder->AddAssemblyPart(PartB, FTransform(FVector(0, 0, 5)));
	EXPECT_EQ(Finish(Builder), std::vector<std::string>({ "Base=M_A", "SlotB=M_B", "SlotA=M_C" }));
	EXPECT_EQ(Target->GetNaniteSettings().NaniteAssemblyData.Parts.Num(), 1);
	EXPECT_EQ(Target->GetNaniteSettings().NaniteAssemblyData.Nodes.Num(), 1);
	EXPECT_EQ(Remap(0), std::vector<int32>({ 1, 2 }));

	// A failed part leaves nothing behind and the builder goes on.
	Builder = Begin(Target);
	UE::Headless::FailNext(TEXT("AddAssemblyParts"), TEXT("testing"));
	EXPECT_FALSE(Builder->AddAssemblyPart(PartA, FTransform::Identity));
	EXPECT_TRUE(Builder->AddAssemblyPart(PartB, FTransform::Identity));
	Finish(Builder);
	EXPECT_EQ(Target->GetNaniteSettings().NaniteAssemblyData.Parts.Num(), 1);
	EXPECT_EQ(Utf8(Target->GetNaniteSettings().NaniteAssemblyData.Parts[0].MeshObjectPath.ToString()), "/Game/Parts/PartB.PartB");

	// A new mesh for a build lives in its own package and starts without slots.
	FNaniteAssemblyCreateNewParameters Parameters;
	Parameters.TargetDirectory.Path = TEXT("/Game/New");
	Parameters.AssetName = TEXT("Fresh");
	UNaniteAssemblyStaticMeshBuilder* NewBuilder = UNaniteAssemblyStaticMeshBuilder::BeginNewStaticMeshAssemblyBuild(Parameters);
	ASSERT_NE(NewBuilder, nullptr);
	NewBuilder->AddAssemblyPart(PartB, FTransform::Identity);
	ASSERT_TRUE(NewBuilder->FinishAssemblyBuild(Out));
	EXPECT_EQ(Utf8(Out->GetPathName()), "/Game/New/Fresh.Fresh");
	EXPECT_TRUE(Out->HasAllFlags(RF_Public | RF_Standalone));
	EXPECT_EQ(Out->GetStaticMaterials().Num(), 2);
}
