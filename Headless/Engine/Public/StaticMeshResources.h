// The render data that a static mesh's compile step produces.
#pragma once

#include "Containers/Array.h"
#include "Math/Vector.h"

namespace Nanite
{
	struct FResources
	{
		// One entry per streaming page of the built Nanite data.
		TArray<uint32> PageStreamingStates;
		int32 NumInputTriangles = 0;
		int32 NumAssemblyNodes = 0;
	};
}

struct FStaticMeshSection
{
	int32 MaterialIndex = 0;
	uint32 FirstIndex = 0;
	uint32 NumTriangles = 0;
};

struct FStaticMeshLODResources
{
	TArray<FStaticMeshSection> Sections;
	int32 NumVertices = 0;
	int32 NumTriangles = 0;

	[[nodiscard]] int32 GetNumVertices() const { return NumVertices; }
	[[nodiscard]] int32 GetNumTriangles() const { return NumTriangles; }
};

class FStaticMeshRenderData
{
public:
	TArray<FStaticMeshLODResources> LODResources;
	Nanite::FResources NaniteResources;
	FVector3f BoundsMin = FVector3f(0.0f);
	FVector3f BoundsMax = FVector3f(0.0f);

	// True when built Nanite resources with streaming pages are present.
	[[nodiscard]] bool HasValidNaniteData() const { return NaniteResources.PageStreamingStates.Num() > 0; }
};
