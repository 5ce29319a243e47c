#include "Request/NaniteAssemblyTableReaders.h"

#include "Lua/NaniteAssemblyLuaResult.h"
#include "Request/NaniteAssemblyLuaAccess.h"

#include <cstring>

bool CheckOnlyKnownKeys(const sol::stack_object& Value, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath,
	FString& OutError)
{
	lua_State* L = Value.lua_state();
	const int Index = Value.stack_index();
	if (lua_type(L, Index) != LUA_TTABLE)
	{
		return true;
	}
	FNaniteAssemblyStackGuard Guard(L);
	NaniteAssemblyReserveStack(L, 2);
	lua_pushnil(L);
	while (lua_next(L, Index) != 0)
	{
		if (lua_type(L, -2) != LUA_TSTRING)
		{
			OutError = ContextPath.ToString() + TEXT(": only string keys are accepted");
			return false;
		}
		size_t KeyLength = 0;
		const char* Key = lua_tolstring(L, -2, &KeyLength);
		bool bAccepted = false;
		for (const ANSICHAR* Accepted : AcceptedKeys)
		{
			if (std::strlen(Accepted) == KeyLength && std::memcmp(Accepted, Key, KeyLength) == 0)
			{
				bAccepted = true;
				break;
			}
		}
		if (!bAccepted)
		{
			FString AcceptedList;
			for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
			{
				if (KeyIndex > 0)
				{
					AcceptedList += TEXT("|");
				}
				AcceptedList += NaniteAssemblyTextFromUtf8(AcceptedKeys[KeyIndex]);
			}
			OutError = FString::Printf(TEXT("%s: unknown key '%s' (accepted: %s)"), *ContextPath.ToString(), *NaniteAssemblyTextFromUtf8(Key), *AcceptedList);
			return false;
		}
		lua_pop(L, 1);
	}
	return true;
}

bool ReadNumberFields(const sol::stack_object& Table, const ANSICHAR* const* KeyNames, int32 Count, double* OutValues, const double* Defaults,
	const FNaniteAssemblyContextPath& ContextPath, FString& OutError)
{
	lua_State* L = Table.lua_state();
	const int Index = Table.stack_index();
	FNaniteAssemblyStackGuard Guard(L);
	for (int32 FieldIndex = 0; FieldIndex < Count; ++FieldIndex)
	{
		const int Type = NaniteAssemblyPushField(L, Index, KeyNames[FieldIndex]);
		if (Type == LUA_TNIL)
		{
			OutValues[FieldIndex] = Defaults[FieldIndex];
		}
		else if (Type != LUA_TNUMBER)
		{
			OutError = FString::Printf(TEXT("%s: '%s' must be a number"), *ContextPath.ToString(), *NaniteAssemblyTextFromUtf8(KeyNames[FieldIndex]));
			return false;
		}
		else
		{
			OutValues[FieldIndex] = (double)lua_tonumberx(L, -1, nullptr);
			if (!FMath::IsFinite(OutValues[FieldIndex]))
			{
				OutError = FString::Printf(TEXT("%s: '%s' must be finite"), *ContextPath.ToString(), *NaniteAssemblyTextFromUtf8(KeyNames[FieldIndex]));
				return false;
			}
		}
		lua_pop(L, 1);
	}
	return true;
}

bool ReadOptionalBool(const sol::stack_object& Table, const ANSICHAR* KeyName, bool& InOutValue, FString& OutError)
{
	lua_State* L = Table.lua_state();
	FNaniteAssemblyStackGuard Guard(L);
	const int Type = NaniteAssemblyPushField(L, Table.stack_index(), KeyName);
	if (Type == LUA_TNIL)
	{
		return true;
	}
	if (Type != LUA_TBOOLEAN)
	{
		// This reader serves only the top level of nanite_assembly_build, whose name the message carries.
		OutError = FString::Printf(TEXT("nanite_assembly_build: '%s' must be a boolean"), *NaniteAssemblyTextFromUtf8(KeyName));
		return false;
	}
	InOutValue = lua_toboolean(L, -1) != 0;
	return true;
}
