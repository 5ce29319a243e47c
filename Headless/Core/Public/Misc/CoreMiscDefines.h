// Small shared definitions of Core.
#pragma once

#include "HAL/Platform.h"

enum { INDEX_NONE = -1 };

enum EForceInit
{
	ForceInit,
	ForceInitToZero
};

enum ENoInit
{
	NoInit
};

enum class EAllowShrinking : uint8
{
	No,
	Yes,
	Default = Yes
};
