#include "NaniteAssemblyStaticMeshBuilder.h"

#include "Engine/StaticMesh.h"
#include "Headless/Faults.h"
#include "Headless/MaterialSlotNames.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/MaterialInterface.h"
#include "NaniteAssemblyEditorUtilsModule.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

DEFINE_LOG_CATEGORY(LogNaniteAssemblyBuilder);

IMPLEMENT_HEADLESS_CLASS(UNaniteAssemblyBuilder, "NaniteAssemblyBuilder")
IMPLEMENT_HEADLESS_CLASS(UNaniteAssemblyStaticMeshBuilder, "NaniteAssemblyStaticMeshBuilder")

namespace
{
	bool InjectedFault(const TCHAR* Operation)
	{
		FString Reason;
		if (!UE::Headless::ConsumeFault(Operation, &Reason))
		{
			return false;
		}
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[%s] Refused (injected fault%s%s)."), Operation, Reason.IsEmpty() ? TEXT("") : TEXT(": "), *Reason);
		return true;
	}
}

UNaniteAssemblyBuilder::UNaniteAssemblyBuilder()
{
	Reset();
}

bool UNaniteAssemblyBuilder::IsBuildingAssembly() const
{
	return TargetObject != nullptr;
}

void UNaniteAssemblyBuilder::Reset()
{
	AssemblyData = FNaniteAssemblyData();
	MaterialSlotGroups.Reset();
	MaterialSlotGroups.AddDefaulted();
	PartMaterialMergeOptions.Reset();
}

bool UNaniteAssemblyBuilder::ValidateBuildStatus(const TCHAR* Label, bool bExpectBuilding) const
{
	if (IsBuildingAssembly() == bExpectBuilding)
	{
		return true;
	}
	UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[%s] This builder is %scurrently building an assembly."), Label, bExpectBuilding ? TEXT("not ") : TEXT(""));
	return false;
}

int32 UNaniteAssemblyBuilder::AddMaterialSlotGroup()
{
	return MaterialSlotGroups.AddDefaulted();
}

int32 UNaniteAssemblyBuilder::AddMaterialSlot(UMaterialInterface* Material, int32 MaterialSlotGroup, FName SlotName)
{
	if (!MaterialSlotGroups.IsValidIndex(MaterialSlotGroup))
	{
		return INDEX_NONE;
	}
	return MaterialSlotGroups[MaterialSlotGroup].Add(FMaterialSlot{ Material, SlotName });
}

int32 UNaniteAssemblyBuilder::FindOrAddPartMesh(const FSoftObjectPath& MeshPath, const FNaniteAssemblyMaterialMergeOptions& Options, bool& bOutNewPart)
{
	for (int32 PartIndex = 0; PartIndex < AssemblyData.Parts.Num(); ++PartIndex)
	{
		if (AssemblyData.Parts[PartIndex].MeshObjectPath == MeshPath && PartMaterialMergeOptions[PartIndex] == Options)
		{
			bOutNewPart = false;
			return PartIndex;
		}
	}
	FNaniteAssemblyPart& Part = AssemblyData.Parts.AddDefaulted_GetRef();
	Part.MeshObjectPath = MeshPath;
	PartMaterialMergeOptions.Add(Options);
	bOutNewPart = true;
	return AssemblyData.Parts.Num() - 1;
}

