// Harness-only: the global table "headless" that lets a script drive the editor as a person would.
#pragma once

#include "Headless/LuaReference.h"

#include <string>
#include <vector>

struct lua_State;
class FLuaSessionData;

namespace UE::Headless
{
	// One function of the table: what it is called with and gives back, and its body, which runs only once the
	// arguments match the description.
	struct FHarnessFunction
	{
		FLuaFunctionReference Reference;
		int (*Body)(lua_State* L) = nullptr;
		// Reference.Signature() with the table's name, kept for the argument errors.
		std::string Signature;
	};

	// Every function of the table, in the order the reference lists them.
	const std::vector<FHarnessFunction>& GetHarnessFunctions();

	// The tables the functions give back.
	const std::vector<FLuaTableReference>& GetHarnessTables();

	void InstallHarnessLuaApi(lua_State* L, FLuaSessionData& Session);
}
