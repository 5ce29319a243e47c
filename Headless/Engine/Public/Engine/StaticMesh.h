// UStaticMesh: material slots, Nanite settings with the assembly data, source geometry and render data.
#pragma once

#include "CoreMinimal.h"
#include "Engine/EngineTypes.h"
#include "Headless/StaticMeshGeometry.h"
#include "Interface_AsyncCompilation.h"
#include "Materials/MaterialInterface.h"
#include "StaticMeshResources.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"
#include "UObject/ObjectPtr.h"

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
	FStaticMaterial() = default;
	FStaticMaterial(UMaterialInterface* InMaterialInterface, FName InMaterialSlotName = NAME_None, FName InImportedMaterialSlotName = NAME_None,
		UMaterialInterface* InOverlayMaterialInterface = nullptr)
		: MaterialInterface(InMaterialInterface)
		, MaterialSlotName(InMaterialSlotName)
		, ImportedMaterialSlotName(InImportedMaterialSlotName)
		, OverlayMaterialInterface(InOverlayMaterialInterface)
	{
	}

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

enum class EStaticMeshAsyncProperties : uint32
{
	None = 0,
	RenderData = 1 << 0,
	OccluderData = 1 << 1,
	SourceModels = 1 << 2,
	SectionInfoMap = 1 << 3,
	OriginalSectionInfoMap = 1 << 4,
	NavCollision = 1 << 5,
	LightmapUVDensity = 1 << 6,
	LightingGuid = 1 << 7,
	ExtendedBounds = 1 << 8,
	NegativeBoundsExtension = 1 << 9,
	PositiveBoundsExtension = 1 << 10,
	LightMapCoordinateIndex = 1 << 11,
	StaticMaterials = 1 << 12,
	All = MAX_uint32,
};
ENUM_CLASS_FLAGS(EStaticMeshAsyncProperties);

class UStaticMesh : public UObject, public IInterface_AsyncCompilation
{
	DECLARE_HEADLESS_CLASS(UStaticMesh, UObject, ENGINE_API)

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

	UE_DEPRECATED(5.7, "Direct access to NaniteSettings is deprecated; use the various NaniteSettings accessor functions.")
	FMeshNaniteSettings NaniteSettings;

	[[nodiscard]] ENGINE_API const FMeshNaniteSettings& GetNaniteSettings() const;
	[[nodiscard]] ENGINE_API FMeshNaniteSettings& GetNaniteSettings();
	ENGINE_API void SetNaniteSettings(const FMeshNaniteSettings& Settings);
	[[nodiscard]] static ENGINE_API FName GetNaniteSettingsMemberName();

	// The stored enabled flag, or Nanite forced on for every mesh by r.Nanite.ForceEnableMeshes.
	[[nodiscard]] ENGINE_API bool IsNaniteEnabled() const;
	[[nodiscard]] ENGINE_API bool IsNaniteForceEnabled() const;
	// Nanite enabled and assembly data with at least one part and one node.
	[[nodiscard]] ENGINE_API bool IsNaniteAssembly() const;

	// Both wait for the asynchronous build to release the material list first.
	[[nodiscard]] ENGINE_API TArray<FStaticMaterial>& GetStaticMaterials();
	[[nodiscard]] ENGINE_API const TArray<FStaticMaterial>& GetStaticMaterials() const;
	ENGINE_API void SetStaticMaterials(const TArray<FStaticMaterial>& InStaticMaterials);
	[[nodiscard]] ENGINE_API UMaterialInterface* GetMaterial(int32 MaterialIndex) const;

	// Both finish this mesh's build first when one is in flight; null before the first build.
	[[nodiscard]] ENGINE_API FStaticMeshRenderData* GetRenderData();
	[[nodiscard]] ENGINE_API const FStaticMeshRenderData* GetRenderData() const;
	[[nodiscard]] ENGINE_API bool HasValidNaniteData() const;

	[[nodiscard]] ENGINE_API bool IsCompiling() const override;

	// Starts a build of the render data; asynchronous when the compiling manager allows it.
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
	friend ENGINE_API UE::Headless::FStaticMeshGeometry& UE::Headless::GetMeshGeometry(UStaticMesh& Mesh);
	friend ENGINE_API const UE::Headless::FStaticMeshGeometry& UE::Headless::GetMeshGeometry(const UStaticMesh& Mesh);

	ENGINE_API void WaitUntilAsyncPropertyReleased(EStaticMeshAsyncProperties AsyncProperties) const;
	void FinishBuild();

	TArray<FStaticMaterial> StaticMaterials;
	UE::Headless::FStaticMeshGeometry Geometry;
	TUniquePtr<FStaticMeshRenderData> RenderData;
	EStaticMeshAsyncProperties LockedProperties = EStaticMeshAsyncProperties::None;
};
