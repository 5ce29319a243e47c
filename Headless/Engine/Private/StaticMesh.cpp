#include "Engine/StaticMesh.h"

#include "HAL/IConsoleManager.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/MaterialInterface.h"
#include "RenderUtils.h"
#include "StaticMeshCompiler.h"
#include "StaticMeshResources.h"
#include "UObject/UObjectGlobals.h"

IMPLEMENT_HEADLESS_CLASS(UStaticMesh, "StaticMesh")

// This file owns the deprecated member; everything here reads it through the accessors' bodies.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace
{
	// Triangles per Nanite streaming page of the built data; only the count of pages is observable.
	constexpr int32 TrianglesPerNanitePage = 128;
	constexpr int32 NodesPerNanitePage = 256;
}

FStaticMaterial::FStaticMaterial() = default;

FStaticMaterial::FStaticMaterial(UMaterialInterface* InMaterialInterface, FName InMaterialSlotName, FName InImportedMaterialSlotName,
	UMaterialInterface* InOverlayMaterialInterface)
	: MaterialInterface(InMaterialInterface)
	, MaterialSlotName(InMaterialSlotName)
	, ImportedMaterialSlotName(InImportedMaterialSlotName)
	, OverlayMaterialInterface(InOverlayMaterialInterface)
{
}

UStaticMesh::UStaticMesh()
	: Geometry(MakeUnique<UE::Headless::FStaticMeshGeometry>())
{
}

UStaticMesh::~UStaticMesh()
{
	FStaticMeshCompilingManager::Get().RemoveStaticMesh(this);
}

const FMeshNaniteSettings& UStaticMesh::GetNaniteSettings() const
{
	return NaniteSettings;
}

FMeshNaniteSettings& UStaticMesh::GetNaniteSettings()
{
	return NaniteSettings;
}

void UStaticMesh::SetNaniteSettings(const FMeshNaniteSettings& Settings)
{
	NaniteSettings = Settings;
}

FName UStaticMesh::GetNaniteSettingsMemberName()
{
	return FName(TEXT("NaniteSettings"));
}

bool UStaticMesh::IsNaniteEnabled() const
{
	return NaniteSettings.bEnabled || IsNaniteForceEnabled();
}

bool UStaticMesh::IsNaniteForceEnabled() const
{
	const IConsoleVariable* ForceEnable = IConsoleManager::Get().FindConsoleVariable(TEXT("r.Nanite.ForceEnableMeshes"));
	return ForceEnable && ForceEnable->GetInt() != 0;
}

bool UStaticMesh::IsNaniteAssembly() const
{
	return IsNaniteEnabled() && NaniteSettings.NaniteAssemblyData.IsValid();
}

TArray<FStaticMaterial>& UStaticMesh::GetStaticMaterials()
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::StaticMaterials);
	return StaticMaterials;
}

const TArray<FStaticMaterial>& UStaticMesh::GetStaticMaterials() const
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::StaticMaterials);
	return StaticMaterials;
}

void UStaticMesh::SetStaticMaterials(const TArray<FStaticMaterial>& InStaticMaterials)
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::StaticMaterials);
	StaticMaterials = InStaticMaterials;
}

UMaterialInterface* UStaticMesh::GetMaterial(int32 MaterialIndex) const
{
	const TArray<FStaticMaterial>& Materials = GetStaticMaterials();
	return Materials.IsValidIndex(MaterialIndex) ? Materials[MaterialIndex].MaterialInterface.Get() : nullptr;
}

FStaticMeshRenderData* UStaticMesh::GetRenderData()
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::RenderData);
	return RenderData.Get();
}

const FStaticMeshRenderData* UStaticMesh::GetRenderData() const
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::RenderData);
	return RenderData.Get();
}

bool UStaticMesh::HasValidNaniteData() const
{
	const FStaticMeshRenderData* Data = GetRenderData();
	return Data && Data->HasValidNaniteData();
}

