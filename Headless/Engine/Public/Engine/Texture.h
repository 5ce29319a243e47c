#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

class UTexture : public UObject
{
	DECLARE_CLASS(UTexture, UObject, CLASS_Abstract, CASTCLASS_None, TEXT("/Script/Engine"), ENGINE_API)
};
