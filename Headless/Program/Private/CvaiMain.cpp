#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "Headless/FatalExit.h"

#include <csignal>
#include <cstdio>
#include <string>

namespace UE::Headless::Cvai
{
	namespace
	{
		const FCommand* const Commands[] = { &NewCommand, &RunCommand, &InfoCommand, &ImportCommand, &ExportCommand, &ViewCommand, &AutomationCommand, &TestCommand, &DocsCommand };

		// A usage line that leaves no room before this column puts its summary on the next line.
		constexpr size_t SummaryColumn = 56;

		void AppendListing(std::string& Help, const std::string& Usage, const char* Summary)
		{
			Help += "  " + Usage;
			const size_t Width = 2 + Usage.size();
			Help += Width + 2 <= SummaryColumn ? std::string(SummaryColumn - Width, ' ') : "\n" + std::string(SummaryColumn, ' ');
			Help += Summary;
			Help += '\n';
		}

		std::string GetProgramHelp()
		{
			std::string Help = "cvai - run Lua scripts in a headless Unreal Editor 5.7 with the CVAI Nanite Assembly module\n"
							   "\n"
							   "Usage:\n";
			for (const FCommand* Command : Commands)
			{
				AppendListing(Help, FormatUsage(WithStartupOptions(Command->Syntax)), Command->Syntax.Summary);
			}
			AppendListing(Help, "cvai --help, cvai COMMAND --help", "show help");
			Help += "\n"
					"A project folder holds a .uproject (its Plugins list enables NaniteAssemblyEditorUtils), Config/DefaultEngine.ini\n"
					"(its [ConsoleVariables] set r.Nanite.AllowAssemblies) and Content/, where /Game/ packages are saved.\n"
					"--project defaults to the current folder. run, info, import, export, view and automation lock the project for\n"
					"as long as they read or change it (Saved/cvai.lock): run, import and automation alone, info, export and view\n"
					"beside other readers; a command that finds the project locked waits up to --lock-timeout seconds (30 by default).\n"
					"\n"
					"Exit status:\n";
			for (const FExitStatus& Status : ExitStatuses)
			{
				Help += "  " + std::to_string(Status.Code) + "  " + Status.Meaning + "\n";
			}
			return Help;
		}

		int Dispatch(const FCommand& Command, const FArguments& Arguments)
		{
			const FCommandSyntax Syntax = WithStartupOptions(Command.Syntax);
			const FParseResult Parsed = ParseCommandLine(Syntax, Arguments);
			if (Parsed.bHelp)
			{
				std::fputs(FormatHelp(Syntax).c_str(), stdout);
				return ExitOk;
			}
			if (!Parsed.Error.empty())
			{
				return UsageError(Parsed.Error, Syntax.Name);
			}
			return Command.Run(Parsed.CommandLine);
		}
	}

	int UsageError(const std::string& Message, const char* Command)
	{
		std::fprintf(stderr, "cvai: %s\nTry 'cvai %s--help'.\n", Message.c_str(), Command ? (std::string(Command) + " ").c_str() : "");
		return ExitUsage;
	}
}

int main(int Argc, char** Argv)
{
	using namespace UE::Headless::Cvai;
	// A write past a file-size limit then fails with EFBIG, which a save reports as any failed write, instead of
	// killing the process half way through.
	std::signal(SIGXFSZ, SIG_IGN);
	UE::Headless::InstallOutOfMemoryHandler("cvai", ExitOutOfMemory);
	FArguments Arguments(Argv + 1, Argv + Argc);
	if (Arguments.empty())
	{
		std::fputs(GetProgramHelp().c_str(), stderr);
		return ExitUsage;
	}
	const std::string Name = Arguments.front();
	if (Name == "--help" || Name == "-h" || Name == "help")
	{
		std::fputs(GetProgramHelp().c_str(), stdout);
		return ExitOk;
	}
	Arguments.erase(Arguments.begin());
	for (const FCommand* Command : Commands)
	{
		if (Name == Command->Syntax.Name)
		{
			return Dispatch(*Command, Arguments);
		}
	}
	return UsageError("unknown command '" + Name + "'", nullptr);
}
