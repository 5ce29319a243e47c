// How the engine's asset classes appear in this build's JSON package files.
#include "Engine/StaticMesh.h"
#include "Engine/Texture2D.h"
#include "Headless/PackageFiles.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Templates/Casts.h"
#include "UObject/UObjectGlobals.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace UE::Headless
{
	struct FTextureAccess
	{
		static void SetSize(UTexture2D& Texture, int32 SizeX, int32 SizeY)
		{
			Texture.SizeX = SizeX;
			Texture.SizeY = SizeY;
		}
	};
}

namespace
{
	using FJson = nlohmann::json;
	using UE::Headless::FromUtf8;
	using UE::Headless::ToUtf8;

	std::string NameText(const FName& Name)
	{
		return Name.IsNone() ? std::string() : ToUtf8(Name.ToString());
	}

	FName TextName(const FJson& Value)
	{
		const std::string Text = Value.get<std::string>();
		return Text.empty() ? FName() : FName(FromUtf8(Text));
	}

	// A referenced object is loaded with the package that refers to it, as the engine loads imports.
	template <typename T>
	T* LoadReference(const FJson& Value)
	{
		if (Value.is_null())
		{
			return nullptr;
		}
		const FString Path = FromUtf8(Value.get<std::string>());
		return Path.IsEmpty() ? nullptr : Cast<T>(StaticLoadObject(T::StaticClass(), nullptr, Path));
	}

