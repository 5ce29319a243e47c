#include "CvaiMeshPaths.h"

#include "CvaiEditorSession.h"
#include "Engine/StaticMesh.h"
#include "Headless/AssetPathCompletion.h"
#include "Headless/PackageLoadFaults.h"
#include "Headless/StringUtils.h"
#include "UObject/UObjectGlobals.h"

#include <sol/sol.hpp>

namespace UE::Headless::Cvai
{
	namespace
	{
		std::string GetStringField(lua_State* L, int Table, const char* Name)
		{
			lua_getfield(L, Table, Name);
			const char* Text = lua_tostring(L, -1);
			std::string Value = Text ? Text : "";
			lua_pop(L, 1);
			return Value;
		}
	}

	std::string GetLoadFaultOfPath(const std::string& Path)
	{
		return ToUtf8(GetPackageLoadFault(CompletePackageName(FromUtf8(Path))));
	}

	UStaticMesh* LoadStaticMeshByPath(FEditorSession& Editor, const std::string& Path, std::string& OutError)
	{
		lua_State* L = Editor.GetLuaSession().GetLua().lua_state();
		const int Top = lua_gettop(L);
		lua_getglobal(L, "nanite_assembly_info");
		lua_pushlstring(L, Path.data(), Path.size());
		if (lua_pcall(L, 1, 1, 0) != LUA_OK)
		{
			OutError = lua_tostring(L, -1) ? lua_tostring(L, -1) : "nanite_assembly_info failed";
			lua_settop(L, Top);
			return nullptr;
		}
		lua_getfield(L, -1, "ok");
		const bool bFound = lua_toboolean(L, -1) != 0;
		lua_pop(L, 1);
		const std::string ObjectPath = GetStringField(L, -1, "object_path");
		const std::string Refusal = GetStringField(L, -1, "error");
		lua_settop(L, Top);

		UStaticMesh* Mesh = bFound ? FindObject<UStaticMesh>(nullptr, *FromUtf8(ObjectPath)) : nullptr;
		if (!Mesh)
		{
			const std::string Fault = GetLoadFaultOfPath(Path);
			OutError = Fault.empty() ? Refusal : Fault;
		}
		return Mesh;
	}
}
