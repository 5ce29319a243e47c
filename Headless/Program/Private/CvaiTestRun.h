// One script of cvai test on its way: a fresh copy of the template project in a temporary folder, and one child
// process (cvai run) per session, the script's then each follow-up's, in its own process group so that a timeout
// ends everything it started.
#pragma once

#include "CvaiOptions.h"
#include "CvaiTestResult.h"
#include "CvaiTestScripts.h"

#include <sys/types.h>

#include <chrono>
#include <string>

namespace UE::Headless::Cvai
{
	struct FTestSettings
	{
		// The cvai program that runs each session.
		std::string Program;
		// Canonical, without a trailing slash: its last name names the copies.
		std::string TemplateProject;
		// Per session; 0 for no limit. The limits as they were given are what each session's own guards get.
		double TimeoutSeconds = 60;
		std::string Timeout = "60";
		std::string MaxMemoryMegabytes;
		bool bSandbox = true;
	};

	class FTestRun
	{
	public:
		FTestRun(const FTestSettings& Settings, const FTestScript& Script);
		~FTestRun();
		FTestRun(const FTestRun&) = delete;
		FTestRun& operator=(const FTestRun&) = delete;

		// Copies the project and starts the first session; a run that cannot start is finished at once, failed.
		void Start();

		// Collects a session that ended and starts the next one, or ends a session past its time; true once the
		// whole script has finished.
		bool Poll();

		// Ends whatever is still running, as when cvai test itself is stopped.
		void Abort();

		[[nodiscard]] bool IsFinished() const { return bFinished; }
		[[nodiscard]] const FTestResult& GetResult() const { return Result; }

	private:
		void StartSession();
		// Takes the end of the current session; true when there is another session to run.
		bool TakeSessionEnd(int WaitStatus, bool bTimedOut);
		void Finish(ETestOutcome Outcome, const std::string& Message);

		const FTestSettings& Settings;
		FTestScript Script;
		FTestResult Result;
		std::string Folder;
		std::string Project;
		// The current session: 0 the script's, then its follow-ups'.
		size_t Session = 0;
		pid_t Child = -1;
		std::chrono::steady_clock::time_point Started;
		std::chrono::steady_clock::time_point SessionStarted;
		bool bFinished = false;
	};
}
