// The nodes of the exported scene: a mesh drawn once, and the instances of an assembly's parts.
#pragma once

#include "Containers/Array.h"
#include "GltfDocument.h"

#include <string>
#include <vector>

struct FNaniteAssemblyNode;

namespace UE::Headless
{
	// A node at the scene's root that draws Mesh where it stands.
	void AddGltfMeshNode(FGltfDocument& Document, int32 Mesh, const std::string& Name);

	struct FGltfPart
	{
		// The glTF mesh of the part's mesh.
		int32 Mesh = INDEX_NONE;
		std::string Name;
	};

	// One node at the scene's root per part that has instances, carrying them all: as EXT_mesh_gpu_instancing
	// attributes (TRANSLATION, ROTATION, SCALE), or as one child node each. The transforms are converted to
	// glTF's frame. A node's transform space is not kept: there is no skeleton to be relative to, so a
	// bone-relative node stands where its transform alone puts it. Nodes of a part past Parts are left out.
	// Returns the number of instances written.
	int64 AddGltfInstances(FGltfDocument& Document, const TArray<FNaniteAssemblyNode>& Nodes, const std::vector<FGltfPart>& Parts, bool bInstancing);
}
