// The engine's basic shapes as the editor gets them: their size, their normals and texture coordinates, the
// engine's clockwise front faces, and what a build and the generated engine content make of them.
#include "Engine/StaticMesh.h"
#include "Headless/StaticMeshGeometry.h"
#include "MeshChecks.h"
#include "PlatformTestUtils.h"
#include "StaticMeshResources.h"
#include "TestProject.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace PlatformTest;
using UE::Headless::EBasicShape;

namespace
{
	struct FShapeCase
	{
		const TCHAR* Name;
		EBasicShape Shape;
		// What a closed shape encloses in cubic centimetres: the exact solid's volume, which the facets
		// approach from below. Zero for the plane, which encloses nothing.
		double SolidVolume;
		// How close the facets come to the solid.
		double VolumeTolerance;
	};

	constexpr double Pi = 3.14159265358979323846;

	const FShapeCase ShapeCases[] = {
		{ TEXT("Cube"), EBasicShape::Cube, 1.0e6, 1e-6 },
		{ TEXT("Sphere"), EBasicShape::Sphere, 4.0 / 3.0 * Pi * 50 * 50 * 50, 0.03 },
		{ TEXT("Cylinder"), EBasicShape::Cylinder, Pi * 50 * 50 * 100, 0.01 },
		{ TEXT("Cone"), EBasicShape::Cone, Pi * 50 * 50 * 100 / 3.0, 0.01 },
		{ TEXT("Plane"), EBasicShape::Plane, 0.0, 1e-6 },
	};

	void ExpectVector(const FVector3f& Actual, const FVector3f& Expected, const char* What, const TCHAR* Shape)
	{
		EXPECT_TRUE(Actual.Equals(Expected, 1e-4f)) << What << " of " << Utf8(FString(Shape)) << ": (" << Actual.X << ", " << Actual.Y << ", " << Actual.Z << ")";
	}
}

TEST(BasicShapes, EveryShapeIsOneHundredAcrossWithOutwardClockwiseFacesNormalsAndUVs)
{
	for (const FShapeCase& Case : ShapeCases)
	{
		const std::string Name = Utf8(FString(Case.Name));
		const UE::Headless::FStaticMeshGeometry Geometry = UE::Headless::MakeBasicShapeGeometry(Case.Shape, FName(TEXT("Slot")));
		EXPECT_EQ(MeshChecks::FindFault(Geometry), "") << Name;
		EXPECT_EQ(MeshChecks::CountCornersFacingAway(Geometry), 0) << Name;
		EXPECT_TRUE(Geometry.NumSourceModels == 1 && Geometry.bHasMeshDescription) << Name;
		ASSERT_EQ(Geometry.Normals.Num(), Geometry.Positions.Num()) << Name;
		ASSERT_EQ(Geometry.UVs.Num(), Geometry.Positions.Num()) << Name;
		for (const FVector2f& UV : Geometry.UVs)
		{
			ASSERT_TRUE(UV.X >= 0.0f && UV.X <= 1.0f && UV.Y >= 0.0f && UV.Y <= 1.0f) << Name << ": UV (" << UV.X << ", " << UV.Y << ")";
		}
		ASSERT_EQ(Geometry.PolygonGroupSlotNames.Num(), 1) << Name;
		EXPECT_EQ(Utf8(Geometry.PolygonGroupSlotNames[0]), "Slot");
		EXPECT_TRUE(Geometry.SectionMaterialIndices == TArray<int32>({ 0 })) << Name;

		const MeshChecks::FBox Bounds = MeshChecks::GetBounds(Geometry);
		const float Top = Case.Shape == EBasicShape::Plane ? 0.0f : 50.0f;
		ExpectVector(Bounds.Min, FVector3f(-50.0f, -50.0f, -Top), "the lower bound", Case.Name);
		ExpectVector(Bounds.Max, FVector3f(50.0f, 50.0f, Top), "the upper bound", Case.Name);

		// Closed, with every front facing out: a missing face, a flipped triangle or a shifted vertex changes it.
		const double Volume = MeshChecks::GetEnclosedVolume(Geometry);
		EXPECT_LE(Volume, Case.SolidVolume + 1e-3) << Name;
		EXPECT_GE(Volume, Case.SolidVolume * (1.0 - Case.VolumeTolerance) - 1e-3) << Name;

		// Every vertex of a curved surface lies on it, its normal square to it.
		for (int32 Index = 0; Index < Geometry.Positions.Num() && Case.Shape == EBasicShape::Sphere; ++Index)
		{
			ASSERT_NEAR(Geometry.Positions[Index].Size(), 50.0f, 1e-3f) << Index;
			ExpectVector(Geometry.Normals[Index], Geometry.Positions[Index] / 50.0f, "a sphere normal", Case.Name);
		}
	}
}

