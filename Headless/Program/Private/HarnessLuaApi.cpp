#include "Headless/HarnessLuaApi.h"

#include "Editor.h"
#include "Engine/StaticMesh.h"
#include "HAL/IConsoleManager.h"
#include "Headless/CorvaneHost.h"
#include "Headless/AssetRegistryState.h"
#include "Headless/EditorRuntime.h"
#include "Headless/EngineLog.h"
#include "Headless/Environment.h"
#include "Headless/Faults.h"
#include "Headless/MeshImport.h"
#include "Headless/ObjectRegistry.h"
#include "Headless/Plugins.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/StringUtils.h"
#include "Headless/UnsavedPackages.h"
#include "Materials/MaterialInterface.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <lua.hpp>

#include <cstdlib>
#include <string>
#include <string_view>

namespace UE::Headless
{
	namespace
	{
		// Each function's closure holds the session, then its own description.
		FLuaSessionData& SessionOf(lua_State* L)
		{
			return *static_cast<FLuaSessionData*>(lua_touserdata(L, lua_upvalueindex(1)));
		}

		const FHarnessFunction& FunctionOf(lua_State* L)
		{
			return *static_cast<const FHarnessFunction*>(lua_touserdata(L, lua_upvalueindex(2)));
		}

		const char* SignatureOf(lua_State* L)
		{
			return FunctionOf(L).Signature.c_str();
		}

		FString CheckText(lua_State* L, int Index)
		{
			size_t Length = 0;
			const char* Text = luaL_checklstring(L, Index, &Length);
			return FromUtf8(std::string_view(Text, Length));
		}

		void PushText(lua_State* L, const FString& Text)
		{
			const std::string Utf8 = ToUtf8(Text);
			lua_pushlstring(L, Utf8.data(), Utf8.size());
		}

		void PushTextList(lua_State* L, const TArray<FString>& Lines)
		{
			lua_createtable(L, Lines.Num(), 0);
			for (int32 Index = 0; Index < Lines.Num(); ++Index)
			{
				PushText(L, Lines[Index]);
				lua_rawseti(L, -2, Index + 1);
			}
		}

		UPackage* FindPackage(const FString& Name)
		{
			return (UPackage*)StaticFindObject(UPackage::StaticClass(), nullptr, Name);
		}

		int Undo(lua_State* L)
		{
			lua_pushboolean(L, GEditor && GEditor->UndoTransaction());
			return 1;
		}

		int Redo(lua_State* L)
		{
			lua_pushboolean(L, GEditor && GEditor->RedoTransaction());
			return 1;
		}

		int BeginTransaction(lua_State* L)
		{
			const FString Title = lua_isnoneornil(L, 1) ? FString(TEXT("Script transaction")) : CheckText(L, 1);
			if (!GEditor)
			{
				return luaL_error(L, "begin_transaction: no editor");
			}
			lua_pushinteger(L, GEditor->BeginTransaction(TEXT("cvai"), FText::FromString(Title), nullptr));
			return 1;
		}

		int EndTransaction(lua_State* L)
		{
			if (!GEditor || !GEditor->IsTransactionActive())
			{
				return luaL_error(L, "end_transaction: no transaction is open");
			}
			lua_pushinteger(L, GEditor->EndTransaction());
			return 1;
		}

		int CancelTransaction(lua_State* L)
		{
			if (!GEditor || !GEditor->IsTransactionActive())
			{
				return luaL_error(L, "cancel_transaction: no transaction is open");
			}
			GEditor->CancelTransaction(0);
			return 0;
		}

		int TransactionDepth(lua_State* L)
		{
			lua_pushinteger(L, GetTransactionDepth());
			return 1;
		}

		int UndoHistory(lua_State* L)
		{
			PushTextList(L, GetUndoHistory());
			return 1;
		}

		int SetCvar(lua_State* L)
		{
			const FString Name = CheckText(L, 1);
			FString Value;
			if (lua_isboolean(L, 2))
			{
				Value = lua_toboolean(L, 2) ? TEXT("1") : TEXT("0");
			}
			else
			{
				size_t Length = 0;
				const char* Text = luaL_tolstring(L, 2, &Length);
				Value = FromUtf8(std::string_view(Text, Length));
				lua_pop(L, 1);
			}
			if (!SetConsoleVariable(Name, Value))
			{
				return luaL_error(L, "set_cvar: the name is empty");
			}
			return 0;
		}

