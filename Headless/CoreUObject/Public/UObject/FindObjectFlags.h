#pragma once

#include "Templates/UnrealTemplate.h"

enum class EFindObjectFlags
{
	None = 0,
	ExactClass = 1 << 0,
};
ENUM_CLASS_FLAGS(EFindObjectFlags);
