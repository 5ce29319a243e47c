// The argument of nanite_assembly_build as a record, and its strict reader: only known keys, numbers that
// are numbers and finite, booleans that are booleans, transforms in either rotation notation, the material
// merge word and the override list. Every reader reports its fault by writing one message that names the
// place and returning false; none raises a Lua error of its own, and each leaves the Lua stack as it found it.
#pragma once

#include "CoreMinimal.h"

#include <sol/sol.hpp>

#include <stdexcept>

namespace CVAI::NaniteAssembly
{
	enum class ENaniteAssemblyMergeMode : uint8
	{
		IdenticalMaterials = 0,
		SlotNames = 1,
		MaterialIndices = 2,
	};

	struct FNaniteAssemblyPartRequest
	{
		// Object path of the static mesh that this part places; never empty after a successful read.
		FString MeshPath;
		// One instance per transform, in list order; never empty after a successful read.
		TArray<FTransform> Transforms;
		ENaniteAssemblyMergeMode MaterialMerge = ENaniteAssemblyMergeMode::IdenticalMaterials;
		// Material paths by the part's material slot: entry 1 of the Lua list is slot 0.
		TArray<FString> MaterialOverrides;
	};

	struct FNaniteAssemblyBuildRequest
	{
		TArray<FNaniteAssemblyPartRequest> Parts;
		// Package path of the assembly mesh to create, or to edit with overwrite.
		FString Output;
		bool bOverwrite = false;
		bool bSave = false;
		bool bWaitForCompile = true;
	};

	// Reads the whole argument (a table, or a userdata that behaves like one), or stops at its first fault with
	// one message that names the place. Nothing outside the record changes; on false the record is partly
	// filled and must be thrown away. A Lua error raised by the script's own metamethods is thrown as
	// FScriptError once the reader's own state is cleaned up.
	bool ReadBuildRequest(const sol::table& Argument, FNaniteAssemblyBuildRequest& InOutRequest, FString& OutError);

	// The merge word in any letter case, without trimming.
	bool ParseMaterialMerge(const FString& Word, ENaniteAssemblyMergeMode& OutMode, FString& OutError);

	// "identical_materials", "slot_names", "material_indices", or "unknown" for any other value.
	[[nodiscard]] const TCHAR* MaterialMergeName(ENaniteAssemblyMergeMode Mode);

	// A Lua error raised by the script's own metamethod (an __index or __len) while the request was read; the
	// binding library turns it back into that Lua error.
	class FScriptError : public std::runtime_error
	{
	public:
		using std::runtime_error::runtime_error;
	};

	// The place in the argument that a message names, such as "nanite_assembly_build parts[2].transforms[1].location".
	// It is a chain of small records on the readers' stack and becomes text only when a message needs it, so
	// reading a large request formats nothing.
	class FContextPath
	{
	public:
		// A root path, such as "nanite_assembly_build"; the text must outlive the path.
		explicit FContextPath(const FString& InRoot)
			: Root(&InRoot)
		{
		}

		// The parent path followed by Suffix, such as ".location".
		FContextPath(const FContextPath& InParent, const TCHAR* InSuffix)
			: Parent(&InParent)
			, Suffix(InSuffix)
		{
		}

		// The parent path followed by Suffix and a one-based position in brackets, such as " parts[2]".
		FContextPath(const FContextPath& InParent, const TCHAR* InSuffix, int64 InPosition)
			: Parent(&InParent)
			, Suffix(InSuffix)
			, Position(InPosition)
			, bHasPosition(true)
		{
		}

		[[nodiscard]] FString ToString() const;

	private:
		void AppendTo(FString& Out) const;

		const FString* Root = nullptr;
		const FContextPath* Parent = nullptr;
		const TCHAR* Suffix = nullptr;
		int64 Position = 0;
		bool bHasPosition = false;
	};

	// The readers under the request, each on its own.

	// Walks the table's keys without metamethods: every key must be a string equal, byte for byte, to one of
	// AcceptedKeys; values are never looked at. A value that is not a table has nothing to check.
	bool CheckOnlyKnownKeys(const sol::stack_object& Value, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, FString& OutError);

	// Reads Count named number fields (honouring __index): nil takes the default; anything but a Lua number is
	// refused, and so is a number that is not finite. The first faulty field in list order is reported.
	bool ReadNumberFields(const sol::stack_object& Table, const ANSICHAR* const* KeyNames, int32 Count, double* OutValues, const double* Defaults,
		const FContextPath& ContextPath, FString& OutError);

	// Reads an optional boolean of the build argument's top level; nil keeps the value the caller set.
	bool ReadOptionalBool(const sol::stack_object& Table, const ANSICHAR* KeyName, bool& InOutValue, FString& OutError);

	// One transform table of a part: {location={x,y,z}, rotation={pitch,yaw,roll} or Euler {x,y,z},
	// scale={x,y,z} or a number}; every piece defaults, so {} is the identity.
	bool ReadTransform(const sol::stack_object& Value, const FContextPath& ContextPath, FTransform& OutTransform, FString& OutError);
}
