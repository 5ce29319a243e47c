// The side of cvai test that runs inside the script's own process (cvai run with --test-report): the globals
// 'expect' and 'skip', and the report that tells the runner how the script ended.
#pragma once

#include "CvaiOptions.h"

#include <optional>
#include <string>

struct lua_State;

namespace UE::Headless
{
	class FCorvaneLuaSession;
}

namespace UE::Headless::Cvai
{
	// The exit status of a script that called skip(reason), the one automake and TAP harnesses know.
	inline constexpr int ExitSkipped = 77;

	inline constexpr FOption TestReportOption = Unlisted(FOption{ "--test-report", "FILE",
		"load the test library and write how the script ended to FILE (used by cvai test)" });

	// What a test report file holds: its first line is pass, fail or skip; the rest is the failure's message or the
	// reason of the skip.
	struct FTestReport
	{
		std::string Outcome;
		std::string Message;
	};

	// Reads a report written by WriteReport; nothing when the file is missing or holds no outcome.
	std::optional<FTestReport> ReadTestReport(const std::string& Path);

	class FTestSession
	{
	public:
		// Inactive, and changing nothing, when ReportPath is empty.
		explicit FTestSession(std::string ReportPath);

		// Makes 'expect' and 'skip' globals of the session; false, with the error printed, when that failed.
		bool Install(FCorvaneLuaSession& Session);

		bool IsSkipped() const;

		// Writes the report of a run that ended with Exit (and ScriptError when the script raised one) and returns the
		// exit status to end with: ExitSkipped for a script that called skip.
		int Finish(int Exit, const std::string& ScriptError) const;

	private:
		static int Skip(lua_State* L);

		std::string ReportPath;
		std::optional<std::string> SkipReason;
	};
}
