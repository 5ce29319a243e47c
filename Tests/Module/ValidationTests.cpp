// Validation cases that no script can reach through the reader, and the plan that validation fills.
#include "Build/NaniteAssemblyBuild.h"
#include "Engine/StaticMesh.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "Materials/MaterialInterface.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "TestProject.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace CVAI::NaniteAssembly;

namespace
{
	using UE::Headless::ToUtf8;

	FNaniteAssemblyPartRequest CubePart(int32 TransformCount)
	{
		FNaniteAssemblyPartRequest Part;
		Part.MeshPath = TEXT("/Engine/BasicShapes/Cube");
		for (int32 Index = 0; Index < TransformCount; ++Index)
		{
			Part.Transforms.Add(FTransform(FVector((double)Index, 0.0, 0.0)));
		}
		return Part;
	}

	std::string Refusal(const FNaniteAssemblyBuildRequest& Request)
	{
		FNaniteAssemblyBuildPlan Plan;
		FString Error;
		EXPECT_FALSE(ValidateNaniteAssemblyRequest(Request, Plan, Error));
		return ToUtf8(Error);
	}

	class ValidationTest : public ::testing::Test
	{
	protected:
		void SetUp() override { ASSERT_TRUE(Project.Start()); }

		FTestProject Project;
	};
}

TEST_F(ValidationTest, NoPartsComesBeforeEverythingElse)
{
	FNaniteAssemblyBuildRequest Request;
	Request.Output = TEXT("/Temp/Wrong As Well");
	EXPECT_EQ(Refusal(Request), "no parts given; at least one part with one transform is required");
}

TEST_F(ValidationTest, CheapPartChecksComeBeforeAnyLoad)
{
	FNaniteAssemblyBuildRequest Request;
	Request.Output = TEXT("/Game/Validation/SM_Out");
	Request.Parts.Add(CubePart(1));
	Request.Parts[0].MeshPath.Empty();
	EXPECT_EQ(Refusal(Request), "parts[1]: mesh path is empty");

	Request.Parts[0] = CubePart(0);
	EXPECT_EQ(Refusal(Request), "parts[1]: transforms is empty; every part needs at least one transform");

	// A bad number is reported before the missing mesh would be.
	Request.Parts[0] = CubePart(2);
	Request.Parts[0].MeshPath = TEXT("/Game/Missing");
	Request.Parts[0].Transforms[1].SetTranslation(FVector(std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0));
	EXPECT_EQ(Refusal(Request), "parts[1].transforms[2]: contains NaN");
}

TEST_F(ValidationTest, AnyOfTheTwelveLanesNonFiniteIsRefusedWithTheSameWords)
{
	static_assert(sizeof(FTransform) == 12 * sizeof(double));
	const double Bad[] = { std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity() };
	for (int32 Lane = 0; Lane < 12; ++Lane)
	{
		for (const double Value : Bad)
		{
			FNaniteAssemblyBuildRequest Request;
			Request.Output = TEXT("/Game/Validation/SM_Lanes");
			Request.Parts.Add(CubePart(1));
			Request.Parts.Add(CubePart(3));
			double Lanes[12];
			std::memcpy(Lanes, &Request.Parts[1].Transforms[2], sizeof(Lanes));
			Lanes[Lane] = Value;
			std::memcpy((void*)&Request.Parts[1].Transforms[2], Lanes, sizeof(Lanes));
			EXPECT_EQ(Refusal(Request), "parts[2].transforms[3]: contains NaN") << "lane " << Lane << " value " << Value;
		}
	}
}

