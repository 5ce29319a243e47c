// Harness-only: the timeout and memory limit of a host Lua session, enforced between Lua instructions.
//
// A Lua error raised while C++ frames are on the stack skips their destructors (this Lua is C: errors longjmp), so
// the guards never make an allocation fail inside a native function (a verb a binder registered, a function of the
// harness): there an allocation over the limit is served and the guard is left pending, to be raised as soon as the
// native call returns or Lua code runs. The count hook runs only in Lua code, where a script may raise an error of its
// own at any instruction; natives that call Lua code already protect those calls, so a guard raised there unwinds
// as the script's own error would: a build whose request is being read is refused before anything changed.
#pragma once

#include "Headless/LuaGuards.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <set>
#include <string>
#include <thread>

struct lua_State;
struct lua_Debug;

namespace UE::Headless
{
	class FLuaGuardState
	{
	public:
		FLuaGuardState() = default;
		~FLuaGuardState();
		FLuaGuardState(const FLuaGuardState&) = delete;
		FLuaGuardState& operator=(const FLuaGuardState&) = delete;

		// The allocator of the session's state, with this object as its user data.
		static void* Allocate(void* UserData, void* Block, size_t OldSize, size_t NewSize);

		void SetLimits(const FLuaGuardLimits& InLimits);

		// Starts the limits for one run: wraps every C function of the globals not in StandardGlobals (and of their
		// tables) so that their calls are counted, makes pcall, xpcall and coroutine.resume give a guard back,
		// installs the hook and starts the timeout's clock.
		void Arm(lua_State* L, const std::set<std::string>& StandardGlobals);
		// Ends the run's limits; the guard that fired stays readable.
		void Disarm(lua_State* L);

		ELuaGuard GetFired() const { return Fired; }
		// "timeout: the script ran longer than --timeout 2 s", or the memory limit's text; empty when none fired.
		std::string GetMessage() const;
		std::string MessageOf(ELuaGuard Guard) const;

	private:
		static FLuaGuardState& Of(lua_State* L);
		static void Hook(lua_State* L, lua_Debug* Debug);
		static int CallNative(lua_State* L);
		static int CallCatcher(lua_State* L);

		// Raises the guard that waits (a pending memory limit, a timeout past its deadline), if any.
		void RaiseDue(lua_State* L);
		[[noreturn]] void Raise(lua_State* L, ELuaGuard Guard);
		bool IsPastDeadline() const;
		void Watch();

		FLuaGuardLimits Limits;
		size_t MemoryLimit = 0;
		size_t Used = 0;
		bool bArmed = false;
		// Native calls under way; an error out of one leaves it counted until the catcher it lands in.
		int NativeDepth = 0;
		bool bMemoryPending = false;
		// The thread of the outermost native call under way, whose hook a pending memory limit sharpens.
		lua_State* NativeThread = nullptr;
		// Lua collects its garbage and asks once more before it raises its memory error: a refusal counts only once
		// the same request is not served right after it.
		bool bRefusalTentative = false;
		void* RefusedBlock = nullptr;
		size_t RefusedSize = 0;
		ELuaGuard Fired = ELuaGuard::None;
		std::chrono::steady_clock::time_point Deadline;

		std::thread Watchdog;
		std::mutex WatchdogMutex;
		std::condition_variable WatchdogWake;
		bool bWatchdogStop = false;
	};
}
