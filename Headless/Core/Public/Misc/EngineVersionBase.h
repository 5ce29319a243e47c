#pragma once

#include "HAL/Platform.h"

enum class EVersionComponent
{
	Major,
	Minor,
	Patch,
	Changelist,
	Branch,
};

class FEngineVersionBase
{
public:
	FEngineVersionBase() = default;
	FEngineVersionBase(uint16 InMajor, uint16 InMinor, uint16 InPatch = 0, uint32 InChangelist = 0)
		: Major(InMajor)
		, Minor(InMinor)
		, Patch(InPatch)
		, Changelist(InChangelist)
	{
	}

	[[nodiscard]] uint16 GetMajor() const { return Major; }
	[[nodiscard]] uint16 GetMinor() const { return Minor; }
	[[nodiscard]] uint16 GetPatch() const { return Patch; }
	[[nodiscard]] uint32 GetChangelist() const { return Changelist; }

protected:
	uint16 Major = 0;
	uint16 Minor = 0;
	uint16 Patch = 0;
	uint32 Changelist = 0;
};
