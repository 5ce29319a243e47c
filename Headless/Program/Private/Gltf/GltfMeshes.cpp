#include "GltfMeshes.h"

#include "Headless/StaticMeshGeometry.h"
#include "Headless/YUpFrame.h"

#include <cstring>
#include <map>
#include <vector>

namespace UE::Headless
{
	namespace
	{
		// As the compile step lays out sections: a polygon group without a section entry draws with the slot of
		// its own index.
		int32 GetMaterialOfGroup(const FStaticMeshGeometry& Geometry, const TArray<int32>& MaterialOfSlot, int32 Group)
		{
			const int32 Slot = Geometry.SectionMaterialIndices.IsValidIndex(Group) ? Geometry.SectionMaterialIndices[Group] : Group;
			return MaterialOfSlot.IsValidIndex(Slot) ? MaterialOfSlot[Slot] : INDEX_NONE;
		}

		int32 AddPositions(FGltfDocument& Document, const TArray<FVector3f>& Positions)
		{
			const int32 Accessor = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3, Positions.Num(), TINYGLTF_TARGET_ARRAY_BUFFER);
			float* Out = (float*)Document.GetAccessorData(Accessor);
			FVector3f Min = ToYUpPoint(Positions[0]);
			FVector3f Max = Min;
			for (const FVector3f& Position : Positions)
			{
				const FVector3f Point = ToYUpPoint(Position);
				*Out++ = Point.X;
				*Out++ = Point.Y;
				*Out++ = Point.Z;
				Min = FVector3f(FMath::Min(Min.X, Point.X), FMath::Min(Min.Y, Point.Y), FMath::Min(Min.Z, Point.Z));
				Max = FVector3f(FMath::Max(Max.X, Point.X), FMath::Max(Max.Y, Point.Y), FMath::Max(Max.Z, Point.Z));
			}
			// Readers size their bounds from these, and the format requires them for positions.
			tinygltf::Accessor& Entry = Document.GetModel().accessors[Accessor];
			Entry.minValues = { Min.X, Min.Y, Min.Z };
			Entry.maxValues = { Max.X, Max.Y, Max.Z };
			return Accessor;
		}

		// glTF wants unit normals; a mesh with a normal of no direction gets none, and viewers make flat ones.
		int32 AddNormals(FGltfDocument& Document, const TArray<FVector3f>& Normals)
		{
			for (const FVector3f& Normal : Normals)
			{
				if (Normal.GetSafeNormal().IsNearlyZero())
				{
					return INDEX_NONE;
				}
			}
			const int32 Accessor = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3, Normals.Num(), TINYGLTF_TARGET_ARRAY_BUFFER);
			float* Out = (float*)Document.GetAccessorData(Accessor);
			for (const FVector3f& Normal : Normals)
			{
				const FVector3f Direction = SwapYUpAxes(Normal.GetSafeNormal());
				*Out++ = Direction.X;
				*Out++ = Direction.Y;
				*Out++ = Direction.Z;
			}
			return Accessor;
		}

		// Both put the texture's origin at its top-left corner, so coordinates go across unchanged.
		int32 AddTextureCoordinates(FGltfDocument& Document, const TArray<FVector2f>& UVs)
		{
			const int32 Accessor = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC2, UVs.Num(), TINYGLTF_TARGET_ARRAY_BUFFER);
			float* Out = (float*)Document.GetAccessorData(Accessor);
			for (const FVector2f& UV : UVs)
			{
				*Out++ = UV.X;
				*Out++ = UV.Y;
			}
			return Accessor;
		}
	}

	int32 AddGltfMesh(FGltfDocument& Document, const FStaticMeshGeometry& Geometry, const TArray<int32>& MaterialOfSlot, const std::string& Name)
	{
		std::map<int32, std::vector<uint32>> IndicesByMaterial;
		for (const FMeshTriangle& Triangle : Geometry.Triangles)
		{
			if (Triangle.IsDegenerate(Geometry.Positions))
			{
				continue;
			}
			std::vector<uint32>& Indices = IndicesByMaterial[GetMaterialOfGroup(Geometry, MaterialOfSlot, Triangle.PolygonGroup)];
			Indices.insert(Indices.end(), { (uint32)Triangle.VertexIndices[0], (uint32)Triangle.VertexIndices[1], (uint32)Triangle.VertexIndices[2] });
		}
		if (IndicesByMaterial.empty())
		{
			return INDEX_NONE;
		}

		std::map<std::string, int> Attributes;
		Attributes["POSITION"] = AddPositions(Document, Geometry.Positions);
		if (Geometry.Normals.Num() == Geometry.Positions.Num())
		{
			if (const int32 Normals = AddNormals(Document, Geometry.Normals); Normals != INDEX_NONE)
			{
				Attributes["NORMAL"] = Normals;
			}
		}
		if (Geometry.UVs.Num() == Geometry.Positions.Num())
		{
			Attributes["TEXCOORD_0"] = AddTextureCoordinates(Document, Geometry.UVs);
		}

		tinygltf::Mesh Mesh;
		Mesh.name = Name;
		for (const auto& [Material, Indices] : IndicesByMaterial)
		{
			const int32 Accessor = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT, TINYGLTF_TYPE_SCALAR, (int64)Indices.size(), TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
			std::memcpy(Document.GetAccessorData(Accessor), Indices.data(), Indices.size() * sizeof(uint32));
			tinygltf::Primitive& Primitive = Mesh.primitives.emplace_back();
			Primitive.attributes = Attributes;
			Primitive.indices = Accessor;
			Primitive.material = Material;
			Primitive.mode = TINYGLTF_MODE_TRIANGLES;
		}
		tinygltf::Model& Model = Document.GetModel();
		Model.meshes.push_back(std::move(Mesh));
		return (int32)Model.meshes.size() - 1;
	}
}
