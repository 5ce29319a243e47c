#include "Request/NaniteAssemblyLuaAccess.h"

#include <cmath>
#include <string>

namespace
{
	enum class EAccess
	{
		Field,
		Element,
		Length,
	};

	struct FAccess
	{
		EAccess Kind;
		const char* Key;
		lua_Integer Position;
	};

	int RunAccess(lua_State* L)
	{
		const FAccess* Access = static_cast<const FAccess*>(lua_touserdata(L, 2));
		switch (Access->Kind)
		{
		case EAccess::Field:
			lua_getfield(L, 1, Access->Key);
			break;
		case EAccess::Element:
			lua_geti(L, 1, Access->Position);
			break;
		case EAccess::Length:
			lua_len(L, 1);
			break;
		}
		return 1;
	}

	int Access(lua_State* L, int Index, const FAccess& Request)
	{
		Index = lua_absindex(L, Index);
		NaniteAssemblyReserveStack(L, 3);
		if (NaniteAssemblyIsPlainTable(L, Index))
		{
			switch (Request.Kind)
			{
			case EAccess::Field:
				return lua_getfield(L, Index, Request.Key);
			case EAccess::Element:
				return lua_geti(L, Index, Request.Position);
			case EAccess::Length:
				lua_len(L, Index);
				return lua_type(L, -1);
			}
		}
		lua_pushcfunction(L, &RunAccess);
		lua_pushvalue(L, Index);
		lua_pushlightuserdata(L, const_cast<FAccess*>(&Request));
		if (lua_pcall(L, 2, 1, 0) != LUA_OK)
		{
			size_t Length = 0;
			const char* Text = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
			std::string Message = Text ? std::string(Text, Length) : std::string("(error object is a ") + luaL_typename(L, -1) + " value)";
			lua_pop(L, 1);
			throw FNaniteAssemblyScriptError(Message);
		}
		return lua_type(L, -1);
	}
}

bool NaniteAssemblyIsPlainTable(lua_State* L, int Index)
{
	if (lua_type(L, Index) != LUA_TTABLE)
	{
		return false;
	}
	if (lua_getmetatable(L, Index))
	{
		lua_pop(L, 1);
		return false;
	}
	return true;
}

int NaniteAssemblyPushField(lua_State* L, int Index, const char* Key)
{
	return Access(L, Index, FAccess{ EAccess::Field, Key, 0 });
}

int NaniteAssemblyPushElement(lua_State* L, int Index, lua_Integer Position)
{
	return Access(L, Index, FAccess{ EAccess::Element, nullptr, Position });
}

int64 NaniteAssemblyLength(lua_State* L, int Index)
{
	Access(L, Index, FAccess{ EAccess::Length, nullptr, 0 });
	int64 Length = 0;
	if (lua_isinteger(L, -1))
	{
		Length = (int64)lua_tointeger(L, -1);
	}
	else
	{
		int bIsNumber = 0;
		const lua_Number Value = lua_tonumberx(L, -1, &bIsNumber);
		if (bIsNumber && std::isfinite(Value))
		{
			const lua_Number Limited = Value < -9.0e18 ? -9.0e18 : (Value > 9.0e18 ? 9.0e18 : Value);
			Length = (int64)std::llround(Limited);
		}
	}
	lua_pop(L, 1);
	return Length;
}

void NaniteAssemblyReserveStack(lua_State* L, int Count)
{
	luaL_checkstack(L, Count, "not enough Lua stack space to push this reference value");
}
