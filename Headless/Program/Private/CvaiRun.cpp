#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "CvaiGuardOptions.h"
#include "CvaiTestSession.h"

#include "Headless/FatalExit.h"
#include "Headless/StringUtils.h"
#include "Headless/UnsavedPackages.h"
#include "UObject/Package.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Starts a headless editor on the project in DIR, loads the CVAI_NaniteAssembly_Integration module as the engine\n"
			"loads it, opens one host Lua session and runs SCRIPT.lua in it, then shuts the module down. The project stays\n"
			"locked for the whole run: no other run or automation starts on it meanwhile, and info waits for it.\n"
			"\n"
			"The session has the standard Lua libraries, the module's verbs nanite_assembly_support(),\n"
			"nanite_assembly_info(path) and nanite_assembly_build{...}, and the table 'headless' that drives the editor: undo,\n"
			"redo, begin_transaction, end_transaction, cancel_transaction, transaction_depth, undo_history, set_cvar, get_cvar,\n"
			"set_plugin_enabled, set_editor_available, set_asset_registry_available, tick, is_package_dirty,\n"
			"package_file_exists, object_info, create_transient_mesh, fail_next, saved_packages, save_packages, import_mesh,\n"
			"log_lines, engine_log, project_dir. fail_next(operation, reason?, skipped_calls?) makes a coming call of an engine\n"
			"or host operation fail: BeginEditStaticMeshAssemblyBuild, AddAssemblyParts, FinishAssemblyBuild, NewObject,\n"
			"CreatePackage, EnsurePackageEditable, EnsurePackageEditableForSave, SavePackages or WritePackageFile.\n"
			"save_packages{\"/Game/A\", ...} saves those packages as the editor saves them (with no list, every package with\n"
			"unsaved changes) and returns true, or false and the reason. import_mesh(file, dest, {replace = true}?) imports a\n"
			"model file as cvai import does and returns the mesh's object path, or nil and the reason.\n"
			"\n"
			"Output: every line of the session's log goes to standard output exactly as logged, and to FILE with --log;\n"
			"print() also writes to standard output. The engine log is written to DIR/Saved/Logs/cvai.log; its errors\n"
			"(with --verbose, all of it) also go to standard error. When the script has ended, each package it left with\n"
			"unsaved changes is named on standard error, \"not saved: /Game/...\", after --save-on-exit tried to save it.\n"
			"\n"
			"Guards: with --timeout the script is stopped between two instructions once it has run longer than the limit,\n"
			"with the Lua error \"timeout: the script ran longer than --timeout S s\", raised again at every later check and\n"
			"after every pcall, so that catching it does not keep the script going; a run that cannot be stopped so (a\n"
			"native call that does not return, a finalizer) ends the process 2 s later with the same message and status.\n"
			"With --max-memory an allocation that would take the script's Lua state over the limit gets Lua's own \"not\n"
			"enough memory\" error, and standard error then says \"memory limit: the script needed more than --max-memory\n"
			"MB MB\". A guard never fires inside a verb's or a headless function's own code: it waits until the call\n"
			"returns or runs Lua code, so a build is refused or rolled back as a failed build is. Once a guard fired, the\n"
			"run ends with its status even if the script caught the error.\n"
			"\n"
			"Sandbox: with --sandbox the script gets no os.execute, os.exit, os.remove, os.rename, os.tmpname, io.popen,\n"
			"package.loadlib, native modules in require, precompiled chunks in load, loadfile, dofile or require, and of\n"
			"the debug library only debug.traceback; io.open, io.lines, io.input, io.output, loadfile, dofile and require\n"
			"open files only inside the project folder and the script's folder, and write only inside the project\n"
			"folder, links and \"..\" resolved first. A refused call raises a Lua error naming the function and why. The\n"
			"verbs and the headless table work unchanged.\n";

		constexpr const char* ExitStatus = "Exit status: 0 when the script ran to its end, 1 when it raised a Lua error (the error and a traceback go to\n"
			"standard error) or --save-on-exit could not save, 2 for a usage error (including a folder without a .uproject\n"
			"and a --log file that cannot be written), 3 when another cvai process kept the project past --lock-timeout,\n"
			"4 when memory ran out, 5 when the script ran longer than --timeout, 6 when it needed more memory than\n"
			"--max-memory.\n";

		constexpr FOption LogOption{ "--log", "FILE", "also write the session's log lines to FILE" };
		constexpr FOption SaveOnExitOption{ "--save-on-exit", nullptr, "when the script has ended, save every package it left with unsaved changes" };

		bool SaveOnExit()
		{
			const TArray<UPackage*> Unsaved = GetUnsavedPackages();
			FString Error;
			if (Unsaved.IsEmpty() || SaveChangedPackages(Unsaved, Error))
			{
				return true;
			}
			std::fprintf(stderr, "cvai: %s could not save every package: %s\n", SaveOnExitOption.Name, ToUtf8(Error).c_str());
			return false;
		}

		// Whatever the script leaves unsaved is lost when the editor stops: that is said, not done silently.
		void ReportUnsavedPackages()
		{
			for (const UPackage* Package : GetUnsavedPackages())
			{
				std::fprintf(stderr, "not saved: %s\n", ToUtf8(Package->GetName()).c_str());
			}
		}

		int RunRun(const FCommandLine& CommandLine)
		{
			const std::string& Script = CommandLine.Positionals[0];
			std::error_code FileError;
			if (!std::filesystem::is_regular_file(Script, FileError))
			{
				return UsageError("cannot read the script '" + Script + "'", CommandLine.Command);
			}

			FEditorSession Editor(CommandLine, EProjectAccess::Write);
			// A wrong project is the first thing to hear about, before a log file is made for nothing.
			if (!Editor.FindProject())
			{
				return ExitUsage;
			}
			// The log file is opened before the project is waited for, so that a path that cannot be written is a usage
			// error at once; it is emptied only once this run holds the project, so that a run that gives up waiting
			// leaves an earlier run's log as it was, and one that made the file removes it again.
			std::shared_ptr<FILE> LogFile;
			const std::string LogPath = CommandLine.Get(LogOption.Name, "");
			std::error_code ExistsError;
			const bool bLogExisted = !LogPath.empty() && std::filesystem::exists(LogPath, ExistsError);
			if (!LogPath.empty())
			{
				LogFile = OpenLogFile(LogPath, /*bAppend*/ true);
				if (!LogFile)
				{
					return UsageError("cannot write the log file '" + LogPath + "': " + std::strerror(errno), CommandLine.Command);
				}
			}
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				if (LogFile && !bLogExisted)
				{
					LogFile.reset();
					std::filesystem::remove(LogPath, ExistsError);
				}
				return Exit;
			}
			if (LogFile && ftruncate(fileno(LogFile.get()), 0) != 0)
			{
				std::fprintf(stderr, "cvai: cannot empty the log file '%s': %s\n", LogPath.c_str(), std::strerror(errno));
				return ExitFailure;
			}

			FCorvaneLuaSession& Session = Editor.GetLuaSession();
			FTestSession Test(CommandLine.Get(TestReportOption.Name, ""));
			if (!Test.Install(Session))
			{
				return ExitFailure;
			}
			ApplyGuardOptions(CommandLine, Session, Script);
			FLuaSessionAccess::SetLogListener(Session.GetSessionData(), [LogFile](const FString& Line)
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
			bool bScriptRan = false;
			{
				const FScopedActivity Activity(("running " + Script).c_str());
				bScriptRan = Session.RunFile(Script, ScriptError);
			}
			std::fflush(stdout);
			if (!bScriptRan && !Test.IsSkipped())
			{
				std::fprintf(stderr, "%s\n", ScriptError.c_str());
			}
			// The guard is named once: a timeout's error already says it, unless the script caught it.
			const std::string GuardMessage = Session.GetGuardMessage();
			if (!GuardMessage.empty() && ScriptError.find(GuardMessage) == std::string::npos)
			{
				std::fprintf(stderr, "%s\n", GuardMessage.c_str());
			}
			const bool bSaved = !CommandLine.Has(SaveOnExitOption.Name) || SaveOnExit();
			ReportUnsavedPackages();
			if (const int GuardExit = GuardExitStatus(Session.GetFiredGuard()); GuardExit != ExitOk)
			{
				return Test.Finish(GuardExit, ScriptError);
			}
			return Test.Finish(bScriptRan && bSaved ? ExitOk : ExitFailure, ScriptError);
		}
	}

	const FCommand RunCommand{ .Run = &RunRun,
		.Syntax = { .Name = "run", .Summary = "run a script in a headless editor session", .Description = Help, .ExitStatus = ExitStatus,
			.Options = { ProjectOption, LogOption, VerboseOption, SaveOnExitOption, TimeoutOption, MaxMemoryOption, SandboxOption, TestReportOption },
			.Positionals = { .Names = { "SCRIPT.lua" }, .MinCount = 1, .MissingMessage = "run needs a script", .ExtraMessage = "run takes one script" } } };
}
