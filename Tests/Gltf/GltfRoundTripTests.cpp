// The round trip: an assembly exported as glTF and the file imported back through assimp, as cvai import reads it,
// gives the part meshes again within float precision, and the file's instance transforms converted back to the
// engine's frame are the nodes of the readback. assimp does not know EXT_mesh_gpu_instancing, so it reads an
// instanced part once, where it stands before its instances; without instancing it reads every instance.
#include "GltfTestFixture.h"

#include "Engine/StaticMesh.h"
#include "Headless/MeshImport.h"
#include "Headless/StringUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace GltfTest;
using UE::Headless::FromUtf8;
using UE::Headless::ToUtf8;

namespace
{
	class GltfRoundTripTest : public FGltfTestFixture
	{
	protected:
		static const UE::Headless::FStaticMeshGeometry& Import(const std::string& File, const TCHAR* Destination)
		{
			UE::Headless::FMeshImportResult Result;
			FString Error;
			EXPECT_TRUE(UE::Headless::ImportMeshFile(FromUtf8(File), Destination, false, Result, Error)) << ToUtf8(Error);
			return UE::Headless::GetMeshGeometry(Mesh(*Result.ObjectPath));
		}
	};

	struct FCorner
	{
		FVector3f Position;
		FVector3f Normal;
		FVector2f UV;
	};

	struct FTriangle
	{
		std::array<FCorner, 3> Corners;
		FName Slot;
	};

	// The triangles that draw something, each with its group's slot name, moved by Transform when one is given.
	std::vector<FTriangle> TrianglesOf(const UE::Headless::FStaticMeshGeometry& Geometry, const FTransform3f* Transform = nullptr)
	{
		std::vector<FTriangle> Triangles;
		for (const UE::Headless::FMeshTriangle& Source : Geometry.Triangles)
		{
			if (Source.IsDegenerate(Geometry.Positions))
			{
				continue;
			}
			FTriangle& Triangle = Triangles.emplace_back();
			Triangle.Slot = Geometry.PolygonGroupSlotNames[Source.PolygonGroup];
			for (int32 Corner = 0; Corner < 3; ++Corner)
			{
				const int32 Vertex = Source.VertexIndices[Corner];
				const FVector3f Position = Geometry.Positions[Vertex];
				Triangle.Corners[Corner] = { Transform ? Transform->TransformPosition(Position) : Position, Geometry.Normals[Vertex], Geometry.UVs[Vertex] };
			}
		}
		return Triangles;
	}

	bool SameCorner(const FCorner& A, const FCorner& B, bool bNormals)
	{
		return A.Position.Equals(B.Position, 1e-3f) && A.UV.Equals(B.UV, 1e-6f) && (!bNormals || A.Normal.Equals(B.Normal, 1e-5f));
	}

	// Each triangle of Expected is in Actual once, with the same corners turning the same way (from any corner on)
	// and the same slot name; normals are compared with bNormals.
	void ExpectSameTriangles(const std::vector<FTriangle>& Expected, const std::vector<FTriangle>& Actual, bool bNormals)
	{
		ASSERT_EQ(Actual.size(), Expected.size());
		std::vector<bool> Taken(Actual.size(), false);
		int Missing = 0;
		for (const FTriangle& Wanted : Expected)
		{
			bool bFound = false;
			for (size_t Index = 0; Index < Actual.size() && !bFound; ++Index)
			{
				for (int First = 0; First < 3 && !Taken[Index] && !bFound && Actual[Index].Slot == Wanted.Slot; ++First)
				{
					bFound = SameCorner(Actual[Index].Corners[First], Wanted.Corners[0], bNormals) && SameCorner(Actual[Index].Corners[(First + 1) % 3], Wanted.Corners[1], bNormals)
						&& SameCorner(Actual[Index].Corners[(First + 2) % 3], Wanted.Corners[2], bNormals);
					Taken[Index] = bFound;
				}
			}
			if (!bFound && ++Missing <= 3)
			{
				const FVector3f& A = Wanted.Corners[0].Position;
				ADD_FAILURE() << "no triangle came back for the one at (" << A.X << ", " << A.Y << ", " << A.Z << ") in " << ToUtf8(Wanted.Slot.ToString());
			}
		}
		EXPECT_EQ(Missing, 0);
	}

	std::vector<std::vector<FInstance>> InstancesOf(const tinygltf::Model& Model)
	{
		std::vector<std::vector<FInstance>> Instances;
		for (const int Node : Model.scenes.at(0).nodes)
		{
			Instances.push_back(ReadInstances(Model, Model.nodes.at(Node)));
		}
		return Instances;
	}
}

