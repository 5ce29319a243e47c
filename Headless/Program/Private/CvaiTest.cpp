#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "CvaiGuardOptions.h"
#include "CvaiTestReports.h"
#include "CvaiTestRun.h"
#include "CvaiTestScripts.h"

#include "Headless/HeadlessEditor.h"
#include "Headless/StringUtils.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include <unistd.h>

namespace UE::Headless::Cvai
{
	namespace
	{
		namespace fs = std::filesystem;

		constexpr const char* Help = "Runs every *_test.lua under each PATH (a folder, searched recursively, hidden folders left out) or each PATH that\n"
			"is a script, by default under the current folder. Each script runs in a fresh copy of the project given by\n"
			"--project (by default a new project, as cvai new makes it), in a cvai run session of its own; scripts run in\n"
			"parallel, -j at a time. A script NAME_test.lua may have follow-ups NAME_test.after.lua, NAME_test.after2.lua,\n"
			"... beside it: each runs after it, in a new session on the same copy, to check what the earlier sessions saved.\n"
			"\n"
			"In its sessions a script has, besides what cvai run gives, the global 'expect', whose checks stop the script at\n"
			"the first one that fails with what was expected and what came instead (two strings: the first line and column\n"
			"where they differ, and both lines), and the global function skip(reason), which ends the script as skipped:\n"
			"  expect.eq(actual, expected)        ==, strings compared whole\n"
			"  expect.near(actual, expected, tolerance)\n"
			"  expect.match(text, pattern)        a Lua pattern found in the text\n"
			"  expect.fields(table, {name = \"type\", ...})   exactly these fields, of these Lua types\n"
			"  expect.ok(result)                  a verb's result with ok = true; otherwise its error is shown\n"
			"  expect.refused(result, message, verb?)   exactly {ok = false, error = message}; with the verb's name, the\n"
			"                                     session's last log line is \"[FAIL] verb -> message\"\n"
			"  expect.error(fn, message?)         fn raises an error, whose text after its \"chunk:line: \" is message\n"
			"Each takes an optional last argument, a label put before its message, and returns what it checked.\n"
			"\n"
			"A script fails on a Lua error, a failed expectation, a timeout or a crash. Output: one line per script, in the\n"
			"order of the PATHs and of the paths under each, \"PASS path (0.21 s)\", \"SKIP path (reason)\" or\n"
			"\"FAIL path (0.21 s)\" followed by why and the last 40 lines the script's sessions printed (--junit keeps them all);\n"
			"then \"N passed, N failed\" and \", N skipped\" when any was. --filter keeps the scripts whose path holds PATTERN;\n"
			"a PATTERN with *, ? or [ is a glob that must match the whole path, '*' crossing '/' too.\n";

		constexpr const char* ExitStatus = "Exit status: 0 when no script failed, 1 when one did or when no script was found, 2 for a usage error, 3 when\n"
			"another cvai process kept the --project folder past --lock-timeout, 130 when interrupted.\n";

		bool IsPositiveInteger(const std::string& Value)
		{
			return !Value.empty() && Value.size() < 7 && Value.find_first_not_of("0123456789") == std::string::npos && std::stoi(Value) > 0;
		}

		constexpr FOption TemplateOption{ "--project", "DIR", "the project each script gets a fresh copy of (default: a new project)" };
		constexpr FOption JobsOption{ "-j", "N", "run N scripts at a time (default: the number of processors)", &IsPositiveInteger, "a positive whole number" };
		constexpr FOption JUnitOption{ "--junit", "FILE", "also write the results to FILE as JUnit XML" };
		constexpr FOption TapOption{ "--tap", nullptr, "print TAP version 13 instead of the result lines" };
		// cvai run's --timeout, with the runner's default.
		constexpr FOption SessionTimeoutOption{ TimeoutOption.Name, "S", "stop a script after S seconds of wall-clock time (default 60; 0: no limit)", &IsSeconds,
			"a number of seconds" };
		constexpr FOption FilterOption{ "--filter", "PATTERN", "run only the scripts whose path holds PATTERN, or matches it as a glob" };
		constexpr FOption NoSandboxOption{ "--no-sandbox", nullptr, "run the scripts without the sandbox of cvai run --sandbox" };

		std::atomic<bool> bInterrupted = false;

		void OnInterrupt(int)
		{
			bInterrupted = true;
		}

		// A temporary folder removed with everything in it when the run ends.
		struct FScratchFolder
		{
			std::string Path;
			~FScratchFolder()
			{
				std::error_code Error;
				if (!Path.empty())
				{
					fs::remove_all(Path, Error);
				}
			}
		};

		bool MakeTemplate(FScratchFolder& Scratch, std::string& OutProject)
		{
			std::string Pattern = (fs::temp_directory_path() / "cvai-test-XXXXXX").string();
			if (!mkdtemp(Pattern.data()))
			{
				std::perror("cvai: cannot make a temporary folder");
				return false;
			}
			Scratch.Path = Pattern;
			FProjectInfo Project;
			FString Error;
			if (!CreateProject(FromUtf8(Scratch.Path + "/Project"), Project, Error))
			{
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
				return false;
			}
			OutProject = Scratch.Path + "/Project";
			return true;
		}

