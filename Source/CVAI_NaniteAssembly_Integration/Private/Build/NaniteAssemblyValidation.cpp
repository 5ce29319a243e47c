#include "Build/NaniteAssemblyValidation.h"

#include "Build/NaniteAssemblyAssetPaths.h"
#include "Engine/StaticMesh.h"
#include "Materials/MaterialInterface.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "Templates/Casts.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	bool ValidateOutput(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& Plan, FString& OutError)
	{
		const FString& GivenOutput = Request.Output;
		const FString PackageName = ToPackagePath(GivenOutput);
		FText Reason;
		if (PackageName.IsEmpty() || !FPackageName::IsValidLongPackageName(PackageName, false, &Reason))
		{
			OutError = FString::Printf(TEXT("output '%s' is not a valid writable package path (%s)"), *GivenOutput, *Reason.ToString());
			return false;
		}

		// A root that maps to no folder is refused like the engine's own content, and so is the content of
		// any plugin whose folder lies under the engine's.
		FString Filename;
		if (!FPackageName::TryConvertLongPackageNameToFilename(PackageName, Filename)
			|| FPaths::IsUnderDirectory(FPaths::ConvertRelativePathToFull(Filename), FPaths::ConvertRelativePathToFull(FPaths::EngineDir())))
		{
			OutError = FString::Printf(TEXT("output '%s' is not a valid writable package path (engine content is read-only for this verb; use /Game/...)"),
				*GivenOutput);
			return false;
		}

		const FString AssetName = FPackageName::GetLongPackageAssetName(PackageName);
		if (AssetName.IsEmpty())
		{
			OutError = FString::Printf(TEXT("output '%s' has no asset name"), *GivenOutput);
			return false;
		}
		const FString ObjectPath = PackageName + TEXT(".") + AssetName;

		UObject* Existing = StaticFindObject(UObject::StaticClass(), nullptr, ObjectPath);
		if (!Existing && FPackageName::DoesPackageExist(PackageName))
		{
			Existing = StaticLoadObject(UObject::StaticClass(), nullptr, ObjectPath);
		}
		if (Existing)
		{
			if (!Existing->GetClass()->IsChildOf(UStaticMesh::StaticClass()))
			{
				OutError = FString::Printf(TEXT("output '%s' already exists and is a %s, not a StaticMesh"), *ObjectPath, *Existing->GetClass()->GetName());
				return false;
			}
			if (!Request.bOverwrite)
			{
				OutError = FString::Printf(TEXT("output '%s' already exists; pass overwrite=true to rebuild its assembly parts"), *ObjectPath);
				return false;
			}
			Plan.ExistingMesh = Cast<UStaticMesh>(Existing);
		}
		Plan.PackageName = PackageName;
		Plan.AssetName = AssetName;
		Plan.ObjectPath = ObjectPath;
		return true;
	}

	bool ValidatePart(const FNaniteAssemblyPartRequest& Part, int32 Position, const FNaniteAssemblyBuildPlan& Plan, FNaniteAssemblyResolvedPart& OutPart,
		FString& OutError)
	{
		const FString Label = FString::Printf(TEXT("parts[%d]"), Position);
		if (Part.MeshPath.IsEmpty())
		{
			OutError = Label + TEXT(": mesh path is empty");
			return false;
		}
		if (Part.Transforms.IsEmpty())
		{
			OutError = Label + TEXT(": transforms is empty; every part needs at least one transform");
			return false;
		}
		// All twelve stored lanes count; infinities get the same words on purpose.
		for (int32 Index = 0; Index < Part.Transforms.Num(); ++Index)
		{
			if (Part.Transforms[Index].ContainsNaN())
			{
				OutError = FString::Printf(TEXT("%s.transforms[%d]: contains NaN"), *Label, Index + 1);
				return false;
			}
		}

		UStaticMesh* Mesh = LoadStaticMeshByPath(Part.MeshPath);
		if (!Mesh)
		{
			if (UObject* Other = LoadObjectByPath(Part.MeshPath))
			{
				OutError = FString::Printf(TEXT("%s: '%s' is a %s, not a StaticMesh"), *Label, *Part.MeshPath, *Other->GetClass()->GetName());
			}
			else
			{
				OutError = FString::Printf(TEXT("%s: static mesh not found: %s"), *Label, *Part.MeshPath);
			}
			return false;
		}
		const UPackage* MeshPackage = Mesh->GetOutermost();
		if (MeshPackage == GetTransientPackage() || (MeshPackage && MeshPackage->HasAnyFlags(RF_Transient)))
		{
			OutError = FString::Printf(TEXT("%s: '%s' lives in a transient package and could not be reloaded by the assembly build"), *Label, *Mesh->GetPathName());
			return false;
		}
		if (Mesh->IsNaniteAssembly())
		{
			OutError = FString::Printf(TEXT("%s: '%s' is itself a Nanite Assembly; assemblies of assemblies are not supported"), *Label, *Mesh->GetPathName());
			return false;
		}
		if (Mesh->GetPathName().Equals(Plan.ObjectPath, ESearchCase::IgnoreCase) || Mesh == Plan.ExistingMesh)
		{
			OutError = FString::Printf(TEXT("%s: '%s' is the output mesh; the target cannot be one of its own parts"), *Label, *Mesh->GetPathName());
			return false;
		}

		OutPart.Mesh = Mesh;
		OutPart.Transforms = Part.Transforms;
		OutPart.MergeOptions.MaterialSlotGroup = 0;
		OutPart.MergeOptions.MergeBehavior = (ENaniteAssemblyPartMaterialMerge)(uint8)Part.MaterialMerge;
		for (int32 Index = 0; Index < Part.MaterialOverrides.Num(); ++Index)
		{
			UMaterialInterface* Material = LoadMaterialByPath(Part.MaterialOverrides[Index]);
			if (!Material)
			{
				OutError = FString::Printf(TEXT("%s.material_overrides[%d]: material not found: %s"), *Label, Index + 1, *Part.MaterialOverrides[Index]);
				return false;
			}
			OutPart.MergeOptions.MaterialOverrides.Add(Material);
		}
		return true;
	}
}

bool ValidateNaniteAssemblyRequest(const FNaniteAssemblyBuildRequest& Request, FNaniteAssemblyBuildPlan& OutPlan, FString& OutError)
{
	OutPlan = FNaniteAssemblyBuildPlan();
	if (Request.Parts.IsEmpty())
	{
		OutError = TEXT("no parts given; at least one part with one transform is required");
		return false;
	}
	FNaniteAssemblyBuildPlan Plan;
	if (!ValidateOutput(Request, Plan, OutError))
	{
		return false;
	}
	for (int32 Index = 0; Index < Request.Parts.Num(); ++Index)
	{
		if (!ValidatePart(Request.Parts[Index], Index + 1, Plan, Plan.Parts.AddDefaulted_GetRef(), OutError))
		{
			return false;
		}
	}
	OutPlan = MoveTemp(Plan);
	return true;
}
