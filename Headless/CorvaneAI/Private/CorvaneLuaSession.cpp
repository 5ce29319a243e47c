#include "Headless/CorvaneHost.h"

#include "Headless/StringUtils.h"
#include "LuaGuardState.h"
#include "LuaSandbox.h"

#include <sol/sol.hpp>

namespace UE::Headless
{
	struct FCorvaneLuaSession::FImpl
	{
		// The session data outlives the Lua state: it is declared first, so it is destroyed last.
		FLuaSessionData SessionData;
		// Serves every allocation of the state, so it is declared before it.
		FLuaGuardState Guards;
		sol::state Lua{ sol::default_at_panic, &FLuaGuardState::Allocate, &Guards };
		TArray<FString> BinderErrors;
		// The globals of the standard libraries: every other global function came from a binder or the harness.
		std::set<std::string> StandardGlobals;
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

		bool RunProtected(lua_State* L, int LoadStatus, FLuaGuardState& Guards, const std::set<std::string>& StandardGlobals, std::string& OutError)
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
			Guards.Arm(L, StandardGlobals);
			const int Status = lua_pcall(L, 0, 0, Base);
			Guards.Disarm(L);
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
		lua_pushglobaltable(L);
		lua_pushnil(L);
		while (lua_next(L, -2) != 0)
		{
			lua_pop(L, 1);
			Impl->StandardGlobals.insert(lua_tostring(L, -1));
		}
		lua_pop(L, 1);
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
		return RunProtected(L, luaL_loadfile(L, Path.c_str()), Impl->Guards, Impl->StandardGlobals, OutError);
	}

	bool FCorvaneLuaSession::RunString(const std::string& Code, const std::string& ChunkName, std::string& OutError)
	{
		lua_State* L = Impl->Lua.lua_state();
		return RunProtected(L, luaL_loadbuffer(L, Code.data(), Code.size(), ChunkName.c_str()), Impl->Guards, Impl->StandardGlobals, OutError);
	}

	void FCorvaneLuaSession::SetGuards(const FLuaGuardLimits& Limits)
	{
		Impl->Guards.SetLimits(Limits);
	}

	ELuaGuard FCorvaneLuaSession::GetFiredGuard() const
	{
		return Impl->Guards.GetFired();
	}

	std::string FCorvaneLuaSession::GetGuardMessage() const
	{
		return Impl->Guards.GetMessage();
	}

	void FCorvaneLuaSession::ApplySandbox(const FLuaSandboxFolders& Folders)
	{
		ApplyLuaSandbox(Impl->Lua.lua_state(), Folders);
	}
}