		int GetCvar(lua_State* L)
		{
			const FString Name = CheckText(L, 1);
			const IConsoleVariable* Variable = IConsoleManager::Get().FindConsoleVariable(*Name);
			if (!Variable)
			{
				lua_pushnil(L);
				return 1;
			}
			const std::string Text = ToUtf8(Variable->GetString());
			char* End = nullptr;
			const long long Number = std::strtoll(Text.c_str(), &End, 10);
			if (!Text.empty() && End && *End == '\0')
			{
				lua_pushinteger(L, Number);
			}
			else
			{
				lua_pushlstring(L, Text.data(), Text.size());
			}
			return 1;
		}

		int SetPluginEnabledLua(lua_State* L)
		{
			const FString Name = CheckText(L, 1);
			UE::Headless::SetPluginEnabled(Name, lua_toboolean(L, 2) != 0);
			return 0;
		}

		int SetEditorAvailableLua(lua_State* L)
		{
			SetEditorAvailable(lua_toboolean(L, 1) != 0);
			return 0;
		}

		int SetAssetRegistryAvailableLua(lua_State* L)
		{
			SetAssetRegistryAvailable(lua_toboolean(L, 1) != 0);
			return 0;
		}

		int Tick(lua_State* L)
		{
			TickEditor();
			return 0;
		}

		int IsPackageDirty(lua_State* L)
		{
			const UPackage* Package = FindPackage(CheckText(L, 1));
			lua_pushboolean(L, Package && Package->IsDirty());
			return 1;
		}

		int PackageFileExists(lua_State* L)
		{
			const FString Name = CheckText(L, 1);
			lua_pushboolean(L, FPackageName::IsValidLongPackageName(Name, true) && FPackageName::DoesPackageExist(Name));
			return 1;
		}

		int ObjectInfo(lua_State* L)
		{
			const UObject* Object = FindObjectIncludingGarbage(CheckText(L, 1));
			if (!Object)
			{
				lua_pushnil(L);
				return 1;
			}
			lua_createtable(L, 0, 4);
			PushText(L, Object->GetClass()->GetName());
			lua_setfield(L, -2, "class");
			PushTextList(L, DescribeObjectFlags(Object->GetFlags()));
			lua_setfield(L, -2, "flags");
			lua_pushboolean(L, Object->HasAnyInternalFlags(EInternalObjectFlags::Garbage));
			lua_setfield(L, -2, "garbage");
			const UPackage* Package = Object->GetOutermost();
			PushText(L, Package ? Package->GetName() : FString());
			lua_setfield(L, -2, "package");
			return 1;
		}

		// A cube-shaped mesh that lives only in memory, with the basic shape material in its one slot.
		int CreateTransientMesh(lua_State* L)
		{
			const FString Name = CheckText(L, 1);
			UStaticMesh* Mesh = NewObject<UStaticMesh>(GetTransientPackage(), FName(Name), RF_NoFlags);
			if (!Mesh)
			{
				return luaL_error(L, "create_transient_mesh: the mesh could not be created");
			}
			const FName SlotName(TEXT("BasicShapeMaterial"));
			UMaterialInterface* Material = (UMaterialInterface*)StaticLoadObject(UMaterialInterface::StaticClass(), nullptr,
				TEXT("/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"));
			TArray<FStaticMaterial> Materials;
			Materials.Add(FStaticMaterial(Material, SlotName, SlotName));
			Mesh->SetStaticMaterials(Materials);
			GetMeshGeometry(*Mesh) = MakeBasicShapeGeometry(EBasicShape::Cube, SlotName);
			PushText(L, Mesh->GetPathName());
			return 1;
		}

		int FailNextLua(lua_State* L)
		{
			const FString Operation = CheckText(L, 1);
			const FString Reason = lua_isnoneornil(L, 2) ? FString() : CheckText(L, 2);
			const int32 SkippedCalls = (int32)luaL_optinteger(L, 3, 0);
			if (!FailNext(Operation, Reason, SkippedCalls))
			{
				return luaL_error(L, "fail_next: unknown operation '%s' (one of %s)", ToUtf8(Operation).c_str(),
					ToUtf8(FString::Join(GetFaultableOperations(), TEXT(", "))).c_str());
			}
			return 0;
		}

		int SavedPackages(lua_State* L)
		{
			const TArray<FSavedPackageNotification>& Notifications = GetSavedPackageNotifications();
			lua_createtable(L, Notifications.Num(), 0);
			for (int32 Index = 0; Index < Notifications.Num(); ++Index)
			{
				lua_createtable(L, 0, 2);
				PushText(L, Notifications[Index].PackageName);
				lua_setfield(L, -2, "package");
				lua_pushinteger(L, Notifications[Index].TransactionDepth);
				lua_setfield(L, -2, "depth");
				lua_rawseti(L, -2, Index + 1);
			}
			return 1;
		}

