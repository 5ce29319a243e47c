// Harness-only: a model file imported as a static mesh package and saved as the editor saves a build's output.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "UObject/NameTypes.h"

namespace UE::Headless
{
	struct FMeshImportResult
	{
		// Package.Asset, as the verbs return paths.
		FString ObjectPath;
		int32 NumVertices = 0;
		int32 NumTriangles = 0;
		TArray<FName> SlotNames;
	};

	// Reads Filename (ReadMeshFile) into a static mesh at Destination, a path as the verbs take one (SM_Box,
	// Meshes/SM_Box, /Game/Meshes/SM_Box, /Game/Meshes/SM_Box.SM_Box): one source model, one slot per polygon
	// group with the engine's BasicShapeMaterial, render data built, saved through the editor's save path (project
	// lock held by the caller; backups; atomic write). An existing package there is refused unless bReplace, which
	// replaces the static mesh in it (a package holding another class of asset is refused all the same). False
	// with the reason when anything fails; nothing is created then, and a replaced mesh is as it was.
	bool ImportMeshFile(const FString& Filename, const FString& Destination, bool bReplace, FMeshImportResult& OutResult, FString& OutError);

	// "24 vertices, 12 triangles, 2 material slots: Red, Blue"
	FString DescribeImportedMesh(const FMeshImportResult& Result);
}
