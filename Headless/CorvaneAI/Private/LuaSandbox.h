// Harness-only: takes from a host Lua session what can harm the machine (see FLuaSandboxFolders).
#pragma once

#include "Headless/LuaSandbox.h"

struct lua_State;

namespace UE::Headless
{
	// Replaces the dangerous functions of the standard libraries by ones that refuse with a Lua error naming the
	// function and why, and puts the file functions, load and require under the folders' rules.
	void ApplyLuaSandbox(lua_State* L, const FLuaSandboxFolders& Folders);
}
