#include "BenchmarkEditor.h"

#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Internationalization/Internationalization.h"

#include <cstdio>
#include <cstdlib>

FBenchmarkEditor& FBenchmarkEditor::Get()
{
	static FBenchmarkEditor Editor;
	return Editor;
}

FBenchmarkEditor::FBenchmarkEditor()
{
	if (!TestProject.Start())
	{
		std::fprintf(stderr, "the headless editor did not start\n");
		std::exit(1);
	}
	LuaSession = std::make_unique<FTestSession>(TestProject);
}

void FBenchmarkEditor::PushChunkResult(const std::string& Chunk, const std::string& Argument)
{
	lua_State* L = Lua();
	if (luaL_loadbuffer(L, Chunk.c_str(), Chunk.size(), "=benchmark") != LUA_OK)
	{
		std::fprintf(stderr, "%s\n", lua_tostring(L, -1));
		std::exit(1);
	}
	lua_pushlstring(L, Argument.data(), Argument.size());
	if (lua_pcall(L, 1, 1, 0) != LUA_OK)
	{
		std::fprintf(stderr, "%s\n", lua_tostring(L, -1));
		std::exit(1);
	}
}

void FBenchmarkEditor::ResetUndoBuffer()
{
	GEditor->Trans->Reset(NSLOCTEXT("Benchmarks", "ResetUndo", "Benchmark iteration"));
}
