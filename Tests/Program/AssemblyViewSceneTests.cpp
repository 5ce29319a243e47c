// What the viewer takes from a mesh: the geometry and placements in three.js's Y-up metres, the parts it cannot
// draw, and the box that frames the picture.
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "Headless/AssemblyViewScene.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

namespace
{
	using namespace UE::Headless;

	constexpr float Tolerance = 1e-5f;

	UStaticMesh* MakeMesh(const TCHAR* PackageName, const TCHAR* AssetName)
	{
		return NewObject<UStaticMesh>(CreatePackage(PackageName), FName(AssetName), RF_Public | RF_Standalone);
	}

	// Its Nanite is on, so that assembly data makes it an assembly.
	UStaticMesh* MakeAssemblyMesh(const TCHAR* PackageName, const TCHAR* AssetName)
	{
		UStaticMesh* Mesh = MakeMesh(PackageName, AssetName);
		Mesh->GetNaniteSettings().bEnabled = true;
		return Mesh;
	}

	FVector3f At(const std::vector<float>& Numbers, size_t Offset)
	{
		return FVector3f(Numbers[Offset], Numbers[Offset + 1], Numbers[Offset + 2]);
	}

	void ExpectNear(const FVector3f& Actual, const FVector3f& Expected, const char* What)
	{
		EXPECT_NEAR(Actual.X, Expected.X, Tolerance) << What;
		EXPECT_NEAR(Actual.Y, Expected.Y, Tolerance) << What;
		EXPECT_NEAR(Actual.Z, Expected.Z, Tolerance) << What;
	}

	// Where an instance of the view puts a point of its part, as three.js composes the instance's matrix.
	FVector3f PlaceInView(const FViewPart& Part, int32 Instance, const FVector3f& Point)
	{
		const size_t Offset = (size_t)Instance * FloatsPerViewInstance;
		const FQuat4f Rotation(Part.Instances[Offset + 3], Part.Instances[Offset + 4], Part.Instances[Offset + 5], Part.Instances[Offset + 6]);
		return At(Part.Instances, Offset) + Rotation.RotateVector(Point * At(Part.Instances, Offset + 7));
	}

	FNaniteAssemblyNode MakeNode(int32 PartIndex, const FTransform3f& Transform)
	{
		FNaniteAssemblyNode Node;
		Node.PartIndex = PartIndex;
		Node.Transform = Transform;
		return Node;
	}

	FNaniteAssemblyPart MakePart(const TCHAR* MeshPath)
	{
		FNaniteAssemblyPart Part;
		Part.MeshObjectPath = FSoftObjectPath(FString(MeshPath));
		return Part;
	}
}

