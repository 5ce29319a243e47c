#include "Headless/StaticMeshGeometry.h"

#include "Engine/StaticMesh.h"
#include "StaticMeshResources.h"

namespace UE::Headless
{
	bool FMeshTriangle::IsDegenerate(const TArray<FVector3f>& Positions) const
	{
		for (const int32 Index : VertexIndices)
		{
			if (!Positions.IsValidIndex(Index))
			{
				return true;
			}
		}
		const FVector3f A = Positions[VertexIndices[0]];
		const FVector3f B = Positions[VertexIndices[1]];
		const FVector3f C = Positions[VertexIndices[2]];
		return ((B - A) ^ (C - A)).SizeSquared() <= 0.0f;
	}

	int32 FStaticMeshGeometry::CountRealTriangles() const
	{
		int32 Count = 0;
		for (const FMeshTriangle& Triangle : Triangles)
		{
			Count += Triangle.IsDegenerate(Positions) ? 0 : 1;
		}
		return Count;
	}

	FArchive& operator<<(FArchive& Ar, FMeshTriangle& Triangle)
	{
		return Ar << Triangle.VertexIndices[0] << Triangle.VertexIndices[1] << Triangle.VertexIndices[2] << Triangle.PolygonGroup;
	}

	FArchive& operator<<(FArchive& Ar, FStaticMeshGeometry& Geometry)
	{
		return Ar << Geometry.NumSourceModels << Geometry.bHasMeshDescription << Geometry.Positions << Geometry.Normals << Geometry.UVs << Geometry.Triangles
				  << Geometry.PolygonGroupSlotNames << Geometry.SectionMaterialIndices;
	}

	FStaticMeshGeometry& FStaticMeshGeometryAccess::Get(UStaticMesh& Mesh)
	{
		return *Mesh.Geometry;
	}

	const FStaticMeshGeometry& FStaticMeshGeometryAccess::Get(const UStaticMesh& Mesh)
	{
		return *Mesh.Geometry;
	}

	int32 FRenderDataAccess::GetNumAssemblyNodes(const FStaticMeshRenderData& RenderData)
	{
		return RenderData.NaniteResourcesPtr ? RenderData.NaniteResourcesPtr->NumAssemblyNodes : 0;
	}

	FVector3f FRenderDataAccess::GetBoundsMin(const FStaticMeshRenderData& RenderData)
	{
		return RenderData.BoundsMin;
	}

	FVector3f FRenderDataAccess::GetBoundsMax(const FStaticMeshRenderData& RenderData)
	{
		return RenderData.BoundsMax;
	}

	FStaticMeshGeometry& GetMeshGeometry(UStaticMesh& Mesh)
	{
		return FStaticMeshGeometryAccess::Get(Mesh);
	}

	const FStaticMeshGeometry& GetMeshGeometry(const UStaticMesh& Mesh)
	{
		return FStaticMeshGeometryAccess::Get(Mesh);
	}
}
