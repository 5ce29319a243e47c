#include "Headless/StaticMeshGeometry.h"

#include "Engine/StaticMesh.h"
#include "StaticMeshResources.h"

#include <cmath>

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

	FStaticMeshGeometry& GetMeshGeometry(UStaticMesh& Mesh)
	{
		return FStaticMeshGeometryAccess::Get(Mesh);
	}

	const FStaticMeshGeometry& GetMeshGeometry(const UStaticMesh& Mesh)
	{
		return FStaticMeshGeometryAccess::Get(Mesh);
	}

	namespace
	{
		constexpr int32 RoundSegments = 24;
		constexpr int32 SphereRings = 12;
		constexpr float HalfSize = 50.0f;

		int32 AddVertex(FStaticMeshGeometry& Geometry, float X, float Y, float Z)
		{
			return Geometry.Positions.Add(FVector3f(X, Y, Z));
		}

		void AddTriangle(FStaticMeshGeometry& Geometry, int32 A, int32 B, int32 C)
		{
			FMeshTriangle Triangle;
			Triangle.VertexIndices[0] = A;
			Triangle.VertexIndices[1] = B;
			Triangle.VertexIndices[2] = C;
			Geometry.Triangles.Add(Triangle);
		}

		void AddQuad(FStaticMeshGeometry& Geometry, const FVector3f& A, const FVector3f& B, const FVector3f& C, const FVector3f& D)
		{
			const int32 First = Geometry.Positions.Num();
			for (const FVector3f& Corner : { A, B, C, D })
			{
				Geometry.Positions.Add(Corner);
			}
			AddTriangle(Geometry, First, First + 1, First + 2);
			AddTriangle(Geometry, First, First + 2, First + 3);
		}

		void MakeCube(FStaticMeshGeometry& Geometry)
		{
			const float H = HalfSize;
			AddQuad(Geometry, { -H, -H, H }, { H, -H, H }, { H, H, H }, { -H, H, H });
			AddQuad(Geometry, { -H, H, -H }, { H, H, -H }, { H, -H, -H }, { -H, -H, -H });
			AddQuad(Geometry, { H, -H, -H }, { H, H, -H }, { H, H, H }, { H, -H, H });
			AddQuad(Geometry, { -H, H, -H }, { -H, -H, -H }, { -H, -H, H }, { -H, H, H });
			AddQuad(Geometry, { -H, -H, -H }, { H, -H, -H }, { H, -H, H }, { -H, -H, H });
			AddQuad(Geometry, { H, H, -H }, { -H, H, -H }, { -H, H, H }, { H, H, H });
		}

		void MakeSphere(FStaticMeshGeometry& Geometry)
		{
			for (int32 Ring = 0; Ring <= SphereRings; ++Ring)
			{
				const double Theta = UE_DOUBLE_PI * Ring / SphereRings;
				for (int32 Segment = 0; Segment <= RoundSegments; ++Segment)
				{
					const double Phi = 2.0 * UE_DOUBLE_PI * Segment / RoundSegments;
					AddVertex(Geometry, (float)(HalfSize * std::sin(Theta) * std::cos(Phi)), (float)(HalfSize * std::sin(Theta) * std::sin(Phi)),
						(float)(HalfSize * std::cos(Theta)));
				}
			}
			const int32 Stride = RoundSegments + 1;
			for (int32 Ring = 0; Ring < SphereRings; ++Ring)
			{
				for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
				{
					const int32 A = Ring * Stride + Segment;
					const int32 B = A + Stride;
					if (Ring != 0)
					{
						AddTriangle(Geometry, A, B, A + 1);
					}
					if (Ring != SphereRings - 1)
					{
						AddTriangle(Geometry, A + 1, B, B + 1);
					}
				}
			}
		}

		void MakeRound(FStaticMeshGeometry& Geometry, float TopRadius)
		{
			const int32 BottomCenter = AddVertex(Geometry, 0, 0, -HalfSize);
			const int32 TopCenter = AddVertex(Geometry, 0, 0, HalfSize);
			const int32 First = Geometry.Positions.Num();
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const double Phi = 2.0 * UE_DOUBLE_PI * Segment / RoundSegments;
				AddVertex(Geometry, (float)(HalfSize * std::cos(Phi)), (float)(HalfSize * std::sin(Phi)), -HalfSize);
				AddVertex(Geometry, (float)(TopRadius * std::cos(Phi)), (float)(TopRadius * std::sin(Phi)), HalfSize);
			}
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const int32 Bottom = First + Segment * 2;
				const int32 Top = Bottom + 1;
				const int32 NextBottom = First + ((Segment + 1) % RoundSegments) * 2;
				const int32 NextTop = NextBottom + 1;
				AddTriangle(Geometry, BottomCenter, NextBottom, Bottom);
				AddTriangle(Geometry, Bottom, NextBottom, NextTop);
				if (TopRadius > 0.0f)
				{
					AddTriangle(Geometry, Bottom, NextTop, Top);
					AddTriangle(Geometry, TopCenter, Top, NextTop);
				}
				else
				{
					// The cone's apex: the side triangle reaches the top centre.
					Geometry.Triangles.Last().VertexIndices[2] = TopCenter;
				}
			}
		}

		void MakePlane(FStaticMeshGeometry& Geometry)
		{
			AddQuad(Geometry, { -HalfSize, -HalfSize, 0 }, { HalfSize, -HalfSize, 0 }, { HalfSize, HalfSize, 0 }, { -HalfSize, HalfSize, 0 });
		}
	}

	FStaticMeshGeometry MakeBasicShapeGeometry(EBasicShape Shape, FName SlotName)
	{
		FStaticMeshGeometry Geometry;
		Geometry.NumSourceModels = 1;
		Geometry.bHasMeshDescription = true;
		switch (Shape)
		{
		case EBasicShape::Cube:
			MakeCube(Geometry);
			break;
		case EBasicShape::Sphere:
			MakeSphere(Geometry);
			break;
		case EBasicShape::Cylinder:
			MakeRound(Geometry, HalfSize);
			break;
		case EBasicShape::Cone:
			MakeRound(Geometry, 0.0f);
			break;
		case EBasicShape::Plane:
			MakePlane(Geometry);
			break;
		}
		Geometry.PolygonGroupSlotNames.Add(SlotName);
		Geometry.SectionMaterialIndices.Add(0);
		return Geometry;
	}
}
