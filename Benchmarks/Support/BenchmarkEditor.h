// The one headless editor a benchmark program runs in: a fresh project with the module loaded and one host
// session, started on first use and kept for the whole run.
#pragma once

#include "TestProject.h"

#include <memory>
#include <string>

class FBenchmarkEditor
{
public:
	static FBenchmarkEditor& Get();

	[[nodiscard]] FTestProject& Project() { return TestProject; }
	[[nodiscard]] FTestSession& Session() { return *LuaSession; }
	[[nodiscard]] lua_State* Lua() { return LuaSession->GetLuaState(); }

	// Runs Chunk with Argument as its `...` and leaves its one result on the stack (typically a function
	// to call in the timed loop); exits the program when the chunk fails, since nothing can be measured.
	void PushChunkResult(const std::string& Chunk, const std::string& Argument);

	// Forgets every undo step, so that repeated builds do not pile up their records.
	void ResetUndoBuffer();

private:
	FBenchmarkEditor();

	FTestProject TestProject;
	std::unique_ptr<FTestSession> LuaSession;
};
