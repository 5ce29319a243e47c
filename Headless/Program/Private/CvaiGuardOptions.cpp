#include "CvaiGuardOptions.h"

#include "CvaiExitCodes.h"
#include "Headless/StringUtils.h"
#include "Misc/Paths.h"

#include <cstdio>
#include <filesystem>

#include <unistd.h>

namespace UE::Headless::Cvai
{
	bool IsMegabytes(const std::string& Value)
	{
		return IsSeconds(Value) && std::stod(Value) > 0;
	}

	void ApplyGuardOptions(const FCommandLine& CommandLine, FCorvaneLuaSession& Session, const std::string& Script)
	{
		// The parser let through only numbers.
		FLuaGuardLimits Limits;
		Limits.TimeoutSeconds = std::stod(CommandLine.Get(TimeoutOption.Name, "0"));
		Limits.MaxMemoryMegabytes = std::stod(CommandLine.Get(MaxMemoryOption.Name, "0"));
		// A native call that does not return, a finalizer (Lua runs no hook in one) or a script that removed the hook
		// cannot be stopped between instructions. Saves write a temporary file and rename it into place, so ending the
		// process leaves every package file whole.
		Limits.OnStuck = [](const char* Message)
		{
			std::fprintf(stderr, "%s\ncvai: the script could not be stopped between two instructions; the process was ended\n", Message);
			std::fflush(stderr);
			_exit(ExitTimeout);
		};
		Session.SetGuards(Limits);
		if (CommandLine.Has(SandboxOption.Name))
		{
			std::error_code Error;
			const std::filesystem::path ScriptPath = std::filesystem::absolute(Script, Error);
			Session.ApplySandbox(FLuaSandboxFolders{ ToUtf8(FPaths::ProjectDir()), ScriptPath.parent_path().string() });
		}
	}

	int GuardExitStatus(ELuaGuard Guard)
	{
		switch (Guard)
		{
		case ELuaGuard::Timeout:
			return ExitTimeout;
		case ELuaGuard::MemoryLimit:
			return ExitMemoryLimit;
		case ELuaGuard::None:
			break;
		}
		return ExitOk;
	}
}
