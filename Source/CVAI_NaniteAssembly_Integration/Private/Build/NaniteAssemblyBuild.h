// The build of an assembly mesh from a read request: validation against the project before anything is
// touched, then one editor transaction around Begin / AddAssemblyParts / Finish with a roll-back when the
// build owns the transaction and fails, then the compile wait and the save outside the transaction.
#pragma once

#include "CoreMinimal.h"
#include "NaniteAssemblyBuilder.h"
#include "Shared/NaniteAssemblyPluginStatus.h"

class FLuaSessionData;
class UStaticMesh;

namespace CVAI::NaniteAssembly
{
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

	struct FNaniteAssemblyBuildOutcome
	{
		// Set at the end of a build that stood; also after a failed save, when the build itself stands.
		UStaticMesh* Mesh = nullptr;
		FString PackageName;
		FString ObjectPath;
		bool bCreated = false;
		bool bOverwritten = false;
		bool bSaved = false;
		bool bCompiled = false;
		bool bTransactionOwned = false;
		// The plugin and renderer status the build ran under.
		FNaniteAssemblyPluginStatus Status;
	};

	// True with the plan filled, or false with the first refusal. It may load packages, but never creates,
	// dirties or saves one and never opens a transaction.
	bool ValidateNaniteAssemblyRequest(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& OutPlan, FString& OutError);

	// True when the build stood (and, when asked, the save succeeded); otherwise Error holds the message.
	bool ExecuteNaniteAssemblyBuild(const FNaniteAssemblyBuildRequest& Request, FLuaSessionData& Session, FNaniteAssemblyBuildOutcome& OutOutcome,
		FString& OutError);
}
