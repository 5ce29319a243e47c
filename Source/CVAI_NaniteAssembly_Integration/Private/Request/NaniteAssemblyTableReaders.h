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
