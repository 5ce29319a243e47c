#include "Query/NaniteAssemblyReadback.h"

#include "Engine/StaticMesh.h"
#include "Lua/NaniteAssemblyLuaResult.h"
#include "RenderUtils.h"
#include "StaticMeshResources.h"
#include "UObject/Package.h"

namespace
{
	const ANSICHAR* const ReadbackVectorKeys[] = { "x", "y", "z" };
	const ANSICHAR* const ReadbackRotatorKeys[] = { "pitch", "yaw", "roll" };

	// Pushes a table of three named numbers, such as { x =, y =, z = }.
	void PushThreeNumbers(lua_State* L, const ANSICHAR* const (&Keys)[3], float First, float Second, float Third)
	{
		lua_createtable(L, 0, 3);
		const int Table = lua_gettop(L);
		SetNaniteAssemblyNumber(L, Table, Keys[0], First);
		SetNaniteAssemblyNumber(L, Table, Keys[1], Second);
		SetNaniteAssemblyNumber(L, Table, Keys[2], Third);
	}

	void PushVector(lua_State* L, const FVector3f& Vector)
	{
		PushThreeNumbers(L, ReadbackVectorKeys, Vector.X, Vector.Y, Vector.Z);
	}

	void PushRotator(lua_State* L, const FRotator3f& Rotator)
	{
		PushThreeNumbers(L, ReadbackRotatorKeys, Rotator.Pitch, Rotator.Yaw, Rotator.Roll);
	}

	void PushParts(lua_State* L, const FNaniteAssemblyData& Data)
	{
		// One pass over every node, not only the listed ones; out-of-range part indices count for no part.
		TArray<int64> NodeCounts;
		NodeCounts.SetNum(Data.Parts.Num());
		for (const FNaniteAssemblyNode& Node : Data.Nodes)
		{
			if (NodeCounts.IsValidIndex(Node.PartIndex))
			{
				++NodeCounts[Node.PartIndex];
			}
		}

		lua_createtable(L, Data.Parts.Num(), 0);
		const int Parts = lua_gettop(L);
		for (int32 PartIndex = 0; PartIndex < Data.Parts.Num(); ++PartIndex)
		{
			const FNaniteAssemblyPart& Part = Data.Parts[PartIndex];
			lua_createtable(L, 0, 4);
			const int Entry = lua_gettop(L);
			SetNaniteAssemblyInteger(L, Entry, "index", PartIndex);
			SetNaniteAssemblyText(L, Entry, "mesh", Part.MeshObjectPath.ToString());
			SetNaniteAssemblyInteger(L, Entry, "node_count", NodeCounts[PartIndex]);
			lua_createtable(L, Part.MaterialRemap.Num(), 0);
			for (int32 RemapIndex = 0; RemapIndex < Part.MaterialRemap.Num(); ++RemapIndex)
			{
				lua_pushinteger(L, Part.MaterialRemap[RemapIndex]);
				lua_rawseti(L, -2, RemapIndex + 1);
			}
			lua_setfield(L, Entry, "material_remap");
			lua_rawseti(L, Parts, PartIndex + 1);
		}
	}

	void PushNodes(lua_State* L, const FNaniteAssemblyData& Data)
	{
		const int32 Listed = FMath::Min(Data.Nodes.Num(), NaniteAssemblyReadbackNodeCap);
		lua_createtable(L, Listed, 0);
		const int Nodes = lua_gettop(L);
		for (int32 NodeIndex = 0; NodeIndex < Listed; ++NodeIndex)
		{
			const FNaniteAssemblyNode& Node = Data.Nodes[NodeIndex];
			lua_createtable(L, 0, 6);
			const int Entry = lua_gettop(L);
			SetNaniteAssemblyInteger(L, Entry, "part", (int64)Node.PartIndex + 1);
			SetNaniteAssemblyInteger(L, Entry, "part_index", Node.PartIndex);
			PushVector(L, Node.Transform.GetTranslation());
			lua_setfield(L, Entry, "location");
			PushRotator(L, Node.Transform.GetRotation().Rotator());
			lua_setfield(L, Entry, "rotation");
			PushVector(L, Node.Transform.GetScale3D());
			lua_setfield(L, Entry, "scale");
			SetNaniteAssemblyText(L, Entry, "transform_space",
				Node.TransformSpace == ENaniteAssemblyNodeTransformSpace::Local ? TEXT("local") : TEXT("bone_relative"));
			lua_rawseti(L, Nodes, NodeIndex + 1);
		}
	}
}

void WriteNaniteAssemblyReadback(sol::state_view& Lua, sol::table& Result, UStaticMesh& Mesh, bool bIncludeNodes)
{
	lua_State* L = Lua.lua_state();
	Result.push(L);
	const int Table = lua_gettop(L);

	const FMeshNaniteSettings& Settings = Mesh.GetNaniteSettings();
	const FNaniteAssemblyData& Data = Settings.NaniteAssemblyData;
	const UPackage* Package = Mesh.GetOutermost();
	SetNaniteAssemblyText(L, Table, "asset", Package ? Package->GetFName().ToString() : FString());
	SetNaniteAssemblyText(L, Table, "object_path", Mesh.GetPathName());
	SetNaniteAssemblyBool(L, Table, "nanite_enabled", Mesh.IsNaniteEnabled());
	SetNaniteAssemblyBool(L, Table, "nanite_settings_enabled", Settings.bEnabled);
	SetNaniteAssemblyBool(L, Table, "is_assembly", Mesh.IsNaniteAssembly());
	SetNaniteAssemblyBool(L, Table, "assembly_data_valid", Data.Parts.Num() > 0 && Data.Nodes.Num() > 0);
	SetNaniteAssemblyInteger(L, Table, "part_count", Data.Parts.Num());
	SetNaniteAssemblyInteger(L, Table, "node_count", Data.Nodes.Num());

	// The material list is read only once an asynchronous build has released it (the accessor waits).
	SetNaniteAssemblyInteger(L, Table, "material_slot_count", Mesh.GetStaticMaterials().Num());

	PushParts(L, Data);
	lua_setfield(L, Table, "parts");
	if (bIncludeNodes)
	{
		PushNodes(L, Data);
		lua_setfield(L, Table, "nodes");
		SetNaniteAssemblyBool(L, Table, "nodes_truncated", Data.Nodes.Num() > NaniteAssemblyReadbackNodeCap);
	}

	// "compiling" is read before the render data, whose accessor finishes a build in flight.
	SetNaniteAssemblyBool(L, Table, "compiling", Mesh.IsCompiling());
	const FStaticMeshRenderData* RenderData = Mesh.GetRenderData();
	SetNaniteAssemblyBool(L, Table, "render_data_available", RenderData != nullptr);
	SetNaniteAssemblyBool(L, Table, "valid_nanite_data", RenderData != nullptr && RenderData->HasValidNaniteData());
	SetNaniteAssemblyBool(L, Table, "assemblies_supported", NaniteAssembliesSupported());
	lua_pop(L, 1);
}
