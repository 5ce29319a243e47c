#include "LuaGuardState.h"

#include "Headless/FatalExit.h"

#include <lua.hpp>

#include <cstdio>
#include <cstdlib>

namespace UE::Headless
{
	namespace
	{
		// Instructions between two looks at the clock: often enough to stop within milliseconds, rare enough to cost
		// nothing a script would notice.
		constexpr int HookInstructionCount = 1000;

		// The message Lua gives for its own memory error; interned by the state, so pushing it allocates nothing.
		constexpr const char* NotEnoughMemory = "not enough memory";

		std::string FormatLimit(const char* Format, double Value)
		{
			char Text[128];
			std::snprintf(Text, sizeof(Text), Format, Value);
			return Text;
		}

		// Replaces the function at the top of the stack by a closure of Trampoline with the same upvalues, so that
		// the original sees its own upvalues where it expects them, plus the original C function as the last one.
		// Functions that already are one of the trampolines, and C functions with no room for one more upvalue, stay.
		void WrapTop(lua_State* L, lua_CFunction Trampoline, lua_CFunction OtherTrampoline)
		{
			const lua_CFunction Original = lua_tocfunction(L, -1);
			if (!Original || Original == Trampoline || Original == OtherTrampoline)
			{
				return;
			}
			const int Function = lua_gettop(L);
			int Count = 0;
			while (lua_getupvalue(L, Function, Count + 1) != nullptr)
			{
				++Count;
			}
			if (Count >= 255)
			{
				lua_settop(L, Function);
				return;
			}
			lua_pushlightuserdata(L, reinterpret_cast<void*>(Original));
			lua_pushcclosure(L, Trampoline, Count + 1);
			lua_replace(L, Function);
		}

		// The original C function of a running trampoline: its last upvalue.
		lua_CFunction OriginalOf(lua_State* L)
		{
			lua_Debug Frame;
			lua_getstack(L, 0, &Frame);
			lua_getinfo(L, "u", &Frame);
			return reinterpret_cast<lua_CFunction>(lua_touserdata(L, lua_upvalueindex(Frame.nups)));
		}

		// Wraps the C functions among the fields of the table at Index.
		void WrapTableFunctions(lua_State* L, int Index, lua_CFunction Trampoline, lua_CFunction OtherTrampoline)
		{
			Index = lua_absindex(L, Index);
			lua_pushnil(L);
			while (lua_next(L, Index) != 0)
			{
				if (lua_iscfunction(L, -1))
				{
					WrapTop(L, Trampoline, OtherTrampoline);
					lua_pushvalue(L, -2);
					lua_insert(L, -2);
					lua_rawset(L, Index);
				}
				else
				{
					lua_pop(L, 1);
				}
			}
		}

		void WrapField(lua_State* L, int TableIndex, const char* Name, lua_CFunction Trampoline, lua_CFunction OtherTrampoline)
		{
			TableIndex = lua_absindex(L, TableIndex);
			if (lua_getfield(L, TableIndex, Name) == LUA_TFUNCTION)
			{
				WrapTop(L, Trampoline, OtherTrampoline);
				lua_setfield(L, TableIndex, Name);
				return;
			}
			lua_pop(L, 1);
		}
	}

	FLuaGuardState::~FLuaGuardState()
	{
		{
			std::lock_guard<std::mutex> Lock(WatchdogMutex);
			bWatchdogStop = true;
		}
		WatchdogWake.notify_all();
		if (Watchdog.joinable())
		{
			Watchdog.join();
		}
	}