TEST_F(ValidationTest, APlanHoldsTheResolvedPartsAndTheOutputNames)
{
	FNaniteAssemblyBuildRequest Request;
	Request.Output = TEXT("Validation/SM_Plan.SM_Plan");
	Request.Parts.Add(CubePart(2));
	FNaniteAssemblyPartRequest Sphere = CubePart(1);
	Sphere.MeshPath = TEXT("/Engine/BasicShapes/Sphere.Sphere");
	Sphere.MaterialMerge = ENaniteAssemblyMergeMode::MaterialIndices;
	Sphere.MaterialOverrides.Add(TEXT("/Engine/BasicShapes/BasicShapeMaterial"));
	Sphere.MaterialOverrides.Add(TEXT("/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"));
	Request.Parts.Add(Sphere);

	FNaniteAssemblyBuildPlan Plan;
	FString Error;
	ASSERT_TRUE(ValidateNaniteAssemblyRequest(Request, Plan, Error)) << ToUtf8(Error);
	EXPECT_EQ(ToUtf8(Plan.PackageName), "/Game/Validation/SM_Plan");
	EXPECT_EQ(ToUtf8(Plan.AssetName), "SM_Plan");
	EXPECT_EQ(ToUtf8(Plan.ObjectPath), "/Game/Validation/SM_Plan.SM_Plan");
	EXPECT_EQ(Plan.ExistingMesh, nullptr);
	ASSERT_EQ(Plan.Parts.Num(), 2);
	EXPECT_EQ(ToUtf8(Plan.Parts[0].Mesh->GetPathName()), "/Engine/BasicShapes/Cube.Cube");
	EXPECT_EQ(Plan.Parts[0].Transforms.Num(), 2);
	EXPECT_EQ(Plan.Parts[0].Transforms[1].GetTranslation(), FVector(1.0, 0.0, 0.0));
	EXPECT_EQ(Plan.Parts[0].MergeOptions.MaterialSlotGroup, 0);
	EXPECT_EQ(Plan.Parts[0].MergeOptions.MergeBehavior, ENaniteAssemblyPartMaterialMerge::MergeIdenticalMaterials);
	EXPECT_EQ(Plan.Parts[0].MergeOptions.MaterialOverrides.Num(), 0);
	EXPECT_EQ(Plan.Parts[1].MergeOptions.MergeBehavior, ENaniteAssemblyPartMaterialMerge::MergeMaterialIndices);
	ASSERT_EQ(Plan.Parts[1].MergeOptions.MaterialOverrides.Num(), 2);
	EXPECT_EQ(ToUtf8(Plan.Parts[1].MergeOptions.MaterialOverrides[0]->GetPathName()), "/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial");
	EXPECT_EQ(Plan.Parts[1].MergeOptions.MaterialOverrides[0].Get(), Plan.Parts[1].MergeOptions.MaterialOverrides[1].Get());
}

// A part in any package flagged transient cannot be reloaded by the build, like one in the transient
// package itself; a mesh's own transient flag in an ordinary package does not decide it.
TEST_F(ValidationTest, PartsInTransientPackagesAreRefused)
{
	UPackage* Scratch = CreatePackage(TEXT("/Game/Validation/Scratch"));
	Scratch->SetFlags(RF_Transient);
	NewObject<UStaticMesh>(Scratch, FName(TEXT("Scratch")), RF_Public | RF_Standalone);
	UPackage* Ordinary = CreatePackage(TEXT("/Game/Validation/Ordinary"));
	UStaticMesh* Flagged = NewObject<UStaticMesh>(Ordinary, FName(TEXT("Ordinary")), RF_Public | RF_Standalone | RF_Transient);
	UE::Headless::GetMeshGeometry(*Flagged) = UE::Headless::MakeBasicShapeGeometry(UE::Headless::EBasicShape::Cube, FName(TEXT("Slot")));

	FNaniteAssemblyBuildRequest Request;
	Request.Output = TEXT("/Game/Validation/SM_FromScratch");
	Request.Parts.Add(CubePart(1));
	Request.Parts[0].MeshPath = TEXT("/Game/Validation/Scratch");
	EXPECT_EQ(Refusal(Request),
		"parts[1]: '/Game/Validation/Scratch.Scratch' lives in a transient package and could not be reloaded by the assembly build");

	Request.Parts[0].MeshPath = TEXT("/Game/Validation/Ordinary");
	FNaniteAssemblyBuildPlan Plan;
	FString Error;
	EXPECT_TRUE(ValidateNaniteAssemblyRequest(Request, Plan, Error)) << ToUtf8(Error);
}
