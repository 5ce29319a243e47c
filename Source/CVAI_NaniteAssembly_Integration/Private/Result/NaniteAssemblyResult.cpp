#include "Result/NaniteAssemblyResult.h"

#include "AssetRegistry/AssetData.h"
#include "AssetRegistry/IAssetRegistry.h"
#include "Build/NaniteAssemblyBuild.h"
#include "Engine/StaticMesh.h"
#include "LuaSessionData.h"
#include "RenderUtils.h"
#include "Shared/NaniteAssemblyLuaText.h"
#include "Shared/NaniteAssemblyPluginStatus.h"
#include "StaticMeshResources.h"
#include "UObject/Package.h"

namespace CVAI::NaniteAssembly
{
	namespace
	{
		const TCHAR* const UnsupportedWarning = TEXT("assemblies_supported=false: the asset stores the assembly parts but the built Nanite resource "
													 "ignores them (valid_nanite_data=false) until r.Nanite.AllowAssemblies=1 is set in DefaultEngine.ini "
													 "[ConsoleVariables] and the editor restarts");

		const char* const ReadbackVectorKeys[] = { "x", "y", "z" };
		const char* const ReadbackRotatorKeys[] = { "pitch", "yaw", "roll" };

		// Booleans in log lines.
		const TCHAR* BoolText(bool bValue)
		{
			return bValue ? TEXT("true") : TEXT("false");
		}

		// [-0, +0, m] Fields of the table at the absolute index Table.
		void SetBool(lua_State* L, int Table, const char* Key, bool bValue)
		{
			lua_pushboolean(L, bValue ? 1 : 0);
			lua_setfield(L, Table, Key);
		}

		void SetInteger(lua_State* L, int Table, const char* Key, int64 Value)
		{
			lua_pushinteger(L, (lua_Integer)Value);
			lua_setfield(L, Table, Key);
		}

		void SetNumber(lua_State* L, int Table, const char* Key, double Value)
		{
			lua_pushnumber(L, (lua_Number)Value);
			lua_setfield(L, Table, Key);
		}

		void SetText(lua_State* L, int Table, const char* Key, const FString& Text)
		{
			PushText(L, Text);
			lua_setfield(L, Table, Key);
		}

		// [-0, +1, m] A new result table whose first key is ok = true; returns its absolute index.
		int PushSuccessTable(lua_State* L, int ExpectedFields)
		{
			lua_createtable(L, 0, ExpectedFields);
			const int Table = lua_gettop(L);
			SetBool(L, Table, "ok", true);
			return Table;
		}

		// [-0, +1, m] A table of three named numbers, such as { x =, y =, z = }.
		void PushThreeNumbers(lua_State* L, const char* const (&Keys)[3], float First, float Second, float Third)
		{
			lua_createtable(L, 0, 3);
			const int Table = lua_gettop(L);
			SetNumber(L, Table, Keys[0], First);
			SetNumber(L, Table, Keys[1], Second);
			SetNumber(L, Table, Keys[2], Third);
		}

		// [-0, +1, m] One entry per part: its index, mesh, node count over every node, and material remap.
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
				SetInteger(L, Entry, "index", PartIndex);
				SetText(L, Entry, "mesh", Part.MeshObjectPath.ToString());
				SetInteger(L, Entry, "node_count", NodeCounts[PartIndex]);
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

