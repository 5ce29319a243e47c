// Installation of the three verbs into a host Lua session.
#pragma once

namespace sol
{
	class state;
}

class FLuaSessionData;

// The binder registered with the host: installs nanite_assembly_info, then BindNaniteAssemblyAvailable.
void BindNaniteAssemblyInfo(sol::state& Lua, FLuaSessionData& Session);

// Installs nanite_assembly_support, then nanite_assembly_build.
void BindNaniteAssemblyAvailable(sol::state& Lua, FLuaSessionData& Session);
