// Harness-only: the source geometry of a static mesh (its LOD 0 mesh description, reduced to what the
// compile step and the assembly builder use).
#pragma once

#include "Containers/Array.h"
#include "Math/Vector.h"
#include "Math/Vector2D.h"
#include "Serialization/Archive.h"
#include "UObject/NameTypes.h"

class FStaticMeshRenderData;
class UStaticMesh;

namespace UE::Headless
{
	struct FMeshTriangle
	{
		int32 VertexIndices[3] = { 0, 0, 0 };
		int32 PolygonGroup = 0;

		[[nodiscard]] bool IsDegenerate(const TArray<FVector3f>& Positions) const;
	};

	struct FStaticMeshGeometry
	{
		// Source models (LODs) of the mesh; a mesh without any cannot be built and has no render data.
		int32 NumSourceModels = 0;
		bool bHasMeshDescription = false;
		TArray<FVector3f> Positions;
		// Per vertex, each either empty or one entry per position: the vertex normal (unit length) and the
		// texture coordinates of UV channel 0. Vertices are split where a normal or a UV changes (hard edges,
		// seams), as a render vertex buffer holds them.
		TArray<FVector3f> Normals;
		TArray<FVector2f> UVs;
		TArray<FMeshTriangle> Triangles;
		// One entry per polygon group: the imported material slot name that the group was made for.
		TArray<FName> PolygonGroupSlotNames;
		// LOD 0 sections, one per polygon group: the material slot each section draws with.
		TArray<int32> SectionMaterialIndices;

		[[nodiscard]] int32 CountRealTriangles() const;
	};

	ENGINE_API FArchive& operator<<(FArchive& Ar, FMeshTriangle& Triangle);
	ENGINE_API FArchive& operator<<(FArchive& Ar, FStaticMeshGeometry& Geometry);

	// The engine's static mesh keeps its geometry to itself; the harness reaches it here.
	struct ENGINE_API FStaticMeshGeometryAccess
	{
		static FStaticMeshGeometry& Get(UStaticMesh& Mesh);
		static const FStaticMeshGeometry& Get(const UStaticMesh& Mesh);
	};

	// What the harness reads of built render data beyond the engine's interface.
	struct ENGINE_API FRenderDataAccess
	{
		// Assembly nodes the build took in; 0 without Nanite resources.
		static int32 GetNumAssemblyNodes(const FStaticMeshRenderData& RenderData);
		// The corners of the box around the mesh's own vertices; both zero when it has none.
		static FVector3f GetBoundsMin(const FStaticMeshRenderData& RenderData);
		static FVector3f GetBoundsMax(const FStaticMeshRenderData& RenderData);
	};

	ENGINE_API FStaticMeshGeometry& GetMeshGeometry(UStaticMesh& Mesh);
	ENGINE_API const FStaticMeshGeometry& GetMeshGeometry(const UStaticMesh& Mesh);

	// The engine's basic shapes at their sizes (100 units across), with one polygon group for SlotName.
	enum class EBasicShape
	{
		Cube,
		Sphere,
		Cylinder,
		Cone,
		Plane,
	};
	ENGINE_API FStaticMeshGeometry MakeBasicShapeGeometry(EBasicShape Shape, FName SlotName);
}