TEST(AssemblyViewScene, APlainMeshIsOnePartWithOneInstanceInTheYUpFrame)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/View/SM_Wedge"), TEXT("SM_Wedge"));
	FStaticMeshGeometry& Geometry = GetMeshGeometry(*Mesh);
	Geometry.Positions = { FVector3f(100, 200, 300), FVector3f(100, 200, 400), FVector3f(100, 300, 300), FVector3f(0, 0, 0) };
	Geometry.Normals = { FVector3f(1, 0, 0), FVector3f(0, 1, 0), FVector3f(0, 0, 1), FVector3f(1, 0, 0) };
	FMeshTriangle Real;
	Real.VertexIndices[0] = 0;
	Real.VertexIndices[1] = 1;
	Real.VertexIndices[2] = 2;
	FMeshTriangle Flat;
	Flat.VertexIndices[0] = 3;
	Flat.VertexIndices[1] = 3;
	Flat.VertexIndices[2] = 0;
	FMeshTriangle Broken;
	Broken.VertexIndices[2] = 7;
	Geometry.Triangles = { Flat, Real, Broken };

	const FAssemblyView View = MakeAssemblyView(*Mesh);
	EXPECT_EQ(ToUtf8(View.MeshPath), "/Game/View/SM_Wedge.SM_Wedge");
	EXPECT_FALSE(View.bIsAssembly);
	EXPECT_EQ(View.NumNodes, 0);
	ASSERT_EQ(View.Parts.size(), 1u);
	const FViewPart& Part = View.Parts[0];
	EXPECT_EQ(ToUtf8(Part.MeshPath), "/Game/View/SM_Wedge.SM_Wedge");
	EXPECT_TRUE(Part.bLoaded);
	// Centimetres with Z up become metres with Y up; a normal only swaps its axes.
	ASSERT_EQ(Part.Positions.size(), 12u);
	ExpectNear(At(Part.Positions, 0), FVector3f(1, 3, 2), "first corner");
	ExpectNear(At(Part.Positions, 3), FVector3f(1, 4, 2), "second corner");
	ASSERT_EQ(Part.Normals.size(), 12u);
	ExpectNear(At(Part.Normals, 3), FVector3f(0, 0, 1), "the engine's +Y normal");
	ExpectNear(At(Part.Normals, 6), FVector3f(0, 1, 0), "the engine's +Z normal");
	// Triangles without area or with a vertex that does not exist are left out; the others keep their order.
	EXPECT_EQ(Part.Indices, (std::vector<uint32_t>{ 0, 1, 2 }));
	EXPECT_EQ(Part.Instances, (std::vector<float>{ 0, 0, 0, 0, 0, 0, 1, 1, 1, 1 }));
	ASSERT_TRUE(View.HasBounds());
	// The box holds the drawn triangle only, not the unused vertex at the origin.
	ExpectNear(View.BoundsMin, FVector3f(1, 3, 2), "box minimum");
	ExpectNear(View.BoundsMax, FVector3f(1, 4, 3), "box maximum");

	// Normals that do not match the vertices one to one are left for the page to derive.
	Geometry.Normals.RemoveAt(3);
	EXPECT_TRUE(MakeAssemblyView(*Mesh).Parts[0].Normals.empty());
}

TEST(AssemblyViewScene, AnAssemblyPlacesEachPartAtItsNodesAsTheEngineDoes)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeAssemblyMesh(TEXT("/Game/View/SM_Row"), TEXT("SM_Row"));
	FNaniteAssemblyData& Data = Mesh->GetNaniteSettings().NaniteAssemblyData;
	Data.Parts = { MakePart(TEXT("/Engine/BasicShapes/Cube.Cube")), MakePart(TEXT("/Engine/BasicShapes/Sphere.Sphere")),
		MakePart(TEXT("/Game/View/SM_Gone.SM_Gone")) };
	const FTransform3f Turned(FRotator3f(30, 90, -20).Quaternion(), FVector3f(100, -50, 25), FVector3f(2, 1, 0.5f));
	Data.Nodes = { MakeNode(0, FTransform3f(FVector3f(100, 0, 0))), MakeNode(1, FTransform3f(FVector3f(0, 300, 0))), MakeNode(0, Turned),
		MakeNode(2, FTransform3f::Identity), MakeNode(3, FTransform3f::Identity), MakeNode(INDEX_NONE, FTransform3f::Identity) };

	const FAssemblyView View = MakeAssemblyView(*Mesh);
	EXPECT_TRUE(View.bIsAssembly);
	// Every node counts, also those whose part does not exist.
	EXPECT_EQ(View.NumNodes, 6);
	ASSERT_EQ(View.Parts.size(), 3u);
	EXPECT_EQ(ToUtf8(View.Parts[0].MeshPath), "/Engine/BasicShapes/Cube.Cube");
	EXPECT_EQ(View.Parts[0].NumInstances(), 2);
	EXPECT_EQ(View.Parts[1].NumInstances(), 1);
	EXPECT_TRUE(View.Parts[1].bLoaded);
	EXPECT_FALSE(View.Parts[1].Indices.empty());
	// A part whose mesh cannot be loaded keeps its instance and draws nothing.
	EXPECT_EQ(ToUtf8(View.Parts[2].MeshPath), "/Game/View/SM_Gone.SM_Gone");
	EXPECT_FALSE(View.Parts[2].bLoaded);
	EXPECT_EQ(View.Parts[2].NumInstances(), 1);
	EXPECT_TRUE(View.Parts[2].Positions.empty());
	EXPECT_TRUE(View.Parts[2].Indices.empty());

	// The cube's vertices, placed by the engine and then converted, land where the view's instance puts the
	// converted vertices: translation, rotation and scale all cross the change of frame together.
	const FViewPart& Cube = View.Parts[0];
	const FStaticMeshGeometry& CubeGeometry = GetMeshGeometry(*Cast<UStaticMesh>(Data.Parts[0].MeshObjectPath.TryLoad()));
	ASSERT_EQ(Cube.Positions.size(), 3 * (size_t)CubeGeometry.Positions.Num());
	for (int32 Vertex = 0; Vertex < CubeGeometry.Positions.Num(); ++Vertex)
	{
		const FVector3f Engine = CubeGeometry.Positions[Vertex];
		ExpectNear(PlaceInView(Cube, 0, At(Cube.Positions, 3 * Vertex)), FVector3f(Engine.X + 100, Engine.Z, Engine.Y) * 0.01f, "first cube");
		const FVector3f Placed = Turned.TransformPosition(Engine);
		ExpectNear(PlaceInView(Cube, 1, At(Cube.Positions, 3 * Vertex)), FVector3f(Placed.X, Placed.Z, Placed.Y) * 0.01f, "turned cube");
	}
}

