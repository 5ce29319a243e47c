// Builds a static mesh into a Nanite Assembly from instanced part meshes: Begin, AddAssemblyParts, Finish.
#pragma once

#include "NaniteAssemblyBuilder.h"

class UStaticMesh;

class NANITEASSEMBLYEDITORUTILS_API UNaniteAssemblyStaticMeshBuilder : public UNaniteAssemblyBuilder
{
	DECLARE_CLASS(UNaniteAssemblyStaticMeshBuilder, UNaniteAssemblyBuilder, CLASS_None, CASTCLASS_None, TEXT("/Script/NaniteAssemblyEditorUtils"), NANITEASSEMBLYEDITORUTILS_API)

public:
	static UNaniteAssemblyStaticMeshBuilder* BeginNewStaticMeshAssemblyBuild(const FNaniteAssemblyCreateNewParameters& Parameters);
	// A builder for the target, which starts with the target's own materials in slot group 0; null for a
	// null target. The target's earlier assembly data is replaced at Finish, not extended.
	static UNaniteAssemblyStaticMeshBuilder* BeginEditStaticMeshAssemblyBuild(UStaticMesh* BaseMesh);

	bool BeginAssemblyBuild(UStaticMesh* InTargetMesh);
	// Applies the parts to the target, enables Nanite on it and starts its build; OutStaticMesh is the target.
	bool FinishAssemblyBuild(UStaticMesh*& OutStaticMesh);

	// One part (reused when the same mesh comes with the same merge options) and one node per transform.
	bool AddAssemblyParts(const UStaticMesh* PartMesh, TArrayView<const FTransform> LocalTransforms,
		const FNaniteAssemblyMaterialMergeOptions& MaterialMergeOptions = FNaniteAssemblyMaterialMergeOptions());
	bool AddAssemblyParts(const UStaticMesh* PartMesh, const TArray<FTransform>& LocalTransforms,
		const FNaniteAssemblyMaterialMergeOptions& MaterialMergeOptions = FNaniteAssemblyMaterialMergeOptions())
	{
		return AddAssemblyParts(PartMesh, MakeConstArrayView(LocalTransforms), MaterialMergeOptions);
	}
	bool AddAssemblyPart(const UStaticMesh* PartMesh, const FTransform& LocalTransform,
		const FNaniteAssemblyMaterialMergeOptions& MaterialMergeOptions = FNaniteAssemblyMaterialMergeOptions())
	{
		return AddAssemblyParts(PartMesh, MakeConstArrayView(&LocalTransform, 1), MaterialMergeOptions);
	}

	UObject* GetTargetMeshObject() const override;

private:
	TObjectPtr<UStaticMesh> TargetMesh;
};
