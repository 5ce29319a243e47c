#include "LuaSandbox.h"

#include <lua.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

namespace UE::Headless
{
	namespace
	{
		namespace fs = std::filesystem;

		// Upvalues of the functions that judge paths: the two folders, resolved, then the original C function.
		constexpr int ProjectUpvalue = 1;
		constexpr int ScriptUpvalue = 2;
		constexpr int OriginalUpvalue = 3;

		enum class EAccess
		{
			Read,
			Write,
		};

		// Links are followed to their end, a last one that leads nowhere too: a write through it would create its
		// target. False when the path cannot be resolved (a loop of links).
		bool ResolvePath(const std::string& Given, fs::path& OutPath)
		{
			std::error_code Error;
			fs::path Path = fs::absolute(Given, Error);
			for (int Hop = 0; !Error && Hop < 40; ++Hop)
			{
				const fs::path Resolved = fs::weakly_canonical(Path, Error);
				if (Error)
				{
					break;
				}
				if (!fs::is_symlink(fs::symlink_status(Resolved, Error)))
				{
					OutPath = Resolved;
					return true;
				}
				const fs::path Target = fs::read_symlink(Resolved, Error);
				Path = Target.is_absolute() ? Target : Resolved.parent_path() / Target;
			}
			return false;
		}

		bool IsInside(const fs::path& Path, const char* Root)
		{
			const fs::path RootPath(Root);
			return std::mismatch(RootPath.begin(), RootPath.end(), Path.begin(), Path.end()).first == RootPath.end();
		}

		// The refusal of the file at Path for Access, or empty when the sandbox lets it be opened.
		std::string JudgePath(lua_State* L, const char* Function, const char* Path, EAccess Access)
		{
			fs::path Resolved;
			if (!ResolvePath(Path, Resolved))
			{
				return std::string(Function) + ": '" + Path + "' cannot be resolved";
			}
			const bool bInProject = IsInside(Resolved, lua_tostring(L, lua_upvalueindex(ProjectUpvalue)));
			if (Access == EAccess::Write && !bInProject)
			{
				return std::string(Function) + ": '" + Path + "' cannot be written: the sandbox writes only inside the project folder";
			}
			if (!bInProject && !IsInside(Resolved, lua_tostring(L, lua_upvalueindex(ScriptUpvalue))))
			{
				return std::string(Function) + ": '" + Path + "' is outside the project folder and the script's folder";
			}
			return std::string();
		}

		// Raises the refusal of the path at Index, if any, with the caller's position; nothing of C++ is left on
		// the way out.
		void CheckPath(lua_State* L, int Index, const char* Function, EAccess Access)
		{
			bool bRefused = false;
			{
				const std::string Refusal = JudgePath(L, Function, lua_tostring(L, Index), Access);
				if (!Refusal.empty())
				{
					luaL_where(L, 1);
					lua_pushlstring(L, Refusal.data(), Refusal.size());
					lua_concat(L, 2);
					bRefused = true;
				}
			}
			if (bRefused)
			{
				lua_error(L);
			}
		}

		// Whether the file starts as a precompiled chunk does.
		bool IsPrecompiledFile(const char* Path)
		{
			FILE* File = std::fopen(Path, "rb");
			if (!File)
			{
				return false;
			}
			const int First = std::fgetc(File);
			std::fclose(File);
			return First == LUA_SIGNATURE[0];
		}

		void CheckSourceFile(lua_State* L, int Index, const char* Function)
		{
			CheckPath(L, Index, Function, EAccess::Read);
			if (IsPrecompiledFile(lua_tostring(L, Index)))
			{
				luaL_error(L, "%s: precompiled chunks are not allowed in the sandbox", Function);
			}
		}

		int CallOriginal(lua_State* L)
		{
			return reinterpret_cast<lua_CFunction>(lua_touserdata(L, lua_upvalueindex(OriginalUpvalue)))(L);
		}

		int OpenFile(lua_State* L)
		{
			luaL_checkstring(L, 1);
			const char* Mode = luaL_optstring(L, 2, "r");
			CheckPath(L, 1, "io.open", std::strpbrk(Mode, "wa+") ? EAccess::Write : EAccess::Read);
			return CallOriginal(L);
		}

		int Lines(lua_State* L)
		{
			if (!lua_isnoneornil(L, 1))
			{
				luaL_checkstring(L, 1);
				CheckPath(L, 1, "io.lines", EAccess::Read);
			}
			return CallOriginal(L);
		}

		int Input(lua_State* L)
		{
			if (lua_type(L, 1) == LUA_TSTRING)
			{
				CheckPath(L, 1, "io.input", EAccess::Read);
			}
			return CallOriginal(L);
		}

