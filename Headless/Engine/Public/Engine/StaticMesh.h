// UStaticMesh: material slots, Nanite settings with the assembly data, source geometry and render data.
#pragma once

#include "CoreMinimal.h"
#include "Engine/EngineTypes.h"
#include "Interfaces/Interface_AsyncCompilation.h"
#include "Templates/UniquePtr.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"
#include "UObject/ObjectPtr.h"
#include "UObject/UObjectGlobals.h"

// As in the engine's header, these are only declared: their users include their own headers.
class UMaterialInterface;
class UPackage;
class FStaticMeshRenderData;

namespace UE::Headless
{
	struct FStaticMeshGeometry;
	struct FStaticMeshGeometryAccess;
}

struct FMeshUVChannelInfo
{
	bool bInitialized = false;
	bool bOverrideDensities = false;
	float LocalUVDensities[4] = { 0.0f, 0.0f, 0.0f, 0.0f };

	[[nodiscard]] bool operator==(const FMeshUVChannelInfo& Other) const
	{
		return bInitialized == Other.bInitialized && bOverrideDensities == Other.bOverrideDensities;
	}
};

struct FStaticMaterial
{
	ENGINE_API FStaticMaterial();
	ENGINE_API FStaticMaterial(UMaterialInterface* InMaterialInterface, FName InMaterialSlotName = NAME_None, FName InImportedMaterialSlotName = NAME_None,
		UMaterialInterface* InOverlayMaterialInterface = nullptr);

	TObjectPtr<UMaterialInterface> MaterialInterface;
	FName MaterialSlotName;
	FName ImportedMaterialSlotName;
	FMeshUVChannelInfo UVChannelData;
	TObjectPtr<UMaterialInterface> OverlayMaterialInterface;

	[[nodiscard]] bool operator==(const FStaticMaterial& Other) const
	{
		return MaterialInterface == Other.MaterialInterface && MaterialSlotName == Other.MaterialSlotName
			&& ImportedMaterialSlotName == Other.ImportedMaterialSlotName && UVChannelData == Other.UVChannelData
			&& OverlayMaterialInterface == Other.OverlayMaterialInterface;
	}
};

ENGINE_API FArchive& operator<<(FArchive& Ar, FStaticMaterial& Material);

// The parts of a static mesh that an asynchronous build may be reading or writing; an accessor of a locked
// part first finishes the mesh's build.
enum class EStaticMeshAsyncProperties : uint32
{
	None = 0,
	RenderData = 1 << 0,
	SourceModels = 1 << 2,
	SectionInfoMap = 1 << 3,
	OriginalSectionInfoMap = 1 << 4,
	NavCollision = 1 << 5,
	LightmapUVVersion = 1 << 6,
	BodySetup = 1 << 7,
	LightingGuid = 1 << 8,
	ExtendedBounds = 1 << 9,
	NegativeBoundsExtension = 1 << 10,
	PositiveBoundsExtension = 1 << 11,
	StaticMaterials = 1 << 12,
	LightmapUVDensity = 1 << 13,
	IsBuiltAtRuntime = 1 << 14,
	MinLOD = 1 << 15,
	LightMapCoordinateIndex = 1 << 16,
	LightMapResolution = 1 << 17,
	HiResSourceModel = 1 << 18,
	UseLegacyTangentScaling = 1 << 19,
	All = MAX_uint32,
};
ENUM_CLASS_FLAGS(EStaticMeshAsyncProperties);

