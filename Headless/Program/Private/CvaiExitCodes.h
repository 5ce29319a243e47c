// Every exit status of cvai, with what it means: the program's help lists them from here.
#pragma once

namespace UE::Headless::Cvai
{
	enum EExitCode
	{
		ExitOk = 0,
		ExitFailure = 1,
		ExitUsage = 2,
		// Another cvai process kept the project for longer than --lock-timeout.
		ExitProjectBusy = 3,
		// Memory ran out; the process ended at once, leaving every file as it was.
		ExitOutOfMemory = 4,
		// The script ran longer than --timeout.
		ExitTimeout = 5,
		// The script needed more memory than --max-memory.
		ExitMemoryLimit = 6,
	};

	struct FExitStatus
	{
		EExitCode Code;
		const char* Meaning;
	};

	inline constexpr FExitStatus ExitStatuses[] = {
		{ ExitOk, "success" },
		{ ExitFailure, "failure: a script error, a refused readback or import, a failed check, a save, an export or a view that failed" },
		{ ExitUsage, "usage error: a wrong command line, a folder without a project, a --log file that cannot be written" },
		{ ExitProjectBusy, "another cvai process kept the project for longer than --lock-timeout" },
		{ ExitOutOfMemory, "out of memory: the process ended at once, leaving every file as it was" },
		{ ExitTimeout, "timeout: the script ran longer than --timeout and was stopped" },
		{ ExitMemoryLimit, "memory limit: the script needed more memory than --max-memory" },
	};
}