TEST(BasicShapes, FlatFacesAreSplitAndRoundSidesShared)
{
	const UE::Headless::FStaticMeshGeometry Cube = UE::Headless::MakeBasicShapeGeometry(EBasicShape::Cube, NAME_None);
	EXPECT_EQ(Cube.Positions.Num(), 24);
	EXPECT_EQ(Cube.Triangles.Num(), 12);
	// Each face has its own four corners, all facing along one axis, and its texture once over it.
	for (int32 Face = 0; Face < 6; ++Face)
	{
		const FVector3f Normal = Cube.Normals[Face * 4];
		FVector2f UVSum(0.0f);
		for (int32 Corner = 0; Corner < 4; ++Corner)
		{
			EXPECT_TRUE(Cube.Normals[Face * 4 + Corner] == Normal) << Face;
			EXPECT_FLOAT_EQ(Cube.Positions[Face * 4 + Corner] | Normal, 50.0f) << Face;
			UVSum = UVSum + Cube.UVs[Face * 4 + Corner];
		}
		EXPECT_TRUE(UVSum == FVector2f(2.0f, 2.0f)) << Face;
		EXPECT_FLOAT_EQ(std::abs(Normal.X) + std::abs(Normal.Y) + std::abs(Normal.Z), 1.0f) << Face;
	}

	const UE::Headless::FStaticMeshGeometry Plane = UE::Headless::MakeBasicShapeGeometry(EBasicShape::Plane, NAME_None);
	EXPECT_EQ(Plane.Positions.Num(), 4);
	EXPECT_EQ(Plane.Triangles.Num(), 2);
	for (const FVector3f& Normal : Plane.Normals)
	{
		EXPECT_TRUE(Normal == FVector3f(0.0f, 0.0f, 1.0f));
	}

	// The cylinder's side shades round: a vertex of it has a horizontal normal pointing away from the axis,
	// while its caps' vertices all face straight up or down.
	const UE::Headless::FStaticMeshGeometry Cylinder = UE::Headless::MakeBasicShapeGeometry(EBasicShape::Cylinder, NAME_None);
	int32 SideVertices = 0;
	int32 CapVertices = 0;
	for (int32 Index = 0; Index < Cylinder.Positions.Num(); ++Index)
	{
		const FVector3f& Position = Cylinder.Positions[Index];
		const FVector3f& Normal = Cylinder.Normals[Index];
		if (Normal.Z == 0.0f)
		{
			++SideVertices;
			ExpectVector(Normal, FVector3f(Position.X, Position.Y, 0.0f) / 50.0f, "a side normal", TEXT("Cylinder"));
		}
		else
		{
			++CapVertices;
			EXPECT_EQ(Normal.Z, Position.Z > 0.0f ? 1.0f : -1.0f);
		}
	}
	EXPECT_EQ(SideVertices, 66);
	EXPECT_EQ(CapVertices, 66);

	// The cone's side leans by the slope of its radius over its height.
	const UE::Headless::FStaticMeshGeometry Cone = UE::Headless::MakeBasicShapeGeometry(EBasicShape::Cone, NAME_None);
	EXPECT_NEAR(Cone.Normals[0].Z, 1.0f / std::sqrt(5.0f), 1e-6f);
	EXPECT_NEAR(Cone.Normals[0].X, 2.0f / std::sqrt(5.0f), 1e-6f);
}

TEST(BasicShapes, TheEngineContentHasThemBuiltWithTheirBounds)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	for (const FShapeCase& Case : ShapeCases)
	{
		const FString Path = FString(TEXT("/Engine/BasicShapes/")) + Case.Name;
		const UStaticMesh* Mesh = LoadObject<UStaticMesh>(nullptr, *Path);
		ASSERT_NE(Mesh, nullptr) << Utf8(Path);
		const UE::Headless::FStaticMeshGeometry Expected = UE::Headless::MakeBasicShapeGeometry(Case.Shape, FName(TEXT("BasicShapeMaterial")));
		const UE::Headless::FStaticMeshGeometry& Loaded = UE::Headless::GetMeshGeometry(*Mesh);
		EXPECT_TRUE(Loaded.Positions == Expected.Positions && Loaded.Normals == Expected.Normals && Loaded.UVs == Expected.UVs) << Utf8(Path);
		EXPECT_TRUE(Loaded.PolygonGroupSlotNames == Expected.PolygonGroupSlotNames) << Utf8(Path);

		const FStaticMeshRenderData* RenderData = Mesh->GetRenderData();
		ASSERT_NE(RenderData, nullptr);
		EXPECT_EQ(RenderData->LODResources[0].GetNumVertices(), Expected.Positions.Num());
		EXPECT_EQ(RenderData->LODResources[0].GetNumTriangles(), Expected.Triangles.Num());
		const float Top = Case.Shape == EBasicShape::Plane ? 0.0f : 50.0f;
		ExpectVector(UE::Headless::FRenderDataAccess::GetBoundsMin(*RenderData), FVector3f(-50.0f, -50.0f, -Top), "the built lower bound", Case.Name);
		ExpectVector(UE::Headless::FRenderDataAccess::GetBoundsMax(*RenderData), FVector3f(50.0f, 50.0f, Top), "the built upper bound", Case.Name);
	}
}
