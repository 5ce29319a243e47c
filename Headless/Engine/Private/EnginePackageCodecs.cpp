// How the engine's asset classes appear in this build's package files.
#include "Engine/StaticMesh.h"
#include "Engine/Texture2D.h"
#include "Headless/PackageFileReader.h"
#include "Headless/PackageFileWriter.h"
#include "Headless/PackageFiles.h"
#include "Headless/StaticMeshGeometry.h"
#include "Materials/Material.h"
#include "Materials/MaterialInstanceConstant.h"
#include "Templates/Casts.h"
#include "UObject/UObjectGlobals.h"

#include <bit>
#include <memory>

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
	using UE::Headless::EPackageRecordFieldKind;
	using UE::Headless::FPackageFileWriter;
	using UE::Headless::FPackageRecordField;
	using UE::Headless::FPackageRecordSink;
	using UE::Headless::FPackageRecordSource;
	using UE::Headless::FPackageValue;

	constexpr FPackageRecordField IntField{ EPackageRecordFieldKind::Int32 };
	constexpr FPackageRecordField FloatField{ EPackageRecordFieldKind::Float };

	FPackageRecordField IndexField(int64 Count)
	{
		return FPackageRecordField{ EPackageRecordFieldKind::Int32, 0, Count - 1 };
	}

	// An assembly node: part index, transform space, rotation x y z w, translation x y z, scale x y z.
	constexpr int32 NodeFields = 12;
	constexpr FPackageRecordField NodeLayout[NodeFields] = { IntField, { EPackageRecordFieldKind::Int32, 0, (int64)ENaniteAssemblyNodeTransformSpace::BoneRelative },
		FloatField, FloatField, FloatField, FloatField, FloatField, FloatField, FloatField, FloatField, FloatField, FloatField };

	constexpr FPackageRecordField PositionLayout[] = { FloatField, FloatField, FloatField };
	constexpr FPackageRecordField UVLayout[] = { FloatField, FloatField };

	// A bone influence of version 1, inside its node: bone index, weight.
	constexpr FPackageRecordField Version1InfluenceLayout[] = { IntField, FloatField };

	uint32 Bits(float Value)
	{
		return std::bit_cast<uint32>(Value);
	}

	uint32 Bits(int32 Value)
	{
		return std::bit_cast<uint32>(Value);
	}

	float FloatOf(uint32 Word)
	{
		return std::bit_cast<float>(Word);
	}

	int32 IntOf(uint32 Word)
	{
		return std::bit_cast<int32>(Word);
	}

	FString NameText(const FName& Name)
	{
		return Name.IsNone() ? FString() : Name.ToString();
	}

	FName TextName(const FPackageValue& Value)
	{
		const FString Text = Value.AsString();
		return Text.IsEmpty() ? FName() : FName(Text);
	}

	void WriteReference(FPackageFileWriter& Out, const UObject* Object)
	{
		if (Object)
		{
			Out.String(Object->GetPathName());
		}
		else
		{
			Out.Null();
		}
	}

	// A referenced object is loaded with the package that refers to it, as the engine loads imports.
	template <typename T>
	T* LoadReference(const FPackageValue& Value)
	{
		if (Value.IsNull())
		{
			return nullptr;
		}
		const FString Path = Value.AsString();
		return Path.IsEmpty() ? nullptr : Cast<T>(StaticLoadObject(T::StaticClass(), nullptr, Path));
	}

	bool ReadOptionalBool(const FPackageValue& Object, const char* Key, bool bDefault)
	{
		return Object.HasMember(Key) ? Object.Member(Key).AsBool() : bDefault;
	}

	int64 ReadOptionalInteger(const FPackageValue& Object, const char* Key, int64 Default, int64 Min = MIN_int32, int64 Max = MAX_int32)
	{
		return Object.HasMember(Key) ? Object.Member(Key).AsInteger(Min, Max) : Default;
	}

	float ReadOptionalFloat(const FPackageValue& Object, const char* Key, float Default)
	{
		return Object.HasMember(Key) ? Object.Member(Key).AsFloat() : Default;
	}

	// The records of a TArray, one element each, written and read through a pair of functions.
	template <typename T, int32 NumFields>
	class TArrayRecordSource final : public FPackageRecordSource
	{
	public:
		using FEncode = void (*)(const T& Item, uint32* OutWords);

		TArrayRecordSource(const TArray<T>& InItems, FEncode InEncode)
			: Items(InItems)
			, Encode(InEncode)
		{
		}

		void Produce(uint32* OutWords, int64 NumRecords) override
		{
			for (int64 Record = 0; Record < NumRecords; ++Record, OutWords += NumFields)
			{
				Encode(Items[(int32)Next++], OutWords);
			}
		}

	private:
		const TArray<T>& Items;
		FEncode Encode;
		int64 Next = 0;
	};

	template <typename T, int32 NumFields>
	class TArrayRecordSink final : public FPackageRecordSink
	{
	public:
		using FDecode = void (*)(const uint32* Words, T& OutItem);

		TArrayRecordSink(TArray<T>& InItems, FDecode InDecode)
			: Items(InItems)
			, Decode(InDecode)
		{
		}

		void Reserve(int64 NumRecords) override
		{
			Items.Reserve(Items.Num() + (int32)NumRecords);
		}

		void Consume(const uint32* Words, int64 NumRecords) override
		{
			for (int64 Record = 0; Record < NumRecords; ++Record, Words += NumFields)
			{
				Decode(Words, Items.AddDefaulted_GetRef());
			}
		}

	private:
		TArray<T>& Items;
		FDecode Decode;
	};

	void EncodeNode(const FNaniteAssemblyNode& Node, uint32* OutWords)
	{
		const FTransform3f& Transform = Node.Transform;
		OutWords[0] = Bits(Node.PartIndex);
		OutWords[1] = Bits((int32)Node.TransformSpace);
		for (int32 Lane = 0; Lane < 4; ++Lane)
		{
			OutWords[2 + Lane] = Bits(Transform.GetRotationLane(Lane));
		}
		for (int32 Lane = 0; Lane < 3; ++Lane)
		{
			OutWords[6 + Lane] = Bits(Transform.GetTranslationLane(Lane));
			OutWords[9 + Lane] = Bits(Transform.GetScale3DLane(Lane));
		}
	}

	void DecodeNode(const uint32* Words, FNaniteAssemblyNode& OutNode)
	{
		OutNode.PartIndex = IntOf(Words[0]);
		OutNode.TransformSpace = (ENaniteAssemblyNodeTransformSpace)IntOf(Words[1]);
		OutNode.Transform.SetRotation(FQuat4f(FloatOf(Words[2]), FloatOf(Words[3]), FloatOf(Words[4]), FloatOf(Words[5])));
		OutNode.Transform.SetTranslation(FVector3f(FloatOf(Words[6]), FloatOf(Words[7]), FloatOf(Words[8])));
		OutNode.Transform.SetScale3D(FVector3f(FloatOf(Words[9]), FloatOf(Words[10]), FloatOf(Words[11])));
	}

	void EncodePosition(const FVector3f& Position, uint32* OutWords)
	{
		OutWords[0] = Bits(Position.X);
		OutWords[1] = Bits(Position.Y);
		OutWords[2] = Bits(Position.Z);
	}

	void DecodePosition(const uint32* Words, FVector3f& OutPosition)
	{
		OutPosition = FVector3f(FloatOf(Words[0]), FloatOf(Words[1]), FloatOf(Words[2]));
	}

	void EncodeUV(const FVector2f& UV, uint32* OutWords)
	{
		OutWords[0] = Bits(UV.X);
		OutWords[1] = Bits(UV.Y);
	}

	void DecodeUV(const uint32* Words, FVector2f& OutUV)
	{
		OutUV = FVector2f(FloatOf(Words[0]), FloatOf(Words[1]));
	}

	// A triangle: its three vertex indices and its polygon group.
	void EncodeTriangle(const UE::Headless::FMeshTriangle& Triangle, uint32* OutWords)
	{
		for (int32 Corner = 0; Corner < 3; ++Corner)
		{
			OutWords[Corner] = Bits(Triangle.VertexIndices[Corner]);
		}
		OutWords[3] = Bits(Triangle.PolygonGroup);
	}

	void DecodeTriangle(const uint32* Words, UE::Headless::FMeshTriangle& OutTriangle)
	{
		for (int32 Corner = 0; Corner < 3; ++Corner)
		{
			OutTriangle.VertexIndices[Corner] = IntOf(Words[Corner]);
		}
		OutTriangle.PolygonGroup = IntOf(Words[3]);
	}

	using FNodeSource = TArrayRecordSource<FNaniteAssemblyNode, NodeFields>;
	using FNodeSink = TArrayRecordSink<FNaniteAssemblyNode, NodeFields>;
	using FPositionSource = TArrayRecordSource<FVector3f, 3>;
	using FPositionSink = TArrayRecordSink<FVector3f, 3>;
	using FUVSource = TArrayRecordSource<FVector2f, 2>;
	using FUVSink = TArrayRecordSink<FVector2f, 2>;
	using FTriangleSource = TArrayRecordSource<UE::Headless::FMeshTriangle, 4>;
	using FTriangleSink = TArrayRecordSink<UE::Headless::FMeshTriangle, 4>;

	// Bone influences, in node order: node index, bone index, weight.
	class FInfluenceSource final : public FPackageRecordSource
	{
	public:
		explicit FInfluenceSource(const TArray<FNaniteAssemblyNode>& InNodes)
			: Nodes(InNodes)
		{
		}

		void Produce(uint32* OutWords, int64 NumRecords) override
		{
			for (int64 Record = 0; Record < NumRecords; ++Record, OutWords += 3)
			{
				while (NextInfluence >= Nodes[NextNode].BoneInfluences.Num())
				{
					++NextNode;
					NextInfluence = 0;
				}
				const FNaniteAssemblyBoneInfluence& Influence = Nodes[NextNode].BoneInfluences[NextInfluence++];
				OutWords[0] = Bits(NextNode);
				OutWords[1] = Bits(Influence.BoneIndex);
				OutWords[2] = Bits(Influence.BoneWeight);
			}
		}

	private:
		const TArray<FNaniteAssemblyNode>& Nodes;
		int32 NextNode = 0;
		int32 NextInfluence = 0;
	};

	class FInfluenceSink final : public FPackageRecordSink
	{
	public:
		explicit FInfluenceSink(TArray<FNaniteAssemblyNode>& InNodes)
			: Nodes(InNodes)
		{
		}

		void Consume(const uint32* Words, int64 NumRecords) override
		{
			for (int64 Record = 0; Record < NumRecords; ++Record, Words += 3)
			{
				Nodes[IntOf(Words[0])].BoneInfluences.Add(FNaniteAssemblyBoneInfluence{ IntOf(Words[1]), FloatOf(Words[2]) });
			}
		}

	private:
		TArray<FNaniteAssemblyNode>& Nodes;
	};

	void WriteStaticMaterials(const UStaticMesh& Mesh, FPackageFileWriter& Out)
	{
		Out.Key("static_materials").BeginArray();
		for (const FStaticMaterial& Material : Mesh.GetStaticMaterials())
		{
			const FMeshUVChannelInfo& UV = Material.UVChannelData;
			Out.BeginObject();
			WriteReference(Out.Key("material"), Material.MaterialInterface.Get());
			Out.Key("slot_name").String(NameText(Material.MaterialSlotName));
			Out.Key("imported_slot_name").String(NameText(Material.ImportedMaterialSlotName));
			WriteReference(Out.Key("overlay_material"), Material.OverlayMaterialInterface.Get());
			Out.Key("uv_channel").BeginObject();
			Out.Key("initialized").Bool(UV.bInitialized);
			Out.Key("override_densities").Bool(UV.bOverrideDensities);
			Out.Key("densities").BeginArray();
			for (const float Density : UV.LocalUVDensities)
			{
				Out.Float(Density);
			}
			Out.EndArray();
			Out.EndObject();
			Out.EndObject();
		}
		Out.EndArray();
	}

	void WriteNaniteSettings(const FMeshNaniteSettings& Settings, FPackageFileWriter& Out)
	{
		Out.Key("nanite").BeginObject();
		Out.Key("enabled").Bool(Settings.bEnabled);
		Out.Key("explicit_tangents").Bool(Settings.bExplicitTangents);
		Out.Key("lerp_uvs").Bool(Settings.bLerpUVs);
		Out.Key("separable").Bool(Settings.bSeparable);
		Out.Key("voxel_ndf").Bool(Settings.bVoxelNDF);
		Out.Key("voxel_opacity").Bool(Settings.bVoxelOpacity);
		Out.Key("shape_preservation").Int((int64)Settings.ShapePreservation);
		Out.Key("position_precision").Int(Settings.PositionPrecision);
		Out.Key("normal_precision").Int(Settings.NormalPrecision);
		Out.Key("tangent_precision").Int(Settings.TangentPrecision);
		Out.Key("bone_weight_precision").Int(Settings.BoneWeightPrecision);
		Out.Key("target_minimum_residency_kb").Int(Settings.TargetMinimumResidencyInKB);
		Out.Key("keep_percent_triangles").Float(Settings.KeepPercentTriangles);
		Out.Key("trim_relative_error").Float(Settings.TrimRelativeError);
		Out.Key("generate_fallback").Int((int64)Settings.GenerateFallback);
		Out.Key("fallback_target").Int((int64)Settings.FallbackTarget);
		Out.Key("fallback_percent_triangles").Float(Settings.FallbackPercentTriangles);
		Out.Key("fallback_relative_error").Float(Settings.FallbackRelativeError);
		Out.Key("max_edge_length_factor").Float(Settings.MaxEdgeLengthFactor);
		Out.Key("num_rays").Int(Settings.NumRays);
		Out.Key("voxel_level").Int(Settings.VoxelLevel);
		Out.Key("ray_back_up").Float(Settings.RayBackUp);
		Out.Key("displacement_uv_channel").Int(Settings.DisplacementUVChannel);
		Out.Key("displacement_maps").BeginArray();
		for (const FMeshDisplacementMap& Map : Settings.DisplacementMaps)
		{
			Out.BeginArray();
			Out.Float(Map.Magnitude);
			Out.Float(Map.Center);
			Out.EndArray();
		}
		Out.EndArray();

		const FNaniteAssemblyData& Assembly = Settings.NaniteAssemblyData;
		Out.Key("assembly").BeginObject();
		Out.Key("parts").BeginArray();
		for (const FNaniteAssemblyPart& Part : Assembly.Parts)
		{
			Out.BeginObject();
			Out.Key("mesh").String(Part.MeshObjectPath.ToString());
			Out.Key("material_remap").BeginArray();
			for (const int32 Entry : Part.MaterialRemap)
			{
				Out.Int(Entry);
			}
			Out.EndArray();
			Out.EndObject();
		}
		Out.EndArray();
		int64 NumInfluences = 0;
		for (const FNaniteAssemblyNode& Node : Assembly.Nodes)
		{
			NumInfluences += Node.BoneInfluences.Num();
		}
		const FPackageRecordField InfluenceLayout[] = { IndexField(Assembly.Nodes.Num()), IntField, FloatField };
		Out.Key("nodes").Records(NodeLayout, Assembly.Nodes.Num(), std::make_unique<FNodeSource>(Assembly.Nodes, &EncodeNode));
		Out.Key("bone_influences").Records(InfluenceLayout, NumInfluences, std::make_unique<FInfluenceSource>(Assembly.Nodes));
		Out.EndObject();
		Out.EndObject();
	}

	void WriteGeometry(const UE::Headless::FStaticMeshGeometry& Geometry, FPackageFileWriter& Out)
	{
		Out.Key("source_models").Int(Geometry.NumSourceModels);
		if (!Geometry.bHasMeshDescription)
		{
			return;
		}
		const FPackageRecordField TriangleLayout[] = { IndexField(Geometry.Positions.Num()), IndexField(Geometry.Positions.Num()),
			IndexField(Geometry.Positions.Num()), IntField };
		Out.Key("geometry").BeginObject();
		Out.Key("positions").Records(PositionLayout, Geometry.Positions.Num(), std::make_unique<FPositionSource>(Geometry.Positions, &EncodePosition));
		if (Geometry.Normals.Num() > 0)
		{
			Out.Key("normals").Records(PositionLayout, Geometry.Normals.Num(), std::make_unique<FPositionSource>(Geometry.Normals, &EncodePosition));
		}
		if (Geometry.UVs.Num() > 0)
		{
			Out.Key("uvs").Records(UVLayout, Geometry.UVs.Num(), std::make_unique<FUVSource>(Geometry.UVs, &EncodeUV));
		}
		Out.Key("triangles").Records(TriangleLayout, Geometry.Triangles.Num(), std::make_unique<FTriangleSource>(Geometry.Triangles, &EncodeTriangle));
		Out.Key("polygon_groups").BeginArray();
		for (const FName& SlotName : Geometry.PolygonGroupSlotNames)
		{
			Out.String(NameText(SlotName));
		}
		Out.EndArray();
		Out.Key("sections").BeginArray();
		for (const int32 Section : Geometry.SectionMaterialIndices)
		{
			Out.Int(Section);
		}
		Out.EndArray();
		Out.EndObject();
	}

	void WriteStaticMesh(const UObject& Object, FPackageFileWriter& Out)
	{
		const UStaticMesh& Mesh = static_cast<const UStaticMesh&>(Object);
		WriteStaticMaterials(Mesh, Out);
		WriteNaniteSettings(Mesh.GetNaniteSettings(), Out);
		WriteGeometry(UE::Headless::GetMeshGeometry(Mesh), Out);
	}

	void ReadStaticMaterials(UStaticMesh& Mesh, const FPackageValue& In)
	{
		const FPackageValue List = In.Member("static_materials");
		TArray<FStaticMaterial> Materials;
		for (const FPackageValue& Entry : List.Elements())
		{
			const FPackageValue Slot = Entry.Member("slot_name");
			const FPackageValue ImportedSlot = Entry.Member("imported_slot_name");
			const FPackageValue Reference = Entry.Member("material");
			UMaterialInterface* Overlay = nullptr;
			if (Entry.HasMember("overlay_material"))
			{
				Overlay = LoadReference<UMaterialInterface>(Entry.Member("overlay_material"));
			}
			FStaticMaterial& Material = Materials[Materials.Add(FStaticMaterial(LoadReference<UMaterialInterface>(Reference), TextName(Slot), TextName(ImportedSlot), Overlay))];
			if (!Entry.HasMember("uv_channel"))
			{
				continue;
			}
			const FPackageValue UV = Entry.Member("uv_channel");
			Material.UVChannelData.bInitialized = UV.Member("initialized").AsBool();
			Material.UVChannelData.bOverrideDensities = UV.Member("override_densities").AsBool();
			const FPackageValue Densities = UV.Member("densities");
			const int32 NumDensities = (int32)UE_ARRAY_COUNT(Material.UVChannelData.LocalUVDensities);
			if (Densities.Num() != NumDensities)
			{
				Densities.Fail(FString::Printf(TEXT("has %lld values instead of %d"), (long long)Densities.Num(), NumDensities));
			}
			int32 Index = 0;
			for (const FPackageValue& Density : Densities.Elements())
			{
				Material.UVChannelData.LocalUVDensities[Index++] = Density.AsFloat();
			}
		}
		Mesh.SetStaticMaterials(Materials);
	}

	// Bone influences of the last node read, as version 1 kept them: [[bone index, weight], ...].
	class FNodeInfluenceSink final : public FPackageRecordSink
	{
	public:
		explicit FNodeInfluenceSink(FNaniteAssemblyNode& InNode)
			: Node(InNode)
		{
		}

		void Consume(const uint32* Words, int64 NumRecords) override
		{
			for (int64 Record = 0; Record < NumRecords; ++Record, Words += 2)
			{
				Node.BoneInfluences.Add(FNaniteAssemblyBoneInfluence{ IntOf(Words[0]), FloatOf(Words[1]) });
			}
		}

	private:
		FNaniteAssemblyNode& Node;
	};

	// Version 1 kept each node's bone influences in the node, as a thirteenth value.
	void ReadVersion1Nodes(const FPackageValue& Nodes, TArray<FNaniteAssemblyNode>& OutNodes)
	{
		FNodeSink NodeSink(OutNodes, &DecodeNode);
		for (const FPackageValue& Entry : Nodes.Elements())
		{
			const int64 NumValues = Entry.Num();
			if (NumValues != NodeFields && NumValues != NodeFields + 1)
			{
				Entry.Fail(FString::Printf(TEXT("has %lld values instead of %d, or %d with its bone influences"), (long long)NumValues, NodeFields, NodeFields + 1));
				return;
			}
			uint32 Words[NodeFields] = {};
			int32 Field = 0;
			for (const FPackageValue& Value : Entry.Elements())
			{
				if (Field == NodeFields)
				{
					FNodeInfluenceSink InfluenceSink(OutNodes.Last());
					Value.ReadRecords(Version1InfluenceLayout, InfluenceSink);
					break;
				}
				Words[Field] = Value.AsRecordWord(NodeLayout[Field]);
				if (++Field == NodeFields)
				{
					NodeSink.Consume(Words, 1);
				}
			}
		}
	}

	void ReadNaniteSettings(FMeshNaniteSettings& Settings, const FPackageValue& In)
	{
		const FPackageValue Nanite = In.Member("nanite");
		// Files written before the settings were saved whole have only "enabled"; the rest keep their defaults.
		const FMeshNaniteSettings Defaults;
		Settings.bEnabled = Nanite.Member("enabled").AsBool();
		Settings.bExplicitTangents = ReadOptionalBool(Nanite, "explicit_tangents", Defaults.bExplicitTangents);
		Settings.bLerpUVs = ReadOptionalBool(Nanite, "lerp_uvs", Defaults.bLerpUVs);
		Settings.bSeparable = ReadOptionalBool(Nanite, "separable", Defaults.bSeparable);
		Settings.bVoxelNDF = ReadOptionalBool(Nanite, "voxel_ndf", Defaults.bVoxelNDF);
		Settings.bVoxelOpacity = ReadOptionalBool(Nanite, "voxel_opacity", Defaults.bVoxelOpacity);
		Settings.ShapePreservation = (ENaniteShapePreservation)ReadOptionalInteger(Nanite, "shape_preservation", (int64)Defaults.ShapePreservation, 0,
			(int64)ENaniteShapePreservation::Voxelize);
		Settings.PositionPrecision = (int32)ReadOptionalInteger(Nanite, "position_precision", Defaults.PositionPrecision);
		Settings.NormalPrecision = (int32)ReadOptionalInteger(Nanite, "normal_precision", Defaults.NormalPrecision);
		Settings.TangentPrecision = (int32)ReadOptionalInteger(Nanite, "tangent_precision", Defaults.TangentPrecision);
		Settings.BoneWeightPrecision = (int32)ReadOptionalInteger(Nanite, "bone_weight_precision", Defaults.BoneWeightPrecision);
		Settings.TargetMinimumResidencyInKB = (uint32)ReadOptionalInteger(Nanite, "target_minimum_residency_kb", Defaults.TargetMinimumResidencyInKB, 0, MAX_uint32);
		Settings.KeepPercentTriangles = ReadOptionalFloat(Nanite, "keep_percent_triangles", Defaults.KeepPercentTriangles);
		Settings.TrimRelativeError = ReadOptionalFloat(Nanite, "trim_relative_error", Defaults.TrimRelativeError);
		Settings.GenerateFallback = (ENaniteGenerateFallback)ReadOptionalInteger(Nanite, "generate_fallback", (int64)Defaults.GenerateFallback, 0,
			(int64)ENaniteGenerateFallback::Enabled);
		Settings.FallbackTarget = (ENaniteFallbackTarget)ReadOptionalInteger(Nanite, "fallback_target", (int64)Defaults.FallbackTarget, 0,
			(int64)ENaniteFallbackTarget::RelativeError);
		Settings.FallbackPercentTriangles = ReadOptionalFloat(Nanite, "fallback_percent_triangles", Defaults.FallbackPercentTriangles);
		Settings.FallbackRelativeError = ReadOptionalFloat(Nanite, "fallback_relative_error", Defaults.FallbackRelativeError);
		Settings.MaxEdgeLengthFactor = ReadOptionalFloat(Nanite, "max_edge_length_factor", Defaults.MaxEdgeLengthFactor);
		Settings.NumRays = (int32)ReadOptionalInteger(Nanite, "num_rays", Defaults.NumRays);
		Settings.VoxelLevel = (int32)ReadOptionalInteger(Nanite, "voxel_level", Defaults.VoxelLevel);
		Settings.RayBackUp = ReadOptionalFloat(Nanite, "ray_back_up", Defaults.RayBackUp);
		Settings.DisplacementUVChannel = (int32)ReadOptionalInteger(Nanite, "displacement_uv_channel", Defaults.DisplacementUVChannel);
		Settings.DisplacementMaps.Reset();
		if (Nanite.HasMember("displacement_maps"))
		{
			const FPackageValue Maps = Nanite.Member("displacement_maps");
			for (const FPackageValue& Map : Maps.Elements())
			{
				if (Map.Num() != 2)
				{
					Map.Fail(FString::Printf(TEXT("has %lld values instead of 2"), (long long)Map.Num()));
				}
				FMeshDisplacementMap& Read = Settings.DisplacementMaps.AddDefaulted_GetRef();
				int32 Field = 0;
				for (const FPackageValue& Value : Map.Elements())
				{
					(Field++ == 0 ? Read.Magnitude : Read.Center) = Value.AsFloat();
				}
			}
		}

		const FPackageValue Assembly = Nanite.Member("assembly");
		const FPackageValue Parts = Assembly.Member("parts");
		FNaniteAssemblyData& Data = Settings.NaniteAssemblyData;
		for (const FPackageValue& Entry : Parts.Elements())
		{
			FNaniteAssemblyPart& Part = Data.Parts.AddDefaulted_GetRef();
			Part.MeshObjectPath = FSoftObjectPath(Entry.Member("mesh").AsString());
			const FPackageValue Remap = Entry.Member("material_remap");
			for (const FPackageValue& Slot : Remap.Elements())
			{
				Part.MaterialRemap.Add(Slot.AsInt32());
			}
		}
		const FPackageValue Nodes = Assembly.Member("nodes");
		if (In.GetFormatVersion() < 2)
		{
			ReadVersion1Nodes(Nodes, Data.Nodes);
			return;
		}
		FNodeSink NodeSink(Data.Nodes, &DecodeNode);
		Nodes.ReadRecords(NodeLayout, NodeSink);
		const FPackageRecordField InfluenceLayout[] = { IndexField(Data.Nodes.Num()), IntField, FloatField };
		FInfluenceSink InfluenceSink(Data.Nodes);
		Assembly.Member("bone_influences").ReadRecords(InfluenceLayout, InfluenceSink);
	}

	void ReadGeometry(UE::Headless::FStaticMeshGeometry& Geometry, const FPackageValue& In)
	{
		Geometry = UE::Headless::FStaticMeshGeometry();
		Geometry.NumSourceModels = (int32)ReadOptionalInteger(In, "source_models", 0, 0, MAX_int32);
		if (!In.HasMember("geometry") || In.Member("geometry").IsNull())
		{
			return;
		}
		const FPackageValue Source = In.Member("geometry");
		Geometry.bHasMeshDescription = true;
		FPositionSink PositionSink(Geometry.Positions, &DecodePosition);
		Source.Member("positions").ReadRecords(PositionLayout, PositionSink);
		if (Source.HasMember("normals"))
		{
			FPositionSink NormalSink(Geometry.Normals, &DecodePosition);
			Source.Member("normals").ReadRecords(PositionLayout, NormalSink);
			if (Geometry.Normals.Num() != Geometry.Positions.Num())
			{
				Source.Member("normals").Fail(FString::Printf(TEXT("has %d normals instead of one per position (%d)"), Geometry.Normals.Num(), Geometry.Positions.Num()));
			}
		}
		if (Source.HasMember("uvs"))
		{
			FUVSink UVSink(Geometry.UVs, &DecodeUV);
			Source.Member("uvs").ReadRecords(UVLayout, UVSink);
			if (Geometry.UVs.Num() != Geometry.Positions.Num())
			{
				Source.Member("uvs").Fail(FString::Printf(TEXT("has %d UVs instead of one per position (%d)"), Geometry.UVs.Num(), Geometry.Positions.Num()));
			}
		}
		const FPackageRecordField TriangleLayout[] = { IndexField(Geometry.Positions.Num()), IndexField(Geometry.Positions.Num()),
			IndexField(Geometry.Positions.Num()), IntField };
		FTriangleSink TriangleSink(Geometry.Triangles, &DecodeTriangle);
		Source.Member("triangles").ReadRecords(TriangleLayout, TriangleSink);
		const FPackageValue Groups = Source.Member("polygon_groups");
		for (const FPackageValue& Group : Groups.Elements())
		{
			Geometry.PolygonGroupSlotNames.Add(TextName(Group));
		}
		const FPackageValue Sections = Source.Member("sections");
		for (const FPackageValue& Section : Sections.Elements())
		{
			Geometry.SectionMaterialIndices.Add(Section.AsInt32());
		}
	}

	void ReadStaticMesh(UObject& Object, const FPackageValue& In)
	{
		UStaticMesh& Mesh = static_cast<UStaticMesh&>(Object);
		ReadStaticMaterials(Mesh, In);
		ReadNaniteSettings(Mesh.GetNaniteSettings(), In);
		ReadGeometry(UE::Headless::GetMeshGeometry(Mesh), In);
	}

	void WriteNothing(const UObject&, FPackageFileWriter&)
	{
	}

	void ReadNothing(UObject&, const FPackageValue&)
	{
	}

	void WriteMaterialInstance(const UObject& Object, FPackageFileWriter& Out)
	{
		WriteReference(Out.Key("parent"), static_cast<const UMaterialInstanceConstant&>(Object).Parent.Get());
	}

	void ReadMaterialInstance(UObject& Object, const FPackageValue& In)
	{
		static_cast<UMaterialInstanceConstant&>(Object).Parent = In.HasMember("parent") ? LoadReference<UMaterialInterface>(In.Member("parent")) : nullptr;
	}

	void WriteTexture(const UObject& Object, FPackageFileWriter& Out)
	{
		const UTexture2D& Texture = static_cast<const UTexture2D&>(Object);
		Out.Key("size_x").Int(Texture.GetSizeX());
		Out.Key("size_y").Int(Texture.GetSizeY());
	}

	void ReadTexture(UObject& Object, const FPackageValue& In)
	{
		UE::Headless::FTextureAccess::SetSize(static_cast<UTexture2D&>(Object), (int32)ReadOptionalInteger(In, "size_x", 0, 0, MAX_int32),
			(int32)ReadOptionalInteger(In, "size_y", 0, 0, MAX_int32));
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
