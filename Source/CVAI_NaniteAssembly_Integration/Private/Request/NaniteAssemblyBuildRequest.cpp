#include "Request/NaniteAssemblyBuildRequest.h"

#include "GenericPlatform/GenericPlatformStricmp.h"
#include "Lua/NaniteAssemblyLuaResult.h"
#include "Request/NaniteAssemblyContextPath.h"
#include "Request/NaniteAssemblyLuaAccess.h"
#include "Request/NaniteAssemblyTableReaders.h"
#include "Request/NaniteAssemblyTransformReader.h"

namespace
{
	const ANSICHAR* const RequestKeys[] = { "parts", "output", "overwrite", "save", "wait_for_compile" };
	const ANSICHAR* const PartKeys[] = { "mesh", "transforms", "material_merge", "material_overrides" };
	const TCHAR* const MergeWords[] = { TEXT("identical_materials"), TEXT("slot_names"), TEXT("material_indices") };

	// Untrusted lengths (a __len can answer anything) only size the first allocation up to this.
	constexpr int64 MaxReservation = 1 << 20;

	// A non-empty Lua string at the top of the stack, as an engine text.
	bool TakeNonEmptyString(lua_State* L, int Type, FString& OutText)
	{
		size_t Length = 0;
		const char* Bytes = Type == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
		if (!Bytes || Length == 0)
		{
			return false;
		}
		OutText = NaniteAssemblyTextFromUtf8(Bytes);
		return true;
	}

	bool ReadTransforms(lua_State* L, int PartIndex, const FNaniteAssemblyContextPath& PartPath, TArray<FTransform>& OutTransforms, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		if (NaniteAssemblyPushField(L, PartIndex, "transforms") != LUA_TTABLE)
		{
			OutError = PartPath.ToString() + TEXT(": 'transforms' must be a non-empty list of transform tables");
			return false;
		}
		const int ListIndex = lua_gettop(L);
		const int64 Count = NaniteAssemblyLength(L, ListIndex);
		if (Count < 1)
		{
			OutError = PartPath.ToString() + TEXT(": 'transforms' is empty; every part needs at least one transform ({} is identity)");
			return false;
		}
		OutTransforms.Reserve((int32)FMath::Min(Count, MaxReservation));
		for (int64 Position = 1; Position <= Count; ++Position)
		{
			NaniteAssemblyPushElement(L, ListIndex, (lua_Integer)Position);
			const FNaniteAssemblyContextPath TransformPath(PartPath, TEXT(".transforms"), Position);
			FTransform& Transform = OutTransforms.AddDefaulted_GetRef();
			if (!ReadTransform(sol::stack_object(L, -1), TransformPath, Transform, OutError))
			{
				return false;
			}
			lua_pop(L, 1);
		}
		return true;
	}

