#include "CvaiCommands.h"

#include "Headless/EngineLog.h"
#include "Headless/HeadlessEditor.h"
#include "Headless/StringUtils.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace UE::Headless::Cvai
{
	int RunNewCommand(const FArguments& Arguments)
	{
		if (Arguments.size() != 1 || Arguments[0].rfind("-", 0) == 0)
		{
			return UsageError(Arguments.empty() ? "new needs the folder to create" : "new takes exactly one folder", "new");
		}
		FProjectInfo Project;
		FString Error;
		if (!CreateProject(FromUtf8(Arguments[0]), Project, Error))
		{
			std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
			return ExitFailure;
		}
		std::printf("Created project %s in %s\n", ToUtf8(Project.Name).c_str(), ToUtf8(Project.ProjectDir).c_str());
		return ExitOk;
	}

	int RunRunCommand(const FArguments& Arguments)
	{
		std::string Script;
		std::string LogPath;
		FEditorOptions Options;
		for (size_t Index = 0; Index < Arguments.size(); ++Index)
		{
			const std::string& Argument = Arguments[Index];
			if ((Argument == "--project" || Argument == "--log") && Index + 1 >= Arguments.size())
			{
				return UsageError(Argument + " needs a value", "run");
			}
			if (Argument == "--project")
			{
				Options.ProjectDir = Arguments[++Index];
			}
			else if (Argument == "--log")
			{
				LogPath = Arguments[++Index];
			}
			else if (Argument == "--verbose")
			{
				Options.bVerbose = true;
			}
			else if (Argument.rfind("-", 0) == 0 && Argument != "-")
			{
				return UsageError("unknown option '" + Argument + "'", "run");
			}
			else if (Script.empty())
			{
				Script = Argument;
			}
			else
			{
				return UsageError("run takes one script", "run");
			}
		}
		if (Script.empty())
		{
			return UsageError("run needs a script", "run");
		}
		std::error_code FileError;
		if (!std::filesystem::is_regular_file(Script, FileError))
		{
			return UsageError("cannot read the script '" + Script + "'", "run");
		}

		FProjectInfo Project;
		FString Error;
		if (!FindProject(FromUtf8(Options.ProjectDir), Project, Error))
		{
			return UsageError(ToUtf8(Error), "run");
		}
		std::shared_ptr<FILE> LogFile;
		if (!LogPath.empty())
		{
			LogFile.reset(std::fopen(LogPath.c_str(), "w"), [](FILE* File) { std::fclose(File); });
			if (!LogFile)
			{
				return UsageError("cannot write the log file '" + LogPath + "'", "run");
			}
		}

		RouteEngineLog(ToUtf8(Project.ProjectDir), Options.bVerbose);
		FHeadlessEditor Editor;
		if (!Editor.Start(Project.ProjectDir, Error))
		{
			std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
			return ExitFailure;
		}

		int Exit = ExitOk;
		{
			std::unique_ptr<FCorvaneLuaSession> Session = Editor.CreateSession();
			for (const FString& BinderError : Session->GetBinderErrors())
			{
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(BinderError).c_str());
			}
			FLuaSessionAccess::SetLogListener(Session->GetSessionData(), [LogFile](const FString& Line)
			{
				const std::string Text = ToUtf8(Line);
				std::fwrite(Text.data(), 1, Text.size(), stdout);
				std::fputc('\n', stdout);
				if (LogFile)
				{
					std::fprintf(LogFile.get(), "%s\n", Text.c_str());
				}
			});
			std::string ScriptError;
			if (!Session->RunFile(Script, ScriptError))
			{
				std::fflush(stdout);
				std::fprintf(stderr, "%s\n", ScriptError.c_str());
				Exit = ExitFailure;
			}
		}
		std::fflush(stdout);
		Editor.Stop();
		SetEngineLogListener(nullptr);
		return Exit;
	}
}
