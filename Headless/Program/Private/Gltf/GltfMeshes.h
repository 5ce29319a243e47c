// A static mesh's source geometry as one glTF mesh.
#pragma once

#include "Containers/Array.h"
#include "GltfDocument.h"

#include <string>

namespace UE::Headless
{
	struct FStaticMeshGeometry;

	// One primitive per glTF material that the geometry's sections draw with: MaterialOfSlot gives, for each
	// of the mesh's own material slots, the glTF material (INDEX_NONE, or a slot past its end: none, which
	// viewers draw with their default). The vertices are shared by the primitives and converted to glTF's
	// frame; triangles keep their corner order, which the change of frame turns into glTF's counter-clockwise
	// front faces. Triangles without area are left out: they draw nothing. INDEX_NONE when no triangle is
	// left, and then nothing was added.
	int32 AddGltfMesh(FGltfDocument& Document, const FStaticMeshGeometry& Geometry, const TArray<int32>& MaterialOfSlot, const std::string& Name);
}
