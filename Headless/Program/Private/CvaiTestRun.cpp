#include "CvaiTestRun.h"

#include "CvaiExitCodes.h"
#include "CvaiGuardOptions.h"
#include "CvaiTestSession.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace UE::Headless::Cvai
{
	namespace
	{
		namespace fs = std::filesystem;

		// How long past the timeout the runner waits for the session's own guard (which ends a session that cannot be
		// stopped between two instructions 2 s after the limit) before it ends the session itself.
		constexpr double GraceSeconds = 5;

		std::string ReadAll(const std::string& Path)
		{
			std::ifstream File(Path, std::ios::binary);
			std::ostringstream Text;
			Text << File.rdbuf();
			return Text.str();
		}

		[[noreturn]] void ExecSession(const std::string& Program, const FArguments& Arguments, const std::string& Folder, int Output)
		{
			setpgid(0, 0);
			const int Null = open("/dev/null", O_RDONLY);
			if (Null < 0 || dup2(Null, STDIN_FILENO) < 0 || dup2(Output, STDOUT_FILENO) < 0 || dup2(Output, STDERR_FILENO) < 0 || chdir(Folder.c_str()) != 0)
			{
				std::fprintf(stderr, "cvai test: cannot prepare the session: %s\n", std::strerror(errno));
				_exit(127);
			}
			std::vector<char*> Words{ const_cast<char*>(Program.c_str()) };
			for (const std::string& Argument : Arguments)
			{
				Words.push_back(const_cast<char*>(Argument.c_str()));
			}
			Words.push_back(nullptr);
			execv(Program.c_str(), Words.data());
			std::fprintf(stderr, "cvai test: cannot run '%s': %s\n", Program.c_str(), std::strerror(errno));
			_exit(127);
		}

		// The words after the program's name that run one session of a script on a project.
		FArguments MakeSessionArguments(const FTestSettings& Settings, const std::string& Script, const std::string& Project, const std::string& Report)
		{
			FArguments Arguments{ "run", Script, "--project", Project, TestReportOption.Name, Report };
			if (Settings.TimeoutSeconds > 0)
			{
				Arguments.insert(Arguments.end(), { TimeoutOption.Name, Settings.Timeout });
			}
			if (!Settings.MaxMemoryMegabytes.empty())
			{
				Arguments.insert(Arguments.end(), { MaxMemoryOption.Name, Settings.MaxMemoryMegabytes });
			}
			if (Settings.bSandbox)
			{
				Arguments.push_back(SandboxOption.Name);
			}
			return Arguments;
		}

		std::string DescribeTimeout(const std::string& Timeout)
		{
			return "timeout: still running after " + Timeout + " s";
		}

		// Why a session that ended with this wait status failed; empty when it passed or was skipped.
		std::string DescribeSessionFailure(int WaitStatus, const std::string& Timeout, const std::string& ReportedError)
		{
			if (WIFSIGNALED(WaitStatus))
			{
				const int Signal = WTERMSIG(WaitStatus);
				const char* Name = sigabbrev_np(Signal);
				return "crashed: killed by signal " + std::to_string(Signal) + (Name ? " (SIG" + std::string(Name) + ")" : std::string());
			}
			const int Status = WEXITSTATUS(WaitStatus);
			switch (Status)
			{
			case ExitOk:
			case ExitSkipped:
				return "";
			case ExitFailure:
				return ReportedError.empty() ? "failed" : ReportedError;
			case ExitTimeout:
				return DescribeTimeout(Timeout);
			case ExitMemoryLimit:
				return ReportedError.empty() ? "over the memory limit" : ReportedError;
			default:
				return "ended with exit status " + std::to_string(Status);
			}
		}
	}

	FTestRun::FTestRun(const FTestSettings& InSettings, const FTestScript& InScript)
		: Settings(InSettings)
		, Script(InScript)
	{
		Result.Path = Script.Path;
	}

	FTestRun::~FTestRun()
	{
		Abort();
	}

	void FTestRun::Start()
	{
		Started = std::chrono::steady_clock::now();
		std::string Pattern = (fs::temp_directory_path() / "cvai-test-XXXXXX").string();
		if (!mkdtemp(Pattern.data()))
		{
			Finish(ETestOutcome::Failed, "cannot make a temporary folder: " + std::string(std::strerror(errno)));
			return;
		}
		Folder = Pattern;
		// The copy keeps the template folder's name, which names the project.
		Project = (fs::path(Folder) / fs::path(Settings.TemplateProject).filename()).string();
		std::error_code Error;
		fs::copy(Settings.TemplateProject, Project, fs::copy_options::recursive | fs::copy_options::copy_symlinks, Error);
		if (Error)
		{
			Finish(ETestOutcome::Failed, "cannot copy the project '" + Settings.TemplateProject + "': " + Error.message());
			return;
		}
		StartSession();
	}

	void FTestRun::StartSession()
	{
		const fs::path Path = Session == 0 ? Script.Path : Script.FollowUps[Session - 1];
		// Run from its own folder under its own name, as a user runs it, so that its errors name "script.lua:12:" and
		// require() finds modules beside it.
		const FArguments Arguments = MakeSessionArguments(Settings, Path.filename().string(), Project, Folder + "/report");
		std::remove((Folder + "/report").c_str());
		const int Output = open((Folder + "/output").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
		if (Output < 0)
		{
			Finish(ETestOutcome::Failed, "cannot write the session's output: " + std::string(std::strerror(errno)));
			return;
		}
		SessionStarted = std::chrono::steady_clock::now();
		std::fflush(nullptr);
		Child = fork();
		if (Child == 0)
		{
			ExecSession(Settings.Program, Arguments, fs::absolute(Path).parent_path().string(), Output);
		}
		close(Output);
		if (Child < 0)
		{
			Finish(ETestOutcome::Failed, "cannot start a session: " + std::string(std::strerror(errno)));
			return;
		}
		// Both sides set the group, so that a timeout right after the fork still finds it.
		setpgid(Child, Child);
	}

	bool FTestRun::Poll()
	{
		if (bFinished)
		{
			return true;
		}
		int WaitStatus = 0;
		const pid_t Ended = waitpid(Child, &WaitStatus, WNOHANG);
		bool bTimedOut = false;
		if (Ended == 0)
		{
			const double Elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - SessionStarted).count();
			if (Settings.TimeoutSeconds <= 0 || Elapsed < Settings.TimeoutSeconds + GraceSeconds)
			{
				return false;
			}
			kill(-Child, SIGKILL);
			waitpid(Child, &WaitStatus, 0);
			bTimedOut = true;
		}
		Child = -1;
		if (TakeSessionEnd(WaitStatus, bTimedOut))
		{
			StartSession();
		}
		return bFinished;
	}

	bool FTestRun::TakeSessionEnd(int WaitStatus, bool bTimedOut)
	{
		const std::optional<FTestReport> Report = ReadTestReport(Folder + "/report");
		std::string Failure = bTimedOut ? DescribeTimeout(Settings.Timeout) : DescribeSessionFailure(WaitStatus, Settings.Timeout, Report ? Report->Message : "");
		const bool bExited = !bTimedOut && WIFEXITED(WaitStatus);
		if (Failure.empty() && bExited && WEXITSTATUS(WaitStatus) == ExitSkipped && Report && Report->Outcome == "skip")
		{
			Finish(ETestOutcome::Skipped, Report->Message);
			return false;
		}
		if (Failure.empty() && !(Report && Report->Outcome == "pass"))
		{
			Failure = "the session ended with exit status " + std::to_string(WEXITSTATUS(WaitStatus)) + " but no test report";
		}
		if (!Failure.empty())
		{
			Finish(ETestOutcome::Failed, Session == 0 ? Failure : fs::path(Script.FollowUps[Session - 1]).filename().string() + ": " + Failure);
			return false;
		}
		if (++Session > Script.FollowUps.size())
		{
			Finish(ETestOutcome::Passed, "");
			return false;
		}
		return true;
	}

	void FTestRun::Finish(ETestOutcome Outcome, const std::string& Message)
	{
		Result.Outcome = Outcome;
		Result.Message = Message;
		Result.Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Started).count();
		if (!Folder.empty())
		{
			Result.Output = ReadAll(Folder + "/output");
			std::error_code Error;
			fs::remove_all(Folder, Error);
			Folder.clear();
		}
		bFinished = true;
	}

	void FTestRun::Abort()
	{
		if (Child > 0)
		{
			kill(-Child, SIGKILL);
			waitpid(Child, nullptr, 0);
			Child = -1;
		}
		if (!Folder.empty())
		{
			std::error_code Error;
			fs::remove_all(Folder, Error);
			Folder.clear();
		}
	}
}
