#include "Engine/EngineTypes.h"
#include "Engine/NaniteAssemblyData.h"

FArchive& operator<<(FArchive& Ar, FNaniteAssemblyBoneInfluence& Influence)
{
	return Ar << Influence.BoneIndex << Influence.BoneWeight;
}

FArchive& operator<<(FArchive& Ar, FNaniteAssemblyNode& Node)
{
	return Ar << Node.PartIndex << Node.TransformSpace << Node.Transform << Node.BoneInfluences;
}

FArchive& operator<<(FArchive& Ar, FNaniteAssemblyPart& Part)
{
	FString Path = Ar.IsSaving() ? Part.MeshObjectPath.ToString() : FString();
	Ar << Path << Part.MaterialRemap;
	if (Ar.IsLoading())
	{
		Part.MeshObjectPath = FSoftObjectPath(Path);
	}
	return Ar;
}

FArchive& operator<<(FArchive& Ar, FNaniteAssemblyData& Data)
{
	return Ar << Data.Parts << Data.Nodes;
}

FArchive& operator<<(FArchive& Ar, FMeshDisplacementMap& Map)
{
	return Ar << Map.Magnitude << Map.Center;
}

FArchive& operator<<(FArchive& Ar, FMeshNaniteSettings& Settings)
{
	uint8 Bits = Ar.IsSaving() ? (uint8)(Settings.bEnabled | Settings.bExplicitTangents << 1 | Settings.bLerpUVs << 2 | Settings.bSeparable << 3
										  | Settings.bVoxelNDF << 4 | Settings.bVoxelOpacity << 5)
							   : 0;
	Ar << Bits;
	if (Ar.IsLoading())
	{
		Settings.bEnabled = Bits & 1;
		Settings.bExplicitTangents = (Bits >> 1) & 1;
		Settings.bLerpUVs = (Bits >> 2) & 1;
		Settings.bSeparable = (Bits >> 3) & 1;
		Settings.bVoxelNDF = (Bits >> 4) & 1;
		Settings.bVoxelOpacity = (Bits >> 5) & 1;
	}
	Ar << Settings.ShapePreservation << Settings.PositionPrecision << Settings.NormalPrecision << Settings.TangentPrecision << Settings.BoneWeightPrecision
	   << Settings.TargetMinimumResidencyInKB << Settings.KeepPercentTriangles << Settings.TrimRelativeError << Settings.GenerateFallback
	   << Settings.FallbackTarget << Settings.FallbackPercentTriangles << Settings.FallbackRelativeError << Settings.MaxEdgeLengthFactor
	   << Settings.NumRays << Settings.VoxelLevel << Settings.RayBackUp << Settings.DisplacementUVChannel << Settings.DisplacementMaps
	   << Settings.NaniteAssemblyData;
	return Ar;
}

bool FMeshNaniteSettings::operator==(const FMeshNaniteSettings& Other) const
{
	return bEnabled == Other.bEnabled && bExplicitTangents == Other.bExplicitTangents && bLerpUVs == Other.bLerpUVs && bSeparable == Other.bSeparable
		&& bVoxelNDF == Other.bVoxelNDF && bVoxelOpacity == Other.bVoxelOpacity && ShapePreservation == Other.ShapePreservation
		&& PositionPrecision == Other.PositionPrecision && NormalPrecision == Other.NormalPrecision && TangentPrecision == Other.TangentPrecision
		&& BoneWeightPrecision == Other.BoneWeightPrecision && TargetMinimumResidencyInKB == Other.TargetMinimumResidencyInKB
		&& KeepPercentTriangles == Other.KeepPercentTriangles && TrimRelativeError == Other.TrimRelativeError && GenerateFallback == Other.GenerateFallback
		&& FallbackTarget == Other.FallbackTarget && FallbackPercentTriangles == Other.FallbackPercentTriangles
		&& FallbackRelativeError == Other.FallbackRelativeError && MaxEdgeLengthFactor == Other.MaxEdgeLengthFactor && NumRays == Other.NumRays
		&& VoxelLevel == Other.VoxelLevel && RayBackUp == Other.RayBackUp && DisplacementUVChannel == Other.DisplacementUVChannel
		&& DisplacementMaps == Other.DisplacementMaps && NaniteAssemblyData == Other.NaniteAssemblyData;
}