		// save_packages{ "/Game/A", ... }: those packages, or with no list or an empty one every package with unsaved
		// changes; true, or false and the reason.
		int SavePackagesLua(lua_State* L)
		{
			// Every refusal comes before the first C++ object: a Lua error unwinds past destructors.
			lua_Integer Count = 0;
			if (!lua_isnoneornil(L, 1))
			{
				Count = (lua_Integer)lua_rawlen(L, 1);
			}
			for (lua_Integer Index = 1; Index <= Count; ++Index)
			{
				if (lua_rawgeti(L, 1, Index) != LUA_TSTRING)
				{
					return luaL_error(L, "%s: argument #1 'packages' entry %d must be a string, got %s", SignatureOf(L), (int)Index, luaL_typename(L, -1));
				}
				lua_pop(L, 1);
			}

			TArray<UPackage*> Packages = Count == 0 ? GetUnsavedPackages() : TArray<UPackage*>();
			for (lua_Integer Index = 1; Index <= Count; ++Index)
			{
				lua_rawgeti(L, 1, Index);
				const FString Name = CheckText(L, -1);
				lua_pop(L, 1);
				UPackage* Package = FindPackage(Name);
				if (!Package)
				{
					lua_pushboolean(L, false);
					PushText(L, FString::Printf(TEXT("no package named '%s' is loaded"), *Name));
					return 2;
				}
				Packages.AddUnique(Package);
			}
			FString Error;
			if (!SaveChangedPackages(Packages, Error))
			{
				lua_pushboolean(L, false);
				PushText(L, Error);
				return 2;
			}
			lua_pushboolean(L, true);
			return 1;
		}

		// import_mesh(file, dest[, { replace = true }]): the object path of the imported mesh, or nil and the reason.
		int ImportMesh(lua_State* L)
		{
			// Every refusal of an argument comes before the first C++ object: a Lua error unwinds past destructors.
			bool bReplace = false;
			if (!lua_isnoneornil(L, 3))
			{
				lua_pushnil(L);
				while (lua_next(L, 3) != 0)
				{
					if (lua_type(L, -2) != LUA_TSTRING || std::string_view(lua_tostring(L, -2)) != "replace")
					{
						return luaL_error(L, "%s: argument #3 'options' has an unknown key %s (the only option is replace)", SignatureOf(L),
							luaL_tolstring(L, -2, nullptr));
					}
					if (!lua_isboolean(L, -1))
					{
						return luaL_error(L, "%s: argument #3 'options' field 'replace' must be a boolean, got %s", SignatureOf(L), luaL_typename(L, -1));
					}
					bReplace = lua_toboolean(L, -1) != 0;
					lua_pop(L, 1);
				}
			}
			FMeshImportResult Result;
			FString Error;
			if (!ImportMeshFile(CheckText(L, 1), CheckText(L, 2), bReplace, Result, Error))
			{
				lua_pushnil(L);
				PushText(L, Error);
				return 2;
			}
			PushText(L, Result.ObjectPath);
			return 1;
		}

		int LogLines(lua_State* L)
		{
			PushTextList(L, FLuaSessionAccess::GetLogLines(SessionOf(L)));
			return 1;
		}

		int ProjectDir(lua_State* L)
		{
			PushText(L, FPaths::ProjectDir());
			return 1;
		}

		int EngineLog(lua_State* L)
		{
			TArray<FString> Lines;
			for (const FEngineLogLine& Line : GetEngineLog())
			{
				Lines.Add(Line.Format());
			}
			PushTextList(L, Lines);
			return 1;
		}

		// The check of one argument against its declared type: a number passes for a string, as in Lua's own
		// library; a table's name or a list type asks for a table.
		bool MatchesLuaType(lua_State* L, int Index, const std::string& LuaType)
		{
			if (LuaType == "any")
			{
				return !lua_isnone(L, Index);
			}
			if (LuaType == "string")
			{
				return lua_type(L, Index) == LUA_TSTRING || lua_type(L, Index) == LUA_TNUMBER;
			}
			if (LuaType == "boolean")
			{
				return lua_isboolean(L, Index);
			}
			if (LuaType == "integer")
			{
				int bIsInteger = 0;
				lua_tointegerx(L, Index, &bIsInteger);
				return bIsInteger != 0;
			}
			return lua_istable(L, Index);
		}

		const char* ExpectedText(const std::string& LuaType)
		{
			if (LuaType == "any")
			{
				return "a value";
			}
			if (LuaType == "string")
			{
				return "a string";
			}
			if (LuaType == "boolean")
			{
				return "a boolean";
			}
			if (LuaType == "integer")
			{
				return "an integer";
			}
			return "a table";
		}

