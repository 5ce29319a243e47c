#include "Lua/NaniteAssemblyReferenceDocs.h"

// Field by field what Result/NaniteAssemblyResult.cpp writes; the module's tests compare both ways.
namespace CVAI::NaniteAssembly
{
	namespace
	{
		// What WriteNaniteAssemblyReadback writes into both verbs' results; the place of the mesh may stay on a refusal.
		void AppendNaniteAssemblyReadbackFieldDocs(TArray<FNaniteAssemblyFieldDoc>& Fields, const TCHAR* PlaceCondition)
		{
			using enum ENaniteAssemblyFieldPresence;
			Fields.Append({
				{ TEXT("asset"), TEXT("string"), WhenOk, TEXT("the package name of the mesh, such as \"/Game/Props/SM_Fence\""), PlaceCondition },
				{ TEXT("object_path"), TEXT("string"), WhenOk, TEXT("the mesh's object path, such as \"/Game/Props/SM_Fence.SM_Fence\""), PlaceCondition },
				{ TEXT("nanite_enabled"), TEXT("boolean"), WhenOk, TEXT("the mesh renders as Nanite") },
				{ TEXT("nanite_settings_enabled"), TEXT("boolean"), WhenOk, TEXT("the Enabled flag of the mesh's Nanite settings") },
				{ TEXT("is_assembly"), TEXT("boolean"), WhenOk, TEXT("Nanite is enabled and the assembly data is valid") },
				{ TEXT("assembly_data_valid"), TEXT("boolean"), WhenOk, TEXT("the assembly data has at least one part and one node") },
				{ TEXT("part_count"), TEXT("integer"), WhenOk, TEXT("the number of parts") },
				{ TEXT("node_count"), TEXT("integer"), WhenOk, TEXT("the number of nodes, all of them") },
				{ TEXT("material_slot_count"), TEXT("integer"), WhenOk, TEXT("the number of the mesh's material slots") },
				{ TEXT("parts"), TEXT("NaniteAssemblyPartInfo[]"), WhenOk, TEXT("one entry per part, in the assembly's order") },
				{ TEXT("compiling"), TEXT("boolean"), WhenOk, TEXT("the mesh's asynchronous build was still running when the readback began") },
				{ TEXT("render_data_available"), TEXT("boolean"), WhenOk, TEXT("the mesh has render data") },
				{ TEXT("valid_nanite_data"), TEXT("boolean"), WhenOk, TEXT("the render data holds a valid Nanite resource") },
				{ TEXT("assemblies_supported"), TEXT("boolean"), WhenOk, TEXT("the renderer honours assemblies, as nanite_assembly_support says") },
			});
		}

		FNaniteAssemblyTableDoc MakeNaniteAssemblyInfoResultDoc()
		{
			using enum ENaniteAssemblyFieldPresence;
			FNaniteAssemblyTableDoc Table{ TEXT("NaniteAssemblyInfoResult"), TEXT("What nanite_assembly_info returns: the readback of one static mesh, or a refusal."),
				{
					{ TEXT("ok"), TEXT("boolean"), Always, TEXT("true when the mesh was found and read") },
					{ TEXT("error"), TEXT("string"), WhenRefused, TEXT("why nothing was read: \"static mesh not found: <path>\"") },
				} };
			AppendNaniteAssemblyReadbackFieldDocs(Table.Fields, TEXT(""));
			Table.Fields.Append({
				{ TEXT("nodes"), TEXT("NaniteAssemblyNodeInfo[]"), WhenOk, TEXT("the first 256 nodes, in the assembly's order") },
				{ TEXT("nodes_truncated"), TEXT("boolean"), WhenOk, TEXT("the mesh has more than 256 nodes, so nodes lists only the first 256") },
			});
			return Table;
		}

		FNaniteAssemblyTableDoc MakeNaniteAssemblyBuildResultDoc()
		{
			using enum ENaniteAssemblyFieldPresence;
			const TCHAR* const AlsoWhenSaveFailed = TEXT("also on ok = false when the build stood and only its save failed");
			FNaniteAssemblyTableDoc Table{ TEXT("NaniteAssemblyBuildResult"), TEXT("What nanite_assembly_build returns: the readback of the built mesh, or a refusal."),
				{
					{ TEXT("ok"), TEXT("boolean"), Always, TEXT("true when the build stood (and its save, when asked, succeeded)") },
					{ TEXT("error"), TEXT("string"), WhenRefused, TEXT("one message that names the place of the fault") },
				} };
			AppendNaniteAssemblyReadbackFieldDocs(Table.Fields, AlsoWhenSaveFailed);
			Table.Fields.Append({
				{ TEXT("created"), TEXT("boolean"), WhenOk, TEXT("the build created a new mesh") },
				{ TEXT("overwritten"), TEXT("boolean"), WhenOk, TEXT("the build turned an existing mesh into the assembly (overwrite = true)") },
				{ TEXT("compiled"), TEXT("boolean"), WhenOk, TEXT("the build waited for the mesh's compile to finish") },
				{ TEXT("plugin_enabled"), TEXT("boolean"), WhenOk, TEXT("the builder plugin is enabled (always true for a build that stood)") },
				{ TEXT("transaction_owned"), TEXT("boolean"), WhenOk,
					TEXT("the build opened its own transaction, so one undo takes it back; false inside a transaction the caller opened") },
				{ TEXT("registered"), TEXT("boolean"), WhenOk, TEXT("the asset registry knows the mesh") },
				{ TEXT("saved"), TEXT("boolean"), WhenOk, TEXT("the package was written to disk (save = true)"), AlsoWhenSaveFailed },
				{ TEXT("warning"), TEXT("string"), Optional, TEXT("the renderer ignores assemblies, so the built Nanite resource ignores the parts"),
					TEXT("when ok = true and assemblies_supported = false") },
			});
			return Table;
		}
	}

