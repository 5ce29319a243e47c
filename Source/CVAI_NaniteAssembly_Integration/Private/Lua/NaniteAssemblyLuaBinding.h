// The module's Lua surface: the documentation records the host shows, and the installation of the three
// verbs into each host Lua session. Each verb's road starts here and runs downhill: the request is read
// (Request/), the build runs (Build/), and the result table and log line are written (Result/).
#pragma once

#include "CorvaneExtensionRegistrar.h"

namespace sol
{
	class state;
}

class FLuaSessionData;

namespace CVAI::NaniteAssembly
{
	// The documentation records of the three verbs, in the order support, build, info.
	extern const TArray<FLuaFunctionDoc> NaniteAssemblyLuaDocs;

	// The binder registered with the host: installs nanite_assembly_info, then BindNaniteAssemblyAvailable.
	void BindNaniteAssemblyInfo(sol::state& Lua, FLuaSessionData& Session);

	// Installs nanite_assembly_support, then nanite_assembly_build.
	void BindNaniteAssemblyAvailable(sol::state& Lua, FLuaSessionData& Session);
}
