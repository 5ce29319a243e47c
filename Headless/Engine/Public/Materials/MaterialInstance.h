#pragma once

#include "Materials/MaterialInterface.h"
#include "UObject/ObjectPtr.h"

class UMaterialInstance : public UMaterialInterface
{
	DECLARE_CLASS(UMaterialInstance, UMaterialInterface, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	TObjectPtr<UMaterialInterface> Parent;

	ENGINE_API UMaterial* GetMaterial() override;
	ENGINE_API void Serialize(FArchive& Ar) override;
};
