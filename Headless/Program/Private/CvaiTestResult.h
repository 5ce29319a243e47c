// How one script of cvai test ended, as the three report formats show it.
#pragma once

#include <string>

namespace UE::Headless::Cvai
{
	enum class ETestOutcome
	{
		Passed,
		Failed,
		Skipped,
	};

	struct FTestResult
	{
		std::string Path;
		ETestOutcome Outcome = ETestOutcome::Failed;
		// Why it failed (a Lua error, an expectation, a timeout, a signal) or why it was skipped.
		std::string Message;
		// What its sessions wrote to standard output and standard error, interleaved as written.
		std::string Output;
		double Seconds = 0;
	};
}
