#pragma once

#include "Materials/MaterialInterface.h"
#include "UObject/ObjectPtr.h"

class UMaterialInstance : public UMaterialInterface
{
	DECLARE_HEADLESS_CLASS(UMaterialInstance, UMaterialInterface, ENGINE_API)

public:
	TObjectPtr<UMaterialInterface> Parent;

	ENGINE_API UMaterial* GetMaterial() override;
	ENGINE_API void Serialize(FArchive& Ar) override;
};
