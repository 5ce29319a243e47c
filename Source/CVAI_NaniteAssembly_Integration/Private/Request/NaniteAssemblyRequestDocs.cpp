#include "Lua/NaniteAssemblyReferenceDocs.h"

// Field by field what Request/NaniteAssemblyBuildRequest.cpp accepts.
namespace CVAI::NaniteAssembly
{
	const TArray<FNaniteAssemblyTableDoc>& GetNaniteAssemblyRequestDocs()
	{
		using enum ENaniteAssemblyFieldPresence;
		static const TArray<FNaniteAssemblyTableDoc> Tables = {
			{ TEXT("NaniteAssemblyBuildRequest"), TEXT("The argument of nanite_assembly_build."),
				{
					{ TEXT("parts"), TEXT("NaniteAssemblyPartRequest[]"), Always, TEXT("the parts to place, a non-empty list") },
					{ TEXT("output"), TEXT("string"), Always, TEXT("the package path of the mesh to create (or to edit, with overwrite)") },
					{ TEXT("overwrite"), TEXT("boolean"), Optional, TEXT("turn an existing static mesh at output into the assembly"), TEXT("default false") },
					{ TEXT("save"), TEXT("boolean"), Optional,
						TEXT("write the package once the build's transaction has closed; earlier work then stays whatever fails later"), TEXT("default false") },
					{ TEXT("wait_for_compile"), TEXT("boolean"), Optional, TEXT("wait until the mesh's asynchronous build has finished"), TEXT("default true") },
				} },
			{ TEXT("NaniteAssemblyPartRequest"), TEXT("One part of a build request: a mesh and where to place it."),
				{
					{ TEXT("mesh"), TEXT("string"), Always, TEXT("the part's static mesh, which must not itself be an assembly") },
					{ TEXT("transforms"), TEXT("NaniteAssemblyTransform[]"), Always, TEXT("one node per transform, a non-empty list") },
					{ TEXT("material_merge"), TEXT("string"), Optional,
						TEXT("how the part's slots join the assembly's: \"identical_materials\", \"slot_names\" or \"material_indices\""),
						TEXT("default \"identical_materials\"") },
					{ TEXT("material_overrides"), TEXT("string[]"), Optional,
						TEXT("material paths by the part's slot: entry 1 replaces slot 0's material"), TEXT("default: the part's own materials") },
				} },
			{ TEXT("NaniteAssemblyTransform"), TEXT("Where one node goes; {} is the identity."),
				{
					{ TEXT("location"), TEXT("NaniteAssemblyVectorRequest"), Optional, TEXT("the translation in centimetres"), TEXT("default 0, 0, 0") },
					{ TEXT("translation"), TEXT("NaniteAssemblyVectorRequest"), Optional, TEXT("another name of location, read when location is nil"),
						TEXT("default 0, 0, 0") },
					{ TEXT("rotation"), TEXT("NaniteAssemblyRotatorRequest|NaniteAssemblyVectorRequest"), Optional,
						TEXT("{pitch, yaw, roll}, or Euler {x = roll, y = pitch, z = yaw}, in degrees, never both notations"), TEXT("default: no rotation") },
					{ TEXT("scale"), TEXT("NaniteAssemblyVectorRequest|number"), Optional, TEXT("the scale per axis, or one number for all three"),
						TEXT("default 1, 1, 1") },
				} },
			{ TEXT("NaniteAssemblyVectorRequest"), TEXT("Three numbers on the X, Y and Z axes; a missing one takes its default."),
				{
					{ TEXT("x"), TEXT("number"), Optional, TEXT("along X"), TEXT("default 0, or 1 in a scale") },
					{ TEXT("y"), TEXT("number"), Optional, TEXT("along Y"), TEXT("default 0, or 1 in a scale") },
					{ TEXT("z"), TEXT("number"), Optional, TEXT("along Z"), TEXT("default 0, or 1 in a scale") },
				} },
			{ TEXT("NaniteAssemblyRotatorRequest"), TEXT("A rotation as three angles in degrees; a missing one is 0."),
				{
					{ TEXT("pitch"), TEXT("number"), Optional, TEXT("about Y"), TEXT("default 0") },
					{ TEXT("yaw"), TEXT("number"), Optional, TEXT("about Z"), TEXT("default 0") },
					{ TEXT("roll"), TEXT("number"), Optional, TEXT("about X"), TEXT("default 0") },
				} },
		};
		return Tables;
	}
}
