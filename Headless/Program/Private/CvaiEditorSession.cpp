#include "CvaiEditorSession.h"

#include "CvaiCommands.h"
#include "Headless/EngineLog.h"
#include "Headless/FatalExit.h"
#include "Headless/StringUtils.h"

#include <algorithm>
#include <filesystem>

namespace UE::Headless::Cvai
{
	namespace
	{
		// A reader adds to the log file, since other readers may be writing it at the same time; a writer, alone on the
		// project, starts it afresh.
		void RouteEngineLog(const std::string& ProjectDir, bool bVerbose, bool bAppend)
		{
			namespace fs = std::filesystem;
			std::error_code Error;
			const fs::path LogDir = fs::path(ProjectDir) / "Saved" / "Logs";
			fs::create_directories(LogDir, Error);
			// Without the file the log still reaches stderr: a read-only project is no reason to refuse.
			std::shared_ptr<FILE> LogFile = OpenLogFile((LogDir / "cvai.log").string(), bAppend);
			SetEngineLogListener([LogFile, bVerbose](const FEngineLogLine& Line)
			{
				const std::string Text = ToUtf8(Line.Format());
				if (LogFile)
				{
					std::fprintf(LogFile.get(), "%s\n", Text.c_str());
					std::fflush(LogFile.get());
				}
				if (bVerbose || Line.Verbosity <= ELogVerbosity::Error)
				{
					std::fprintf(stderr, "%s\n", Text.c_str());
				}
			});
		}
	}

	FCommandSyntax WithStartupOptions(FCommandSyntax Syntax)
	{
		std::vector<FOption>& Options = Syntax.Options;
		const auto IsProject = [](const FOption& Option) { return std::string(Option.Name) == ProjectOption.Name; };
		if (std::find_if(Options.begin(), Options.end(), IsProject) != Options.end())
		{
			const auto FirstUnlisted = std::find_if(Options.begin(), Options.end(), [](const FOption& Option) { return Option.bUnlisted; });
			Options.insert(FirstUnlisted, LockTimeoutOption);
		}
		return Syntax;
	}

	std::shared_ptr<FILE> OpenLogFile(const std::string& Path, bool bAppend)
	{
		// A shared_ptr given a null pointer and a deleter still calls the deleter, and fclose(NULL) crashes:
		// only an open file gets one.
		FILE* File = std::fopen(Path.c_str(), bAppend ? "a" : "w");
		if (!File)
		{
			return nullptr;
		}
		return std::shared_ptr<FILE>(File, [](FILE* Open) { std::fclose(Open); });
	}

	FEditorSession::FEditorSession(const FCommandLine& InCommandLine, EProjectAccess InAccess)
		: CommandLine(InCommandLine)
		, Access(InAccess)
	{
	}

	FEditorSession::~FEditorSession()
	{
		Close();
	}

	bool FEditorSession::FindProject()
	{
		FString Error;
		bProjectFound = UE::Headless::FindProject(FromUtf8(CommandLine.Get(ProjectOption.Name, ".")), Project, Error);
		if (!bProjectFound)
		{
			UsageError(ToUtf8(Error), CommandLine.Command);
		}
		return bProjectFound;
	}

	int FEditorSession::Open()
	{
		if (!bProjectFound && !FindProject())
		{
			return ExitUsage;
		}
		// Before the engine log, whose file belongs to the process that holds the project.
		if (const int Exit = LockProject(); Exit != ExitOk)
		{
			return Exit;
		}
		RouteEngineLog(ToUtf8(Project.ProjectDir), CommandLine.Has(VerboseOption.Name), Access == EProjectAccess::Read);
		bEngineLogRouted = true;
		FString Error;
		const FScopedActivity Activity(TEXT("starting the editor on ") + Project.ProjectDir);
		if (!Editor.Start(Project.ProjectDir, Error))
		{
			std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
			return ExitFailure;
		}
		return ExitOk;
	}

	int FEditorSession::LockProject()
	{
		// The parser let through only numbers of seconds.
		const std::string Timeout = CommandLine.Get(LockTimeoutOption.Name, "30");
		const double TimeoutSeconds = std::stod(Timeout);
		const std::string ProjectDir = ToUtf8(Project.ProjectDir);
		const ELockResult Result = Lock.Lock(ProjectDir, Access, TimeoutSeconds, [&](pid_t Holder)
		{
			std::fprintf(stderr, "cvai: the project '%s' is in use by process %d; waiting up to %s s\n", ProjectDir.c_str(), (int)Holder, Timeout.c_str());
		});
		switch (Result)
		{
		case ELockResult::Locked:
			return ExitOk;
		case ELockResult::Busy:
			if (TimeoutSeconds > 0)
			{
				std::fprintf(stderr, "cvai: the project '%s' is still in use by process %d after %s s\n", ProjectDir.c_str(), (int)Lock.GetHolder(), Timeout.c_str());
			}
			else
			{
				std::fprintf(stderr, "cvai: the project '%s' is in use by process %d\n", ProjectDir.c_str(), (int)Lock.GetHolder());
			}
			return ExitProjectBusy;
		case ELockResult::Failed:
			break;
		}
		std::fprintf(stderr, "cvai: %s\n", Lock.GetError().c_str());
		return ExitFailure;
	}

	FCorvaneLuaSession& FEditorSession::GetLuaSession()
	{
		if (!LuaSession)
		{
			LuaSession = Editor.CreateSession();
			for (const FString& BinderError : LuaSession->GetBinderErrors())
			{
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(BinderError).c_str());
			}
		}
		return *LuaSession;
	}

	void FEditorSession::Close()
	{
		const FScopedActivity Activity("shutting the editor down");
		LuaSession.reset();
		// What the session printed comes before whatever shutting down logs to stderr.
		std::fflush(stdout);
		Editor.Stop();
		if (bEngineLogRouted)
		{
			SetEngineLogListener(nullptr);
			bEngineLogRouted = false;
		}
		Lock.Unlock();
	}
}
