// Harness-only: what the assembly viewer shows of a static mesh, already in the Y-up metres of three.js
// (Headless/YUpFrame.h): each part's geometry once, and where each of its instances stands.
#pragma once

#include "Containers/UnrealString.h"
#include "Math/Vector.h"

#include <cstdint>
#include <vector>

class UStaticMesh;

namespace UE::Headless
{
	// An instance is ten numbers: translation x, y, z, rotation quaternion x, y, z, w, scale x, y, z.
	inline constexpr int32 FloatsPerViewInstance = 10;

	struct FViewPart
	{
		// The part's mesh as the assembly names it; the viewed mesh itself when that is no assembly.
		FString MeshPath;
		// False when the mesh cannot be loaded: the part is listed with its instances, and nothing is drawn.
		bool bLoaded = false;
		// Three numbers per vertex.
		std::vector<float> Positions;
		// Three numbers per vertex, or empty when the mesh has no normals: the page derives them then.
		std::vector<float> Normals;
		// Three vertices per triangle, in the mesh's order; triangles without area are left out.
		std::vector<uint32_t> Indices;
		std::vector<float> Instances;

		[[nodiscard]] int32 NumInstances() const { return (int32)(Instances.size() / FloatsPerViewInstance); }
	};

	struct FAssemblyView
	{
		FString MeshPath;
		bool bIsAssembly = false;
		// Every node of the assembly, also those whose part draws nothing.
		int32 NumNodes = 0;
		std::vector<FViewPart> Parts;
		// The box round everything drawn; Min above Max when nothing is.
		FVector3f BoundsMin = FVector3f(1.0f, 1.0f, 1.0f);
		FVector3f BoundsMax = FVector3f(-1.0f, -1.0f, -1.0f);

		[[nodiscard]] bool HasBounds() const { return BoundsMin.X <= BoundsMax.X; }
	};

	// Loads the meshes of the assembly's parts. A mesh that is no assembly (by the test the readback uses) is one
	// part with one instance where the mesh stands.
	[[nodiscard]] FAssemblyView MakeAssemblyView(const UStaticMesh& Mesh);
}
