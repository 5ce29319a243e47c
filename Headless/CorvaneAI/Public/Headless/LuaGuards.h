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
		// Called on another thread when the run has not ended TimeoutGraceSeconds after its timeout: the hook could not
		// stop it (a native call that does not return, a finalizer, a script that removed the hook). It ends the
		// process. The timeout's message is passed in.
		std::function<void(const char* Message)> OnStuck;
	};

	// How long a native call may go on past the timeout before OnStuck is called.
	inline constexpr double TimeoutGraceSeconds = 2.0;
}
