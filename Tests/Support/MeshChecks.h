// Checks of a mesh's source geometry that hold for every mesh the editor makes, whatever made it.
#pragma once

#include "Headless/StaticMeshGeometry.h"

#include <string>

namespace MeshChecks
{
	struct FBox
	{
		FVector3f Min = FVector3f(0.0f);
		FVector3f Max = FVector3f(0.0f);
	};

	FBox GetBounds(const UE::Headless::FStaticMeshGeometry& Geometry);

	// The first fault, or empty: a normal or UV list that is neither empty nor one per position, a normal that is
	// not of unit length, a triangle with a vertex index out of range or without area, a polygon group out of
	// range.
	std::string FindFault(const UE::Headless::FStaticMeshGeometry& Geometry);

	// The corners whose vertex normal faces away from their triangle's front (clockwise: (C - A) ^ (B - A)); none
	// when the winding is the engine's and the normals are true to it.
	int32 CountCornersFacingAway(const UE::Headless::FStaticMeshGeometry& Geometry);

	// The volume that the triangles enclose, positive when their fronts face out of it.
	double GetEnclosedVolume(const UE::Headless::FStaticMeshGeometry& Geometry);
}
