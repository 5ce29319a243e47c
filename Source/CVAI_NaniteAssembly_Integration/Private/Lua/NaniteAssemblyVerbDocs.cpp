#include "Lua/NaniteAssemblyReferenceDocs.h"

namespace CVAI::NaniteAssembly
{
	const TArray<FNaniteAssemblyVerbDoc>& GetNaniteAssemblyVerbDocs()
	{
		static const TArray<FNaniteAssemblyVerbDoc> Verbs = {
			{ TEXT("nanite_assembly_support"), {}, TEXT("NaniteAssemblySupportResult"),
				TEXT("Capability probe: whether the NaniteAssemblyEditorUtils plugin is enabled, the engine version, and whether the renderer "
					 "honours assemblies. It always succeeds and changes nothing; scripts branch on .available before building.") },
			{ TEXT("nanite_assembly_info"),
				{ { TEXT("mesh_path"), TEXT("string"),
					TEXT("the static mesh: SM_Rock, Meshes/SM_Rock (both under /Game/), /Game/Meshes/SM_Rock or /Game/Meshes/SM_Rock.SM_Rock") } },
				TEXT("NaniteAssemblyInfoResult"),
				TEXT("Read-only readback of a static mesh's Nanite assembly data: parts with node counts and material remaps, the first 256 node "
					 "transforms, Nanite and render-data state. Works where the builder plugin is disabled.") },
			{ TEXT("nanite_assembly_build"),
				{ { TEXT("request"), TEXT("NaniteAssemblyBuildRequest"), TEXT("the parts, the output and the options, read strictly: an unknown key is refused") } },
				TEXT("NaniteAssemblyBuildResult"),
				TEXT("Validates the whole request, then builds (or, with overwrite = true, rebuilds) an assembly static mesh from instanced part "
					 "meshes in one undoable transaction, waits for its compile unless told not to, saves it when asked, and reads it back. A "
					 "refusal changes nothing.") },
		};
		return Verbs;
	}
}
