#include "Lua/NaniteAssemblyLuaDocs.h"

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
