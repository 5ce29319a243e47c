#include "Query/NaniteAssemblyInfoVerb.h"

#include "Build/NaniteAssemblyAssetPaths.h"
#include "Engine/StaticMesh.h"
#include "Query/NaniteAssemblyReadback.h"
#include "Lua/NaniteAssemblyLuaResult.h"
#include "LuaSessionData.h"

sol::table NaniteAssemblyInfoVerb(FLuaSessionData& Session, sol::this_state State, const std::string& MeshPath)
{
	// Messages quote the path as the script gave it, not the completed one.
	const FString GivenPath = NaniteAssemblyTextFromUtf8(MeshPath);
	UStaticMesh* Mesh = LoadStaticMeshByPath(GivenPath);
	if (!Mesh)
	{
		const FString Message = FString::Printf(TEXT("static mesh not found: %s"), *GivenPath);
		Session.Log(FString::Printf(TEXT("[FAIL] nanite_assembly_info -> %s"), *Message));
		return MakeNaniteAssemblyError(State, Message);
	}

	lua_State* L = State;
	lua_createtable(L, 0, 17);
	SetNaniteAssemblyBool(L, lua_gettop(L), "ok", true);
	sol::table Result = TakeNaniteAssemblyTable(L);
	sol::state_view Lua(L);
	WriteNaniteAssemblyReadback(Lua, Result, *Mesh, true);

	const FNaniteAssemblyData& Data = Mesh->GetNaniteSettings().NaniteAssemblyData;
	Session.Log(FString::Printf(TEXT("[OK] nanite_assembly_info(\"%s\") -> is_assembly=%s, parts=%d, nodes=%d"), *GivenPath,
		NaniteAssemblyBoolText(Mesh->IsNaniteAssembly()), Data.Parts.Num(), Data.Nodes.Num()));
	return Result;
}
