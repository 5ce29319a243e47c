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
			Materials.push_back({ { "material", ReferenceJson(Material.MaterialInterface.Get()) },
				{ "slot_name", NameText(Material.MaterialSlotName) },
				{ "imported_slot_name", NameText(Material.ImportedMaterialSlotName) } });
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
		// Each node is [part index, transform space, rotation x y z w, translation x y z, scale x y z].
		FJson Nodes = FJson::array();
		for (const FNaniteAssemblyNode& Node : Settings.NaniteAssemblyData.Nodes)
		{
			const FTransform3f& T = Node.Transform;
			Nodes.push_back({ Node.PartIndex, (int)Node.TransformSpace, FloatJson(T.GetRotationLane(0)), FloatJson(T.GetRotationLane(1)),
				FloatJson(T.GetRotationLane(2)), FloatJson(T.GetRotationLane(3)), FloatJson(T.GetTranslationLane(0)), FloatJson(T.GetTranslationLane(1)),
				FloatJson(T.GetTranslationLane(2)), FloatJson(T.GetScale3DLane(0)), FloatJson(T.GetScale3DLane(1)), FloatJson(T.GetScale3DLane(2)) });
		}
		Out["nanite"] = { { "enabled", (bool)Settings.bEnabled }, { "assembly", { { "parts", Parts }, { "nodes", Nodes } } } };

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
			Materials.Add(FStaticMaterial(LoadReference<UMaterialInterface>(Entry.at("material")), TextName(Entry.at("slot_name")),
				TextName(Entry.at("imported_slot_name"))));
		}
		Mesh.SetStaticMaterials(Materials);

		if (!Require(In, "nanite", FJson::value_t::object, OutError))
		{
			return false;
		}
		const FJson& Nanite = In["nanite"];
		FMeshNaniteSettings& Settings = Mesh.GetNaniteSettings();
		Settings.bEnabled = Nanite.at("enabled").get<bool>();
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
			if (!Entry.is_array() || Entry.size() != 12)
			{
				OutError = TEXT("a node is not a list of 12 numbers");
				return false;
			}
			FNaniteAssemblyNode& Node = Settings.NaniteAssemblyData.Nodes.AddDefaulted_GetRef();
			Node.PartIndex = Entry[0].get<int32>();
			Node.TransformSpace = (ENaniteAssemblyNodeTransformSpace)Entry[1].get<int32>();
			Node.Transform.SetRotation(FQuat4f(ReadFloat(Entry[2]), ReadFloat(Entry[3]), ReadFloat(Entry[4]), ReadFloat(Entry[5])));
			Node.Transform.SetTranslation(FVector3f(ReadFloat(Entry[6]), ReadFloat(Entry[7]), ReadFloat(Entry[8])));
			Node.Transform.SetScale3D(FVector3f(ReadFloat(Entry[9]), ReadFloat(Entry[10]), ReadFloat(Entry[11])));
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
