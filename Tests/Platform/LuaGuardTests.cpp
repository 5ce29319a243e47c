// The guards of a host Lua session: a native function is never unwound by a guard, a native that never returns meets
// the timeout's backstop, the garbage Lua collects on its own does not count as going over the limit, and each run
// starts with no guard fired.
#include "Headless/CorvaneHost.h"

#include <gtest/gtest.h>

#include <sol/sol.hpp>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace
{
	using namespace UE::Headless;

	std::atomic<bool> bBackstopReached{ false };
	int LiveGuards = 0;

	struct FCountedScope
	{
		FCountedScope() { ++LiveGuards; }
		~FCountedScope() { --LiveGuards; }
	};

	// A native that waits for the backstop, as one stuck in C++ would, but gives up after a while.
	int WaitForBackstop(lua_State* L)
	{
		const FCountedScope Scope;
		const auto GiveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
		while (!bBackstopReached && std::chrono::steady_clock::now() < GiveUp)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(10));
		}
		lua_pushboolean(L, bBackstopReached);
		return 1;
	}

	// A native that takes 32 MB of Lua memory while a C++ object is alive on its frame.
	int Grow(lua_State* L)
	{
		const FCountedScope Scope;
		lua_newuserdatauv(L, size_t(32) << 20, 0);
		lua_pushinteger(L, LiveGuards);
		return 1;
	}

	void Register(FCorvaneLuaSession& Session, const char* Name, lua_CFunction Function)
	{
		lua_State* L = Session.GetLua().lua_state();
		lua_pushcfunction(L, Function);
		lua_setglobal(L, Name);
	}

	TEST(LuaGuardTest, AnAllocationInsideANativeIsServedAndTheLimitRaisedWhenItReturns)
	{
		FCorvaneLuaSession Session;
		Register(Session, "grow", &Grow);
		Session.SetGuards(FLuaGuardLimits{ .MaxMemoryMegabytes = 8 });
		std::string Error;
		// The native was left normally, its scope ended; the error is Lua's memory error, which has no traceback.
		EXPECT_FALSE(Session.RunString("inside = grow()", "=Grow", Error));
		EXPECT_EQ(Error, "not enough memory");
		EXPECT_EQ(LiveGuards, 0);
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::MemoryLimit);
		EXPECT_EQ(Session.GetGuardMessage(), "memory limit: the script needed more than --max-memory 8 MB");

		// The next run starts afresh, and without limits the same call is served.
		Session.SetGuards(FLuaGuardLimits{});
		EXPECT_TRUE(Session.RunString("assert(grow() == 1)", "Again", Error)) << Error;
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::None);
		EXPECT_EQ(Session.GetGuardMessage(), "");
	}

	TEST(LuaGuardTest, GarbageCollectedToMakeRoomIsNotOverTheLimit)
	{
		FCorvaneLuaSession Session;
		Session.SetGuards(FLuaGuardLimits{ .MaxMemoryMegabytes = 4 });
		std::string Error;
		// Far more than the limit in all, never more than a few kilobytes alive: Lua collects when it is refused.
		EXPECT_TRUE(Session.RunString("collectgarbage('stop') for i = 1, 20000 do local s = string.rep('x', 1000 + i) end", "Garbage", Error)) << Error;
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::None);
		// What stays alive is over it.
		EXPECT_FALSE(Session.RunString("local kept = {} for i = 1, 1e6 do kept[i] = string.rep('x', 100) .. i end", "Kept", Error));
		EXPECT_EQ(Error, "not enough memory");
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::MemoryLimit);
	}

	TEST(LuaGuardTest, ANativeThatDoesNotReturnMeetsTheBackstop)
	{
		FCorvaneLuaSession Session;
		Register(Session, "wait_for_backstop", &WaitForBackstop);
		std::string StuckMessage;
		const auto Start = std::chrono::steady_clock::now();
		Session.SetGuards(FLuaGuardLimits{ .TimeoutSeconds = 0.25, .OnStuck = [&StuckMessage](const char* Message)
		{
			StuckMessage = Message;
			bBackstopReached = true;
		} });
		std::string Error;
		EXPECT_FALSE(Session.RunString("reached = wait_for_backstop()", "=Stuck", Error));
		const double Waited = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		EXPECT_TRUE(bBackstopReached);
		EXPECT_GE(Waited, 0.25 + TimeoutGraceSeconds);
		EXPECT_LT(Waited, 0.25 + TimeoutGraceSeconds + 2);
		EXPECT_EQ(StuckMessage, "timeout: the script ran longer than --timeout 0.25 s");
		// Once it did return, the timeout was raised at once.
		EXPECT_EQ(Error, "timeout: the script ran longer than --timeout 0.25 s\nstack traceback:\n\t[C]: in function 'wait_for_backstop'\n\tStuck:1: in main chunk");
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::Timeout);
		EXPECT_EQ(LiveGuards, 0);
	}

	TEST(LuaGuardTest, ARunThatEndsInTimeStopsTheWatchdog)
	{
		FCorvaneLuaSession Session;
		bool bStuck = false;
		Session.SetGuards(FLuaGuardLimits{ .TimeoutSeconds = 0.1, .OnStuck = [&bStuck](const char*) { bStuck = true; } });
		std::string Error;
		EXPECT_TRUE(Session.RunString("local n = 0 for i = 1, 1000 do n = n + i end", "Quick", Error)) << Error;
		std::this_thread::sleep_for(std::chrono::duration<double>(0.1 + TimeoutGraceSeconds + 0.2));
		EXPECT_FALSE(bStuck);
		EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::None);
	}
}

namespace
{
	using namespace UE::Headless;

	// Every way Lua has to catch an error gives the timeout straight back.
	TEST(LuaGuardTest, CatchingTheTimeoutDoesNotKeepTheScriptGoing)
	{
		const char* Catchers[] = {
			"pcall(function() while true do end end)",
			"xpcall(function() while true do end end, function(message) return message end)",
			"coroutine.resume(coroutine.create(function() while true do end end))",
		};
		for (const char* Catcher : Catchers)
		{
			FCorvaneLuaSession Session;
			Session.SetGuards(FLuaGuardLimits{ .TimeoutSeconds = 0.05 });
			std::string Error;
			EXPECT_FALSE(Session.RunString(std::string("went_on = false ") + Catcher + " went_on = true", "=Caught", Error)) << Catcher;
			EXPECT_EQ(Error.substr(0, Error.find('\n')), "timeout: the script ran longer than --timeout 0.05 s") << Catcher;
			EXPECT_EQ(Session.GetFiredGuard(), ELuaGuard::Timeout);
			EXPECT_FALSE(Session.GetLua()["went_on"].get<bool>()) << Catcher;
		}
	}
}
