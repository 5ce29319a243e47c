#include "CvaiEditorSession.h"

#include "CvaiCommands.h"
#include "Headless/EngineLog.h"
#include "Headless/StringUtils.h"

#include <filesystem>

namespace UE::Headless::Cvai
{
	namespace
	{
		void RouteEngineLog(const std::string& ProjectDir, bool bVerbose)
		{
			namespace fs = std::filesystem;
			std::error_code Error;
			const fs::path LogDir = fs::path(ProjectDir) / "Saved" / "Logs";
			fs::create_directories(LogDir, Error);
			// Without the file the log still reaches stderr: a read-only project is no reason to refuse.
			std::shared_ptr<FILE> LogFile = OpenLogFile((LogDir / "cvai.log").string());
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

	std::shared_ptr<FILE> OpenLogFile(const std::string& Path)
	{
		// A shared_ptr given a null pointer and a deleter still calls the deleter, and fclose(NULL) crashes:
		// only an open file gets one.
		FILE* File = std::fopen(Path.c_str(), "w");
		if (!File)
		{
			return nullptr;
		}
		return std::shared_ptr<FILE>(File, [](FILE* Open) { std::fclose(Open); });
	}

	FEditorSession::FEditorSession(const FCommandLine& InCommandLine)
		: CommandLine(InCommandLine)
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
		RouteEngineLog(ToUtf8(Project.ProjectDir), CommandLine.Has(VerboseOption.Name));
		bEngineLogRouted = true;
		FString Error;
		if (!Editor.Start(Project.ProjectDir, Error))
		{
			std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
			return ExitFailure;
		}
		return ExitOk;
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
		LuaSession.reset();
		// What the session printed comes before whatever shutting down logs to stderr.
		std::fflush(stdout);
		Editor.Stop();
		if (bEngineLogRouted)
		{
			SetEngineLogListener(nullptr);
			bEngineLogRouted = false;
		}
	}
}