bool UStaticMesh::IsCompiling() const
{
	return bAsyncBuildPending || LockedProperties != 0;
}

void UStaticMesh::AcquireAsyncProperty(EStaticMeshAsyncProperties AsyncProperties)
{
	LockedProperties |= (uint32)AsyncProperties;
}

void UStaticMesh::ReleaseAsyncProperty(EStaticMeshAsyncProperties AsyncProperties)
{
	LockedProperties &= ~(uint32)AsyncProperties;
}

// As the engine's (StaticMesh.cpp, 5.8): on the game thread, a locked property finishes this mesh's
// compilation through the compiling manager, which releases every property; an unlocked one returns at once.
void UStaticMesh::WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties AsyncProperties) const
{
	if (IsCompiling() && (LockedProperties & (uint32)AsyncProperties) != 0)
	{
		UStaticMesh* Self = const_cast<UStaticMesh*>(this);
		FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Self, 1));
	}
}

int32 UStaticMesh::GetNumSourceModels() const
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::SourceModels);
	return Geometry->NumSourceModels;
}

void UStaticMesh::SetNumSourceModels(int32 Num)
{
	WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties::SourceModels);
	Geometry->NumSourceModels = Num < 0 ? 0 : Num;
	if (Geometry->NumSourceModels == 0)
	{
		*Geometry = UE::Headless::FStaticMeshGeometry();
	}
}

void UStaticMesh::CommitMeshDescription(int32 LodIndex, const FCommitMeshDescriptionParams& Params)
{
	if (LodIndex == 0)
	{
		Geometry->bHasMeshDescription = true;
		if (Geometry->NumSourceModels == 0)
		{
			Geometry->NumSourceModels = 1;
		}
	}
	if (Params.bMarkPackageDirty)
	{
		MarkPackageDirty();
	}
}

void UStaticMesh::Build(bool bInSilent, TArray<FText>* OutErrors)
{
	// A build first completes the one already in flight on this mesh.
	if (IsCompiling())
	{
		UStaticMesh* Self = this;
		FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Self, 1));
	}
	if (OutErrors || !FStaticMeshCompilingManager::Get().IsAsyncStaticMeshCompilationEnabled())
	{
		FinishBuild();
		return;
	}
	// As the engine's BeginBuildInternal for an asynchronous build (StaticMeshBuild.cpp, 5.8): every property is
	// locked; the extended bounds are computed at once and released when the mesh description gives them, which
	// an assembly never does (its bounds come from the Nanite build). The render data and everything else stay
	// locked until the compiling manager finishes the build.
	AcquireAsyncProperty();
	if (!IsNaniteAssembly() && Geometry->bHasMeshDescription)
	{
		ReleaseAsyncProperty(EStaticMeshAsyncProperties::ExtendedBounds);
	}
	bAsyncBuildPending = true;
	FStaticMeshCompilingManager::Get().AddStaticMesh(this);
}