		// [-0, +1, m] The first nodes, up to the cap, with their transforms as the engine stores them.
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
				SetInteger(L, Entry, "part", (int64)Node.PartIndex + 1);
				SetInteger(L, Entry, "part_index", Node.PartIndex);
				const FVector3f Location = Node.Transform.GetTranslation();
				PushThreeNumbers(L, ReadbackVectorKeys, Location.X, Location.Y, Location.Z);
				lua_setfield(L, Entry, "location");
				const FRotator3f Rotation = Node.Transform.GetRotation().Rotator();
				PushThreeNumbers(L, ReadbackRotatorKeys, Rotation.Pitch, Rotation.Yaw, Rotation.Roll);
				lua_setfield(L, Entry, "rotation");
				const FVector3f Scale = Node.Transform.GetScale3D();
				PushThreeNumbers(L, ReadbackVectorKeys, Scale.X, Scale.Y, Scale.Z);
				lua_setfield(L, Entry, "scale");
				SetText(L, Entry, "transform_space",
					Node.TransformSpace == ENaniteAssemblyNodeTransformSpace::Local ? TEXT("local") : TEXT("bone_relative"));
				lua_rawseti(L, Nodes, NodeIndex + 1);
			}
		}

		// Whether the asset registry knows the object; false without a registry.
		bool IsRegistered(const FString& ObjectPath)
		{
			const IAssetRegistry* AssetRegistry = IAssetRegistry::Get();
			return AssetRegistry && AssetRegistry->GetAssetByObjectPath(FSoftObjectPath(ObjectPath), false, true).IsValid();
		}
	}

	sol::stack_table MakeNaniteAssemblyError(lua_State* L, const FString& Message)
	{
		lua_createtable(L, 0, 2);
		const int Table = lua_gettop(L);
		SetBool(L, Table, "ok", false);
		SetText(L, Table, "error", Message);
		return sol::stack_table(L, Table);
	}

	void WriteNaniteAssemblyReadback(lua_State* L, int Table, UStaticMesh& Mesh, bool bIncludeNodes, bool bAssembliesSupported)
	{
		const FMeshNaniteSettings& Settings = Mesh.GetNaniteSettings();
		const FNaniteAssemblyData& Data = Settings.NaniteAssemblyData;
		const UPackage* Package = Mesh.GetOutermost();
		SetText(L, Table, "asset", Package ? Package->GetFName().ToString() : FString());
		SetText(L, Table, "object_path", Mesh.GetPathName());
		SetBool(L, Table, "nanite_enabled", Mesh.IsNaniteEnabled());
		SetBool(L, Table, "nanite_settings_enabled", Settings.bEnabled);
		SetBool(L, Table, "is_assembly", Mesh.IsNaniteAssembly());
		SetBool(L, Table, "assembly_data_valid", Data.Parts.Num() > 0 && Data.Nodes.Num() > 0);
		SetInteger(L, Table, "part_count", Data.Parts.Num());
		SetInteger(L, Table, "node_count", Data.Nodes.Num());

		// The material list is read only once an asynchronous build has released it (the accessor waits).
		SetInteger(L, Table, "material_slot_count", Mesh.GetStaticMaterials().Num());

		PushParts(L, Data);
		lua_setfield(L, Table, "parts");
		if (bIncludeNodes)
		{
			PushNodes(L, Data);
			lua_setfield(L, Table, "nodes");
			SetBool(L, Table, "nodes_truncated", Data.Nodes.Num() > NaniteAssemblyReadbackNodeCap);
		}

		// "compiling" is read before the render data, whose accessor finishes a build in flight.
		SetBool(L, Table, "compiling", Mesh.IsCompiling());
		const FStaticMeshRenderData* RenderData = Mesh.GetRenderData();
		SetBool(L, Table, "render_data_available", RenderData != nullptr);
		SetBool(L, Table, "valid_nanite_data", RenderData != nullptr && RenderData->HasValidNaniteData());
		SetBool(L, Table, "assemblies_supported", bAssembliesSupported);
	}

	sol::stack_table PushSupportResult(FLuaSessionData& Session, lua_State* L, const FNaniteAssemblyPluginStatus& Status)
	{
		const int Table = PushSuccessTable(L, 10);
		SetBool(L, Table, "available", Status.bAvailable);
		SetBool(L, Table, "supported", Status.bAvailable);
		SetText(L, Table, "plugin", NaniteAssemblyPluginName);
		SetBool(L, Table, "plugin_enabled", Status.bPluginEnabled);
		// The builder's interface is linked into this module, so the builder is present whenever it loads.
		SetBool(L, Table, "compiled_in", true);
		SetText(L, Table, "engine_version", Status.EngineVersion);
		SetText(L, Table, "min_version", TEXT("5.7"));
		SetBool(L, Table, "assemblies_supported", Status.bAssembliesSupported);
		SetText(L, Table, "reason", Status.Reason);

		Session.Log(FString::Printf(TEXT("[OK] nanite_assembly_support -> available=%s, plugin_enabled=%s, assemblies_supported=%s"),
			BoolText(Status.bAvailable), BoolText(Status.bPluginEnabled), BoolText(Status.bAssembliesSupported)));
		return sol::stack_table(L, Table);
	}

	sol::stack_table PushInfoResult(FLuaSessionData& Session, lua_State* L, const FString& GivenPath, UStaticMesh& Mesh)
	{
		const int Table = PushSuccessTable(L, 17);
		WriteNaniteAssemblyReadback(L, Table, Mesh, true, NaniteAssembliesSupported());

		const FNaniteAssemblyData& Data = Mesh.GetNaniteSettings().NaniteAssemblyData;
		Session.Log(FString::Printf(TEXT("[OK] nanite_assembly_info(\"%s\") -> is_assembly=%s, parts=%d, nodes=%d"), *GivenPath,
			BoolText(Mesh.IsNaniteAssembly()), Data.Parts.Num(), Data.Nodes.Num()));
		return sol::stack_table(L, Table);
	}

	sol::stack_table PushBuildResult(FLuaSessionData& Session, lua_State* L, const FNaniteAssemblyBuildOutcome& Outcome)
	{
		UStaticMesh& Mesh = *Outcome.Mesh;
		const FNaniteAssemblyPluginStatus& Status = Outcome.Status;
		const int Table = PushSuccessTable(L, 24);
		WriteNaniteAssemblyReadback(L, Table, Mesh, false, Status.bAssembliesSupported);
		SetBool(L, Table, "created", Outcome.bCreated);
		SetBool(L, Table, "overwritten", Outcome.bOverwritten);
		SetBool(L, Table, "saved", Outcome.bSaved);
		SetBool(L, Table, "compiled", Outcome.bCompiled);
		SetBool(L, Table, "transaction_owned", Outcome.bTransactionOwned);
		SetBool(L, Table, "plugin_enabled", Status.bPluginEnabled);
		if (!Status.bAssembliesSupported)
		{
			SetText(L, Table, "warning", UnsupportedWarning);
		}
		const bool bRegistered = IsRegistered(Outcome.ObjectPath);
		SetBool(L, Table, "registered", bRegistered);

		const FNaniteAssemblyData& Data = Mesh.GetNaniteSettings().NaniteAssemblyData;
		Session.Log(FString::Printf(
			TEXT("[OK] nanite_assembly_build -> %s (%s) parts=%d nodes=%d nanite=%s assembly=%s registered=%s compiled=%s saved=%s assemblies_supported=%s"),
			*Outcome.ObjectPath, Outcome.bCreated ? TEXT("created") : TEXT("overwritten"), Data.Parts.Num(), Data.Nodes.Num(),
			BoolText(Mesh.IsNaniteEnabled()), BoolText(Mesh.IsNaniteAssembly()), BoolText(bRegistered), BoolText(Outcome.bCompiled),
			BoolText(Outcome.bSaved), BoolText(Status.bAssembliesSupported)));
		return sol::stack_table(L, Table);
	}

	sol::stack_table PushRefusal(FLuaSessionData& Session, lua_State* L, const TCHAR* VerbName, const FString& Message)
	{
		Session.Log(FString::Printf(TEXT("[FAIL] %s -> %s"), VerbName, *Message));
		return MakeNaniteAssemblyError(L, Message);
	}

	sol::stack_table PushBuildRefusal(FLuaSessionData& Session, lua_State* L, const FString& Message, const FNaniteAssemblyBuildOutcome& Outcome)
	{
		const sol::stack_table Result = PushRefusal(Session, L, TEXT("nanite_assembly_build"), Message);
		if (Outcome.Mesh)
		{
			// The build stood and only the save failed: the script learns what it now has in memory.
			SetText(L, Result.stack_index(), "asset", Outcome.PackageName);
			SetText(L, Result.stack_index(), "object_path", Outcome.ObjectPath);
			SetBool(L, Result.stack_index(), "saved", false);
		}
		return Result;
	}
}