void UNaniteAssemblyBuilder::MergePartMaterials(int32 PartIndex, const UStaticMesh& PartMesh, const FNaniteAssemblyMaterialMergeOptions& Options)
{
	check(MaterialSlotGroups.IsValidIndex(Options.MaterialSlotGroup));
	TArray<FMaterialSlot>& Group = MaterialSlotGroups[Options.MaterialSlotGroup];
	TArray<int32>& Remap = AssemblyData.Parts[PartIndex].MaterialRemap;
	const TArray<FStaticMaterial>& PartMaterials = PartMesh.GetStaticMaterials();
	for (int32 SourceIndex = 0; SourceIndex < PartMaterials.Num(); ++SourceIndex)
	{
		UMaterialInterface* Material = Options.MaterialOverrides.IsValidIndex(SourceIndex) ? Options.MaterialOverrides[SourceIndex].Get()
																						   : PartMaterials[SourceIndex].MaterialInterface.Get();
		const FName SlotName = PartMaterials[SourceIndex].MaterialSlotName;
		int32 Destination = INDEX_NONE;
		switch (Options.MergeBehavior)
		{
		case ENaniteAssemblyPartMaterialMerge::MergeIdenticalMaterials:
			Destination = Group.IndexOfByPredicate([Material](const FMaterialSlot& Slot) { return Slot.Material.Get() == Material; });
			break;
		case ENaniteAssemblyPartMaterialMerge::MergeIdenticalSlotNames:
			Destination = Group.IndexOfByPredicate([&SlotName](const FMaterialSlot& Slot) { return Slot.Name == SlotName; });
			break;
		case ENaniteAssemblyPartMaterialMerge::MergeMaterialIndices:
			Destination = SourceIndex;
			if (SourceIndex >= Group.Num())
			{
				Group.SetNum(SourceIndex + 1);
				Group[SourceIndex] = FMaterialSlot{ Material, SlotName };
			}
			break;
		}
		if (Destination == INDEX_NONE)
		{
			Destination = Group.Add(FMaterialSlot{ Material, SlotName });
		}
		while (Remap.Num() <= SourceIndex)
		{
			Remap.Add(INDEX_NONE);
		}
		Remap[SourceIndex] = Destination;
	}
}

UNaniteAssemblyBuilder::FAddPartsResult UNaniteAssemblyBuilder::AddParts(const UStaticMesh& PartMesh, TArrayView<const FTransform> Transforms,
	const FNaniteAssemblyMaterialMergeOptions& Options)
{
	check(Transforms.Num() > 0);
	FAddPartsResult Result;
	Result.PartIndex = FindOrAddPartMesh(FSoftObjectPath(&PartMesh), Options, Result.bNewPart);
	if (Result.bNewPart)
	{
		MergePartMaterials(Result.PartIndex, PartMesh, Options);
	}
	Result.FirstNodeIndex = AssemblyData.Nodes.Num();
	AssemblyData.Nodes.Reserve(AssemblyData.Nodes.Num() + Transforms.Num());
	for (const FTransform& Transform : Transforms)
	{
		FNaniteAssemblyNode& Node = AssemblyData.Nodes.AddDefaulted_GetRef();
		Node.PartIndex = Result.PartIndex;
		Node.TransformSpace = ENaniteAssemblyNodeTransformSpace::Local;
		Node.Transform = FTransform3f(Transform);
	}
	return Result;
}

