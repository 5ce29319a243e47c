// The base of the Nanite Assembly builders: parts, nodes and the merging of part materials into slots.
#pragma once

// The engine's header reaches the static mesh through its assembly data builder's header; materials are only
// declared there.
#include "CoreMinimal.h"
#include "Engine/NaniteAssemblyData.h"
#include "Engine/StaticMesh.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"
#include "UObject/ObjectPtr.h"

class UMaterialInterface;

enum class ENaniteAssemblyPartMaterialMerge : uint8
{
	// A part material joins the slot that already holds the same material object.
	MergeIdenticalMaterials,
	// A part material joins the slot that already has the same slot name.
	MergeIdenticalSlotNames,
	// Part material i goes to slot i; the first part to fill a slot keeps it.
	MergeMaterialIndices,
};

struct FNaniteAssemblyMaterialMergeOptions
{
	int32 MaterialSlotGroup = 0;
	ENaniteAssemblyPartMaterialMerge MergeBehavior = ENaniteAssemblyPartMaterialMerge::MergeIdenticalMaterials;
	// Replaces part material i before merging.
	TArray<TObjectPtr<UMaterialInterface>> MaterialOverrides;

	bool operator==(const FNaniteAssemblyMaterialMergeOptions& Other)
	{
		return MaterialSlotGroup == Other.MaterialSlotGroup && MergeBehavior == Other.MergeBehavior && MaterialOverrides == Other.MaterialOverrides;
	}
};

struct FDirectoryPath
{
	FString Path;
};

struct FNaniteAssemblyCreateNewParameters
{
	FDirectoryPath TargetDirectory;
	FString AssetName;
	bool bOverwriteExisting = false;
};

class NANITEASSEMBLYEDITORUTILS_API UNaniteAssemblyBuilder : public UObject
{
	DECLARE_CLASS(UNaniteAssemblyBuilder, UObject, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/NaniteAssemblyEditorUtils"), NANITEASSEMBLYEDITORUTILS_API)

public:
	UNaniteAssemblyBuilder();

	virtual UObject* GetTargetMeshObject() const { return nullptr; }
	[[nodiscard]] bool IsBuildingAssembly() const;
	int32 AddMaterialSlotGroup();
	// INDEX_NONE when the group does not exist, else the new slot's index inside the group.
	int32 AddMaterialSlot(UMaterialInterface* Material, int32 MaterialSlotGroup = 0, FName SlotName = NAME_None);

protected:
	struct FMaterialSlot
	{
		TObjectPtr<UMaterialInterface> Material;
		FName Name;
	};

	struct FAddPartsResult
	{
		int32 PartIndex = INDEX_NONE;
		int32 FirstNodeIndex = INDEX_NONE;
		bool bNewPart = false;
	};

	void Reset();
	bool ValidateBuildStatus(const TCHAR* Label, bool bExpectBuilding) const;
	FAddPartsResult AddParts(const UStaticMesh& PartMesh, TArrayView<const FTransform> Transforms, const FNaniteAssemblyMaterialMergeOptions& Options);
	int32 FindOrAddPartMesh(const FSoftObjectPath& MeshPath, const FNaniteAssemblyMaterialMergeOptions& Options, bool& bOutNewPart);
	void MergePartMaterials(int32 PartIndex, const UStaticMesh& PartMesh, const FNaniteAssemblyMaterialMergeOptions& Options);

	// Writes the parts, nodes and final material slots into the mesh; false when no part and node exist.
	bool ApplyToStaticMesh(UStaticMesh& Mesh);

	FNaniteAssemblyData AssemblyData;
	TArray<TArray<FMaterialSlot>> MaterialSlotGroups;
	TArray<FNaniteAssemblyMaterialMergeOptions> PartMaterialMergeOptions;
	UObject* TargetObject = nullptr;
};
