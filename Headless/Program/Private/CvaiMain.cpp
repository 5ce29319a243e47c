#include "CvaiCommands.h"

#include <cstdio>
#include <cstring>

namespace UE::Headless::Cvai
{
	const char* GetProgramHelp()
	{
		return "cvai - run Lua scripts in a headless Unreal Editor 5.7 with the CVAI Nanite Assembly module\n"
			   "\n"
			   "Usage:\n"
			   "  cvai new DIR                                          create a project folder to run scripts on\n"
			   "  cvai run SCRIPT.lua [--project DIR] [--log FILE] [--verbose]\n"
			   "                                                        run a script in a headless editor session\n"
			   "  cvai info PATH [--project DIR] [--json]               print the Nanite Assembly readback of a static mesh\n"
			   "  cvai automation [FILTER] [--project DIR]              run the module's editor automation checks\n"
			   "  cvai --help, cvai COMMAND --help                      show help\n"
			   "\n"
			   "A project folder holds a .uproject (its Plugins list enables NaniteAssemblyEditorUtils), Config/DefaultEngine.ini\n"
			   "(its [ConsoleVariables] set r.Nanite.AllowAssemblies) and Content/, where /Game/ packages are saved.\n"
			   "--project defaults to the current folder.\n"
			   "\n"
			   "Exit status: 0 success, 1 failure (a script error, a refused readback, a failed check), 2 usage error.\n";
	}

	const char* GetNewHelp()
	{
		return "Usage: cvai new DIR\n"
			   "\n"
			   "Creates DIR (and its parents) as a project: DIR/<name>.uproject with NaniteAssemblyEditorUtils enabled,\n"
			   "DIR/Config/DefaultEngine.ini with r.Nanite.AllowAssemblies=1 under [ConsoleVariables], and an empty DIR/Content/.\n"
			   "<name> is the folder's name. A folder that already holds a .uproject is refused.\n";
	}

	const char* GetRunHelp()
	{
		return "Usage: cvai run SCRIPT.lua [--project DIR] [--log FILE] [--verbose]\n"
			   "\n"
			   "Starts a headless editor on the project in DIR (default: the current folder), loads the\n"
			   "CVAI_NaniteAssembly_Integration module as the engine loads it, opens one host Lua session and runs SCRIPT.lua\n"
			   "in it, then shuts the module down.\n"
			   "\n"
			   "The session has the standard Lua libraries, the module's verbs nanite_assembly_support(),\n"
			   "nanite_assembly_info(path) and nanite_assembly_build{...}, and the table 'headless' that drives the editor:\n"
			   "undo, redo, begin_transaction, end_transaction, cancel_transaction, transaction_depth, undo_history, set_cvar,\n"
			   "get_cvar, set_plugin_enabled, set_editor_available, set_asset_registry_available, tick, is_package_dirty,\n"
			   "package_file_exists, object_info, create_transient_mesh, fail_next, saved_packages, log_lines, engine_log,\n"
			   "project_dir. fail_next(operation, reason?, skipped_calls?) makes a coming call of an engine or host operation\n"
			   "fail: BeginEditStaticMeshAssemblyBuild, AddAssemblyParts, FinishAssemblyBuild, NewObject, CreatePackage,\n"
			   "EnsurePackageEditable, EnsurePackageEditableForSave or SavePackages.\n"
			   "\n"
			   "Output: every line of the session's log goes to standard output exactly as logged, and to FILE with --log;\n"
			   "print() also writes to standard output. The engine log is written to DIR/Saved/Logs/cvai.log; its errors\n"
			   "(with --verbose, all of it) also go to standard error.\n"
			   "\n"
			   "Exit status: 0 when the script ran to its end, 1 when it raised a Lua error (the error and a traceback go to\n"
			   "standard error), 2 for a usage error (including a folder without a .uproject).\n";
	}

	const char* GetInfoHelp()
	{
		return "Usage: cvai info PATH [--project DIR] [--json]\n"
			   "\n"
			   "Prints the readback of one static mesh, as nanite_assembly_info(PATH) returns it: a readable summary, or with\n"
			   "--json the result table as JSON. PATH is completed as the verb completes it (SM_Rock, Meshes/SM_Rock,\n"
			   "/Game/Meshes/SM_Rock, /Game/Meshes/SM_Rock.SM_Rock). Exit status 1 when no static mesh is found.\n";
	}

	const char* GetAutomationHelp()
	{
		return "Usage: cvai automation [FILTER] [--project DIR]\n"
			   "\n"
			   "Runs the editor automation checks that the module registered when it loaded, whose names contain FILTER\n"
			   "(all of them without one), for example: cvai automation Corvane.GeometryScripting\n"
			   "The checks build, save and undo assets under /Game/CorvaneAutomation in the project.\n"
			   "The last line is \"N passed, N failed\"; the exit status is 1 when a check failed or none matched.\n";
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
	FArguments Arguments(Argv + 1, Argv + Argc);
	if (Arguments.empty())
	{
		std::fputs(GetProgramHelp(), stderr);
		return ExitUsage;
	}
	const std::string Command = Arguments.front();
	if (Command == "--help" || Command == "-h" || Command == "help")
	{
		std::fputs(GetProgramHelp(), stdout);
		return ExitOk;
	}
	Arguments.erase(Arguments.begin());

	struct FCommand
	{
		const char* Name;
		int (*Run)(const FArguments&);
		const char* (*Help)();
	};
	static const FCommand Commands[] = {
		{ "new", &RunNewCommand, &GetNewHelp },
		{ "run", &RunRunCommand, &GetRunHelp },
		{ "info", &RunInfoCommand, &GetInfoHelp },
		{ "automation", &RunAutomationCommand, &GetAutomationHelp },
	};
	for (const FCommand& Entry : Commands)
	{
		if (Command == Entry.Name)
		{
			for (const std::string& Argument : Arguments)
			{
				if (Argument == "--help" || Argument == "-h")
				{
					std::fputs(Entry.Help(), stdout);
					return ExitOk;
				}
			}
			return Entry.Run(Arguments);
		}
	}
	return UsageError("unknown command '" + Command + "'", nullptr);
}
