#include "Request/NaniteAssemblyTableReaders.h"

#include "Lua/NaniteAssemblyLuaResult.h"
#include "Request/NaniteAssemblyLuaAccess.h"


namespace
{
	// The position of Key among the accepted keys, or INDEX_NONE. Lua strings end with a NUL after their last
	// byte, so each comparison stops at the first differing byte without measuring either string; a key with
	// an embedded NUL never equals an accepted key.
	int32 FindAcceptedKey(const char* Key, size_t KeyLength, TConstArrayView<const ANSICHAR*> AcceptedKeys)
	{
		for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
		{
			const char* Accepted = AcceptedKeys[KeyIndex];
			size_t Offset = 0;
			while (Offset < KeyLength && Accepted[Offset] != '\0' && Accepted[Offset] == Key[Offset])
			{
				++Offset;
			}
			if (Offset == KeyLength && Accepted[Offset] == '\0')
			{
				return KeyIndex;
			}
		}
		return INDEX_NONE;
	}

	// Walks the keys of the table at Index without metamethods; OnAccepted(KeyIndex) sees each accepted
	// key's value at the top of the stack. Keys are compared as bytes, case-sensitively. The caller has
	// made room for the key and the value.
	template <typename FunctionType>
	bool WalkKeys(lua_State* L, int Index, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath,
		FunctionType&& OnAccepted, FString& OutError)
	{
		lua_pushnil(L);
		while (lua_next(L, Index) != 0)
		{
			if (lua_type(L, -2) != LUA_TSTRING)
			{
				OutError = ContextPath.ToString() + TEXT(": only string keys are accepted");
				lua_pop(L, 2);
				return false;
			}
			size_t KeyLength = 0;
			const char* Key = lua_tolstring(L, -2, &KeyLength);
			const int32 Match = FindAcceptedKey(Key, KeyLength, AcceptedKeys);
			if (Match == INDEX_NONE)
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
				lua_pop(L, 2);
				return false;
			}
			OnAccepted(Match);
			lua_pop(L, 1);
		}
		return true;
	}

	void IgnoreValue(int32)
	{
	}

	// The message for a number field whose value is not a finite number; kept out of the readers' hot path.
	FORCENOINLINE bool RefuseNumber(int Type, const ANSICHAR* Key, const FNaniteAssemblyContextPath& ContextPath, FString& OutError)
	{
		const TCHAR* Fault = Type != LUA_TNUMBER ? TEXT("must be a number") : TEXT("must be finite");
		OutError = FString::Printf(TEXT("%s: '%s' %s"), *ContextPath.ToString(), *NaniteAssemblyTextFromUtf8(Key), Fault);
		return false;
	}

	// Judges a field's value as the number field Key: nil takes the default, anything but a Lua number is
	// refused, and so is a number that is not finite.
	inline bool JudgeNumber(int Type, double Value, const ANSICHAR* Key, double Default, double& OutValue, const FNaniteAssemblyContextPath& ContextPath,
		FString& OutError)
	{
		if (Type == LUA_TNUMBER && FMath::IsFinite(Value))
		{
			OutValue = Value;
			return true;
		}
		if (Type == LUA_TNIL)
		{
			OutValue = Default;
			return true;
		}
		return RefuseNumber(Type, Key, ContextPath, OutError);
	}

	// Checks the keys of the value at Index (when it is a table) and, for a plain table, hands each accepted
	// key's value to Record in the same walk. Returns through bOutFetchLazily whether the values must be
	// fetched one by one instead, when the reader comes to them: a table with a metatable, or a userdata,
	// whose __index may answer differently (or fail) depending on what was asked before.
	template <typename RecordType>
	bool WalkAndRecord(lua_State* L, int Index, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath,
		RecordType&& Record, bool& bOutFetchLazily, FString& OutError)
	{
		bOutFetchLazily = !NaniteAssemblyIsPlainTable(L, Index);
		if (lua_type(L, Index) != LUA_TTABLE)
		{
			return true;
		}
		if (bOutFetchLazily)
		{
			return WalkKeys(L, Index, AcceptedKeys, ContextPath, IgnoreValue, OutError);
		}
		return WalkKeys(L, Index, AcceptedKeys, ContextPath, Record, OutError);
	}
}

