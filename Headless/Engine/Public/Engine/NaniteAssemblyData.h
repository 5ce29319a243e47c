// The Nanite Assembly data of a mesh: parts (meshes placed by the assembly) and nodes (their instances).
#pragma once

#include "Containers/Array.h"
#include "Math/TransformVectorized.h"
#include "Misc/CoreMiscDefines.h"
#include "Serialization/Archive.h"
#include "UObject/SoftObjectPath.h"

struct FNaniteAssemblyBoneInfluence
{
	int32 BoneIndex = INDEX_NONE;
	float BoneWeight = 1.0f;

	[[nodiscard]] bool operator==(const FNaniteAssemblyBoneInfluence& Other) const { return BoneIndex == Other.BoneIndex && BoneWeight == Other.BoneWeight; }
};

enum class ENaniteAssemblyNodeTransformSpace : uint8
{
	Local,
	BoneRelative,
};

struct FNaniteAssemblyNode
{
	int32 PartIndex = INDEX_NONE;
	ENaniteAssemblyNodeTransformSpace TransformSpace = ENaniteAssemblyNodeTransformSpace::Local;
	FTransform3f Transform = FTransform3f::Identity;
	TArray<FNaniteAssemblyBoneInfluence> BoneInfluences;

	[[nodiscard]] bool operator==(const FNaniteAssemblyNode& Other) const
	{
		return PartIndex == Other.PartIndex && TransformSpace == Other.TransformSpace && Transform.Equals(Other.Transform)
			&& BoneInfluences == Other.BoneInfluences;
	}
};

struct FNaniteAssemblyPart
{
	FSoftObjectPath MeshObjectPath;
	// Empty means identity: part slot i maps to assembly slot i.
	TArray<int32> MaterialRemap;

	[[nodiscard]] bool operator==(const FNaniteAssemblyPart& Other) const
	{
		return MeshObjectPath == Other.MeshObjectPath && MaterialRemap == Other.MaterialRemap;
	}
};

struct FNaniteAssemblyData
{
	TArray<FNaniteAssemblyPart> Parts;
	TArray<FNaniteAssemblyNode> Nodes;

	// At least one part and at least one node.
	[[nodiscard]] const bool IsValid() const { return Parts.Num() > 0 && Nodes.Num() > 0; }

	[[nodiscard]] bool operator==(const FNaniteAssemblyData& Other) const { return Parts == Other.Parts && Nodes == Other.Nodes; }
	[[nodiscard]] bool operator!=(const FNaniteAssemblyData& Other) const { return !(*this == Other); }
};

ENGINE_API FArchive& operator<<(FArchive& Ar, FNaniteAssemblyBoneInfluence& Influence);
ENGINE_API FArchive& operator<<(FArchive& Ar, FNaniteAssemblyNode& Node);
ENGINE_API FArchive& operator<<(FArchive& Ar, FNaniteAssemblyPart& Part);
ENGINE_API FArchive& operator<<(FArchive& Ar, FNaniteAssemblyData& Data);
