// The start-up that every command working on a project shares: the project from --project, the engine log,
// a headless editor with the module loaded and, for the commands that run Lua, one host session.
#pragma once

#include "CvaiOptions.h"
#include "Headless/HeadlessEditor.h"

#include <cstdio>
#include <memory>
#include <string>

namespace UE::Headless::Cvai
{
	inline constexpr FOption ProjectOption{ "--project", "DIR" };
	inline constexpr FOption VerboseOption{ "--verbose" };

	// A file opened for writing, closed when its last user lets go; null when it cannot be opened, with errno
	// saying why.
	std::shared_ptr<FILE> OpenLogFile(const std::string& Path);

	class FEditorSession
	{
	public:
		explicit FEditorSession(const FCommandLine& CommandLine);
		~FEditorSession();
		FEditorSession(const FEditorSession&) = delete;
		FEditorSession& operator=(const FEditorSession&) = delete;

		// A folder without a project is a usage error, printed here. A command with checks of its own that
		// must not run on a wrong project calls this before them; Open calls it otherwise.
		bool FindProject();

		// Finds the project if that is still to do, sends the engine log to <project>/Saved/Logs/cvai.log (and
		// its errors, everything with --verbose, to stderr) and starts the editor. Returns the exit status
		// to end with when that failed, after printing why; ExitOk otherwise.
		int Open();

		// The host session, opened on first use; its binder errors are printed then, since a verb that failed
		// to bind is otherwise only a nil global.
		FCorvaneLuaSession& GetLuaSession();

		// Closes the host session and stops the editor, which unloads the module; the destructor does it too.
		void Close();

	private:
		FCommandLine CommandLine;
		FProjectInfo Project;
		bool bProjectFound = false;
		bool bEngineLogRouted = false;
		FHeadlessEditor Editor;
		std::unique_ptr<FCorvaneLuaSession> LuaSession;
	};
}