// The compile step: render data from the source geometry. A mesh without source models cannot be built
// and has none. Nanite data has pages when the mesh is Nanite-enabled and there is something to draw: its
// own triangles, or its assembly nodes while the renderer accepts assemblies.
void UStaticMesh::FinishBuild()
{
	bAsyncBuildPending = false;
	ReleaseAsyncProperty();
	const UE::Headless::FStaticMeshGeometry& Source = *Geometry;
	if (Source.NumSourceModels <= 0)
	{
		RenderData.Reset();
		return;
	}

	TUniquePtr<FStaticMeshRenderData> Built = MakeUnique<FStaticMeshRenderData>();
	FStaticMeshLODResources& LOD = Built->LODResources.AddDefaulted_GetRef();
	LOD.NumVertices = Source.Positions.Num();
	LOD.NumTriangles = Source.Triangles.Num();
	uint32 FirstIndex = 0;
	for (int32 Group = 0; Group < Source.PolygonGroupSlotNames.Num(); ++Group)
	{
		FStaticMeshSection& Section = LOD.Sections.AddDefaulted_GetRef();
		Section.MaterialIndex = Source.SectionMaterialIndices.IsValidIndex(Group) ? Source.SectionMaterialIndices[Group] : Group;
		Section.FirstIndex = FirstIndex;
		for (const UE::Headless::FMeshTriangle& Triangle : Source.Triangles)
		{
			Section.NumTriangles += Triangle.PolygonGroup == Group ? 1 : 0;
		}
		FirstIndex += Section.NumTriangles * 3;
	}
	if (Source.Positions.Num() > 0)
	{
		Built->BoundsMin = Source.Positions[0];
		Built->BoundsMax = Source.Positions[0];
		for (const FVector3f& Position : Source.Positions)
		{
			Built->BoundsMin = FVector3f(FMath::Min(Built->BoundsMin.X, Position.X), FMath::Min(Built->BoundsMin.Y, Position.Y), FMath::Min(Built->BoundsMin.Z, Position.Z));
			Built->BoundsMax = FVector3f(FMath::Max(Built->BoundsMax.X, Position.X), FMath::Max(Built->BoundsMax.Y, Position.Y), FMath::Max(Built->BoundsMax.Z, Position.Z));
		}
	}

	if (IsNaniteEnabled())
	{
		const int32 RealTriangles = Source.CountRealTriangles();
		const int32 AssemblyNodes = IsNaniteAssembly() && NaniteAssembliesSupported() ? NaniteSettings.NaniteAssemblyData.Nodes.Num() : 0;
		Nanite::FResources& Nanite = *(Built->NaniteResourcesPtr = MakeUnique<Nanite::FResources>());
		Nanite.NumInputTriangles = (uint32)RealTriangles;
		Nanite.NumAssemblyNodes = AssemblyNodes;
		const int32 Pages = (RealTriangles + TrianglesPerNanitePage - 1) / TrianglesPerNanitePage + (AssemblyNodes + NodesPerNanitePage - 1) / NodesPerNanitePage;
		for (int32 Page = 0; Page < Pages; ++Page)
		{
			Nanite.PageStreamingStates.Add((uint32)Page);
		}
	}
	RenderData = MoveTemp(Built);
}

void UStaticMesh::Serialize(FArchive& Ar)
{
	// As the engine's: what is serialised is the mesh after its build in flight.
	if (IsCompiling())
	{
		UStaticMesh* Self = this;
		FStaticMeshCompilingManager::Get().FinishCompilation(MakeArrayView(&Self, 1));
	}
	Super::Serialize(Ar);
	Ar << StaticMaterials << NaniteSettings << *Geometry;
}

void UStaticMesh::PostLoad()
{
	Super::PostLoad();
	FinishBuild();
}

void UStaticMesh::PostEditChange()
{
	Super::PostEditChange();
	Build(true);
}

void UStaticMesh::PostEditUndo()
{
	Super::PostEditUndo();
	Build(true);
}

FArchive& operator<<(FArchive& Ar, FStaticMaterial& Material)
{
	FString MaterialPath = Ar.IsSaving() && Material.MaterialInterface ? Material.MaterialInterface->GetPathName() : FString();
	FString OverlayPath = Ar.IsSaving() && Material.OverlayMaterialInterface ? Material.OverlayMaterialInterface->GetPathName() : FString();
	Ar << MaterialPath << Material.MaterialSlotName << Material.ImportedMaterialSlotName << Material.UVChannelData.bInitialized << OverlayPath;
	if (Ar.IsLoading())
	{
		Material.MaterialInterface = MaterialPath.IsEmpty()
			? nullptr
			: (UMaterialInterface*)StaticFindObject(UMaterialInterface::StaticClass(), nullptr, MaterialPath);
		Material.OverlayMaterialInterface = OverlayPath.IsEmpty()
			? nullptr
			: (UMaterialInterface*)StaticFindObject(UMaterialInterface::StaticClass(), nullptr, OverlayPath);
	}
	return Ar;
}
