// Harness-only: a headless editor on one project folder, as cvai, the tests and the benchmarks start it.
#pragma once

#include "Containers/UnrealString.h"
#include "Headless/CorvaneHost.h"

#include <memory>
#include <string>

namespace UE::Headless
{
	struct FProjectInfo
	{
		FString ProjectDir;
		FString UProjectPath;
		FString Name;
	};

	// Finds the .uproject of a folder; false with a message that says how to make one.
	bool FindProject(const FString& Dir, FProjectInfo& OutProject, FString& OutError);

	// Writes a new project: <Dir>/<name>.uproject with the assembly builder enabled, Config/DefaultEngine.ini
	// with r.Nanite.AllowAssemblies=1 and an empty Content/. Refuses a folder that already holds a project.
	bool CreateProject(const FString& Dir, FProjectInfo& OutProject, FString& OutError);

	class FHeadlessEditor
	{
	public:
		FHeadlessEditor();
		~FHeadlessEditor();
		FHeadlessEditor(const FHeadlessEditor&) = delete;
		FHeadlessEditor& operator=(const FHeadlessEditor&) = delete;

		// Reads the project's plugin list and console variables, mounts its content, creates the editor
		// and loads the module as the engine does (which registers it with the host).
		bool Start(const FString& ProjectDir, FString& OutError);

		// A new host session with the module's verbs and the harness table "headless".
		std::unique_ptr<FCorvaneLuaSession> CreateSession();

		// Finishes pending work, shuts the module down and unloads it. Sessions must be gone by then.
		void Stop();

		[[nodiscard]] const FProjectInfo& GetProject() const { return Project; }

	private:
		FProjectInfo Project;
		bool bStarted = false;
	};

	inline constexpr const TCHAR* ModuleName = TEXT("CVAI_NaniteAssembly_Integration");
}
