// File system paths of the engine and the project.
#pragma once

#include "Containers/UnrealString.h"

class FPaths
{
public:
	// Folders end with '/'.
	[[nodiscard]] static CORE_API FString EngineDir();
	[[nodiscard]] static CORE_API FString EngineContentDir();
	[[nodiscard]] static CORE_API FString ProjectDir();
	[[nodiscard]] static CORE_API FString ProjectContentDir();
	[[nodiscard]] static CORE_API FString ProjectConfigDir();
	[[nodiscard]] static CORE_API FString ProjectSavedDir();

	// Makes a path absolute against the executable's folder (the engine's base folder), turns '\' into '/' and collapses "." and "..".
	[[nodiscard]] static CORE_API FString ConvertRelativePathToFull(const FString& InPath);
	[[nodiscard]] static CORE_API FString ConvertRelativePathToFull(const FString& BasePath, const FString& InPath);

	// True when InPath is InDirectory or lies inside it; compares case-sensitively, as on Linux.
	[[nodiscard]] static CORE_API bool IsUnderDirectory(const FString& InPath, const FString& InDirectory);
	[[nodiscard]] static CORE_API bool IsSamePath(const FString& PathA, const FString& PathB);
	[[nodiscard]] static CORE_API bool IsRelative(const FString& InPath);

	static CORE_API void NormalizeFilename(FString& InPath);
	static CORE_API void NormalizeDirectoryName(FString& InPath);
	static CORE_API bool CollapseRelativeDirectories(FString& InPath);

	[[nodiscard]] static CORE_API FString GetCleanFilename(const FString& InPath);
	[[nodiscard]] static CORE_API FString GetBaseFilename(const FString& InPath, bool bRemovePath = true);
	[[nodiscard]] static CORE_API FString GetPath(const FString& InPath);
	[[nodiscard]] static CORE_API FString GetExtension(const FString& InPath, bool bIncludeDot = false);

	[[nodiscard]] static CORE_API bool FileExists(const FString& InPath);
	[[nodiscard]] static CORE_API bool DirectoryExists(const FString& InPath);

	[[nodiscard]] static CORE_API FString Combine(const FString& A, const FString& B);
	[[nodiscard]] static CORE_API FString Combine(const FString& A, const FString& B, const FString& C);
};