TEST_F(GltfRoundTripTest, EachBasicShapeComesBackAsItsPartMeshAndItsInstancesAsTheNodes)
{
	for (const char* Shape : { "Cube", "Sphere", "Cylinder", "Cone", "Plane" })
	{
		const std::string Name = std::string("SM_") + Shape;
		Build(R"({ output = "/Game/RoundTrip/)" + Name + R"(", parts = { { mesh = "/Engine/BasicShapes/)" + Shape + R"(", transforms = {
			{ location = { x = 120, y = -40, z = 15 }, rotation = { pitch = 10, yaw = 75, roll = -20 }, scale = { x = 1, y = 2, z = 0.5 } },
			{ location = { y = 300 }, rotation = { yaw = -90 } }, { scale = 3 } } } } })");
		const std::string File = OutputFile(Name + ".glb");
		const tinygltf::Model Model = Export(*FromUtf8("/Game/RoundTrip/" + Name + "." + Name), Name + ".glb");
		ExpectInstancesOfReadback(InstancesOf(Model), Readback("/Game/RoundTrip/" + Name));

		const UE::Headless::FStaticMeshGeometry& Imported = Import(File, *FromUtf8("/Game/Imported/" + Name));
		const UE::Headless::FStaticMeshGeometry& Part = UE::Headless::GetMeshGeometry(Mesh(*FromUtf8(std::string("/Engine/BasicShapes/") + Shape + "." + Shape)));
		SCOPED_TRACE(Shape);
		ExpectSameTriangles(TrianglesOf(Part), TrianglesOf(Imported), true);
	}
}

TEST_F(GltfRoundTripTest, ThePanelComesBackWithItsTwoSlots)
{
	Build(R"({ output = "/Game/RoundTrip/SM_Panels", parts = { { mesh = "/Game/Test/SM_Panel", material_merge = "slot_names",
		transforms = { {}, { location = { x = -200 }, rotation = { roll = 45 } } } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/RoundTrip/SM_Panels.SM_Panels"), "panels.gltf");
	ExpectInstancesOfReadback(InstancesOf(Model), Readback("/Game/RoundTrip/SM_Panels"));

	const UE::Headless::FStaticMeshGeometry& Imported = Import(OutputFile("panels.gltf"), TEXT("/Game/Imported/SM_Panels"));
	EXPECT_EQ(Imported.PolygonGroupSlotNames, TArray<FName>({ FName(TEXT("Top")), FName(TEXT("Side")) }));
	ExpectSameTriangles(TrianglesOf(UE::Headless::GetMeshGeometry(Mesh(PanelPath))), TrianglesOf(Imported), true);
}

TEST_F(GltfRoundTripTest, WithoutInstancingEveryInstanceComesBackWhereTheEngineDrawsIt)
{
	Build(R"({ output = "/Game/RoundTrip/SM_Scattered", parts = {
		{ mesh = "/Engine/BasicShapes/Cube", transforms = { { location = { x = 250, y = 100 }, rotation = { yaw = 30 }, scale = { x = 2, y = 1, z = 0.5 } },
			{ location = { z = 200 }, rotation = { pitch = 40, roll = 15 } } } },
		{ mesh = "/Engine/BasicShapes/Cone", transforms = { { location = { x = -150, y = -300, z = 20 }, rotation = { roll = -60 }, scale = 1.5 } } } } })");
	const tinygltf::Model Model = Export(TEXT("/Game/RoundTrip/SM_Scattered.SM_Scattered"), "scattered.glb", false);
	EXPECT_TRUE(Model.extensionsUsed.empty());
	const UE::Headless::FStaticMeshGeometry& Imported = Import(OutputFile("scattered.glb"), TEXT("/Game/Imported/SM_Scattered"));

	// The scene as the engine draws it: each node's part mesh through the node's transform.
	const FNaniteAssemblyData& Assembly = Mesh(TEXT("/Game/RoundTrip/SM_Scattered.SM_Scattered")).GetNaniteSettings().NaniteAssemblyData;
	std::vector<FTriangle> Expected;
	for (const FNaniteAssemblyNode& Node : Assembly.Nodes)
	{
		const FString PartPath = Assembly.Parts[Node.PartIndex].MeshObjectPath.ToString();
		const std::vector<FTriangle> Placed = TrianglesOf(UE::Headless::GetMeshGeometry(Mesh(*PartPath)), &Node.Transform);
		Expected.insert(Expected.end(), Placed.begin(), Placed.end());
	}
	// Scaled and turned, the normals are the importer's to make again; positions, winding and UVs must match.
	ExpectSameTriangles(Expected, TrianglesOf(Imported), false);
}