	bool ReadMaterialMerge(lua_State* L, int PartIndex, const FNaniteAssemblyContextPath& PartPath, ENaniteAssemblyMergeMode& OutMode, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		const int Type = NaniteAssemblyPushField(L, PartIndex, "material_merge");
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TSTRING)
		{
			OutError = PartPath.ToString() + TEXT(": 'material_merge' must be a string (identical_materials|slot_names|material_indices)");
			return false;
		}
		FString ParseError;
		if (!ParseMaterialMerge(NaniteAssemblyTextFromUtf8(lua_tostring(L, -1)), OutMode, ParseError))
		{
			OutError = PartPath.ToString() + TEXT(": ") + ParseError;
			return false;
		}
		return true;
	}

	bool ReadMaterialOverrides(lua_State* L, int PartIndex, const FNaniteAssemblyContextPath& PartPath, TArray<FString>& OutOverrides, FString& OutError)
	{
		FNaniteAssemblyStackGuard Guard(L);
		const int Type = NaniteAssemblyPushField(L, PartIndex, "material_overrides");
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TTABLE)
		{
			OutError = PartPath.ToString() + TEXT(": 'material_overrides' must be a list of material paths");
			return false;
		}
		const int ListIndex = lua_gettop(L);
		const int64 Count = NaniteAssemblyLength(L, ListIndex);
		for (int64 Position = 1; Position <= Count; ++Position)
		{
			const int ElementType = NaniteAssemblyPushElement(L, ListIndex, (lua_Integer)Position);
			FString Override;
			if (!TakeNonEmptyString(L, ElementType, Override))
			{
				const FNaniteAssemblyContextPath OverridePath(PartPath, TEXT(".material_overrides"), Position);
				OutError = OverridePath.ToString() + TEXT(": must be a material path string");
				return false;
			}
			OutOverrides.Add(MoveTemp(Override));
			lua_pop(L, 1);
		}
		return true;
	}

	bool ReadPart(lua_State* L, const FNaniteAssemblyContextPath& PartPath, FNaniteAssemblyPartRequest& OutPart, FString& OutError)
	{
		const int PartIndex = lua_gettop(L);
		if (lua_type(L, PartIndex) != LUA_TTABLE)
		{
			OutError = PartPath.ToString() + TEXT(": must be a table { mesh=, transforms={...} }");
			return false;
		}
		if (!CheckOnlyKnownKeys(sol::stack_object(L, PartIndex), PartKeys, PartPath, OutError))
		{
			return false;
		}
		{
			FNaniteAssemblyStackGuard Guard(L);
			if (!TakeNonEmptyString(L, NaniteAssemblyPushField(L, PartIndex, "mesh"), OutPart.MeshPath))
			{
				OutError = PartPath.ToString() + TEXT(": 'mesh' (static mesh path) is required");
				return false;
			}
		}
		return ReadTransforms(L, PartIndex, PartPath, OutPart.Transforms, OutError)
			&& ReadMaterialMerge(L, PartIndex, PartPath, OutPart.MaterialMerge, OutError)
			&& ReadMaterialOverrides(L, PartIndex, PartPath, OutPart.MaterialOverrides, OutError);
	}

	bool ReadRequest(lua_State* L, const sol::stack_object& Argument, FNaniteAssemblyBuildRequest& Request, FString& OutError)
	{
		const FString RootText(TEXT("nanite_assembly_build"));
		const FNaniteAssemblyContextPath Root(RootText);
		const int ArgumentIndex = Argument.stack_index();
		if (!CheckOnlyKnownKeys(Argument, RequestKeys, Root, OutError))
		{
			return false;
		}
		{
			FNaniteAssemblyStackGuard Guard(L);
			if (NaniteAssemblyPushField(L, ArgumentIndex, "output") != LUA_TSTRING)
			{
				OutError = TEXT("nanite_assembly_build: 'output' (package path of the assembly mesh to create) is required");
				return false;
			}
			Request.Output = NaniteAssemblyTextFromUtf8(lua_tostring(L, -1));
		}
		if (!ReadOptionalBool(Argument, "overwrite", Request.bOverwrite, OutError) || !ReadOptionalBool(Argument, "save", Request.bSave, OutError)
			|| !ReadOptionalBool(Argument, "wait_for_compile", Request.bWaitForCompile, OutError))
		{
			return false;
		}

		FNaniteAssemblyStackGuard Guard(L);
		if (NaniteAssemblyPushField(L, ArgumentIndex, "parts") != LUA_TTABLE)
		{
			OutError = TEXT("nanite_assembly_build: 'parts' must be a non-empty list of { mesh=, transforms={...} }");
			return false;
		}
		const int PartsIndex = lua_gettop(L);
		const int64 Count = NaniteAssemblyLength(L, PartsIndex);
		if (Count <= 0)
		{
			OutError = TEXT("nanite_assembly_build: 'parts' is empty; at least one part with one transform is required");
			return false;
		}
		// Keys of the list outside 1..count are not looked at.
		Request.Parts.Reserve((int32)FMath::Min(Count, MaxReservation));
		for (int64 Position = 1; Position <= Count; ++Position)
		{
			NaniteAssemblyPushElement(L, PartsIndex, (lua_Integer)Position);
			const FNaniteAssemblyContextPath PartPath(Root, TEXT(" parts"), Position);
			if (!ReadPart(L, PartPath, Request.Parts.AddDefaulted_GetRef(), OutError))
			{
				return false;
			}
			lua_pop(L, 1);
		}
		return true;
	}
}

bool ReadBuildRequest(const sol::table& Argument, FNaniteAssemblyBuildRequest& InOutRequest, FString& OutError)
{
	lua_State* L = Argument.lua_state();
	FNaniteAssemblyStackGuard Guard(L);
	NaniteAssemblyReserveStack(L, 1);
	Argument.push(L);
	return ReadRequest(L, sol::stack_object(L, -1), InOutRequest, OutError);
}

bool ParseMaterialMerge(const FString& Word, ENaniteAssemblyMergeMode& OutMode, FString& OutError)
{
	for (int32 Mode = 0; Mode < (int32)UE_ARRAY_COUNT(MergeWords); ++Mode)
	{
		if (Word.Len() == FCString::Strlen(MergeWords[Mode]) && FGenericPlatformStricmp::Stricmp(*Word, MergeWords[Mode]) == 0)
		{
			OutMode = (ENaniteAssemblyMergeMode)Mode;
			return true;
		}
	}
	OutError = FString::Printf(TEXT("unknown material_merge '%s' (identical_materials|slot_names|material_indices)"), *Word);
	return false;
}

const TCHAR* MaterialMergeName(ENaniteAssemblyMergeMode Mode)
{
	switch (Mode)
	{
	case ENaniteAssemblyMergeMode::IdenticalMaterials:
		return TEXT("identical_materials");
	case ENaniteAssemblyMergeMode::SlotNames:
		return TEXT("slot_names");
	case ENaniteAssemblyMergeMode::MaterialIndices:
		return TEXT("material_indices");
	default:
		return TEXT("unknown");
	}
}
