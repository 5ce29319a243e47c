#include "Headless/Environment.h"

#include "Headless/StringUtils.h"
#include "Misc/Paths.h"
#include "Templates/Tuple.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace
{
	struct FEnvironment
	{
		FString EngineDir;
		FString ProjectDir;
		FString ProjectName;
		FString ModuleDir;

		static FEnvironment& Get()
		{
			static FEnvironment Environment;
			return Environment;
		}
	};

	FString WithTrailingSlash(const FString& Dir)
	{
		FString Result = FPaths::ConvertRelativePathToFull(Dir);
		if (!Result.EndsWith(TEXT("/")))
		{
			Result += TEXT("/");
		}
		return Result;
	}
}

namespace UE::Headless
{
	FString GetExecutableDir()
	{
		static const FString Dir = []
		{
			char Buffer[4096];
			const ssize_t Length = readlink("/proc/self/exe", Buffer, sizeof(Buffer) - 1);
			if (Length <= 0)
			{
				return FString(TEXT("/"));
			}
			const std::filesystem::path Exe(std::string(Buffer, (size_t)Length));
			return FromUtf8(Exe.parent_path().string() + "/");
		}();
		return Dir;
	}

	void SetEngineDir(const FString& Dir)
	{
		FEnvironment::Get().EngineDir = WithTrailingSlash(Dir);
	}

	void SetProjectDir(const FString& Dir)
	{
		FEnvironment::Get().ProjectDir = WithTrailingSlash(Dir);
	}

	void SetProjectName(const FString& Name)
	{
		FEnvironment::Get().ProjectName = Name;
	}

	FString GetProjectName()
	{
		return FEnvironment::Get().ProjectName;
	}

	void SetModuleDir(const FString& Dir)
	{
		FEnvironment::Get().ModuleDir = WithTrailingSlash(Dir);
	}

	FString GetModuleDir()
	{
		const FString& Dir = FEnvironment::Get().ModuleDir;
		return Dir.IsEmpty() ? WithTrailingSlash(GetExecutableDir() + TEXT("../lib")) : Dir;
	}

	bool LoadConsoleVariablesFromIni(const FString& IniPath)
	{
		std::ifstream File(ToUtf8(IniPath));
		if (!File)
		{
			return false;
		}
		// Project settings ([/Script/Engine.RendererSettings]) are applied first; [ConsoleVariables] has the
		// higher priority and wins where both set a variable.
		enum class ESection
		{
			Other,
			RendererSettings,
			ConsoleVariables,
		};
		TArray<TPair<FString, FString>> Settings[2];
		ESection Section = ESection::Other;
		std::string Line;
		while (std::getline(File, Line))
		{
			const FString Text = FromUtf8(Line).TrimStartAndEnd();
			if (Text.IsEmpty() || Text.StartsWith(TEXT(";")) || Text.StartsWith(TEXT("#")))
			{
				continue;
			}
			if (Text.StartsWith(TEXT("[")))
			{
				Section = Text.Equals(TEXT("[ConsoleVariables]"), ESearchCase::IgnoreCase) ? ESection::ConsoleVariables
					: Text.Equals(TEXT("[/Script/Engine.RendererSettings]"), ESearchCase::IgnoreCase)                 ? ESection::RendererSettings
																													   : ESection::Other;
				continue;
			}
			FString Name;
			FString Value;
			if (Section != ESection::Other && Text.Split(TEXT("="), &Name, &Value))
			{
				Settings[Section == ESection::ConsoleVariables ? 1 : 0].Add(TPair<FString, FString>(Name.TrimStartAndEnd(), Value.TrimStartAndEnd()));
			}
		}
		for (const TArray<TPair<FString, FString>>& Entries : Settings)
		{
			for (const TPair<FString, FString>& Entry : Entries)
			{
				SetConsoleVariable(Entry.Key, Entry.Value);
			}
		}
		return true;
	}
}

FString FPaths::EngineDir()
{
	const FString& Dir = FEnvironment::Get().EngineDir;
	return Dir.IsEmpty() ? WithTrailingSlash(UE::Headless::GetExecutableDir() + TEXT("../Engine")) : Dir;
}

FString FPaths::EngineContentDir()
{
	return EngineDir() + TEXT("Content/");
}

FString FPaths::ProjectDir()
{
	const FString& Dir = FEnvironment::Get().ProjectDir;
	return Dir.IsEmpty() ? WithTrailingSlash(UE::Headless::FromUtf8(std::filesystem::current_path().string())) : Dir;
}

FString FPaths::ProjectContentDir()
{
	return ProjectDir() + TEXT("Content/");
}

FString FPaths::ProjectConfigDir()
{
	return ProjectDir() + TEXT("Config/");
}

FString FPaths::ProjectSavedDir()
{
	return ProjectDir() + TEXT("Saved/");
}