	void* FLuaGuardState::Allocate(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FLuaGuardState& State = *static_cast<FLuaGuardState*>(UserData);
		// Without a block, OldSize is the kind of object to make, not a size.
		const size_t Held = Block ? OldSize : 0;
		if (NewSize == 0)
		{
			std::free(Block);
			State.Used -= Held;
			return nullptr;
		}
		const bool bGrows = NewSize > Held;
		if (bGrows && State.bArmed && State.MemoryLimit != 0 && State.Used - Held + NewSize > State.MemoryLimit)
		{
			if (State.NativeDepth > 0)
			{
				// Raised at the next return of any function, not only at the next count: Lua code that a native
				// calls, such as a request's metamethod, may return before the count comes round, and the native
				// would go on with its work. Setting a hook is safe at any moment (lua.c does it in a signal handler).
				if (!State.bMemoryPending)
				{
					lua_sethook(State.NativeThread, &Hook, LUA_MASKCOUNT | LUA_MASKRET, HookInstructionCount);
				}
				State.bMemoryPending = true;
			}
			else
			{
				if (State.Fired == ELuaGuard::None)
				{
					State.Fired = ELuaGuard::MemoryLimit;
					State.bRefusalTentative = true;
					State.RefusedBlock = Block;
					State.RefusedSize = NewSize;
				}
				return nullptr;
			}
		}
		// Beyond the limit, memory that the system cannot give still ends the process as a failed operator new does.
		void* Resized = std::realloc(Block, NewSize);
		if (!Resized)
		{
			ExitOutOfMemory();
		}
		State.Used = State.Used - Held + NewSize;
		if (bGrows && State.bRefusalTentative)
		{
			// The request served after its garbage was collected is the refused one: the script never saw an error.
			if (Block == State.RefusedBlock && NewSize == State.RefusedSize)
			{
				State.Fired = ELuaGuard::None;
			}
			State.bRefusalTentative = false;
		}
		return Resized;
	}

	void FLuaGuardState::SetLimits(const FLuaGuardLimits& InLimits)
	{
		Limits = InLimits;
		MemoryLimit = (size_t)(Limits.MaxMemoryMegabytes * 1024.0 * 1024.0);
	}

	FLuaGuardState& FLuaGuardState::Of(lua_State* L)
	{
		void* UserData = nullptr;
		lua_getallocf(L, &UserData);
		return *static_cast<FLuaGuardState*>(UserData);
	}

