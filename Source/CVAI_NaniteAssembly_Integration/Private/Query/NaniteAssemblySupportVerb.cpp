#include "Query/NaniteAssemblySupportVerb.h"

#include "Query/NaniteAssemblyPluginStatus.h"
#include "Lua/NaniteAssemblyLuaResult.h"
#include "LuaSessionData.h"

sol::table NaniteAssemblySupportVerb(FLuaSessionData& Session, sol::this_state State)
{
	const FNaniteAssemblyPluginStatus Status = GetNaniteAssemblyPluginStatus();

	lua_State* L = State;
	lua_createtable(L, 0, 10);
	const int Table = lua_gettop(L);
	SetNaniteAssemblyBool(L, Table, "ok", true);
	SetNaniteAssemblyBool(L, Table, "available", Status.bAvailable);
	SetNaniteAssemblyBool(L, Table, "supported", Status.bAvailable);
	SetNaniteAssemblyText(L, Table, "plugin", NaniteAssemblyPluginName);
	SetNaniteAssemblyBool(L, Table, "plugin_enabled", Status.bPluginEnabled);
	// The builder's interface is linked into this module, so the builder is present whenever it loads.
	SetNaniteAssemblyBool(L, Table, "compiled_in", true);
	SetNaniteAssemblyText(L, Table, "engine_version", Status.EngineVersion);
	SetNaniteAssemblyText(L, Table, "min_version", TEXT("5.7"));
	SetNaniteAssemblyBool(L, Table, "assemblies_supported", Status.bAssembliesSupported);
	SetNaniteAssemblyText(L, Table, "reason", Status.Reason);
	sol::table Result = TakeNaniteAssemblyTable(L);

	Session.Log(FString::Printf(TEXT("[OK] nanite_assembly_support -> available=%s, plugin_enabled=%s, assemblies_supported=%s"),
		NaniteAssemblyBoolText(Status.bAvailable), NaniteAssemblyBoolText(Status.bPluginEnabled), NaniteAssemblyBoolText(Status.bAssembliesSupported)));
	return Result;
}
