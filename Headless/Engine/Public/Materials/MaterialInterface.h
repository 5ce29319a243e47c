#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

class UMaterial;

// The base of every material that a mesh slot can use.
class UMaterialInterface : public UObject
{
	DECLARE_CLASS(UMaterialInterface, UObject, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	// The material at the root of this one's parent chain; null when the chain is broken.
	[[nodiscard]] virtual UMaterial* GetMaterial() { return nullptr; }
	[[nodiscard]] UMaterial* GetBaseMaterial() { return GetMaterial(); }
};
