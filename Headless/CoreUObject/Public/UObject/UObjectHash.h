#pragma once

#include "Containers/Array.h"
#include "UObject/ObjectMacros.h"

#include <functional>

class UObject;
class UObjectBase;
class UClass;

// The objects whose outer is Outer (and, when nested, their inners); garbage objects are left out.
COREUOBJECT_API void GetObjectsWithOuter(const UObjectBase* Outer, TArray<UObject*>& Results, bool bIncludeNestedObjects = true,
	EObjectFlags ExclusionFlags = RF_ClassDefaultObject, EInternalObjectFlags ExclusionInternalFlags = EInternalObjectFlags::None);

COREUOBJECT_API void ForEachObjectOfClass(const UClass* ClassToLookFor, const std::function<void(UObject*)>& Operation, bool bIncludeDerivedClasses = true,
	EObjectFlags ExcludeFlags = RF_ClassDefaultObject, EInternalObjectFlags ExclusionInternalFlags = EInternalObjectFlags::None);
