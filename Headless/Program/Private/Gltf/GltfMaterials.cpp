#include "GltfMaterials.h"

#include "Engine/StaticMesh.h"
#include "Headless/StringUtils.h"
#include "Materials/MaterialInterface.h"

namespace UE::Headless
{
	namespace
	{
		// Linear base colours, light enough to show shading and far enough apart to tell slots apart.
		constexpr double SlotColours[][3] = {
			{ 0.80, 0.80, 0.80 },
			{ 0.85, 0.45, 0.20 },
			{ 0.25, 0.55, 0.85 },
			{ 0.35, 0.70, 0.30 },
			{ 0.80, 0.70, 0.20 },
			{ 0.60, 0.35, 0.75 },
			{ 0.20, 0.70, 0.70 },
			{ 0.80, 0.35, 0.45 },
		};
	}

	TArray<int32> AddGltfMaterials(FGltfDocument& Document, const TArray<FStaticMaterial>& Slots)
	{
		tinygltf::Model& Model = Document.GetModel();
		TArray<int32> Indices;
		for (int32 Slot = 0; Slot < Slots.Num(); ++Slot)
		{
			tinygltf::Material& Material = Model.materials.emplace_back();
			Material.name = ToUtf8(Slots[Slot].MaterialSlotName.ToString());
			const double* Colour = SlotColours[Slot % UE_ARRAY_COUNT(SlotColours)];
			Material.pbrMetallicRoughness.baseColorFactor = { Colour[0], Colour[1], Colour[2], 1.0 };
			Material.pbrMetallicRoughness.metallicFactor = 0.0;
			Material.pbrMetallicRoughness.roughnessFactor = 0.8;
			if (const UMaterialInterface* Interface = Slots[Slot].MaterialInterface.Get())
			{
				tinygltf::Value::Object Extras;
				Extras["material"] = tinygltf::Value(ToUtf8(Interface->GetPathName()));
				Material.extras = tinygltf::Value(std::move(Extras));
			}
			Indices.Add((int32)Model.materials.size() - 1);
		}
		return Indices;
	}
}
