// How values cross into Lua for every verb: UTF-8 texts, result-table fields and the error table.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

#include <string>

// A Lua string argument as an engine text; an embedded NUL ends it.
FString NaniteAssemblyTextFromUtf8(const char* Utf8);
FString NaniteAssemblyTextFromUtf8(const std::string& Utf8);

void PushNaniteAssemblyText(lua_State* L, const FString& Text);

const TCHAR* NaniteAssemblyBoolText(bool bValue);

// Fields of the table at the absolute stack index TableIndex; nothing else is left on the stack.
void SetNaniteAssemblyBool(lua_State* L, int TableIndex, const char* Key, bool bValue);
void SetNaniteAssemblyInteger(lua_State* L, int TableIndex, const char* Key, int64 Value);
void SetNaniteAssemblyNumber(lua_State* L, int TableIndex, const char* Key, double Value);
void SetNaniteAssemblyText(lua_State* L, int TableIndex, const char* Key, const FString& Text);

// Takes the table on top of the stack as the verb's result and pops it.
sol::table TakeNaniteAssemblyTable(lua_State* L);

// A new table {ok = false, error = Message}; it logs nothing.
sol::table MakeNaniteAssemblyError(sol::this_state State, const FString& Message);
