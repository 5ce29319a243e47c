// The argument of nanite_assembly_build as a record, and its strict reader.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

enum class ENaniteAssemblyMergeMode : uint8
{
	IdenticalMaterials = 0,
	SlotNames = 1,
	MaterialIndices = 2,
};

struct FNaniteAssemblyPartRequest
{
	// Object path of the static mesh that this part places; never empty after a successful read.
	FString MeshPath;
	// One instance per transform, in list order; never empty after a successful read.
	TArray<FTransform> Transforms;
	ENaniteAssemblyMergeMode MaterialMerge = ENaniteAssemblyMergeMode::IdenticalMaterials;
	// Material paths by the part's material slot: entry 1 of the Lua list is slot 0.
	TArray<FString> MaterialOverrides;
};

struct FNaniteAssemblyBuildRequest
{
	TArray<FNaniteAssemblyPartRequest> Parts;
	// Package path of the assembly mesh to create, or to edit with overwrite.
	FString Output;
	bool bOverwrite = false;
	bool bSave = false;
	bool bWaitForCompile = true;
};

// Reads the whole argument, or stops at its first fault with one message that names the place. Nothing
// outside the record changes; on false the record is partly filled and must be thrown away.
bool ReadBuildRequest(const sol::table& Argument, FNaniteAssemblyBuildRequest& InOutRequest, FString& OutError);

// The merge word in any letter case, without trimming.
bool ParseMaterialMerge(const FString& Word, ENaniteAssemblyMergeMode& OutMode, FString& OutError);

// "identical_materials", "slot_names", "material_indices", or "unknown" for any other value.
const TCHAR* MaterialMergeName(ENaniteAssemblyMergeMode Mode);
