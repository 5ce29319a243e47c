#include "Lua/NaniteAssemblyLuaBinding.h"

#include "Build/NaniteAssemblyBuild.h"
#include "LuaSessionData.h"
#include "Request/NaniteAssemblyBuildRequest.h"
#include "Result/NaniteAssemblyResult.h"
#include "Shared/NaniteAssemblyAssetPaths.h"
#include "Shared/NaniteAssemblyLuaText.h"
#include "Shared/NaniteAssemblyPluginStatus.h"

#include <sol/sol.hpp>

#include <string>

namespace CVAI::NaniteAssembly
{
	namespace
	{
		FLuaFunctionDoc MakeDoc(const TCHAR* Signature, const TCHAR* Description, const TCHAR* Returns)
		{
			FLuaFunctionDoc Doc;
			Doc.Signature = Signature;
			Doc.Description = Description;
			Doc.Returns = Returns;
			return Doc;
		}

		// nanite_assembly_support(): the capability probe; it always succeeds and changes nothing.
		sol::stack_table NaniteAssemblySupportVerb(FLuaSessionData& Session, lua_State* L)
		{
			return PushSupportResult(Session, L, GetNaniteAssemblyPluginStatus());
		}

		// nanite_assembly_info(mesh_path): the read-only readback of one static mesh, nodes included.
		sol::stack_table NaniteAssemblyInfoVerb(FLuaSessionData& Session, lua_State* L, const std::string& MeshPath)
		{
			// Messages quote the path as the script gave it, not the completed one.
			const FString GivenPath = TextFromUtf8(MeshPath.c_str());
			UStaticMesh* Mesh = LoadStaticMeshByPath(GivenPath);
			if (!Mesh)
			{
				return PushRefusal(Session, L, TEXT("nanite_assembly_info"), FString::Printf(TEXT("static mesh not found: %s"), *GivenPath));
			}
			return PushInfoResult(Session, L, GivenPath, *Mesh);
		}

		// nanite_assembly_build{...}: reads the request, runs the build, and gives back its result.
		sol::stack_table NaniteAssemblyBuildVerb(FLuaSessionData& Session, lua_State* L, const sol::table& Argument)
		{
			FNaniteAssemblyBuildRequest Request;
			FString Error;
			if (!ReadBuildRequest(Argument, Request, Error))
			{
				return PushRefusal(Session, L, TEXT("nanite_assembly_build"), Error);
			}
			FNaniteAssemblyBuildOutcome Outcome;
			if (!ExecuteNaniteAssemblyBuild(Request, Session, Outcome, Error))
			{
				return PushBuildRefusal(Session, L, Error, Outcome);
			}
			return PushBuildResult(Session, L, Outcome);
		}
	}

	const TArray<FLuaFunctionDoc> NaniteAssemblyLuaDocs = {
		MakeDoc(TEXT("nanite_assembly_support()"),
			TEXT("Capability probe for the Nanite Assembly builder. Reports whether the NaniteAssemblyEditorUtils plugin (UE 5.7+) is compiled in and "
				 "enabled, the engine version, and assemblies_supported (r.Nanite.AllowAssemblies or r.Nanite.Foliage). Scripts branch on .available "
				 "before calling nanite_assembly_build."),
			TEXT("table {ok, available, plugin, plugin_enabled, engine_version, min_version, assemblies_supported, reason}")),
		MakeDoc(TEXT("nanite_assembly_build({ parts = { { mesh, transforms = { {location,rotation,scale}, ... }, material_merge?, material_overrides? }, "
					 "... }, output, overwrite?, save?, wait_for_compile? })"),
			TEXT("Build a Nanite Assembly static mesh from instanced part meshes. Each part: mesh (static mesh path, must not itself be an assembly), "
				 "transforms (non-empty list of {location={x,y,z}, rotation={pitch,yaw,roll} or Euler {x=roll,y=pitch,z=yaw} (not mixed), "
				 "scale={x,y,z}|number}; {} is identity), material_merge (identical_materials|slot_names|material_indices, default "
				 "identical_materials), material_overrides (list of material paths indexed by the part's material slot). output is the package path "
				 "of the mesh to create; overwrite=true edits an existing static mesh into an assembly; save=true writes the package after the build "
				 "transaction has closed (the save becomes a Lua checkpoint: earlier work stays committed, later errors roll back only later edits); "
				 "wait_for_compile (default true) blocks until the async static mesh build finishes. Validates everything first, then runs "
				 "Begin/AddAssemblyParts/Finish inside one transaction and reads the assembly data back from the asset. When assemblies_supported is "
				 "false (r.Nanite.AllowAssemblies=0) the asset stores the parts but valid_nanite_data stays false and the result carries a warning."),
			TEXT("table {ok, asset, object_path, created, overwritten, nanite_enabled, is_assembly, part_count, node_count, parts, material_slot_count, "
				 "assemblies_supported, plugin_enabled, compiled, valid_nanite_data, render_data_available, saved, warning?} or {ok=false, error}")),
		MakeDoc(TEXT("nanite_assembly_info(mesh_path)"),
			TEXT("Read-only readback of a static mesh's Nanite Assembly data (FMeshNaniteSettings::NaniteAssemblyData): part list with node counts and "
				 "material remaps, node transforms (capped at 256), Nanite enabled/assembly flags, and built-resource availability. Works on UE 5.6+ "
				 "even where the builder plugin is absent."),
			TEXT("table {ok, asset, object_path, nanite_enabled, is_assembly, part_count, node_count, parts, nodes, nodes_truncated, material_slot_count, "
				 "assemblies_supported, compiling, valid_nanite_data, render_data_available} or {ok=false, error}")),
	};

	// Each closure holds the session the host passed in, which outlives the session's Lua state. The binding
	// library checks the argument types before a verb body runs, and turns an escaping exception (a script's
	// own error met while reading its request) into a Lua error.
	void BindNaniteAssemblyInfo(sol::state& Lua, FLuaSessionData& Session)
	{
		Lua.set_function("nanite_assembly_info", [&Session](const std::string& MeshPath, sol::this_state State)
		{
			return NaniteAssemblyInfoVerb(Session, State, MeshPath);
		});
		BindNaniteAssemblyAvailable(Lua, Session);
	}

	void BindNaniteAssemblyAvailable(sol::state& Lua, FLuaSessionData& Session)
	{
		Lua.set_function("nanite_assembly_support", [&Session](sol::this_state State)
		{
			return NaniteAssemblySupportVerb(Session, State);
		});
		Lua.set_function("nanite_assembly_build", [&Session](sol::table Argument, sol::this_state State)
		{
			return NaniteAssemblyBuildVerb(Session, State, Argument);
		});
	}
}