	void FLuaGuardState::Arm(lua_State* L, const std::set<std::string>& StandardGlobals)
	{
		Fired = ELuaGuard::None;
		bMemoryPending = false;
		bRefusalTentative = false;
		NativeDepth = 0;
		if (Limits.TimeoutSeconds <= 0 && MemoryLimit == 0)
		{
			return;
		}
		lua_pushglobaltable(L);
		const int Globals = lua_gettop(L);
		lua_pushnil(L);
		while (lua_next(L, Globals) != 0)
		{
			const bool bStandard = lua_type(L, -2) == LUA_TSTRING && StandardGlobals.count(lua_tostring(L, -2)) != 0;
			if (!bStandard && lua_iscfunction(L, -1))
			{
				WrapTop(L, &CallNative, &CallCatcher);
				lua_pushvalue(L, -2);
				lua_insert(L, -2);
				lua_rawset(L, Globals);
				continue;
			}
			if (!bStandard && lua_type(L, -1) == LUA_TTABLE)
			{
				WrapTableFunctions(L, -1, &CallNative, &CallCatcher);
			}
			lua_pop(L, 1);
		}
		WrapField(L, Globals, "pcall", &CallCatcher, &CallNative);
		WrapField(L, Globals, "xpcall", &CallCatcher, &CallNative);
		if (lua_getfield(L, Globals, "coroutine") == LUA_TTABLE)
		{
			WrapField(L, -1, "resume", &CallCatcher, &CallNative);
		}
		lua_settop(L, Globals - 1);

		bArmed = true;
		NativeThread = L;
		if (Limits.TimeoutSeconds > 0)
		{
			Deadline = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
				std::chrono::duration<double>(Limits.TimeoutSeconds));
			bWatchdogStop = false;
			Watchdog = std::thread([this] { Watch(); });
		}
		lua_sethook(L, &Hook, LUA_MASKCOUNT, HookInstructionCount);
	}

	void FLuaGuardState::Disarm(lua_State* L)
	{
		lua_sethook(L, nullptr, 0, 0);
		bArmed = false;
		NativeDepth = 0;
		bMemoryPending = false;
		bRefusalTentative = false;
		{
			std::lock_guard<std::mutex> Lock(WatchdogMutex);
			bWatchdogStop = true;
		}
		WatchdogWake.notify_all();
		if (Watchdog.joinable())
		{
			Watchdog.join();
		}
	}

	std::string FLuaGuardState::GetMessage() const
	{
		return MessageOf(Fired);
	}

	std::string FLuaGuardState::MessageOf(ELuaGuard Guard) const
	{
		switch (Guard)
		{
		case ELuaGuard::Timeout:
			return FormatLimit("timeout: the script ran longer than --timeout %g s", Limits.TimeoutSeconds);
		case ELuaGuard::MemoryLimit:
			return FormatLimit("memory limit: the script needed more than --max-memory %g MB", Limits.MaxMemoryMegabytes);
		case ELuaGuard::None:
			break;
		}
		return std::string();
	}

	bool FLuaGuardState::IsPastDeadline() const
	{
		return Limits.TimeoutSeconds > 0 && std::chrono::steady_clock::now() >= Deadline;
	}

	void FLuaGuardState::Hook(lua_State* L, lua_Debug*)
	{
		Of(L).RaiseDue(L);
	}

	void FLuaGuardState::RaiseDue(lua_State* L)
	{
		if (!bArmed)
		{
			return;
		}
		if (bMemoryPending)
		{
			bMemoryPending = false;
			lua_sethook(NativeThread, &Hook, LUA_MASKCOUNT, HookInstructionCount);
			Raise(L, ELuaGuard::MemoryLimit);
		}
		// Once past, at every later look: a script that catches the error cannot keep running.
		if (IsPastDeadline())
		{
			Raise(L, ELuaGuard::Timeout);
		}
	}

	void FLuaGuardState::Raise(lua_State* L, ELuaGuard Guard)
	{
		if (Fired == ELuaGuard::None)
		{
			Fired = Guard;
		}
		if (Guard == ELuaGuard::MemoryLimit)
		{
			lua_pushstring(L, NotEnoughMemory);
		}
		else
		{
			const std::string Message = MessageOf(Guard);
			lua_pushlstring(L, Message.data(), Message.size());
		}
		lua_error(L);
		std::abort();
	}

	// A native function called in the frame Lua made for it, so that error positions and names stay as they were.
	int FLuaGuardState::CallNative(lua_State* L)
	{
		FLuaGuardState& State = Of(L);
		const lua_CFunction Native = OriginalOf(L);
		if (State.NativeDepth == 0)
		{
			State.NativeThread = L;
		}
		++State.NativeDepth;
		const int Results = Native(L);
		--State.NativeDepth;
		if (State.NativeDepth == 0)
		{
			State.RaiseDue(L);
		}
		return Results;
	}

	// pcall, xpcall and coroutine.resume: an error that left a native call lands here, which ends that call's count;
	// a guard that fired inside is given back at once, so that catching it does not keep the script going.
	int FLuaGuardState::CallCatcher(lua_State* L)
	{
		FLuaGuardState& State = Of(L);
		const lua_CFunction Catcher = OriginalOf(L);
		const int Depth = State.NativeDepth;
		const int Results = Catcher(L);
		State.NativeDepth = Depth;
		if (Depth == 0)
		{
			State.RaiseDue(L);
		}
		return Results;
	}

	void FLuaGuardState::Watch()
	{
		const std::chrono::steady_clock::time_point Backstop = Deadline
			+ std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(TimeoutGraceSeconds));
		std::unique_lock<std::mutex> Lock(WatchdogMutex);
		if (WatchdogWake.wait_until(Lock, Backstop, [this] { return bWatchdogStop; }))
		{
			return;
		}
		const std::string Message = MessageOf(ELuaGuard::Timeout);
		if (Limits.OnStuck)
		{
			Limits.OnStuck(Message.c_str());
		}
	}
}
