#pragma once

#include "CorvaneExtensionRegistrar.h"

// The documentation records the host shows for the three verbs, in the order support, build, info.
extern const TArray<FLuaFunctionDoc> NaniteAssemblyLuaDocs;
