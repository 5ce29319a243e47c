#pragma once

#include "Materials/MaterialInstance.h"

class UMaterialInstanceConstant : public UMaterialInstance
{
	DECLARE_HEADLESS_CLASS(UMaterialInstanceConstant, UMaterialInstance, ENGINE_API)
};
