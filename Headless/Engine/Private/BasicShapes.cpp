// The engine's basic shapes: 100 units across, centred on the origin, with flat faces split at their edges,
// round sides smooth, one UV channel in 0..1 and the engine's clockwise front faces: for every triangle
// (A, B, C), (C - A) ^ (B - A) points out of the shape.
#include "Headless/StaticMeshGeometry.h"

#include <cmath>

namespace UE::Headless
{
	namespace
	{
		constexpr int32 RoundSegments = 32;
		constexpr int32 SphereRings = 16;
		constexpr float HalfSize = 50.0f;

		int32 AddVertex(FStaticMeshGeometry& Geometry, const FVector3f& Position, const FVector3f& Normal, const FVector2f& UV)
		{
			Geometry.Normals.Add(Normal);
			Geometry.UVs.Add(UV);
			return Geometry.Positions.Add(Position);
		}

		void AddTriangle(FStaticMeshGeometry& Geometry, int32 A, int32 B, int32 C)
		{
			FMeshTriangle Triangle;
			Triangle.VertexIndices[0] = A;
			Triangle.VertexIndices[1] = B;
			Triangle.VertexIndices[2] = C;
			Geometry.Triangles.Add(Triangle);
		}

		// The direction at an angle around Z, in the XY plane.
		FVector3f Around(int32 Segment, double Offset = 0.0)
		{
			const double Phi = 2.0 * UE_DOUBLE_PI * (Segment + Offset) / RoundSegments;
			return FVector3f((float)std::cos(Phi), (float)std::sin(Phi), 0.0f);
		}

		// A square face around Center spanned by the half edges U and V, facing U ^ V; its texture runs along U
		// and down V.
		void AddFace(FStaticMeshGeometry& Geometry, const FVector3f& Center, const FVector3f& U, const FVector3f& V)
		{
			const FVector3f Normal = (U ^ V).GetSafeNormal();
			const int32 A = AddVertex(Geometry, Center - U - V, Normal, FVector2f(0.0f, 1.0f));
			const int32 B = AddVertex(Geometry, Center - U + V, Normal, FVector2f(0.0f, 0.0f));
			const int32 C = AddVertex(Geometry, Center + U + V, Normal, FVector2f(1.0f, 0.0f));
			const int32 D = AddVertex(Geometry, Center + U - V, Normal, FVector2f(1.0f, 1.0f));
			AddTriangle(Geometry, A, B, C);
			AddTriangle(Geometry, A, C, D);
		}

		void MakeCube(FStaticMeshGeometry& Geometry)
		{
			const float H = HalfSize;
			AddFace(Geometry, { H, 0, 0 }, { 0, H, 0 }, { 0, 0, H });
			AddFace(Geometry, { -H, 0, 0 }, { 0, -H, 0 }, { 0, 0, H });
			AddFace(Geometry, { 0, H, 0 }, { -H, 0, 0 }, { 0, 0, H });
			AddFace(Geometry, { 0, -H, 0 }, { H, 0, 0 }, { 0, 0, H });
			AddFace(Geometry, { 0, 0, H }, { H, 0, 0 }, { 0, H, 0 });
			AddFace(Geometry, { 0, 0, -H }, { H, 0, 0 }, { 0, -H, 0 });
		}

		void MakePlane(FStaticMeshGeometry& Geometry)
		{
			AddFace(Geometry, { 0, 0, 0 }, { HalfSize, 0, 0 }, { 0, HalfSize, 0 });
		}

		// Rings of latitude from the +Z pole down, each closed by a copy of its first vertex so that the texture
		// wraps once around. The poles' quads are single triangles.
		void MakeSphere(FStaticMeshGeometry& Geometry)
		{
			const int32 Stride = RoundSegments + 1;
			for (int32 Ring = 0; Ring <= SphereRings; ++Ring)
			{
				const double Theta = UE_DOUBLE_PI * Ring / SphereRings;
				for (int32 Segment = 0; Segment <= RoundSegments; ++Segment)
				{
					const FVector3f Normal = Around(Segment) * (float)std::sin(Theta) + FVector3f(0.0f, 0.0f, (float)std::cos(Theta));
					AddVertex(Geometry, Normal * HalfSize, Normal, FVector2f((float)Segment / RoundSegments, (float)Ring / SphereRings));
				}
			}
			for (int32 Ring = 0; Ring < SphereRings; ++Ring)
			{
				for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
				{
					const int32 Upper = Ring * Stride + Segment;
					const int32 Lower = Upper + Stride;
					if (Ring != 0)
					{
						AddTriangle(Geometry, Upper, Upper + 1, Lower);
					}
					if (Ring != SphereRings - 1)
					{
						AddTriangle(Geometry, Upper + 1, Lower + 1, Lower);
					}
				}
			}
		}

