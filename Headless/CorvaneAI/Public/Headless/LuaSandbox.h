// Harness-only: the folders a sandboxed host Lua session may reach.
#pragma once

#include <string>

namespace UE::Headless
{
	// A sandboxed session runs no programs, loads no native code or precompiled chunks, keeps only debug.traceback of
	// the debug library, and opens files only in these folders: for writing only in the project's, for reading in
	// both. Paths are resolved, links and ".." included, before they are judged.
	struct FLuaSandboxFolders
	{
		std::string ProjectDir;
		std::string ScriptDir;
	};
}