		int Output(lua_State* L)
		{
			if (lua_type(L, 1) == LUA_TSTRING)
			{
				CheckPath(L, 1, "io.output", EAccess::Write);
			}
			return CallOriginal(L);
		}

		// Arguments: chunk, chunk name, mode, environment. The mode becomes "t" whatever was asked.
		int Load(lua_State* L)
		{
			size_t Length = 0;
			const char* Chunk = lua_type(L, 1) == LUA_TSTRING ? lua_tolstring(L, 1, &Length) : nullptr;
			if (Chunk && Length > 0 && Chunk[0] == LUA_SIGNATURE[0])
			{
				return luaL_error(L, "load: precompiled chunks are not allowed in the sandbox");
			}
			lua_settop(L, std::max(lua_gettop(L), 3));
			lua_pushliteral(L, "t");
			lua_replace(L, 3);
			return CallOriginal(L);
		}

		// Arguments: file name, mode, environment.
		int LoadFile(lua_State* L)
		{
			if (!lua_isnoneornil(L, 1))
			{
				luaL_checkstring(L, 1);
				CheckSourceFile(L, 1, "loadfile");
			}
			lua_settop(L, std::max(lua_gettop(L), 2));
			lua_pushliteral(L, "t");
			lua_replace(L, 2);
			return CallOriginal(L);
		}

		int FinishDoFile(lua_State* L, int, lua_KContext)
		{
			return lua_gettop(L) - 1;
		}

		int DoFile(lua_State* L)
		{
			const char* Path = luaL_optstring(L, 1, nullptr);
			lua_settop(L, 1);
			if (Path)
			{
				CheckSourceFile(L, 1, "dofile");
			}
			if (luaL_loadfilex(L, Path, "t") != LUA_OK)
			{
				return lua_error(L);
			}
			lua_callk(L, 0, LUA_MULTRET, 0, &FinishDoFile);
			return FinishDoFile(L, 0, 0);
		}

		// package.searchers[2] made strict: the file found on package.path is judged as a read and loaded as text.
		// Upvalue OriginalUpvalue is the package table.
		int SearchLuaModule(lua_State* L)
		{
			const char* Name = luaL_checkstring(L, 1);
			lua_getfield(L, lua_upvalueindex(OriginalUpvalue), "searchpath");
			lua_pushvalue(L, 1);
			if (lua_getfield(L, lua_upvalueindex(OriginalUpvalue), "path") != LUA_TSTRING)
			{
				return luaL_error(L, "'package.path' must be a string");
			}
			lua_call(L, 2, 2);
			if (lua_isnil(L, -2))
			{
				// The files that were tried, for require's message.
				return 1;
			}
			lua_pop(L, 1);
			const char* Path = lua_tostring(L, -1);
			CheckPath(L, -1, "require", EAccess::Read);
			if (luaL_loadfilex(L, Path, "t") != LUA_OK)
			{
				return luaL_error(L, "error loading module '%s' from file '%s':\n\t%s", Name, Path, lua_tostring(L, -1));
			}
			lua_pushstring(L, Path);
			return 2;
		}

		int SearchNativeModule(lua_State* L)
		{
			lua_pushliteral(L, "no native module: the sandbox loads none");
			return 1;
		}

		// Upvalues: the function's name and why it is refused.
		int Refuse(lua_State* L)
		{
			return luaL_error(L, "%s: not allowed in the sandbox (%s)", lua_tostring(L, lua_upvalueindex(1)), lua_tostring(L, lua_upvalueindex(2)));
		}

		void PushRefusal(lua_State* L, const std::string& Name, const char* Why)
		{
			lua_pushlstring(L, Name.data(), Name.size());
			lua_pushstring(L, Why);
			lua_pushcclosure(L, &Refuse, 2);
		}

		void RefuseField(lua_State* L, const char* Library, const char* Name, const char* Why)
		{
			if (lua_getglobal(L, Library) == LUA_TTABLE)
			{
				PushRefusal(L, std::string(Library) + "." + Name, Why);
				lua_setfield(L, -2, Name);
			}
			lua_pop(L, 1);
		}

		// Replaces Table.Name (Table a global, or the globals with nullptr) by Guard, which calls the original.
		void GuardField(lua_State* L, const char* Table, const char* Name, lua_CFunction Guard, int ProjectIndex, int ScriptIndex)
		{
			if (Table)
			{
				lua_getglobal(L, Table);
			}
			else
			{
				lua_pushglobaltable(L);
			}
			lua_pushvalue(L, ProjectIndex);
			lua_pushvalue(L, ScriptIndex);
			lua_getfield(L, -3, Name);
			lua_pushlightuserdata(L, reinterpret_cast<void*>(lua_tocfunction(L, -1)));
			lua_replace(L, -2);
			lua_pushcclosure(L, Guard, 3);
			lua_setfield(L, -2, Name);
			lua_pop(L, 1);
		}