		// Checks the arguments against the function's description, then runs its body. The error is raised
		// before any C++ object exists: a Lua error unwinds past destructors.
		int CallChecked(lua_State* L)
		{
			const FHarnessFunction& Function = FunctionOf(L);
			const std::vector<FLuaArgumentReference>& Arguments = Function.Reference.Arguments;
			for (size_t Position = 0; Position < Arguments.size(); ++Position)
			{
				const FLuaArgumentReference& Argument = Arguments[Position];
				const int Index = (int)Position + 1;
				if (Argument.bOptional && lua_isnoneornil(L, Index))
				{
					continue;
				}
				if (!MatchesLuaType(L, Index, Argument.LuaType))
				{
					return luaL_error(L, "%s: argument #%d '%s' must be %s, got %s", Function.Signature.c_str(), Index, Argument.Name.c_str(),
						ExpectedText(Argument.LuaType), luaL_typename(L, Index));
				}
			}
			return Function.Body(L);
		}

		FLuaArgumentReference Required(const char* Name, const char* LuaType, const char* Meaning)
		{
			return { Name, LuaType, false, Meaning };
		}

		FLuaArgumentReference Optional(const char* Name, const char* LuaType, const char* Meaning)
		{
			return { Name, LuaType, true, Meaning };
		}

		FHarnessFunction Describe(const char* Name, int (*Body)(lua_State*), std::vector<FLuaArgumentReference> Arguments,
			std::vector<FLuaReturnReference> Returns, const char* Description)
		{
			FHarnessFunction Function;
			Function.Reference = { std::string("headless.") + Name, std::move(Arguments), std::move(Returns), Description };
			Function.Body = Body;
			Function.Signature = Function.Reference.Signature();
			return Function;
		}

