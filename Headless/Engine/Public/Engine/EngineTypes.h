// Engine-wide value types; here the Nanite settings of a mesh.
#pragma once

#include "Containers/Array.h"
#include "Engine/NaniteAssemblyData.h"
#include "Serialization/Archive.h"
#include "UObject/Class.h"
#include "UObject/Object.h"

enum class ENaniteShapePreservation : uint8
{
	None,
	PreserveArea,
	Voxelize,
};

enum class ENaniteGenerateFallback : uint8
{
	PlatformDefault,
	Enabled,
};

enum class ENaniteFallbackTarget : uint8
{
	Auto,
	PercentTriangles,
	RelativeError,
};

struct FMeshDisplacementMap
{
	float Magnitude = 0.0f;
	float Center = 0.0f;

	[[nodiscard]] bool operator==(const FMeshDisplacementMap& Other) const { return Magnitude == Other.Magnitude && Center == Other.Center; }
};

struct FMeshNaniteSettings
{
	uint8 bEnabled : 1;
	uint8 bExplicitTangents : 1;
	uint8 bLerpUVs : 1;
	uint8 bSeparable : 1;
	uint8 bVoxelNDF : 1;
	uint8 bVoxelOpacity : 1;
	ENaniteShapePreservation ShapePreservation = ENaniteShapePreservation::None;
	int32 PositionPrecision = MIN_int32;
	int32 NormalPrecision = -1;
	int32 TangentPrecision = -1;
	int32 BoneWeightPrecision = -1;
	uint32 TargetMinimumResidencyInKB = 0;
	float KeepPercentTriangles = 1.0f;
	float TrimRelativeError = 0.0f;
	ENaniteGenerateFallback GenerateFallback = ENaniteGenerateFallback::PlatformDefault;
	ENaniteFallbackTarget FallbackTarget = ENaniteFallbackTarget::Auto;
	float FallbackPercentTriangles = 1.0f;
	float FallbackRelativeError = 1.0f;
	float MaxEdgeLengthFactor = 0.0f;
	int32 NumRays = 64;
	int32 VoxelLevel = 0;
	float RayBackUp = 0.0f;
	int32 DisplacementUVChannel = 0;
	TArray<FMeshDisplacementMap> DisplacementMaps;
	FNaniteAssemblyData NaniteAssemblyData;

	FMeshNaniteSettings()
		: bEnabled(false)
		, bExplicitTangents(false)
		, bLerpUVs(true)
		, bSeparable(false)
		, bVoxelNDF(true)
		, bVoxelOpacity(false)
	{
	}

	[[nodiscard]] ENGINE_API bool operator==(const FMeshNaniteSettings& Other) const;
	[[nodiscard]] bool operator!=(const FMeshNaniteSettings& Other) const { return !(*this == Other); }
};

ENGINE_API FArchive& operator<<(FArchive& Ar, FMeshNaniteSettings& Settings);