		// Runs every script, at most Jobs at once; Report hears of each result in the scripts' order, as soon as it
		// and every one before it have finished.
		template <typename FReport>
		std::vector<FTestResult> RunAll(const FTestSettings& Settings, const std::vector<FTestScript>& Scripts, size_t Jobs, FReport&& Report)
		{
			std::vector<std::unique_ptr<FTestRun>> Runs;
			std::vector<FTestResult> Results;
			while (Results.size() < Scripts.size() && !bInterrupted)
			{
				// Results.size() runs have been reported and let go of; of the others, the unfinished ones are running.
				const size_t Running = std::count_if(Runs.begin() + Results.size(), Runs.end(), [](const std::unique_ptr<FTestRun>& Run) { return !Run->IsFinished(); });
				for (size_t Started = Running; Started < Jobs && Runs.size() < Scripts.size(); ++Started)
				{
					Runs.push_back(std::make_unique<FTestRun>(Settings, Scripts[Runs.size()]));
					Runs.back()->Start();
				}
				for (size_t Index = Results.size(); Index < Runs.size(); ++Index)
				{
					Runs[Index]->Poll();
				}
				bool bReported = false;
				while (Results.size() < Runs.size() && Runs[Results.size()]->IsFinished())
				{
					Results.push_back(Runs[Results.size()]->GetResult());
					Runs[Results.size() - 1].reset();
					Report(Results.back(), Results.size());
					bReported = true;
				}
				if (!bReported)
				{
					std::this_thread::sleep_for(std::chrono::milliseconds(5));
				}
			}
			return Results;
		}

		int RunTest(const FCommandLine& CommandLine)
		{
			std::vector<FTestScript> Scripts;
			std::string Error;
			const std::vector<std::string> Paths = CommandLine.Positionals.empty() ? std::vector<std::string>{ "." } : CommandLine.Positionals;
			if (!FindTestScripts(Paths, CommandLine.Get(FilterOption.Name, ""), Scripts, Error))
			{
				return UsageError(Error, CommandLine.Command);
			}

			FTestSettings Settings;
			Settings.Timeout = CommandLine.Get(SessionTimeoutOption.Name, Settings.Timeout);
			Settings.TimeoutSeconds = std::stod(Settings.Timeout);
			Settings.MaxMemoryMegabytes = CommandLine.Get(MaxMemoryOption.Name, "");
			Settings.bSandbox = !CommandLine.Has(NoSandboxOption.Name);
			Settings.Program = fs::read_symlink("/proc/self/exe").string();
			FScratchFolder Scratch;
			FProjectLock Lock;
			if (CommandLine.Has(TemplateOption.Name))
			{
				FProjectInfo Project;
				FString ProjectError;
				if (!FindProject(FromUtf8(CommandLine.Get(TemplateOption.Name, "")), Project, ProjectError))
				{
					return UsageError(ToUtf8(ProjectError), CommandLine.Command);
				}
				Settings.TemplateProject = fs::canonical(ToUtf8(Project.ProjectDir)).string();
				// Read while the scripts run, so that no run or import changes the template half way through a copy.
				if (Lock.Lock(Settings.TemplateProject, EProjectAccess::Read, std::stod(CommandLine.Get(LockTimeoutOption.Name, "30")), nullptr) == ELockResult::Busy)
				{
					std::fprintf(stderr, "cvai: the project '%s' is in use by process %d\n", ToUtf8(Project.ProjectDir).c_str(), (int)Lock.GetHolder());
					return ExitProjectBusy;
				}
			}
			else if (!MakeTemplate(Scratch, Settings.TemplateProject))
			{
				return ExitFailure;
			}
			if (Scripts.empty())
			{
				std::fprintf(stderr, "cvai: no test scripts (*_test.lua) found\n");
				return ExitFailure;
			}

			const bool bTap = CommandLine.Has(TapOption.Name);
			const unsigned Processors = std::max(1u, std::thread::hardware_concurrency());
			const size_t Jobs = std::stoul(CommandLine.Get(JobsOption.Name, std::to_string(Processors)));
			std::signal(SIGINT, &OnInterrupt);
			std::signal(SIGTERM, &OnInterrupt);
			if (bTap)
			{
				std::fputs(FormatTapHeader(Scripts.size()).c_str(), stdout);
			}
			const auto Started = std::chrono::steady_clock::now();
			const std::vector<FTestResult> Results = RunAll(Settings, Scripts, Jobs, [bTap](const FTestResult& Result, size_t Number)
			{
				std::fputs((bTap ? FormatTapResult(Result, Number) : FormatResultText(Result)).c_str(), stdout);
				std::fflush(stdout);
			});
			if (bInterrupted)
			{
				std::fprintf(stderr, "cvai: interrupted\n");
				return 130;
			}
			std::fputs(((bTap ? "# " : "") + FormatSummary(Results)).c_str(), stdout);
			if (CommandLine.Has(JUnitOption.Name))
			{
				const std::string JUnitPath = CommandLine.Get(JUnitOption.Name, "");
				std::ofstream JUnit(JUnitPath, std::ios::binary | std::ios::trunc);
				JUnit << FormatJUnit(Results, std::chrono::duration<double>(std::chrono::steady_clock::now() - Started).count());
				if (!JUnit.flush())
				{
					std::fprintf(stderr, "cvai: cannot write the JUnit file '%s'\n", JUnitPath.c_str());
					return ExitFailure;
				}
			}
			const bool bAnyFailed = std::any_of(Results.begin(), Results.end(), [](const FTestResult& Result) { return Result.Outcome == ETestOutcome::Failed; });
			return bAnyFailed ? ExitFailure : ExitOk;
		}
	}

	const FCommand TestCommand{ .Run = &RunTest,
		.Syntax = { .Name = "test", .Summary = "run *_test.lua scripts, each on a fresh copy of a project", .Description = Help, .ExitStatus = ExitStatus,
			.Options = { TemplateOption, JobsOption, SessionTimeoutOption, FilterOption, TapOption, JUnitOption, MaxMemoryOption, NoSandboxOption },
			.Positionals = { .Names = { "PATH" }, .MinCount = 0, .bLastRepeats = true, .ExtraMessage = "" } } };
}
