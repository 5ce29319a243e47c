// The options that hold a script run to limits and keep it in a sandbox, shared by the commands that run scripts.
#pragma once

#include "CvaiOptions.h"
#include "Headless/CorvaneHost.h"

#include <string>

namespace UE::Headless::Cvai
{
	// A value check for --max-memory: a decimal number above 0.
	bool IsMegabytes(const std::string& Value);

	inline constexpr FOption TimeoutOption{ "--timeout", "SECONDS", "stop the script after SECONDS of wall-clock time (0: no limit)", &IsSeconds,
		"a number of seconds" };
	inline constexpr FOption MaxMemoryOption{ "--max-memory", "MB", "give the script's Lua state at most MB megabytes", &IsMegabytes,
		"a number of megabytes above 0" };
	inline constexpr FOption SandboxOption{ "--sandbox", nullptr, "take from the script what can harm the machine" };

	// Sets the session's limits from --timeout and --max-memory, and applies --sandbox with the project's folder and
	// the folder of Script.
	void ApplyGuardOptions(const FCommandLine& CommandLine, FCorvaneLuaSession& Session, const std::string& Script);

	// The exit status of a run that the guard stopped: ExitTimeout, ExitMemoryLimit, or ExitOk when none fired.
	int GuardExitStatus(ELuaGuard Guard);
}
