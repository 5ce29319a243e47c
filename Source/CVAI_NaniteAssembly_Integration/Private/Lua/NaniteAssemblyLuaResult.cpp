#include "Lua/NaniteAssemblyLuaResult.h"

#include "Containers/StringConv.h"

FString NaniteAssemblyTextFromUtf8(const char* Utf8)
{
	if (!Utf8 || !*Utf8)
	{
		return FString();
	}
	const FUTF8ToTCHAR Converted(Utf8);
	return FString::ConstructFromPtrSize(Converted.Get(), Converted.Length());
}

FString NaniteAssemblyTextFromUtf8(const std::string& Utf8)
{
	return NaniteAssemblyTextFromUtf8(Utf8.c_str());
}

void PushNaniteAssemblyText(lua_State* L, const FString& Text)
{
	const FTCHARToUTF8 Converted(*Text, Text.Len());
	lua_pushlstring(L, (const char*)Converted.Get(), (size_t)Converted.Length());
}

const TCHAR* NaniteAssemblyBoolText(bool bValue)
{
	return bValue ? TEXT("true") : TEXT("false");
}

void SetNaniteAssemblyBool(lua_State* L, int TableIndex, const char* Key, bool bValue)
{
	lua_pushboolean(L, bValue ? 1 : 0);
	lua_setfield(L, TableIndex, Key);
}

void SetNaniteAssemblyInteger(lua_State* L, int TableIndex, const char* Key, int64 Value)
{
	lua_pushinteger(L, (lua_Integer)Value);
	lua_setfield(L, TableIndex, Key);
}

void SetNaniteAssemblyNumber(lua_State* L, int TableIndex, const char* Key, double Value)
{
	lua_pushnumber(L, (lua_Number)Value);
	lua_setfield(L, TableIndex, Key);
}

void SetNaniteAssemblyText(lua_State* L, int TableIndex, const char* Key, const FString& Text)
{
	PushNaniteAssemblyText(L, Text);
	lua_setfield(L, TableIndex, Key);
}

sol::table TakeNaniteAssemblyTable(lua_State* L)
{
	sol::table Result(L, -1);
	lua_pop(L, 1);
	return Result;
}

sol::table MakeNaniteAssemblyError(sol::this_state State, const FString& Message)
{
	lua_State* L = State;
	lua_createtable(L, 0, 2);
	const int TableIndex = lua_gettop(L);
	SetNaniteAssemblyBool(L, TableIndex, "ok", false);
	SetNaniteAssemblyText(L, TableIndex, "error", Message);
	return TakeNaniteAssemblyTable(L);
}
