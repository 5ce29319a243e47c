#pragma once

#include "Materials/MaterialInterface.h"

class UMaterial : public UMaterialInterface
{
	DECLARE_CLASS(UMaterial, UMaterialInterface, CLASS_None, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)

public:
	UMaterial* GetMaterial() override { return this; }
};