		// A flat disc of radius HalfSize at Z facing +Z or -Z, its texture mapped straight down onto it.
		void AddCap(FStaticMeshGeometry& Geometry, float Z, bool bFacesUp)
		{
			const FVector3f Normal(0.0f, 0.0f, bFacesUp ? 1.0f : -1.0f);
			const auto CapUV = [](const FVector3f& Position) { return FVector2f(0.5f + Position.X / (2.0f * HalfSize), 0.5f - Position.Y / (2.0f * HalfSize)); };
			const FVector3f CenterPosition(0.0f, 0.0f, Z);
			const int32 Center = AddVertex(Geometry, CenterPosition, Normal, CapUV(CenterPosition));
			const int32 First = Geometry.Positions.Num();
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const FVector3f Position = Around(Segment) * HalfSize + CenterPosition;
				AddVertex(Geometry, Position, Normal, CapUV(Position));
			}
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const int32 Current = First + Segment;
				const int32 Next = First + (Segment + 1) % RoundSegments;
				if (bFacesUp)
				{
					AddTriangle(Geometry, Center, Next, Current);
				}
				else
				{
					AddTriangle(Geometry, Center, Current, Next);
				}
			}
		}

		void MakeCylinder(FStaticMeshGeometry& Geometry)
		{
			const int32 First = Geometry.Positions.Num();
			for (int32 Segment = 0; Segment <= RoundSegments; ++Segment)
			{
				const FVector3f Normal = Around(Segment);
				const float U = (float)Segment / RoundSegments;
				AddVertex(Geometry, Normal * HalfSize - FVector3f(0.0f, 0.0f, HalfSize), Normal, FVector2f(U, 1.0f));
				AddVertex(Geometry, Normal * HalfSize + FVector3f(0.0f, 0.0f, HalfSize), Normal, FVector2f(U, 0.0f));
			}
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const int32 Bottom = First + Segment * 2;
				AddTriangle(Geometry, Bottom, Bottom + 1, Bottom + 2);
				AddTriangle(Geometry, Bottom + 2, Bottom + 1, Bottom + 3);
			}
			AddCap(Geometry, HalfSize, true);
			AddCap(Geometry, -HalfSize, false);
		}

		// The side leans in from the base to the apex; each side triangle has its own apex vertex, whose normal
		// is the side's halfway between its two base corners, so that the apex shades as smoothly as the rest.
		void MakeCone(FStaticMeshGeometry& Geometry)
		{
			const float Height = 2.0f * HalfSize;
			const auto SideNormal = [Height](const FVector3f& Direction) { return (Direction * Height + FVector3f(0.0f, 0.0f, HalfSize)).GetSafeNormal(); };
			const int32 FirstBase = Geometry.Positions.Num();
			for (int32 Segment = 0; Segment <= RoundSegments; ++Segment)
			{
				const FVector3f Direction = Around(Segment);
				AddVertex(Geometry, Direction * HalfSize - FVector3f(0.0f, 0.0f, HalfSize), SideNormal(Direction), FVector2f((float)Segment / RoundSegments, 1.0f));
			}
			for (int32 Segment = 0; Segment < RoundSegments; ++Segment)
			{
				const int32 Apex = AddVertex(Geometry, FVector3f(0.0f, 0.0f, HalfSize), SideNormal(Around(Segment, 0.5)),
					FVector2f((Segment + 0.5f) / RoundSegments, 0.0f));
				AddTriangle(Geometry, FirstBase + Segment, Apex, FirstBase + Segment + 1);
			}
			AddCap(Geometry, -HalfSize, false);
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
			MakeCylinder(Geometry);
			break;
		case EBasicShape::Cone:
			MakeCone(Geometry);
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
