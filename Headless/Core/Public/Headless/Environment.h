// Harness-only set-up of the folders the engine reads: the engine folder, the project and module libraries.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// The folder of the running executable, ending with '/'.
	CORE_API FString GetExecutableDir();

	// Defaults to "<executable folder>/../Engine/".
	CORE_API void SetEngineDir(const FString& Dir);
	CORE_API void SetProjectDir(const FString& Dir);
	CORE_API void SetProjectName(const FString& Name);
	CORE_API FString GetProjectName();

	// Where FModuleManager finds module libraries; defaults to "<executable folder>/../lib/".
	CORE_API void SetModuleDir(const FString& Dir);
	CORE_API FString GetModuleDir();

	// Sets a console variable as a project setting would, read-only ones included; a variable that is not
	// registered yet takes the value when it registers. False for an empty name.
	CORE_API bool SetConsoleVariable(const FString& Name, const FString& Value);

	// Puts every registered console variable back to its default and forgets pending values.
	CORE_API void ResetConsoleVariables();

	// Applies the console variables an engine ini sets: those of [/Script/Engine.RendererSettings] (project
	// settings), then those of [ConsoleVariables], which win. False when the file cannot be read.
	CORE_API bool LoadConsoleVariablesFromIni(const FString& IniPath);
}
