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

// The values of a table's accepted keys, each in its own Lua stack slot. Gather checks the keys as
// CheckOnlyKnownKeys does; for a plain table the same walk also fills every slot, since nothing can run
// when its fields are read. For a table with a metatable (or a userdata) each value is fetched with
// lua_getfield only when the reader asks for it, so that __index sees exactly the look-ups, in the order,
// that reading field by field would make. Either way Fetch gives what lua_getfield would return.
class FNaniteAssemblyFields
{
public:
	bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath, FString& OutError);

	// Brings the value of the accepted key at KeyIndex into its slot and returns its Lua type.
	int Fetch(int32 KeyIndex) const;

	// The stack index of the slot of the accepted key at KeyIndex.
	[[nodiscard]] int Slot(int32 KeyIndex) const { return FirstSlot + KeyIndex; }

private:
	lua_State* L = nullptr;
	int TableIndex = 0;
	TConstArrayView<const ANSICHAR*> Keys;
	int FirstSlot = 0;
	bool bFetchLazily = false;
};

// The same for a table of numbers, without stack slots: a plain table's values are kept on the C++ side
// (each key's Lua type, and its value when it is a number); Read then judges them as ReadNumberFields does,
// in list order. For a table with a metatable or a userdata, IsPresent and Read fetch as they go.
class FNaniteAssemblyNumbers
{
public:
	static constexpr int32 MaxKeys = 6;

	bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FNaniteAssemblyContextPath& ContextPath, FString& OutError);

	// Whether the accepted key at KeyIndex holds anything but nil.
	[[nodiscard]] bool IsPresent(int32 KeyIndex) const;

	// Count keys from FirstKey on, named KeyNames; nil takes the default.
	bool Read(int32 FirstKey, const ANSICHAR* const* KeyNames, int32 Count, const double* Defaults, double* OutValues,
		const FNaniteAssemblyContextPath& ContextPath, FString& OutError) const;

private:
	lua_State* L = nullptr;
	int TableIndex = 0;
	TConstArrayView<const ANSICHAR*> Keys;
	bool bFetchLazily = false;
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