bool CheckOnlyKnownKeys(const sol::stack_object& Value, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath,
	FString& OutError)
{
	lua_State* L = Value.lua_state();
	if (lua_type(L, Value.stack_index()) != LUA_TTABLE)
	{
		return true;
	}
	FNaniteAssemblyStackGuard Guard(L);
	NaniteAssemblyReserveStack(L, 2);
	return WalkKeys(L, Value.stack_index(), AcceptedKeys, ContextPath, IgnoreValue, OutError);
}

bool FNaniteAssemblyFields::Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys,
	const FNaniteAssemblyContextPath& ContextPath, FString& OutError)
{
	L = Table.lua_state();
	TableIndex = Table.stack_index();
	Keys = AcceptedKeys;
	NaniteAssemblyReserveStack(L, AcceptedKeys.Num() + 2);
	FirstSlot = lua_gettop(L) + 1;
	for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
	{
		lua_pushnil(L);
	}
	const int First = FirstSlot;
	lua_State* State = L;
	return WalkAndRecord(
		L, TableIndex, AcceptedKeys, ContextPath, [State, First](int32 KeyIndex) { lua_copy(State, -1, First + KeyIndex); }, bFetchLazily, OutError);
}

int FNaniteAssemblyFields::Fetch(int32 KeyIndex) const
{
	if (bFetchLazily)
	{
		NaniteAssemblyPushField(L, TableIndex, Keys[KeyIndex]);
		lua_replace(L, Slot(KeyIndex));
	}
	return lua_type(L, Slot(KeyIndex));
}

bool FNaniteAssemblyNumbers::Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys,
	const FNaniteAssemblyContextPath& ContextPath, FString& OutError)
{
	check(AcceptedKeys.Num() <= MaxKeys);
	L = Table.lua_state();
	TableIndex = Table.stack_index();
	Keys = AcceptedKeys;
	NaniteAssemblyReserveStack(L, 2);
	for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
	{
		Types[KeyIndex] = LUA_TNIL;
	}
	lua_State* State = L;
	auto Record = [this, State](int32 KeyIndex)
	{
		Types[KeyIndex] = lua_type(State, -1);
		if (Types[KeyIndex] == LUA_TNUMBER)
		{
			Values[KeyIndex] = (double)lua_tonumberx(State, -1, nullptr);
		}
	};
	return WalkAndRecord(L, TableIndex, AcceptedKeys, ContextPath, Record, bFetchLazily, OutError);
}

bool FNaniteAssemblyNumbers::IsPresent(int32 KeyIndex) const
{
	if (!bFetchLazily)
	{
		return Types[KeyIndex] != LUA_TNIL;
	}
	const int Type = NaniteAssemblyPushField(L, TableIndex, Keys[KeyIndex]);
	lua_pop(L, 1);
	return Type != LUA_TNIL;
}

bool FNaniteAssemblyNumbers::Read(int32 FirstKey, const ANSICHAR* const* KeyNames, int32 Count, const double* Defaults, double* OutValues,
	const FNaniteAssemblyContextPath& ContextPath, FString& OutError) const
{
	if (bFetchLazily)
	{
		return ReadNumberFields(sol::stack_object(L, TableIndex), KeyNames, Count, OutValues, Defaults, ContextPath, OutError);
	}
	for (int32 FieldIndex = 0; FieldIndex < Count; ++FieldIndex)
	{
		const int32 Key = FirstKey + FieldIndex;
		if (!JudgeNumber(Types[Key], Values[Key], KeyNames[FieldIndex], Defaults[FieldIndex], OutValues[FieldIndex], ContextPath, OutError))
		{
			return false;
		}
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
		const double Value = Type == LUA_TNUMBER ? (double)lua_tonumberx(L, -1, nullptr) : 0.0;
		if (!JudgeNumber(Type, Value, KeyNames[FieldIndex], Defaults[FieldIndex], OutValues[FieldIndex], ContextPath, OutError))
		{
			return false;
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
