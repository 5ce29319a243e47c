// The readback of one static mesh's Nanite Assembly data, written straight into a result table.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

class UStaticMesh;

// How many nodes a readback lists; node_count and the per-part counts always cover all of them.
inline constexpr int32 NaniteAssemblyReadbackNodeCap = 256;

// Writes the readback fields into Result (whose "ok" the caller has set): asset, object_path,
// nanite_enabled, nanite_settings_enabled, is_assembly, assembly_data_valid, part_count, node_count,
// material_slot_count, parts, [nodes, nodes_truncated,] compiling, render_data_available,
// valid_nanite_data, assemblies_supported. It never changes the mesh.
void WriteNaniteAssemblyReadback(sol::state_view& Lua, sol::table& Result, UStaticMesh& Mesh, bool bIncludeNodes);
