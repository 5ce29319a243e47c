// The start-up that every command working on a project shares: the project from --project, the engine log,
// a headless editor with the module loaded and, for the commands that run Lua, one host session.
#pragma once

#include "CvaiOptions.h"
#include "CvaiProjectLock.h"
#include "Headless/HeadlessEditor.h"

#include <cstdio>
#include <memory>
#include <string>

namespace UE::Headless::Cvai
{
	inline constexpr FOption ProjectOption{ "--project", "DIR", "the project folder (default: the current folder)" };
	inline constexpr FOption VerboseOption{ "--verbose", nullptr, "also print the whole engine log on standard error" };
	inline constexpr FOption LockTimeoutOption{ "--lock-timeout", "SECONDS",
		"how long to wait for another cvai on the project (default 30; 0: do not wait)", &IsSeconds, "a number of seconds" };

	// The syntax of a command that opens a project (it takes --project) with the options of the start-up itself added
	// after its own listed ones.
	FCommandSyntax WithStartupOptions(FCommandSyntax Syntax);

	// A file opened for writing (from its start, or at its end with bAppend), closed when its last user lets go; null
	// when it cannot be opened, with errno saying why.
	std::shared_ptr<FILE> OpenLogFile(const std::string& Path, bool bAppend = false);

	class FEditorSession
	{
	public:
		// Access says how the command uses the project: Write when it may change it, Read when it only looks.
		explicit FEditorSession(const FCommandLine& CommandLine, EProjectAccess Access = EProjectAccess::Read);
		~FEditorSession();
		FEditorSession(const FEditorSession&) = delete;
		FEditorSession& operator=(const FEditorSession&) = delete;

		// A folder without a project is a usage error, printed here. A command with checks of its own that
		// must not run on a wrong project calls this before them; Open calls it otherwise.
		bool FindProject();

		// Finds the project if that is still to do, locks it (waiting up to --lock-timeout), sends the engine log to <project>/Saved/Logs/cvai.log (and
		// its errors, everything with --verbose, to stderr) and starts the editor. Returns the exit status
		// to end with when that failed, after printing why; ExitOk otherwise.
		int Open();

		// The host session, opened on first use; its binder errors are printed then, since a verb that failed
		// to bind is otherwise only a nil global.
		FCorvaneLuaSession& GetLuaSession();

		// Closes the host session, stops the editor, which unloads the module, and lets go of the project; the
		// destructor does it too.
		void Close();

	private:
		int LockProject();

		FCommandLine CommandLine;
		EProjectAccess Access;
		// Declared before the editor, so that it is released after the editor stopped.
		FProjectLock Lock;
		FProjectInfo Project;
		bool bProjectFound = false;
		bool bEngineLogRouted = false;
		FHeadlessEditor Editor;
		std::unique_ptr<FCorvaneLuaSession> LuaSession;
	};
}
