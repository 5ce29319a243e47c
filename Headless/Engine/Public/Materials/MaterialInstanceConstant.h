#pragma once

#include "Materials/MaterialInstance.h"

class UMaterialInstanceConstant : public UMaterialInstance
{
	DECLARE_CLASS(UMaterialInstanceConstant, UMaterialInstance, CLASS_None, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)
};
