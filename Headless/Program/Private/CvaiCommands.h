// The commands of the cvai program.
#pragma once

#include "CvaiExitCodes.h"
#include "CvaiOptions.h"

#include <string>

namespace UE::Headless::Cvai
{
	struct FCommand
	{
		// Runs on words that fit the syntax.
		int (*Run)(const FCommandLine& CommandLine) = nullptr;
		FCommandSyntax Syntax;
	};

	extern const FCommand NewCommand;
	extern const FCommand RunCommand;
	extern const FCommand InfoCommand;
	extern const FCommand ImportCommand;
	extern const FCommand ExportCommand;
	extern const FCommand AutomationCommand;
	extern const FCommand ViewCommand;
	extern const FCommand TestCommand;
	extern const FCommand DocsCommand;

	// Prints "cvai: <message>" and a hint to stderr; returns ExitUsage.
	int UsageError(const std::string& Message, const char* Command);
}
