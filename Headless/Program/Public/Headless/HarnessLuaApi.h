// Harness-only: the global table "headless" that lets a script drive the editor as a person would.
#pragma once

struct lua_State;
class FLuaSessionData;

namespace UE::Headless
{
	void InstallHarnessLuaApi(lua_State* L, FLuaSessionData& Session);
}
