#include "Headless/HeadlessEditor.h"

#include "Headless/EditorRuntime.h"
#include "Headless/Environment.h"
#include "Headless/HarnessLuaApi.h"
#include "Headless/PackageFiles.h"
#include "Headless/Plugins.h"
#include "Headless/StringUtils.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"

#include <sol/sol.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

namespace UE::Headless
{
	namespace
	{
		namespace fs = std::filesystem;

		FString AbsoluteDir(const FString& Dir)
		{
			std::error_code Error;
			const fs::path Absolute = fs::absolute(ToUtf8(Dir.IsEmpty() ? FString(TEXT(".")) : Dir), Error).lexically_normal();
			FString Result = FromUtf8(Absolute.string());
			if (!Result.EndsWith(TEXT("/")))
			{
				Result += TEXT("/");
			}
			return Result;
		}

		// A project name keeps letters, digits and '_'; anything else becomes '_'.
		FString ProjectNameFor(const FString& Dir)
		{
			const fs::path Path(ToUtf8(Dir));
			const std::string Base = Path.has_filename() ? Path.filename().string() : Path.parent_path().filename().string();
			std::string Name;
			for (const char Char : Base)
			{
				const bool bKept = (Char >= 'a' && Char <= 'z') || (Char >= 'A' && Char <= 'Z') || (Char >= '0' && Char <= '9') || Char == '_';
				Name += bKept ? Char : '_';
			}
			return FromUtf8(Name.empty() ? std::string("Project") : Name);
		}

		bool WriteTextFile(const fs::path& Path, const std::string& Text, FString& OutError)
		{
			std::ofstream Out(Path, std::ios::binary | std::ios::trunc);
			Out << Text;
			if (!Out)
			{
				OutError = FString::Printf(TEXT("cannot write '%s'"), *FromUtf8(Path.string()));
				return false;
			}
			return true;
		}
	}

	bool FindProject(const FString& Dir, FProjectInfo& OutProject, FString& OutError)
	{
		const FString Absolute = AbsoluteDir(Dir);
		std::error_code Error;
		if (!fs::is_directory(ToUtf8(Absolute), Error))
		{
			OutError = FString::Printf(TEXT("'%s' is not a folder; make a project with: cvai new <folder>"), *Absolute);
			return false;
		}
		std::vector<fs::path> Candidates;
		for (fs::directory_iterator It(ToUtf8(Absolute), Error), End; !Error && It != End; It.increment(Error))
		{
			if (It->is_regular_file() && It->path().extension() == ".uproject")
			{
				Candidates.push_back(It->path());
			}
		}
		if (Candidates.empty())
		{
			OutError = FString::Printf(TEXT("no .uproject file in '%s'; make a project there with: cvai new %s"), *Absolute, *Absolute);
			return false;
		}
		std::sort(Candidates.begin(), Candidates.end());
		OutProject.ProjectDir = Absolute;
		OutProject.UProjectPath = FromUtf8(Candidates.front().string());
		OutProject.Name = FromUtf8(Candidates.front().stem().string());
		return true;
	}

	bool CreateProject(const FString& Dir, FProjectInfo& OutProject, FString& OutError)
	{
		const FString Absolute = AbsoluteDir(Dir);
		FProjectInfo Existing;
		FString Ignored;
		if (FindProject(Absolute, Existing, Ignored))
		{
			OutError = FString::Printf(TEXT("'%s' already holds a project (%s)"), *Absolute, *FPaths::GetCleanFilename(Existing.UProjectPath));
			return false;
		}
		const fs::path Root(ToUtf8(Absolute));
		std::error_code Error;
		fs::create_directories(Root / "Config", Error);
		fs::create_directories(Root / "Content", Error);
		if (Error)
		{
			OutError = FString::Printf(TEXT("cannot create the folders of '%s': %s"), *Absolute, *FromUtf8(Error.message()));
			return false;
		}
		const FString Name = ProjectNameFor(Absolute.LeftChop(1));
		const std::string UProject =
			"{\n"
			"\t\"FileVersion\": 3,\n"
			"\t\"EngineAssociation\": \"5.7\",\n"
			"\t\"Category\": \"\",\n"
			"\t\"Description\": \"\",\n"
			"\t\"Plugins\": [\n"
			"\t\t{ \"Name\": \"NaniteAssemblyEditorUtils\", \"Enabled\": true },\n"
			"\t\t{ \"Name\": \"CorvaneAI\", \"Enabled\": true },\n"
			"\t\t{ \"Name\": \"CVAI_NaniteAssembly\", \"Enabled\": true }\n"
			"\t]\n"
			"}\n";
		const std::string Ini = "[ConsoleVariables]\nr.Nanite.AllowAssemblies=1\n";
		const fs::path UProjectPath = Root / (ToUtf8(Name) + ".uproject");
		if (!WriteTextFile(UProjectPath, UProject, OutError) || !WriteTextFile(Root / "Config" / "DefaultEngine.ini", Ini, OutError))
		{
			return false;
		}
		OutProject.ProjectDir = Absolute;
		OutProject.UProjectPath = FromUtf8(UProjectPath.string());
		OutProject.Name = Name;
		return true;
	}

	FHeadlessEditor::FHeadlessEditor() = default;

	FHeadlessEditor::~FHeadlessEditor()
	{
		Stop();
	}

	bool FHeadlessEditor::Start(const FString& ProjectDir, FString& OutError)
	{
		if (bStarted)
		{
			OutError = TEXT("the headless editor is already running");
			return false;
		}
		if (!FindProject(ProjectDir, Project, OutError))
		{
			return false;
		}
		SetProjectDir(Project.ProjectDir);
		SetProjectName(Project.Name);
		if (!LoadProjectPlugins(Project.UProjectPath, OutError))
		{
			return false;
		}
		ResetConsoleVariables();
		LoadConsoleVariablesFromIni(Project.ProjectDir + TEXT("Config/DefaultEngine.ini"));
		MountDefaultRoots();
		StartEditorRuntime();

		if (!FModuleManager::Get().LoadModule(FName(ModuleName)))
		{
			OutError = FString::Printf(TEXT("cannot load the module %s from '%s' (see the engine log)"), ModuleName, *GetModuleDir());
			StopEditorRuntime();
			return false;
		}
		bStarted = true;
		return true;
	}

	std::unique_ptr<FCorvaneLuaSession> FHeadlessEditor::CreateSession()
	{
		std::unique_ptr<FCorvaneLuaSession> Session = std::make_unique<FCorvaneLuaSession>();
		InstallHarnessLuaApi(Session->GetLua().lua_state(), Session->GetSessionData());
		return Session;
	}

	void FHeadlessEditor::Stop()
	{
		if (!bStarted)
		{
			return;
		}
		FModuleManager::Get().UnloadModulesAtShutdown();
		StopEditorRuntime();
		bStarted = false;
	}
}