		std::vector<FHarnessFunction> MakeHarnessFunctions()
		{
			return {
				Describe("undo", &Undo, {}, { { "boolean", "true when a transaction was undone" } }, "One editor Undo."),
				Describe("redo", &Redo, {}, { { "boolean", "true when a transaction was redone" } }, "One editor Redo."),
				Describe("begin_transaction", &BeginTransaction, { Optional("title", "string", "the transaction's title (default \"Script transaction\")") },
					{ { "integer", "the transaction's index" } },
					"Opens a transaction of the caller's around later calls; verbs called inside it join it."),
				Describe("end_transaction", &EndTransaction, {}, { { "integer", "the number of transactions still open" } },
					"Closes the innermost open transaction; an error when none is open."),
				Describe("cancel_transaction", &CancelTransaction, {}, {},
					"Cancels the innermost open transaction (its record is thrown away, objects keep their state); an error when none is open."),
				Describe("transaction_depth", &TransactionDepth, {}, { { "integer", "how many transactions are open" } }, "The number of open transactions."),
				Describe("undo_history", &UndoHistory, {}, { { "string[]", "the titles, oldest first" } }, "The titles of the transactions that Undo can take back."),
				Describe("set_cvar", &SetCvar,
					{ Required("name", "string", "the console variable, such as \"r.Nanite.AllowAssemblies\""),
						Required("value", "any", "its new value; true and false become 1 and 0, anything else its text") },
					{},
					"Sets a console variable as the project's settings do; a variable not registered yet takes the value when it is; an "
					"empty name is an error."),
				Describe("get_cvar", &GetCvar, { Required("name", "string", "the console variable") },
					{ { "integer|string|nil", "its value, as an integer when it is one; nil when no such variable exists" } }, "Reads a console variable."),
				Describe("set_plugin_enabled", &SetPluginEnabledLua,
					{ Required("name", "string", "the plugin, such as \"NaniteAssemblyEditorUtils\""), Required("enabled", "boolean", "its new state") }, {},
					"Enables or disables an engine plugin for the rest of this run."),
				Describe("set_editor_available", &SetEditorAvailableLua, { Required("available", "boolean", "false takes GEditor away") }, {},
					"Makes the editor (GEditor) absent or present, as in a commandlet."),
				Describe("set_asset_registry_available", &SetAssetRegistryAvailableLua,
					{ Required("available", "boolean", "false makes IAssetRegistry::Get() return null") }, {}, "Makes the asset registry absent or present."),
				Describe("tick", &Tick, {}, {}, "One editor tick: finishes every pending asynchronous mesh build."),
				Describe("is_package_dirty", &IsPackageDirty, { Required("package", "string", "the package name, such as \"/Game/Props/SM_Fence\"") },
					{ { "boolean", "the package is loaded and has unsaved changes" } }, "A package's dirty flag in memory."),
				Describe("package_file_exists", &PackageFileExists, { Required("package", "string", "the package name") },
					{ { "boolean", "the package has a file on disk" } }, "Whether a package was saved to disk."),
				Describe("object_info", &ObjectInfo, { Required("path", "string", "the object's full path, such as \"/Game/A/SM_A.SM_A\"") },
					{ { "HeadlessObjectInfo|nil", "the object's state; nil when no object has that path" } },
					"Looks an object up by path, garbage objects included (unlike the engine's look-ups)."),
				Describe("create_transient_mesh", &CreateTransientMesh, { Required("name", "string", "the mesh's object name") },
					{ { "string", "the new mesh's full path name" } },
					"Creates a cube-shaped static mesh in the transient package, with BasicShapeMaterial in its one slot."),
				Describe("fail_next", &FailNextLua,
					{ Required("operation", "string",
						  "BeginEditStaticMeshAssemblyBuild, AddAssemblyParts, FinishAssemblyBuild, NewObject, CreatePackage, "
						  "EnsurePackageEditable, EnsurePackageEditableForSave, SavePackages, WritePackageFile, ..."),
						Optional("reason", "string", "the failure's reason text"),
						Optional("skipped_calls", "integer", "how many calls succeed before the one that fails (default 0)") },
					{}, "Makes a later call of one engine or host operation fail; an unknown operation is an error that lists them."),
				Describe("saved_packages", &SavedPackages, {}, { { "HeadlessSavedPackage[]", "one entry per package-saved notification, in order" } },
					"Every package-saved notification of the run so far."),
				Describe("save_packages", &SavePackagesLua, { Optional("packages", "string[]", "package names; none or an empty list: every unsaved package") },
					{ { "boolean", "true when every package was saved" }, { "string?", "the reason, when not" } },
					"Saves packages' unsaved changes through the editor's save path."),
				Describe("import_mesh", &ImportMesh,
					{ Required("file", "string", "a glTF, OBJ or FBX file"), Required("dest", "string", "the mesh's package path"),
						Optional("options", "HeadlessImportOptions", "{ replace = true } replaces an existing mesh") },
					{ { "string?", "the imported mesh's object path" }, { "string?", "the reason, when the import failed" } },
					"Imports a model file as a static mesh, as cvai import does."),
				Describe("log_lines", &LogLines, {}, { { "string[]", "the lines, oldest first" } }, "The session's log lines so far."),
				Describe("engine_log", &EngineLog, {}, { { "string[]", "the lines, oldest first" } }, "The engine log's lines so far."),
				Describe("project_dir", &ProjectDir, {}, { { "string", "the folder, ending in /" } }, "The project folder."),
			};
		}
	}

	const std::vector<FHarnessFunction>& GetHarnessFunctions()
	{
		static const std::vector<FHarnessFunction> Functions = MakeHarnessFunctions();
		return Functions;
	}

	const std::vector<FLuaTableReference>& GetHarnessTables()
	{
		static const std::vector<FLuaTableReference> Tables = {
			{ "HeadlessObjectInfo", "What headless.object_info returns.",
				{
					{ "class", "string", false, "the engine's class name, such as \"StaticMesh\"", "" },
					{ "flags", "string[]", false, "the engine's flag names, such as \"RF_Public\"", "" },
					{ "garbage", "boolean", false, "the object is marked as garbage", "" },
					{ "package", "string", false, "the name of its package", "" },
				} },
			{ "HeadlessSavedPackage", "One package-saved notification.",
				{
					{ "package", "string", false, "the package's name", "" },
					{ "depth", "integer", false, "how many transactions were open when it was saved", "" },
				} },
			{ "HeadlessImportOptions", "The options of headless.import_mesh.",
				{
					{ "replace", "boolean", true, "replace an existing mesh at dest", "default false" },
				} },
		};
		return Tables;
	}

	void InstallHarnessLuaApi(lua_State* L, FLuaSessionData& Session)
	{
		const std::vector<FHarnessFunction>& Functions = GetHarnessFunctions();
		lua_createtable(L, 0, (int)Functions.size());
		for (const FHarnessFunction& Function : Functions)
		{
			lua_pushlightuserdata(L, &Session);
			lua_pushlightuserdata(L, const_cast<FHarnessFunction*>(&Function));
			lua_pushcclosure(L, &CallChecked, 2);
			lua_setfield(L, -2, Function.Reference.Name.c_str() + std::string_view("headless.").size());
		}
		lua_setglobal(L, "headless");
	}
}
