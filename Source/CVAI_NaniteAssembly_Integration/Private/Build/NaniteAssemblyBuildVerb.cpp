#include "Build/NaniteAssemblyBuildVerb.h"

#include "AssetRegistry/AssetData.h"
#include "AssetRegistry/IAssetRegistry.h"
#include "Build/NaniteAssemblyBuildExecution.h"
#include "Engine/StaticMesh.h"
#include "Query/NaniteAssemblyPluginStatus.h"
#include "Query/NaniteAssemblyReadback.h"
#include "Lua/NaniteAssemblyLuaResult.h"
#include "LuaSessionData.h"
#include "Request/NaniteAssemblyBuildRequest.h"

namespace
{
	const TCHAR* const UnsupportedWarning = TEXT("assemblies_supported=false: the asset stores the assembly parts but the built Nanite resource ignores them "
												 "(valid_nanite_data=false) until r.Nanite.AllowAssemblies=1 is set in DefaultEngine.ini [ConsoleVariables] and "
												 "the editor restarts");

	sol::table Fail(FLuaSessionData& Session, sol::this_state State, const FString& Error)
	{
		Session.Log(FString::Printf(TEXT("[FAIL] nanite_assembly_build -> %s"), *Error));
		return MakeNaniteAssemblyError(State, Error);
	}

	bool IsRegistered(const FString& ObjectPath)
	{
		const IAssetRegistry* AssetRegistry = IAssetRegistry::Get();
		return AssetRegistry && AssetRegistry->GetAssetByObjectPath(FSoftObjectPath(ObjectPath), false, true).IsValid();
	}
}

sol::table NaniteAssemblyBuildVerb(FLuaSessionData& Session, sol::this_state State, const sol::table& Argument)
{
	lua_State* L = State;
	FNaniteAssemblyBuildRequest Request;
	FString Error;
	if (!ReadBuildRequest(Argument, Request, Error))
	{
		return Fail(Session, State, Error);
	}

	FNaniteAssemblyBuildOutcome Outcome;
	if (!ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error))
	{
		sol::table Result = Fail(Session, State, Error);
		if (Outcome.Mesh)
		{
			// The build stood and only the save failed: the script learns what it now has in memory.
			Result.push(L);
			const int Table = lua_gettop(L);
			SetNaniteAssemblyText(L, Table, "asset", Outcome.PackageName);
			SetNaniteAssemblyText(L, Table, "object_path", Outcome.ObjectPath);
			SetNaniteAssemblyBool(L, Table, "saved", false);
			lua_pop(L, 1);
		}
		return Result;
	}

	UStaticMesh& Mesh = *Outcome.Mesh;
	lua_createtable(L, 0, 24);
	SetNaniteAssemblyBool(L, lua_gettop(L), "ok", true);
	sol::table Result = TakeNaniteAssemblyTable(L);
	sol::state_view Lua(L);
	WriteNaniteAssemblyReadback(Lua, Result, Mesh, false);

	const FNaniteAssemblyPluginStatus Status = GetNaniteAssemblyPluginStatus();
	const bool bRegistered = IsRegistered(Outcome.ObjectPath);
	Result.push(L);
	const int Table = lua_gettop(L);
	SetNaniteAssemblyBool(L, Table, "created", Outcome.bCreated);
	SetNaniteAssemblyBool(L, Table, "overwritten", Outcome.bOverwritten);
	SetNaniteAssemblyBool(L, Table, "saved", Outcome.bSaved);
	SetNaniteAssemblyBool(L, Table, "compiled", Outcome.bCompiled);
	SetNaniteAssemblyBool(L, Table, "transaction_owned", Outcome.bTransactionOwned);
	SetNaniteAssemblyBool(L, Table, "plugin_enabled", Status.bPluginEnabled);
	SetNaniteAssemblyBool(L, Table, "assemblies_supported", Status.bAssembliesSupported);
	if (!Status.bAssembliesSupported)
	{
		SetNaniteAssemblyText(L, Table, "warning", UnsupportedWarning);
	}
	SetNaniteAssemblyBool(L, Table, "registered", bRegistered);
	lua_pop(L, 1);

	const FNaniteAssemblyData& Data = Mesh.GetNaniteSettings().NaniteAssemblyData;
	Session.Log(FString::Printf(
		TEXT("[OK] nanite_assembly_build -> %s (%s) parts=%d nodes=%d nanite=%s assembly=%s registered=%s compiled=%s saved=%s assemblies_supported=%s"),
		*Outcome.ObjectPath, Outcome.bCreated ? TEXT("created") : TEXT("overwritten"), Data.Parts.Num(), Data.Nodes.Num(),
		NaniteAssemblyBoolText(Mesh.IsNaniteEnabled()), NaniteAssemblyBoolText(Mesh.IsNaniteAssembly()), NaniteAssemblyBoolText(bRegistered),
		NaniteAssemblyBoolText(Outcome.bCompiled), NaniteAssemblyBoolText(Outcome.bSaved), NaniteAssemblyBoolText(Status.bAssembliesSupported)));
	return Result;
}