		// Only the folder, resolved: a judged path is compared with it component by component.
		void PushFolder(lua_State* L, const std::string& Folder)
		{
			std::error_code Error;
			fs::path Resolved = fs::weakly_canonical(fs::absolute(Folder.empty() ? "." : Folder, Error), Error);
			if (!Resolved.has_filename())
			{
				Resolved = Resolved.parent_path();
			}
			const std::string Text = Resolved.string();
			lua_pushlstring(L, Text.data(), Text.size());
		}

		void SandboxDebug(lua_State* L)
		{
			lua_newtable(L);
			const int Sandboxed = lua_gettop(L);
			if (lua_getglobal(L, "debug") == LUA_TTABLE)
			{
				lua_pushnil(L);
				while (lua_next(L, -2) != 0)
				{
					if (lua_type(L, -2) == LUA_TSTRING && std::strcmp(lua_tostring(L, -2), "traceback") == 0)
					{
						lua_setfield(L, Sandboxed, "traceback");
						continue;
					}
					if (lua_type(L, -2) == LUA_TSTRING)
					{
						PushRefusal(L, std::string("debug.") + lua_tostring(L, -2), "only debug.traceback is left in the sandbox");
						lua_setfield(L, Sandboxed, lua_tostring(L, -3));
					}
					lua_pop(L, 1);
				}
			}
			lua_pop(L, 1);
			lua_pushvalue(L, Sandboxed);
			lua_setglobal(L, "debug");
			luaL_getsubtable(L, LUA_REGISTRYINDEX, LUA_LOADED_TABLE);
			lua_pushvalue(L, Sandboxed);
			lua_setfield(L, -2, "debug");
			lua_settop(L, Sandboxed - 1);
		}

		void SandboxRequire(lua_State* L, int ProjectIndex, int ScriptIndex)
		{
			if (lua_getglobal(L, "package") != LUA_TTABLE)
			{
				lua_pop(L, 1);
				return;
			}
			const int Package = lua_gettop(L);
			lua_pushliteral(L, "");
			lua_setfield(L, Package, "cpath");
			if (lua_getfield(L, Package, "searchers") == LUA_TTABLE)
			{
				lua_pushvalue(L, ProjectIndex);
				lua_pushvalue(L, ScriptIndex);
				lua_pushvalue(L, Package);
				lua_pushcclosure(L, &SearchLuaModule, 3);
				lua_rawseti(L, -2, 2);
				lua_pushcfunction(L, &SearchNativeModule);
				lua_rawseti(L, -2, 3);
				lua_pushnil(L);
				lua_rawseti(L, -2, 4);
			}
			lua_settop(L, Package - 1);
		}
	}

	void ApplyLuaSandbox(lua_State* L, const FLuaSandboxFolders& Folders)
	{
		const int Top = lua_gettop(L);
		PushFolder(L, Folders.ProjectDir);
		PushFolder(L, Folders.ScriptDir);
		const int ProjectIndex = Top + 1;
		const int ScriptIndex = Top + 2;

		RefuseField(L, "os", "execute", "it runs shell commands");
		RefuseField(L, "os", "exit", "it ends the editor's process");
		RefuseField(L, "os", "remove", "it deletes files");
		RefuseField(L, "os", "rename", "it moves files");
		RefuseField(L, "os", "tmpname", "it makes files outside the project");
		RefuseField(L, "io", "popen", "it runs shell commands");
		RefuseField(L, "package", "loadlib", "it loads native code");

		GuardField(L, "io", "open", &OpenFile, ProjectIndex, ScriptIndex);
		GuardField(L, "io", "lines", &Lines, ProjectIndex, ScriptIndex);
		GuardField(L, "io", "input", &Input, ProjectIndex, ScriptIndex);
		GuardField(L, "io", "output", &Output, ProjectIndex, ScriptIndex);
		GuardField(L, nullptr, "load", &Load, ProjectIndex, ScriptIndex);
		GuardField(L, nullptr, "loadfile", &LoadFile, ProjectIndex, ScriptIndex);
		GuardField(L, nullptr, "dofile", &DoFile, ProjectIndex, ScriptIndex);

		SandboxRequire(L, ProjectIndex, ScriptIndex);
		SandboxDebug(L);
		lua_settop(L, Top);
	}
}
