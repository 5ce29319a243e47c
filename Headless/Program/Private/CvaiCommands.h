// The commands of the cvai program.
#pragma once

#include <string>
#include <vector>

namespace UE::Headless::Cvai
{
	enum EExitCode
	{
		ExitOk = 0,
		ExitFailure = 1,
		ExitUsage = 2,
	};

	using FArguments = std::vector<std::string>;

	int RunNewCommand(const FArguments& Arguments);
	int RunRunCommand(const FArguments& Arguments);
	int RunInfoCommand(const FArguments& Arguments);
	int RunAutomationCommand(const FArguments& Arguments);

	// Each command's --help text, and the program's.
	const char* GetProgramHelp();
	const char* GetNewHelp();
	const char* GetRunHelp();
	const char* GetInfoHelp();
	const char* GetAutomationHelp();

	// Prints "cvai: <message>" and a hint to stderr; returns ExitUsage.
	int UsageError(const std::string& Message, const char* Command);

	// Options shared by the commands that start an editor on a project.
	struct FEditorOptions
	{
		std::string ProjectDir = ".";
		bool bVerbose = false;
	};

	// Sends the engine log to <project>/Saved/Logs/cvai.log, and errors (everything with bVerbose) to stderr.
	void RouteEngineLog(const std::string& ProjectDir, bool bVerbose);
}
