#pragma once

#include "Materials/MaterialInterface.h"

class UMaterial : public UMaterialInterface
{
	DECLARE_HEADLESS_CLASS(UMaterial, UMaterialInterface, ENGINE_API)

public:
	UMaterial* GetMaterial() override { return this; }
};