bool UNaniteAssemblyBuilder::ApplyToStaticMesh(UStaticMesh& Mesh)
{
	if (!AssemblyData.IsValid())
	{
		return false;
	}

	UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(Mesh);
	if (!Geometry.bHasMeshDescription)
	{
		if (Geometry.NumSourceModels == 0)
		{
			Mesh.SetNumSourceModels(1);
		}
		Geometry.bHasMeshDescription = true;
	}

	// The groups are concatenated in order; a part of a later group has its remap moved past the earlier groups.
	TArray<FMaterialSlot> Slots;
	TArray<int32> GroupOffsets;
	for (const TArray<FMaterialSlot>& Group : MaterialSlotGroups)
	{
		GroupOffsets.Add(Slots.Num());
		Slots.Append(Group);
	}
	for (int32 PartIndex = 0; PartIndex < AssemblyData.Parts.Num(); ++PartIndex)
	{
		const int32 Group = PartMaterialMergeOptions[PartIndex].MaterialSlotGroup;
		if (Group > 0)
		{
			for (int32& Entry : AssemblyData.Parts[PartIndex].MaterialRemap)
			{
				Entry = Entry == INDEX_NONE ? Entry : Entry + GroupOffsets[Group];
			}
		}
	}
	if (Slots.IsEmpty())
	{
		Slots.AddDefaulted();
	}
	TArray<FName> Names;
	for (const FMaterialSlot& Slot : Slots)
	{
		Names.Add(Slot.Name);
	}
	UE::Headless::MakeSlotNamesUnique(Names);

	// The base mesh's polygon groups follow their materials to the new names; each slot without a group
	// gets one degenerate triangle so that every slot has a section.
	const TArray<FStaticMaterial> PreviousMaterials = Mesh.GetStaticMaterials();
	for (int32 Group = 0; Group < Geometry.PolygonGroupSlotNames.Num(); ++Group)
	{
		for (int32 Previous = 0; Previous < PreviousMaterials.Num() && Previous < Names.Num(); ++Previous)
		{
			if (Geometry.PolygonGroupSlotNames[Group] == PreviousMaterials[Previous].ImportedMaterialSlotName)
			{
				Geometry.PolygonGroupSlotNames[Group] = Names[Previous];
				break;
			}
		}
	}
	for (int32& MaterialIndex : Geometry.SectionMaterialIndices)
	{
		MaterialIndex = Names.IsValidIndex(MaterialIndex) ? MaterialIndex : 0;
	}
	while (Geometry.SectionMaterialIndices.Num() < Geometry.PolygonGroupSlotNames.Num())
	{
		Geometry.SectionMaterialIndices.Add(0);
	}
	for (int32 Slot = 0; Slot < Names.Num(); ++Slot)
	{
		if (Geometry.PolygonGroupSlotNames.Contains(Names[Slot]))
		{
			continue;
		}
		const int32 Group = Geometry.PolygonGroupSlotNames.Add(Names[Slot]);
		Geometry.SectionMaterialIndices.Add(Slot);
		UE::Headless::FMeshTriangle Degenerate;
		for (int32 Corner = 0; Corner < 3; ++Corner)
		{
			Degenerate.VertexIndices[Corner] = Geometry.Positions.Add(FVector3f(0.0f, 0.0f, 0.0f));
			// A base mesh with normals and UVs keeps one of each per position.
			if (!Geometry.Normals.IsEmpty())
			{
				Geometry.Normals.Add(FVector3f(0.0f, 0.0f, 1.0f));
			}
			if (!Geometry.UVs.IsEmpty())
			{
				Geometry.UVs.Add(FVector2f(0.0f, 0.0f));
			}
		}
		Degenerate.PolygonGroup = Group;
		Geometry.Triangles.Add(Degenerate);
	}

	TArray<FStaticMaterial> FinalMaterials;
	for (int32 Slot = 0; Slot < Slots.Num(); ++Slot)
	{
		FinalMaterials.Add(FStaticMaterial(Slots[Slot].Material.Get(), Names[Slot], Names[Slot]));
	}
	Mesh.SetStaticMaterials(FinalMaterials);
	Mesh.GetNaniteSettings().NaniteAssemblyData = AssemblyData;

	UStaticMesh::FCommitMeshDescriptionParams Params;
	Params.bMarkPackageDirty = true;
	Mesh.CommitMeshDescription(0, Params);
	return true;
}

UNaniteAssemblyStaticMeshBuilder* UNaniteAssemblyStaticMeshBuilder::BeginNewStaticMeshAssemblyBuild(const FNaniteAssemblyCreateNewParameters& Parameters)
{
	const FString PackageName = Parameters.TargetDirectory.Path / *Parameters.AssetName;
	UPackage* Package = CreatePackage(*PackageName);
	if (!Package)
	{
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[BeginNewStaticMeshAssemblyBuild] Cannot create package '%s'."), *PackageName);
		return nullptr;
	}
	Package->FullyLoad();
	UStaticMesh* Mesh = NewObject<UStaticMesh>(Package, FName(Parameters.AssetName), RF_Public | RF_Standalone);
	return Mesh ? BeginEditStaticMeshAssemblyBuild(Mesh) : nullptr;
}