class UStaticMesh : public UObject, public IInterface_AsyncCompilation
{
	DECLARE_CLASS(UStaticMesh, UObject, CLASS_None, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	struct FCommitMeshDescriptionParams
	{
		FCommitMeshDescriptionParams()
			: bMarkPackageDirty(true)
			, bUseHashAsGuid(false)
		{
		}

		bool bMarkPackageDirty;
		bool bUseHashAsGuid;
	};

	ENGINE_API UStaticMesh();
	ENGINE_API ~UStaticMesh() override;

	UE_DEPRECATED(5.7, "Please do not access this member directly, it will become private soon; use the various NaniteSettings accessor functions.")
	FMeshNaniteSettings NaniteSettings;

	// The Nanite settings have no asynchronous lock: reading them never waits for a build.
	[[nodiscard]] ENGINE_API const FMeshNaniteSettings& GetNaniteSettings() const;
	[[nodiscard]] ENGINE_API FMeshNaniteSettings& GetNaniteSettings();
	ENGINE_API void SetNaniteSettings(const FMeshNaniteSettings& Settings);
	[[nodiscard]] static ENGINE_API FName GetNaniteSettingsMemberName();

	// The stored enabled flag, or Nanite forced on for every mesh by r.Nanite.ForceEnableMeshes.
	[[nodiscard]] ENGINE_API bool IsNaniteEnabled() const;
	[[nodiscard]] ENGINE_API bool IsNaniteForceEnabled() const;
	// Nanite enabled and assembly data with at least one part and one node.
	[[nodiscard]] ENGINE_API bool IsNaniteAssembly() const;

	// These wait for a build in flight to release the material list first.
	[[nodiscard]] ENGINE_API TArray<FStaticMaterial>& GetStaticMaterials();
	[[nodiscard]] ENGINE_API const TArray<FStaticMaterial>& GetStaticMaterials() const;
	ENGINE_API void SetStaticMaterials(const TArray<FStaticMaterial>& InStaticMaterials);
	[[nodiscard]] ENGINE_API UMaterialInterface* GetMaterial(int32 MaterialIndex) const;

	// Both wait for a build in flight to release the render data; null before the first build.
	[[nodiscard]] ENGINE_API FStaticMeshRenderData* GetRenderData();
	[[nodiscard]] ENGINE_API const FStaticMeshRenderData* GetRenderData() const;
	[[nodiscard]] ENGINE_API bool HasValidNaniteData() const;

	// A build is in flight or holds any of the mesh's properties; never waits.
	[[nodiscard]] ENGINE_API bool IsCompiling() const override;

	// Starts a build of the render data: asynchronous when the compiling manager allows it, after finishing
	// a build already in flight.
	ENGINE_API void Build(bool bInSilent = false, TArray<FText>* OutErrors = nullptr);
	[[nodiscard]] ENGINE_API int32 GetNumSourceModels() const;
	ENGINE_API void SetNumSourceModels(int32 Num);
	ENGINE_API void CommitMeshDescription(int32 LodIndex, const FCommitMeshDescriptionParams& Params = FCommitMeshDescriptionParams());

	ENGINE_API void Serialize(FArchive& Ar) override;
	ENGINE_API void PostLoad() override;
	ENGINE_API void PostEditChange() override;
	ENGINE_API void PostEditUndo() override;

private:
	friend class FStaticMeshCompilingManager;
	friend struct UE::Headless::FStaticMeshGeometryAccess;

	void AcquireAsyncProperty(EStaticMeshAsyncProperties AsyncProperties = EStaticMeshAsyncProperties::All);
	void ReleaseAsyncProperty(EStaticMeshAsyncProperties AsyncProperties = EStaticMeshAsyncProperties::All);
	ENGINE_API void WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties AsyncProperties) const;

	// The build itself, which the compiling manager runs when the mesh's turn comes: render data from the
	// source geometry, then every property released.
	void FinishBuild();

	TArray<FStaticMaterial> StaticMaterials;
	TUniquePtr<UE::Headless::FStaticMeshGeometry> Geometry;
	TUniquePtr<FStaticMeshRenderData> RenderData;
	uint32 LockedProperties = (uint32)EStaticMeshAsyncProperties::None;
	// Queued with the compiling manager (the engine's AsyncTask).
	bool bAsyncBuildPending = false;
};
