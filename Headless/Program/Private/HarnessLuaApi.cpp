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
		FLuaSessionData& SessionOf(lua_State* L)
		{
			return *static_cast<FLuaSessionData*>(lua_touserdata(L, lua_upvalueindex(1)));
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
			luaL_checkany(L, 2);
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
			luaL_checktype(L, 2, LUA_TBOOLEAN);
			UE::Headless::SetPluginEnabled(Name, lua_toboolean(L, 2) != 0);
			return 0;
		}

		int SetEditorAvailableLua(lua_State* L)
		{
			luaL_checktype(L, 1, LUA_TBOOLEAN);
			SetEditorAvailable(lua_toboolean(L, 1) != 0);
			return 0;
		}

		int SetAssetRegistryAvailableLua(lua_State* L)
		{
			luaL_checktype(L, 1, LUA_TBOOLEAN);
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
				luaL_checktype(L, 1, LUA_TTABLE);
				Count = (lua_Integer)lua_rawlen(L, 1);
			}
			for (lua_Integer Index = 1; Index <= Count; ++Index)
			{
				if (lua_rawgeti(L, 1, Index) != LUA_TSTRING)
				{
					return luaL_error(L, "save_packages: entry %d is a %s, not a package name", (int)Index, luaL_typename(L, -1));
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
			luaL_checkstring(L, 1);
			luaL_checkstring(L, 2);
			bool bReplace = false;
			if (!lua_isnoneornil(L, 3))
			{
				luaL_checktype(L, 3, LUA_TTABLE);
				lua_pushnil(L);
				while (lua_next(L, 3) != 0)
				{
					if (lua_type(L, -2) != LUA_TSTRING || std::string_view(lua_tostring(L, -2)) != "replace")
					{
						return luaL_error(L, "import_mesh: unknown option %s (the only option is replace)", luaL_tolstring(L, -2, nullptr));
					}
					if (!lua_isboolean(L, -1))
					{
						return luaL_error(L, "import_mesh: replace is a %s, not a boolean", luaL_typename(L, -1));
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
	}

	void InstallHarnessLuaApi(lua_State* L, FLuaSessionData& Session)
	{
		static const luaL_Reg Functions[] = {
			{ "undo", &Undo },
			{ "redo", &Redo },
			{ "begin_transaction", &BeginTransaction },
			{ "end_transaction", &EndTransaction },
			{ "cancel_transaction", &CancelTransaction },
			{ "transaction_depth", &TransactionDepth },
			{ "undo_history", &UndoHistory },
			{ "set_cvar", &SetCvar },
			{ "get_cvar", &GetCvar },
			{ "set_plugin_enabled", &SetPluginEnabledLua },
			{ "set_editor_available", &SetEditorAvailableLua },
			{ "set_asset_registry_available", &SetAssetRegistryAvailableLua },
			{ "tick", &Tick },
			{ "is_package_dirty", &IsPackageDirty },
			{ "package_file_exists", &PackageFileExists },
			{ "object_info", &ObjectInfo },
			{ "create_transient_mesh", &CreateTransientMesh },
			{ "fail_next", &FailNextLua },
			{ "saved_packages", &SavedPackages },
			{ "save_packages", &SavePackagesLua },
			{ "import_mesh", &ImportMesh },
			{ "log_lines", &LogLines },
			{ "engine_log", &EngineLog },
			{ "project_dir", &ProjectDir },
			{ nullptr, nullptr },
		};
		lua_createtable(L, 0, (int)(sizeof(Functions) / sizeof(Functions[0])) - 1);
		lua_pushlightuserdata(L, &Session);
		luaL_setfuncs(L, Functions, 1);
		lua_setglobal(L, "headless");
	}
}
