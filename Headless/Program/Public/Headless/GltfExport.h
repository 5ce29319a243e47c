// Harness-only: a static mesh written as glTF 2.0, in glTF's metres and Y-up, right-handed frame, so that a
// viewer shows the scene as the editor does.
//
// An assembly becomes one glTF mesh per part (the part mesh's own geometry, one primitive per material that
// its sections draw with after the assembly's material remap) and one node per part that carries every
// instance of it through EXT_mesh_gpu_instancing; without instancing, that node has one plain child node per
// instance instead. A plain static mesh becomes one mesh on one node.
#pragma once

#include "Containers/UnrealString.h"

class UStaticMesh;

namespace UE::Headless
{
	struct FGltfExportOptions
	{
		// Instances as EXT_mesh_gpu_instancing attributes; false writes one node per instance, for viewers
		// that do not know the extension.
		bool bInstancing = true;
	};

	struct FGltfExportSummary
	{
		int32 NumMeshes = 0;
		int32 NumInstances = 0;
		int32 NumMaterials = 0;
		int64 NumBytes = 0;
	};

	// ".glb" (binary) or ".gltf" (JSON with its buffer embedded), in any letter case.
	[[nodiscard]] bool IsGltfFilename(const FString& Filename);

	// Writes the mesh to Filename, whose extension chooses the container, through a temporary file renamed
	// into place, so that a failed export leaves no file, or the earlier one whole. False with the reason
	// when the mesh is not built, has nothing to draw, or one of its part meshes cannot be loaded, or the
	// file cannot be written.
	bool ExportStaticMeshAsGltf(const UStaticMesh& Mesh, const FString& Filename, const FGltfExportOptions& Options, FGltfExportSummary& OutSummary,
		FString& OutError);
}