	const TArray<FNaniteAssemblyTableDoc>& GetNaniteAssemblyResultDocs()
	{
		using enum ENaniteAssemblyFieldPresence;
		static const TArray<FNaniteAssemblyTableDoc> Tables = {
			{ TEXT("NaniteAssemblySupportResult"), TEXT("What nanite_assembly_support returns."),
				{
					{ TEXT("ok"), TEXT("boolean"), Always, TEXT("always true: the probe cannot fail") },
					{ TEXT("available"), TEXT("boolean"), Always, TEXT("the builder plugin is enabled, so nanite_assembly_build can run") },
					{ TEXT("supported"), TEXT("boolean"), Always, TEXT("the same as available") },
					{ TEXT("plugin"), TEXT("string"), Always, TEXT("the builder plugin's name, \"NaniteAssemblyEditorUtils\"") },
					{ TEXT("plugin_enabled"), TEXT("boolean"), Always, TEXT("the project enables the builder plugin") },
					{ TEXT("compiled_in"), TEXT("boolean"), Always, TEXT("always true: the builder's interface is linked into the module") },
					{ TEXT("engine_version"), TEXT("string"), Always, TEXT("the running engine's version, major.minor.patch") },
					{ TEXT("min_version"), TEXT("string"), Always, TEXT("\"5.7\", the first engine version with the builder") },
					{ TEXT("assemblies_supported"), TEXT("boolean"), Always,
						TEXT("r.Nanite.AllowAssemblies or r.Nanite.Foliage is non-zero: the renderer honours assemblies") },
					{ TEXT("reason"), TEXT("string"), Always,
						TEXT("\"ok\", \"ok (...)\" when the renderer ignores assemblies, or \"plugin_disabled: ...\" with how to enable the plugin") },
				} },
			MakeNaniteAssemblyInfoResultDoc(),
			MakeNaniteAssemblyBuildResultDoc(),
			{ TEXT("NaniteAssemblyPartInfo"), TEXT("One part of an assembly, as a readback lists it."),
				{
					{ TEXT("index"), TEXT("integer"), Always, TEXT("the part's zero-based index in the assembly") },
					{ TEXT("mesh"), TEXT("string"), Always, TEXT("the object path of the part's static mesh") },
					{ TEXT("node_count"), TEXT("integer"), Always, TEXT("how many nodes place this part, over all nodes") },
					{ TEXT("material_remap"), TEXT("integer[]"), Always,
						TEXT("for each of the part mesh's slots, in order, the assembly mesh's zero-based slot index it draws with") },
				} },
			{ TEXT("NaniteAssemblyNodeInfo"), TEXT("One node of an assembly: one placed instance of a part."),
				{
					{ TEXT("part"), TEXT("integer"), Always, TEXT("the one-based position of its part in parts") },
					{ TEXT("part_index"), TEXT("integer"), Always, TEXT("the zero-based index of its part") },
					{ TEXT("location"), TEXT("NaniteAssemblyVector"), Always, TEXT("the translation, in centimetres") },
					{ TEXT("rotation"), TEXT("NaniteAssemblyRotator"), Always, TEXT("the rotation, in degrees") },
					{ TEXT("scale"), TEXT("NaniteAssemblyVector"), Always, TEXT("the scale on each axis") },
					{ TEXT("transform_space"), TEXT("string"), Always, TEXT("\"local\" or \"bone_relative\"") },
				} },
			{ TEXT("NaniteAssemblyVector"), TEXT("Three numbers on the X, Y and Z axes."),
				{
					{ TEXT("x"), TEXT("number"), Always, TEXT("along X") },
					{ TEXT("y"), TEXT("number"), Always, TEXT("along Y") },
					{ TEXT("z"), TEXT("number"), Always, TEXT("along Z") },
				} },
			{ TEXT("NaniteAssemblyRotator"), TEXT("A rotation as three angles in degrees."),
				{
					{ TEXT("pitch"), TEXT("number"), Always, TEXT("about Y") },
					{ TEXT("yaw"), TEXT("number"), Always, TEXT("about Z") },
					{ TEXT("roll"), TEXT("number"), Always, TEXT("about X") },
				} },
		};
		return Tables;
	}
}
