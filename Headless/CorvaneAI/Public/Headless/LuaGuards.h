// Harness-only: the limits a run of a host Lua session can be held to, and which of them stopped it.
#pragma once

#include <functional>

namespace UE::Headless
{
	enum class ELuaGuard
	{
		None,
		Timeout,
		MemoryLimit,
	};

	struct FLuaGuardLimits
	{
		// Wall-clock seconds one run may take; 0 for no limit.
		double TimeoutSeconds = 0;
		// Megabytes the session's Lua state may hold; 0 for no limit.
		double MaxMemoryMegabytes = 0;
		// Called on another thread when the run is still inside a native call TimeoutGraceSeconds after its timeout,
		// so that no Lua hook can stop it: it ends the process. The guard's message is passed in.
		std::function<void(const char* Message)> OnStuck;
	};

	// How long a native call may go on past the timeout before OnStuck is called.
	inline constexpr double TimeoutGraceSeconds = 2.0;
}
