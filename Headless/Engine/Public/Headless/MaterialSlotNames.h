// Harness-only: the rule by which the editor keeps a mesh's material slot names apart.
#pragma once

#include "Containers/Array.h"
#include "UObject/NameTypes.h"

namespace UE::Headless
{
	// Later slots that repeat an earlier slot's name take the next free number of that name: three slots named M
	// become M, M_0 and M_1.
	ENGINE_API void MakeSlotNamesUnique(TArray<FName>& Names);
}
