// One transform table of a part: {location={x,y,z}, rotation={pitch,yaw,roll} or Euler {x,y,z},
// scale={x,y,z} or a number}; every piece defaults, so {} is the identity.
#pragma once

#include "CoreMinimal.h"
#include "Request/NaniteAssemblyContextPath.h"

#include <sol/sol.hpp>

bool ReadTransform(const sol::stack_object& Value, const FNaniteAssemblyContextPath& ContextPath, FTransform& OutTransform, FString& OutError);
