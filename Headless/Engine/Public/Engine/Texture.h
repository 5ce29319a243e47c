#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/ObjectMacros.h"

class UTexture : public UObject
{
	DECLARE_HEADLESS_CLASS(UTexture, UObject, ENGINE_API)
};
