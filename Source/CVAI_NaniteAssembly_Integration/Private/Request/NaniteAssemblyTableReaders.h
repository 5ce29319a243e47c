// The strict readers under the build request: only known keys, numbers that are numbers and finite, and
// booleans that are booleans. Each reports its fault by writing one message and returning false; none
// raises a Lua error, and each leaves the Lua stack as it found it.
#pragma once

#include "CoreMinimal.h"
#include "Request/NaniteAssemblyContextPath.h"

#include <sol/sol.hpp>

// Walks the table's keys without metamethods: every key must be a string equal, byte for byte, to one of
// AcceptedKeys; values are never looked at. A value that is not a table has nothing to check.
bool CheckOnlyKnownKeys(const sol::stack_object& Value, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath,
	FString& OutError);

// Reads Count named number fields (honouring __index): nil takes the default; anything but a Lua number is
// refused, and so is a number that is not finite. The first faulty field in list order is reported.
bool ReadNumberFields(const sol::stack_object& Table, const ANSICHAR* const* KeyNames, int32 Count, double* OutValues, const double* Defaults,
	const FNaniteAssemblyContextPath& ContextPath, FString& OutError);

// Reads an optional boolean of the build argument's top level; nil keeps the value the caller set.
bool ReadOptionalBool(const sol::stack_object& Table, const ANSICHAR* KeyName, bool& InOutValue, FString& OutError);

// The values of a table's accepted keys, gathered once, each on the Lua stack in its own slot (nil when the
// key is absent). The keys are checked as CheckOnlyKnownKeys checks them, and that walk also gives every value
// the table holds itself; a key it lacks is then looked up through __index when the table has a metatable,
// and a userdata gives every value through __index. Either way a slot holds what lua_getfield would return,
// so readers built on it behave as the field-by-field readers above, with one pass over a table.
class FNaniteAssemblyFields
{
public:
	bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath, FString& OutError);

	// The stack index of the slot of the accepted key at KeyIndex.
	[[nodiscard]] int Slot(int32 KeyIndex) const { return FirstSlot + KeyIndex; }
	[[nodiscard]] int Type(lua_State* L, int32 KeyIndex) const { return lua_type(L, Slot(KeyIndex)); }

private:
	int FirstSlot = 0;
};

// The same for a table of numbers, without stack slots: each accepted key's Lua type, and its value when it
// is a number, kept on the C++ side. Read then judges them as ReadNumberFields does, in list order.
class FNaniteAssemblyNumbers
{
public:
	static constexpr int32 MaxKeys = 6;

	bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath, FString& OutError);

	[[nodiscard]] bool IsPresent(int32 KeyIndex) const { return Types[KeyIndex] != LUA_TNIL; }

	// Count keys from FirstKey on; nil takes the default.
	bool Read(int32 FirstKey, const ANSICHAR* const* KeyNames, int32 Count, const double* Defaults, double* OutValues,
		const FNaniteAssemblyContextPath& ContextPath, FString& OutError) const;

private:
	int Types[MaxKeys] = {};
	double Values[MaxKeys] = {};
};

// Restores the Lua stack's top when a reader returns, on every path.
class FNaniteAssemblyStackGuard
{
public:
	explicit FNaniteAssemblyStackGuard(lua_State* InL)
		: L(InL)
		, Top(lua_gettop(InL))
	{
	}

	~FNaniteAssemblyStackGuard()
	{
		lua_settop(L, Top);
	}

	FNaniteAssemblyStackGuard(const FNaniteAssemblyStackGuard&) = delete;
	FNaniteAssemblyStackGuard& operator=(const FNaniteAssemblyStackGuard&) = delete;

private:
	lua_State* L;
	int Top;
};
