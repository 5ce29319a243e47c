// Validation of a read request against the project, before anything is touched: the output path, every
// part mesh and override material, and whether the output already exists.
#pragma once

#include "CoreMinimal.h"
#include "NaniteAssemblyBuilder.h"

class UStaticMesh;
struct FNaniteAssemblyBuildRequest;

struct FNaniteAssemblyResolvedPart
{
	UStaticMesh* Mesh = nullptr;
	TArray<FTransform> Transforms;
	FNaniteAssemblyMaterialMergeOptions MergeOptions;
};

struct FNaniteAssemblyBuildPlan
{
	TArray<FNaniteAssemblyResolvedPart> Parts;
	// For example /Game/Assemblies/SM_Tree.
	FString PackageName;
	// The last segment of the package name, for example SM_Tree.
	FString AssetName;
	// PackageName.AssetName.
	FString ObjectPath;
	// The output when it exists and overwrite is set; null when the output is to be created.
	UStaticMesh* ExistingMesh = nullptr;
};

// True with the plan filled, or false with the first refusal. It may load packages, but never creates,
// dirties or saves one and never opens a transaction.
bool ValidateNaniteAssemblyRequest(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& OutPlan, FString& OutError);
