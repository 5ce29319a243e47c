#include "Lua/NaniteAssemblyLuaBindings.h"

#include "Build/NaniteAssemblyBuildVerb.h"
#include "Query/NaniteAssemblyInfoVerb.h"
#include "Query/NaniteAssemblySupportVerb.h"
#include "LuaSessionData.h"

#include <sol/sol.hpp>

// Each closure holds the session the host passed in, which outlives the session's Lua state. The binding
// library checks the argument types before a verb body runs.
void BindNaniteAssemblyInfo(sol::state& Lua, FLuaSessionData& Session)
{
	Lua.set_function("nanite_assembly_info", [&Session](const std::string& MeshPath, sol::this_state State) -> sol::table
	{
		return NaniteAssemblyInfoVerb(Session, State, MeshPath);
	});
	BindNaniteAssemblyAvailable(Lua, Session);
}

void BindNaniteAssemblyAvailable(sol::state& Lua, FLuaSessionData& Session)
{
	Lua.set_function("nanite_assembly_support", [&Session](sol::this_state State) -> sol::table
	{
		return NaniteAssemblySupportVerb(Session, State);
	});
	Lua.set_function("nanite_assembly_build", [&Session](sol::table Argument, sol::this_state State) -> sol::table
	{
		return NaniteAssemblyBuildVerb(Session, State, Argument);
	});
}