	// The shortest decimal text that reads back as the same float, so that files stay small and exact. JSON has
	// no number for infinities and NaN (they would be written as null), so those are written as words.
	FJson FloatJson(float Value)
	{
		if (std::isnan(Value))
		{
			return FJson("nan");
		}
		if (std::isinf(Value))
		{
			return FJson(Value > 0 ? "inf" : "-inf");
		}
		char Buffer[32];
		const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value);
		const double Shortest = std::strtod(std::string(Buffer, Result.ptr).c_str(), nullptr);
		return FJson((float)Shortest == Value ? Shortest : (double)Value);
	}

	float ReadFloat(const FJson& Value)
	{
		if (Value.is_string())
		{
			const std::string Word = Value.get<std::string>();
			if (Word == "nan")
			{
				return std::numeric_limits<float>::quiet_NaN();
			}
			if (Word == "inf" || Word == "-inf")
			{
				return Word == "inf" ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
			}
		}
		return Value.get<float>();
	}

	FJson ReferenceJson(const UObject* Object)
	{
		return Object ? FJson(ToUtf8(Object->GetPathName())) : FJson(nullptr);
	}

	bool Require(const FJson& Object, const char* Key, FJson::value_t Type, FString& OutError)
	{
		if (!Object.contains(Key) || Object[Key].type() != Type)
		{
			OutError = FString::Printf(TEXT("'%hs' is missing or has the wrong type"), Key);
			return false;
		}
		return true;
	}

	void WriteStaticMesh(const UObject& Object, FJson& Out)
	{
		const UStaticMesh& Mesh = static_cast<const UStaticMesh&>(Object);
		FJson Materials = FJson::array();
		for (const FStaticMaterial& Material : Mesh.GetStaticMaterials())
		{
			const FMeshUVChannelInfo& UV = Material.UVChannelData;
			FJson Densities = FJson::array();
			for (const float Density : UV.LocalUVDensities)
			{
				Densities.push_back(FloatJson(Density));
			}
			Materials.push_back({ { "material", ReferenceJson(Material.MaterialInterface.Get()) },
				{ "slot_name", NameText(Material.MaterialSlotName) },
				{ "imported_slot_name", NameText(Material.ImportedMaterialSlotName) },
				{ "overlay_material", ReferenceJson(Material.OverlayMaterialInterface.Get()) },
				{ "uv_channel", { { "initialized", UV.bInitialized }, { "override_densities", UV.bOverrideDensities }, { "densities", Densities } } } });
		}
		Out["static_materials"] = Materials;

		const FMeshNaniteSettings& Settings = Mesh.GetNaniteSettings();
		FJson Parts = FJson::array();
		for (const FNaniteAssemblyPart& Part : Settings.NaniteAssemblyData.Parts)
		{
			FJson Remap = FJson::array();
			for (const int32 Entry : Part.MaterialRemap)
			{
				Remap.push_back(Entry);
			}
			Parts.push_back({ { "mesh", ToUtf8(Part.MeshObjectPath.ToString()) }, { "material_remap", Remap } });
		}
		// Each node is [part index, transform space, rotation x y z w, translation x y z, scale x y z], followed by
		// its bone influences as [[bone index, weight], ...] when it has any.
		FJson Nodes = FJson::array();
		for (const FNaniteAssemblyNode& Node : Settings.NaniteAssemblyData.Nodes)
		{
			const FTransform3f& T = Node.Transform;
			FJson Entry = { Node.PartIndex, (int)Node.TransformSpace, FloatJson(T.GetRotationLane(0)), FloatJson(T.GetRotationLane(1)),
				FloatJson(T.GetRotationLane(2)), FloatJson(T.GetRotationLane(3)), FloatJson(T.GetTranslationLane(0)), FloatJson(T.GetTranslationLane(1)),
				FloatJson(T.GetTranslationLane(2)), FloatJson(T.GetScale3DLane(0)), FloatJson(T.GetScale3DLane(1)), FloatJson(T.GetScale3DLane(2)) };
			if (Node.BoneInfluences.Num() > 0)
			{
				FJson Influences = FJson::array();
				for (const FNaniteAssemblyBoneInfluence& Influence : Node.BoneInfluences)
				{
					Influences.push_back({ Influence.BoneIndex, FloatJson(Influence.BoneWeight) });
				}
				Entry.push_back(Influences);
			}
			Nodes.push_back(Entry);
		}
		FJson DisplacementMaps = FJson::array();
		for (const FMeshDisplacementMap& Map : Settings.DisplacementMaps)
		{
			DisplacementMaps.push_back({ FloatJson(Map.Magnitude), FloatJson(Map.Center) });
		}
		Out["nanite"] = { { "enabled", (bool)Settings.bEnabled }, { "explicit_tangents", (bool)Settings.bExplicitTangents },
			{ "lerp_uvs", (bool)Settings.bLerpUVs }, { "separable", (bool)Settings.bSeparable }, { "voxel_ndf", (bool)Settings.bVoxelNDF },
			{ "voxel_opacity", (bool)Settings.bVoxelOpacity }, { "shape_preservation", (int)Settings.ShapePreservation },
			{ "position_precision", Settings.PositionPrecision }, { "normal_precision", Settings.NormalPrecision },
			{ "tangent_precision", Settings.TangentPrecision }, { "bone_weight_precision", Settings.BoneWeightPrecision },
			{ "target_minimum_residency_kb", Settings.TargetMinimumResidencyInKB }, { "keep_percent_triangles", FloatJson(Settings.KeepPercentTriangles) },
			{ "trim_relative_error", FloatJson(Settings.TrimRelativeError) }, { "generate_fallback", (int)Settings.GenerateFallback },
			{ "fallback_target", (int)Settings.FallbackTarget }, { "fallback_percent_triangles", FloatJson(Settings.FallbackPercentTriangles) },
			{ "fallback_relative_error", FloatJson(Settings.FallbackRelativeError) }, { "max_edge_length_factor", FloatJson(Settings.MaxEdgeLengthFactor) },
			{ "num_rays", Settings.NumRays }, { "voxel_level", Settings.VoxelLevel }, { "ray_back_up", FloatJson(Settings.RayBackUp) },
			{ "displacement_uv_channel", Settings.DisplacementUVChannel }, { "displacement_maps", DisplacementMaps },
			{ "assembly", { { "parts", Parts }, { "nodes", Nodes } } } };

		const UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(Mesh);
		Out["source_models"] = Geometry.NumSourceModels;
		if (Geometry.bHasMeshDescription)
		{
			FJson Positions = FJson::array();
			for (const FVector3f& Position : Geometry.Positions)
			{
				Positions.push_back({ FloatJson(Position.X), FloatJson(Position.Y), FloatJson(Position.Z) });
			}
			FJson Triangles = FJson::array();
			for (const UE::Headless::FMeshTriangle& Triangle : Geometry.Triangles)
			{
				Triangles.push_back({ Triangle.VertexIndices[0], Triangle.VertexIndices[1], Triangle.VertexIndices[2], Triangle.PolygonGroup });
			}
			FJson Groups = FJson::array();
			for (const FName& SlotName : Geometry.PolygonGroupSlotNames)
			{
				Groups.push_back(NameText(SlotName));
			}
			Out["geometry"] = { { "positions", Positions }, { "triangles", Triangles }, { "polygon_groups", Groups },
				{ "sections", Geometry.SectionMaterialIndices.Num() ? FJson(std::vector<int32>(Geometry.SectionMaterialIndices.begin(), Geometry.SectionMaterialIndices.end())) : FJson::array() } };
		}
	}

	bool ReadStaticMesh(UObject& Object, const FJson& In, FString& OutError)
	{
		UStaticMesh& Mesh = static_cast<UStaticMesh&>(Object);
		if (!Require(In, "static_materials", FJson::value_t::array, OutError))
		{
			return false;
		}
		TArray<FStaticMaterial> Materials;
		for (const FJson& Entry : In["static_materials"])
		{
			FStaticMaterial& Material = Materials[Materials.Add(FStaticMaterial(LoadReference<UMaterialInterface>(Entry.at("material")),
				TextName(Entry.at("slot_name")), TextName(Entry.at("imported_slot_name")),
				Entry.contains("overlay_material") ? LoadReference<UMaterialInterface>(Entry["overlay_material"]) : nullptr))];
			if (Entry.contains("uv_channel"))
			{
				const FJson& UV = Entry["uv_channel"];
				Material.UVChannelData.bInitialized = UV.at("initialized").get<bool>();
				Material.UVChannelData.bOverrideDensities = UV.at("override_densities").get<bool>();
				for (int32 Index = 0; Index < (int32)UE_ARRAY_COUNT(Material.UVChannelData.LocalUVDensities); ++Index)
				{
					Material.UVChannelData.LocalUVDensities[Index] = ReadFloat(UV.at("densities").at(Index));
				}
			}
		}
		Mesh.SetStaticMaterials(Materials);

		if (!Require(In, "nanite", FJson::value_t::object, OutError))
		{
			return false;
		}
		const FJson& Nanite = In["nanite"];
		FMeshNaniteSettings& Settings = Mesh.GetNaniteSettings();
		// Files written before the settings were saved whole have only "enabled"; the rest keep their defaults.
		const FMeshNaniteSettings Defaults;
		const auto Float = [&Nanite](const char* Key, float Default) { return Nanite.contains(Key) ? ReadFloat(Nanite[Key]) : Default; };
		Settings.bEnabled = Nanite.at("enabled").get<bool>();
		Settings.bExplicitTangents = Nanite.value("explicit_tangents", (bool)Defaults.bExplicitTangents);
		Settings.bLerpUVs = Nanite.value("lerp_uvs", (bool)Defaults.bLerpUVs);
		Settings.bSeparable = Nanite.value("separable", (bool)Defaults.bSeparable);
		Settings.bVoxelNDF = Nanite.value("voxel_ndf", (bool)Defaults.bVoxelNDF);
		Settings.bVoxelOpacity = Nanite.value("voxel_opacity", (bool)Defaults.bVoxelOpacity);
		Settings.ShapePreservation = (ENaniteShapePreservation)Nanite.value("shape_preservation", (int)Defaults.ShapePreservation);
		Settings.PositionPrecision = Nanite.value("position_precision", Defaults.PositionPrecision);
		Settings.NormalPrecision = Nanite.value("normal_precision", Defaults.NormalPrecision);
		Settings.TangentPrecision = Nanite.value("tangent_precision", Defaults.TangentPrecision);
		Settings.BoneWeightPrecision = Nanite.value("bone_weight_precision", Defaults.BoneWeightPrecision);
		Settings.TargetMinimumResidencyInKB = Nanite.value("target_minimum_residency_kb", Defaults.TargetMinimumResidencyInKB);
		Settings.KeepPercentTriangles = Float("keep_percent_triangles", Defaults.KeepPercentTriangles);
		Settings.TrimRelativeError = Float("trim_relative_error", Defaults.TrimRelativeError);
		Settings.GenerateFallback = (ENaniteGenerateFallback)Nanite.value("generate_fallback", (int)Defaults.GenerateFallback);
		Settings.FallbackTarget = (ENaniteFallbackTarget)Nanite.value("fallback_target", (int)Defaults.FallbackTarget);
		Settings.FallbackPercentTriangles = Float("fallback_percent_triangles", Defaults.FallbackPercentTriangles);
		Settings.FallbackRelativeError = Float("fallback_relative_error", Defaults.FallbackRelativeError);
		Settings.MaxEdgeLengthFactor = Float("max_edge_length_factor", Defaults.MaxEdgeLengthFactor);
		Settings.NumRays = Nanite.value("num_rays", Defaults.NumRays);
		Settings.VoxelLevel = Nanite.value("voxel_level", Defaults.VoxelLevel);
		Settings.RayBackUp = Float("ray_back_up", Defaults.RayBackUp);
		Settings.DisplacementUVChannel = Nanite.value("displacement_uv_channel", Defaults.DisplacementUVChannel);
		Settings.DisplacementMaps.Reset();
		if (Nanite.contains("displacement_maps"))
		{
			for (const FJson& Map : Nanite["displacement_maps"])
			{
				Settings.DisplacementMaps.Add(FMeshDisplacementMap{ ReadFloat(Map.at(0)), ReadFloat(Map.at(1)) });
			}
		}
		const FJson& Assembly = Nanite.at("assembly");
		for (const FJson& Entry : Assembly.at("parts"))
		{
			FNaniteAssemblyPart& Part = Settings.NaniteAssemblyData.Parts.AddDefaulted_GetRef();
			Part.MeshObjectPath = FSoftObjectPath(FromUtf8(Entry.at("mesh").get<std::string>()));
			for (const FJson& Remap : Entry.at("material_remap"))
			{
				Part.MaterialRemap.Add(Remap.get<int32>());
			}
		}
		const FJson& Nodes = Assembly.at("nodes");
		Settings.NaniteAssemblyData.Nodes.Reserve((int32)Nodes.size());
		for (const FJson& Entry : Nodes)
		{
			if (!Entry.is_array() || (Entry.size() != 12 && Entry.size() != 13))
			{
				OutError = TEXT("a node is not a list of 12 numbers and its bone influences");
				return false;
			}
			FNaniteAssemblyNode& Node = Settings.NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
			Node.PartIndex = Entry[0].get<int32>();
			Node.TransformSpace = (ENaniteAssemblyNodeTransformSpace)Entry[1].get<int32>();
			Node.Transform.SetRotation(FQuat4f(ReadFloat(Entry[2]), ReadFloat(Entry[3]), ReadFloat(Entry[4]), ReadFloat(Entry[5])));
			Node.Transform.SetTranslation(FVector3f(ReadFloat(Entry[6]), ReadFloat(Entry[7]), ReadFloat(Entry[8])));
			Node.Transform.SetScale3D(FVector3f(ReadFloat(Entry[9]), ReadFloat(Entry[10]), ReadFloat(Entry[11])));
			if (Entry.size() == 13)
			{
				for (const FJson& Influence : Entry[12])
				{
					Node.BoneInfluences.Add(FNaniteAssemblyBoneInfluence{ Influence.at(0).get<int32>(), ReadFloat(Influence.at(1)) });
				}
			}
		}

		UE::Headless::FStaticMeshGeometry& Geometry = UE::Headless::GetMeshGeometry(Mesh);
		Geometry = UE::Headless::FStaticMeshGeometry();
		Geometry.NumSourceModels = In.contains("source_models") ? In["source_models"].get<int32>() : 0;
		if (In.contains("geometry") && !In["geometry"].is_null())
		{
			const FJson& Source = In["geometry"];
			Geometry.bHasMeshDescription = true;
			for (const FJson& Position : Source.at("positions"))
			{
				Geometry.Positions.Add(FVector3f(ReadFloat(Position.at(0)), ReadFloat(Position.at(1)), ReadFloat(Position.at(2))));
			}
			for (const FJson& Entry : Source.at("triangles"))
			{
				UE::Headless::FMeshTriangle Triangle;
				for (int32 Corner = 0; Corner < 3; ++Corner)
				{
					Triangle.VertexIndices[Corner] = Entry.at(Corner).get<int32>();
					if (!Geometry.Positions.IsValidIndex(Triangle.VertexIndices[Corner]))
					{
						OutError = TEXT("a triangle refers to a vertex that does not exist");
						return false;
					}
				}
				Triangle.PolygonGroup = Entry.at(3).get<int32>();
				Geometry.Triangles.Add(Triangle);
			}
			for (const FJson& Group : Source.at("polygon_groups"))
			{
				Geometry.PolygonGroupSlotNames.Add(TextName(Group));
			}
			for (const FJson& Section : Source.at("sections"))
			{
				Geometry.SectionMaterialIndices.Add(Section.get<int32>());
			}
		}
		return true;
	}

	void WriteNothing(const UObject&, FJson&)
	{
	}

	bool ReadNothing(UObject&, const FJson&, FString&)
	{
		return true;
	}

	void WriteMaterialInstance(const UObject& Object, FJson& Out)
	{
		Out["parent"] = ReferenceJson(static_cast<const UMaterialInstanceConstant&>(Object).Parent.Get());
	}

	bool ReadMaterialInstance(UObject& Object, const FJson& In, FString& OutError)
	{
		static_cast<UMaterialInstanceConstant&>(Object).Parent = In.contains("parent") ? LoadReference<UMaterialInterface>(In["parent"]) : nullptr;
		return true;
	}

	void WriteTexture(const UObject& Object, FJson& Out)
	{
		const UTexture2D& Texture = static_cast<const UTexture2D&>(Object);
		Out["size_x"] = Texture.GetSizeX();
		Out["size_y"] = Texture.GetSizeY();
	}

	bool ReadTexture(UObject& Object, const FJson& In, FString& OutError)
	{
		UE::Headless::FTextureAccess::SetSize(static_cast<UTexture2D&>(Object), In.value("size_x", 0), In.value("size_y", 0));
		return true;
	}

	struct FRegisterEngineCodecs
	{
		FRegisterEngineCodecs()
		{
			UE::Headless::RegisterPackageObjectCodec(TEXT("StaticMesh"), { &UStaticMesh::StaticClass, &WriteStaticMesh, &ReadStaticMesh });
			UE::Headless::RegisterPackageObjectCodec(TEXT("Material"), { &UMaterial::StaticClass, &WriteNothing, &ReadNothing });
			UE::Headless::RegisterPackageObjectCodec(TEXT("MaterialInstanceConstant"),
				{ &UMaterialInstanceConstant::StaticClass, &WriteMaterialInstance, &ReadMaterialInstance });
			UE::Headless::RegisterPackageObjectCodec(TEXT("Texture2D"), { &UTexture2D::StaticClass, &WriteTexture, &ReadTexture });
		}
	} RegisterEngineCodecs;
}
