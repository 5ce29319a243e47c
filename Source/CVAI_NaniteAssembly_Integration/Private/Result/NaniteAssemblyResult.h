// What each verb gives back: one result table, left at the top of the Lua stack as the verb's single result,
// and one line in the session's log, written once the table is complete so that both tell the same facts.
// Every table is made and filled at one stack slot, the way Lua's own library functions build theirs.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

class FLuaSessionData;
class UStaticMesh;

namespace CVAI::NaniteAssembly
{
	struct FNaniteAssemblyBuildOutcome;
	struct FNaniteAssemblyPluginStatus;

	// How many nodes a readback lists; node_count and the per-part counts always cover all of them.
	inline constexpr int32 NaniteAssemblyReadbackNodeCap = 256;

	// [-0, +1, m] A new table {ok = false, error = Message}; it logs nothing.
	sol::stack_table MakeNaniteAssemblyError(lua_State* L, const FString& Message);

	// [-0, +0, m] Writes the readback of the mesh into the table at the absolute index Table (whose "ok" the
	// caller has set): asset, object_path, nanite_enabled, nanite_settings_enabled, is_assembly,
	// assembly_data_valid, part_count, node_count, material_slot_count, parts, [nodes, nodes_truncated,]
	// compiling, render_data_available, valid_nanite_data, assemblies_supported. It never changes the mesh.
	void WriteNaniteAssemblyReadback(lua_State* L, int Table, UStaticMesh& Mesh, bool bIncludeNodes, bool bAssembliesSupported);

	// [-0, +1, m] The probe's table, and its log line.
	sol::stack_table PushSupportResult(FLuaSessionData& Session, lua_State* L, const FNaniteAssemblyPluginStatus& Status);

	// [-0, +1, m] The readback of a loaded mesh with its nodes, and the info verb's log line quoting the given path.
	sol::stack_table PushInfoResult(FLuaSessionData& Session, lua_State* L, const FString& GivenPath, UStaticMesh& Mesh);

	// [-0, +1, m] The build verb's table for a build that stood, and its log line.
	sol::stack_table PushBuildResult(FLuaSessionData& Session, lua_State* L, const FNaniteAssemblyBuildOutcome& Outcome);

	// [-0, +1, m] The error table of a refused or failed call, and the "[FAIL] <verb> -> <message>" log line.
	sol::stack_table PushRefusal(FLuaSessionData& Session, lua_State* L, const TCHAR* VerbName, const FString& Message);

	// [-0, +1, m] A failed build: the error table, with what the script now has in memory when the build stood
	// and only its save failed.
	sol::stack_table PushBuildRefusal(FLuaSessionData& Session, lua_State* L, const FString& Message, const FNaniteAssemblyBuildOutcome& Outcome);
}
