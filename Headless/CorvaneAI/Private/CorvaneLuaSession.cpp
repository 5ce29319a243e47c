#include "Headless/CorvaneHost.h"

#include "Headless/FatalExit.h"
#include "Headless/StringUtils.h"

#include <sol/sol.hpp>

#include <cstdlib>

namespace UE::Headless
{
	namespace
	{
		// Every allocation of a session's Lua state. One that fails ends the process as a failed operator new does:
		// Lua's own memory error would reach the script, whose pcall could catch it half way through a build and go
		// on. That gives up Lua's emergency collection before it reports the error, which a script that close to
		// the limit would not outlive for long anyway.
		void* AllocateLuaMemory(void* UserData, void* Block, size_t OldSize, size_t NewSize)
		{
			if (NewSize == 0)
			{
				std::free(Block);
				return nullptr;
			}
			void* Resized = std::realloc(Block, NewSize);
			if (!Resized)
			{
				ExitOutOfMemory();
			}
			return Resized;
		}
	}

	struct FCorvaneLuaSession::FImpl
	{
		// The session data outlives the Lua state: it is declared first, so it is destroyed last.
		FLuaSessionData SessionData;
		sol::state Lua{ sol::default_at_panic, &AllocateLuaMemory };
		TArray<FString> BinderErrors;
	};

	namespace
	{
		struct FBinderCall
		{
			const FCorvaneLuaBinder* Binder;
			sol::state* Lua;
			FLuaSessionData* SessionData;
		};

		int CallBinder(lua_State* L)
		{
			FBinderCall* Call = static_cast<FBinderCall*>(lua_touserdata(L, 1));
			lua_settop(L, 0);
			Call->Binder->ExecuteIfBound(*Call->Lua, *Call->SessionData);
			return 0;
		}

		int AddTraceback(lua_State* L)
		{
			const char* Message = lua_tostring(L, 1);
			if (!Message)
			{
				Message = lua_pushfstring(L, "(error object is a %s value)", luaL_typename(L, 1));
			}
			luaL_traceback(L, L, Message, 1);
			return 1;
		}

		bool RunProtected(lua_State* L, int LoadStatus, std::string& OutError)
		{
			if (LoadStatus != LUA_OK)
			{
				OutError = lua_tostring(L, -1) ? lua_tostring(L, -1) : "cannot load the script";
				lua_pop(L, 1);
				return false;
			}
			lua_pushcfunction(L, &AddTraceback);
			lua_insert(L, -2);
			const int Base = lua_gettop(L) - 1;
			const int Status = lua_pcall(L, 0, 0, Base);
			if (Status != LUA_OK)
			{
				OutError = lua_tostring(L, -1) ? lua_tostring(L, -1) : "(error object is not a string)";
				lua_settop(L, Base - 1);
				return false;
			}
			lua_settop(L, Base - 1);
			return true;
		}
	}

	FCorvaneLuaSession::FCorvaneLuaSession()
		: Impl(std::make_unique<FImpl>())
	{
		Impl->Lua.open_libraries();
		lua_State* L = Impl->Lua.lua_state();
		// Each binder of each registered binding, in the order the bindings were registered.
		const TArray<FRegisteredBinding> Bindings = FCorvaneRegistrarAccess::GetBindings();
		for (int32 Index = 0; Index < Bindings.Num(); ++Index)
		{
			FBinderCall Call{ &Bindings[Index].Binder, &Impl->Lua, &Impl->SessionData };
			lua_pushcfunction(L, &CallBinder);
			lua_pushlightuserdata(L, &Call);
			if (lua_pcall(L, 1, 0, 0) != LUA_OK)
			{
				Impl->BinderErrors.Add(FString::Printf(TEXT("binding '%s' of '%s' failed: %s"), *Bindings[Index].BindingName, *Bindings[Index].ExtensionId,
					*FromUtf8(lua_tostring(L, -1) ? lua_tostring(L, -1) : "")));
				lua_pop(L, 1);
			}
		}
	}

	FCorvaneLuaSession::~FCorvaneLuaSession() = default;

	sol::state& FCorvaneLuaSession::GetLua()
	{
		return Impl->Lua;
	}

	FLuaSessionData& FCorvaneLuaSession::GetSessionData()
	{
		return Impl->SessionData;
	}

	const TArray<FString>& FCorvaneLuaSession::GetBinderErrors() const
	{
		return Impl->BinderErrors;
	}

	bool FCorvaneLuaSession::RunFile(const std::string& Path, std::string& OutError)
	{
		lua_State* L = Impl->Lua.lua_state();
		return RunProtected(L, luaL_loadfile(L, Path.c_str()), OutError);
	}

	bool FCorvaneLuaSession::RunString(const std::string& Code, const std::string& ChunkName, std::string& OutError)
	{
		lua_State* L = Impl->Lua.lua_state();
		return RunProtected(L, luaL_loadbuffer(L, Code.data(), Code.size(), ChunkName.c_str()), OutError);
	}
}
