// Long package names ("/Game/Meshes/SM_Rock") and their mapping to files through mount points.
#pragma once

#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "Internationalization/Text.h"

class FPackageName
{
public:
	enum class EErrorCode
	{
		PackageNameUnknown,
		PackageNameEmptyPath,
		PackageNamePathNotMounted,
		PackageNamePathIsMemoryOnly,
		PackageNameSpacesNotAllowed,
		PackageNameContainsInvalidCharacters,
		LongPackageNames_PathTooShort,
		LongPackageNames_PathWithNoStartingSlash,
		LongPackageNames_PathWithTrailingSlash,
		LongPackageNames_PathWithDoubleSlash,
	};

	static COREUOBJECT_API bool IsValidLongPackageName(FStringView InLongPackageName, bool bIncludeReadOnlyRoots = false, EErrorCode* OutReason = nullptr);
	static COREUOBJECT_API bool IsValidLongPackageName(FStringView InLongPackageName, bool bIncludeReadOnlyRoots, FText* OutReason);
	static COREUOBJECT_API bool IsValidTextForLongPackageName(FStringView InLongPackageName, EErrorCode* OutReason = nullptr);
	static COREUOBJECT_API bool IsValidTextForLongPackageName(FStringView InLongPackageName, FText* OutReason);
	static COREUOBJECT_API FText FormatErrorAsText(FStringView InPath, EErrorCode ErrorCode);
	static COREUOBJECT_API FString FormatErrorAsString(FStringView InPath, EErrorCode ErrorCode);

	// The file of a package under its mount point's folder, with the extension appended as given; false
	// when no mount point holds the name. Characters are not checked.
	static COREUOBJECT_API bool TryConvertLongPackageNameToFilename(const FString& InLongPackageName, FString& OutFilename, const FString& InExtension = TEXT(""));
	static COREUOBJECT_API bool TryConvertLongPackageNameToFilename(FStringView InLongPackageName, FString& OutFilename, FStringView InExtension = {});
	// The package that a file under a mount point's folder holds, the extension of package files removed.
	static COREUOBJECT_API bool TryConvertFilenameToLongPackageName(const FString& InFilename, FString& OutPackageName, FString* OutFailureReason = nullptr);
	static COREUOBJECT_API FString LongPackageNameToFilename(const FString& InLongPackageName, const FString& InExtension = TEXT(""));

	// The text after the last '/'.
	static COREUOBJECT_API FString GetLongPackageAssetName(const FString& InLongPackageName);
	// The text before the last '/'.
	static COREUOBJECT_API FString GetLongPackagePath(const FString& InLongPackageName);
	static COREUOBJECT_API FString GetShortName(const FString& LongName);
	static COREUOBJECT_API FString ObjectPathToPackageName(const FString& InObjectPath);
	static COREUOBJECT_API bool IsShortPackageName(FStringView PossiblyLongName);

	// True when the package has a file on disk (found ignoring letter case); packages that exist only in
	// memory are not found.
	static COREUOBJECT_API bool DoesPackageExist(const FString& LongPackageName, FString* OutFilename = nullptr, bool InAllowTextFormats = true);

	// The extension of this build's package files, which are JSON documents.
	static COREUOBJECT_API const FString& GetAssetPackageExtension();

	static COREUOBJECT_API void RegisterMountPoint(const FString& RootPath, const FString& ContentPath);
	static COREUOBJECT_API void UnRegisterMountPoint(const FString& RootPath, const FString& ContentPath);
	static COREUOBJECT_API bool MountPointExists(FStringView RootPath);
	static COREUOBJECT_API void QueryRootContentPaths(TArray<FString>& OutRootContentPaths, bool bIncludeReadOnlyRoots = false);
};
