// A static mesh's material slots as glTF materials.
#pragma once

#include "Containers/Array.h"
#include "GltfDocument.h"

struct FStaticMaterial;

namespace UE::Headless
{
	// One glTF material per slot, named by the slot, with a plain colour of its own so that neighbouring slots
	// can be told apart (the engine's material graphs have no glTF form) and the material's object path in its
	// extras. Returns the glTF material of each slot.
	TArray<int32> AddGltfMaterials(FGltfDocument& Document, const TArray<FStaticMaterial>& Slots);
}
