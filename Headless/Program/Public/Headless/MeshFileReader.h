// Harness-only: a model file (glTF, OBJ or FBX) read through assimp into the source geometry of one static mesh.
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/StaticMeshGeometry.h"

namespace UE::Headless
{
	// Reads the whole scene of Filename as one mesh: every node's meshes with the node's transforms baked in,
	// polygons triangulated, points and lines left out. The result is in the engine's frame (centimetres, X
	// forward, Y right, Z up, clockwise front faces) with a normal and a UV (channel 0, zero where the file has
	// none) per vertex, a file without normals getting each triangle's own. Each source material that a triangle
	// uses becomes one polygon group, in the file's order of materials, named after the material. False with the
	// reason, naming the file as given, when the file cannot be read or holds no triangles.
	bool ReadMeshFile(const FString& Filename, FStaticMeshGeometry& OutGeometry, FString& OutError);
}
