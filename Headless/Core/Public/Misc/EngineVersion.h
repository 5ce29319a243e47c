// The version of the running engine.
#pragma once

#include "Containers/UnrealString.h"
#include "Misc/EngineVersionBase.h"

class FEngineVersion : public FEngineVersionBase
{
public:
	FEngineVersion() = default;
	CORE_API FEngineVersion(uint16 InMajor, uint16 InMinor, uint16 InPatch, uint32 InChangelist, const FString& InBranch);

	static CORE_API const FEngineVersion& Current();

	// "5.7.1" up to the patch; the default also appends "-<changelist>+<branch>".
	[[nodiscard]] CORE_API FString ToString(EVersionComponent LastComponent = EVersionComponent::Branch) const;
	[[nodiscard]] const FString& GetBranch() const { return Branch; }

private:
	FString Branch;
};
