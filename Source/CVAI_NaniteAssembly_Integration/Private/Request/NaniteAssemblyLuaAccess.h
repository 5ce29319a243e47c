// Field, element and length access for the request readers. A plain table is read directly; a value with
// a metatable (a proxy table or a userdata) is read inside a protected call, so that an error raised by
// its __index or __len reaches the script as that error, after the reader's own state is cleaned up,
// instead of jumping over it.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

#include <stdexcept>

// A Lua error raised by the script's own metamethod while the request was read; the binding layer turns
// it back into that Lua error.
class FNaniteAssemblyScriptError : public std::runtime_error
{
public:
	using std::runtime_error::runtime_error;
};

// A table without a metatable: reading it runs no Lua code, so it may be read directly.
bool NaniteAssemblyIsPlainTable(lua_State* L, int Index);

// Pushes Value[Key] (honouring __index) and returns its Lua type.
int NaniteAssemblyPushField(lua_State* L, int Index, const char* Key);

// Pushes Value[Position] (honouring __index) and returns its Lua type.
int NaniteAssemblyPushElement(lua_State* L, int Index, lua_Integer Position);

// The length operator (honouring __len); a length that is not an integer rounds to the nearest one, half
// away from zero; a length that is not a number counts as 0.
int64 NaniteAssemblyLength(lua_State* L, int Index);

// Makes room for Count more values, or raises the binding library's stack-space error.
void NaniteAssemblyReserveStack(lua_State* L, int Count);
