// The render data that a static mesh's compile step produces.
#pragma once

#include "Containers/Array.h"
#include "Math/Vector.h"
#include "Templates/UniquePtr.h"

class UStaticMesh;

namespace UE::Headless
{
	struct FRenderDataAccess;
}

namespace Nanite
{
	struct FResources
	{
		// One entry per streaming page of the built Nanite data.
		TArray<uint32> PageStreamingStates;
		uint32 NumInputTriangles = 0;

	private:
		friend class ::UStaticMesh;
		friend struct ::UE::Headless::FRenderDataAccess;

		// The assembly nodes the build took in (none while the renderer ignores assemblies).
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

	[[nodiscard]] int32 GetNumVertices() const { return NumVertices; }
	[[nodiscard]] int32 GetNumTriangles() const { return NumTriangles; }

private:
	friend class UStaticMesh;

	int32 NumVertices = 0;
	int32 NumTriangles = 0;
};

class FStaticMeshRenderData
{
public:
	TArray<FStaticMeshLODResources> LODResources;
	TUniquePtr<Nanite::FResources> NaniteResourcesPtr;

	// True when built Nanite resources with streaming pages are present.
	[[nodiscard]] bool HasValidNaniteData() const { return NaniteResourcesPtr && NaniteResourcesPtr->PageStreamingStates.Num() > 0; }

private:
	friend class UStaticMesh;
	friend struct UE::Headless::FRenderDataAccess;

	FVector3f BoundsMin = FVector3f(0.0f);
	FVector3f BoundsMax = FVector3f(0.0f);
};