UNaniteAssemblyStaticMeshBuilder* UNaniteAssemblyStaticMeshBuilder::BeginEditStaticMeshAssemblyBuild(UStaticMesh* BaseMesh)
{
	if (!BaseMesh)
	{
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[BeginEditStaticMeshAssemblyBuild] Target Static Mesh is not valid."));
		return nullptr;
	}
	if (InjectedFault(TEXT("BeginEditStaticMeshAssemblyBuild")))
	{
		return nullptr;
	}
	UNaniteAssemblyStaticMeshBuilder* Builder = NewObject<UNaniteAssemblyStaticMeshBuilder>(GetTransientPackage());
	if (!Builder || !Builder->BeginAssemblyBuild(BaseMesh))
	{
		return nullptr;
	}
	return Builder;
}

bool UNaniteAssemblyStaticMeshBuilder::BeginAssemblyBuild(UStaticMesh* InTargetMesh)
{
	if (!ValidateBuildStatus(TEXT("BeginStaticMeshAssemblyBuild"), false))
	{
		return false;
	}
	TargetMesh = InTargetMesh;
	TargetObject = InTargetMesh;
	for (const FStaticMaterial& Material : InTargetMesh->GetStaticMaterials())
	{
		const FName SlotName = !Material.MaterialSlotName.IsNone() ? Material.MaterialSlotName
			: (Material.MaterialInterface ? Material.MaterialInterface->GetFName() : FName());
		MaterialSlotGroups[0].Add(FMaterialSlot{ Material.MaterialInterface, SlotName });
	}
	return true;
}

bool UNaniteAssemblyStaticMeshBuilder::AddAssemblyParts(const UStaticMesh* PartMesh, TArrayView<const FTransform> LocalTransforms,
	const FNaniteAssemblyMaterialMergeOptions& MaterialMergeOptions)
{
	if (!ValidateBuildStatus(TEXT("AddAssemblyParts"), true))
	{
		return false;
	}
	if (!PartMesh)
	{
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[AddAssemblyParts] Part mesh is not valid."));
		return false;
	}
	if (PartMesh == TargetMesh.Get())
	{
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[AddAssemblyParts] Adding target mesh as a part not supported."));
		return false;
	}
	if (PartMesh->IsNaniteAssembly())
	{
		UE_LOG(LogNaniteAssemblyBuilder, Error, TEXT("[AddAssemblyParts] Adding Nanite Assembly mesh as a part not currently supported. Part Mesh: %s"),
			*PartMesh->GetPathName());
		return false;
	}
	if (InjectedFault(TEXT("AddAssemblyParts")))
	{
		return false;
	}
	AddParts(*PartMesh, LocalTransforms, MaterialMergeOptions);
	return true;
}

bool UNaniteAssemblyStaticMeshBuilder::FinishAssemblyBuild(UStaticMesh*& OutStaticMesh)
{
	OutStaticMesh = TargetMesh.Get();
	if (!ValidateBuildStatus(TEXT("FinishAssemblyBuild"), true))
	{
		return false;
	}
	if (InjectedFault(TEXT("FinishAssemblyBuild")))
	{
		return false;
	}
	if (!ApplyToStaticMesh(*TargetMesh))
	{
		UE_LOG(LogNaniteAssemblyBuilder, Display, TEXT("[FinishAssemblyBuild] Assembly build failed. No assembly parts were added."));
		return false;
	}
	TargetMesh->GetNaniteSettings().bEnabled = true;
	TargetMesh->PostEditChange();
	TargetMesh = nullptr;
	TargetObject = nullptr;
	Reset();
	return true;
}

UObject* UNaniteAssemblyStaticMeshBuilder::GetTargetMeshObject() const
{
	return TargetMesh.Get();
}