TEST(AssemblyViewScene, TheBoxHoldsEveryDrawnInstanceAsPlaced)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeAssemblyMesh(TEXT("/Game/View/SM_Box"), TEXT("SM_Box"));
	FMeshNaniteSettings& Settings = Mesh->GetNaniteSettings();
	Settings.NaniteAssemblyData.Parts = { MakePart(TEXT("/Engine/BasicShapes/Cube.Cube")), MakePart(TEXT("/Game/View/SM_Gone.SM_Gone")) };
	// A cube stretched along X and turned a quarter round Z lies along the engine's Y, from -100 to 100.
	const FTransform3f Turned(FRotator3f(0, 90, 0).Quaternion(), FVector3f(1000, 0, 0), FVector3f(2, 1, 1));
	Settings.NaniteAssemblyData.Nodes = { MakeNode(0, Turned), MakeNode(0, FTransform3f(FVector3f(0, 0, 200))),
		MakeNode(1, FTransform3f(FVector3f(-5000, 0, 0))) };

	FAssemblyView View = MakeAssemblyView(*Mesh);
	ASSERT_TRUE(View.HasBounds());
	// The part that draws nothing does not stretch the box to X = -5000.
	ExpectNear(View.BoundsMin, FVector3f(-0.5f, -0.5f, -1.0f), "box minimum");
	ExpectNear(View.BoundsMax, FVector3f(10.5f, 2.5f, 1.0f), "box maximum");

	// With nothing drawn there is no box to frame.
	Settings.NaniteAssemblyData.Nodes = { MakeNode(1, FTransform3f::Identity) };
	View = MakeAssemblyView(*Mesh);
	EXPECT_FALSE(View.HasBounds());
	EXPECT_EQ(View.NumNodes, 1);

	// A mesh whose Nanite is off shows as itself, as the readback calls it no assembly.
	Settings.bEnabled = false;
	View = MakeAssemblyView(*Mesh);
	EXPECT_FALSE(View.bIsAssembly);
	ASSERT_EQ(View.Parts.size(), 1u);
	EXPECT_EQ(ToUtf8(View.Parts[0].MeshPath), "/Game/View/SM_Box.SM_Box");
	EXPECT_EQ(View.Parts[0].NumInstances(), 1);
}
