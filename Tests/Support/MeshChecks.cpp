#include "MeshChecks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace MeshChecks
{
	namespace
	{
		struct FCorners
		{
			FVector3f A;
			FVector3f B;
			FVector3f C;
		};

		FCorners GetCorners(const UE::Headless::FStaticMeshGeometry& Geometry, const UE::Headless::FMeshTriangle& Triangle)
		{
			return { Geometry.Positions[Triangle.VertexIndices[0]], Geometry.Positions[Triangle.VertexIndices[1]], Geometry.Positions[Triangle.VertexIndices[2]] };
		}

		std::string Describe(const char* What, int Index)
		{
			char Text[160];
			std::snprintf(Text, sizeof(Text), "%s %d", What, Index);
			return Text;
		}
	}

	FBox GetBounds(const UE::Headless::FStaticMeshGeometry& Geometry)
	{
		FBox Box;
		for (int32 Index = 0; Index < Geometry.Positions.Num(); ++Index)
		{
			const FVector3f& Position = Geometry.Positions[Index];
			Box.Min = Index == 0 ? Position : FVector3f(std::min(Box.Min.X, Position.X), std::min(Box.Min.Y, Position.Y), std::min(Box.Min.Z, Position.Z));
			Box.Max = Index == 0 ? Position : FVector3f(std::max(Box.Max.X, Position.X), std::max(Box.Max.Y, Position.Y), std::max(Box.Max.Z, Position.Z));
		}
		return Box;
	}

	std::string FindFault(const UE::Headless::FStaticMeshGeometry& Geometry)
	{
		const int32 NumPositions = Geometry.Positions.Num();
		if (Geometry.Normals.Num() != 0 && Geometry.Normals.Num() != NumPositions)
		{
			return "the normals are not one per position";
		}
		if (Geometry.UVs.Num() != 0 && Geometry.UVs.Num() != NumPositions)
		{
			return "the UVs are not one per position";
		}
		for (int32 Index = 0; Index < Geometry.Normals.Num(); ++Index)
		{
			if (std::abs(Geometry.Normals[Index].Size() - 1.0f) > 1e-4f)
			{
				return Describe("not a unit normal at vertex", Index);
			}
		}
		for (int32 Index = 0; Index < Geometry.Triangles.Num(); ++Index)
		{
			const UE::Headless::FMeshTriangle& Triangle = Geometry.Triangles[Index];
			if (Triangle.IsDegenerate(Geometry.Positions))
			{
				return Describe("degenerate or out of range: triangle", Index);
			}
			if (!Geometry.PolygonGroupSlotNames.IsValidIndex(Triangle.PolygonGroup))
			{
				return Describe("polygon group out of range: triangle", Index);
			}
		}
		return std::string();
	}

	int32 CountCornersFacingAway(const UE::Headless::FStaticMeshGeometry& Geometry)
	{
		int32 Count = 0;
		for (const UE::Headless::FMeshTriangle& Triangle : Geometry.Triangles)
		{
			const auto [A, B, C] = GetCorners(Geometry, Triangle);
			const FVector3f Front = (C - A) ^ (B - A);
			for (const int32 Corner : Triangle.VertexIndices)
			{
				Count += (Front | Geometry.Normals[Corner]) <= 0.0f ? 1 : 0;
			}
		}
		return Count;
	}

	double GetEnclosedVolume(const UE::Headless::FStaticMeshGeometry& Geometry)
	{
		// Each triangle with the origin spans a tetrahedron; the signed volumes add up to the enclosed one.
		double Volume = 0.0;
		for (const UE::Headless::FMeshTriangle& Triangle : Geometry.Triangles)
		{
			const auto [A, B, C] = GetCorners(Geometry, Triangle);
			const double Cross[3] = { (double)C.Y * B.Z - (double)C.Z * B.Y, (double)C.Z * B.X - (double)C.X * B.Z, (double)C.X * B.Y - (double)C.Y * B.X };
			Volume += (A.X * Cross[0] + A.Y * Cross[1] + A.Z * Cross[2]) / 6.0;
		}
		return Volume;
	}
}
