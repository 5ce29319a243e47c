#include "Misc/PackageName.h"

#include "Headless/PackageFiles.h"
#include "Headless/PackageFileStore.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"
#include "UObject/NameTypes.h"

DEFINE_LOG_CATEGORY_STATIC(LogPackageName, Log, All);

namespace
{
	constexpr int32 MinPackageNameLength = 4;

	struct FMountPoint
	{
		FString RootPath;
		FString ContentPath;
		bool bReadOnly = false;
	};

	TArray<FMountPoint>& MountPoints()
	{
		static TArray<FMountPoint> Points;
		return Points;
	}

	// The mount point with the longest root that begins the name; roots match ignoring case.
	const FMountPoint* FindClosestMount(FStringView Name)
	{
		const FMountPoint* Best = nullptr;
		for (const FMountPoint& Point : MountPoints())
		{
			if (Name.StartsWith(FStringView(*Point.RootPath, Point.RootPath.Len()), ESearchCase::IgnoreCase)
				&& (!Best || Point.RootPath.Len() > Best->RootPath.Len()))
			{
				Best = &Point;
			}
		}
		return Best;
	}

	bool ContainsAny(FStringView Text, const TCHAR* Characters)
	{
		for (const TCHAR Char : Text)
		{
			if (FCString::Strchr(Characters, Char) && Char != 0)
			{
				return true;
			}
		}
		return false;
	}

	bool ContainsDoubleSlash(FStringView Text)
	{
		for (int32 Index = 1; Index < Text.Len(); ++Index)
		{
			if (Text[Index] == TEXT('/') && Text[Index - 1] == TEXT('/'))
			{
				return true;
			}
		}
		return false;
	}

	FString JoinedRoots(bool bIncludeReadOnlyRoots)
	{
		TArray<FString> Roots;
		FPackageName::QueryRootContentPaths(Roots, bIncludeReadOnlyRoots);
		if (bIncludeReadOnlyRoots)
		{
			Roots.Add(TEXT("/Memory/"));
		}
		return Roots.Num() ? FString::Join(Roots, TEXT(", ")) : FString(TEXT("No valid roots exist!"));
	}
}

bool FPackageName::IsValidTextForLongPackageName(FStringView InLongPackageName, EErrorCode* OutReason)
{
	auto Fail = [OutReason](EErrorCode Code)
	{
		if (OutReason)
		{
			*OutReason = Code;
		}
		return false;
	};
	if (InLongPackageName.Len() < MinPackageNameLength)
	{
		return Fail(EErrorCode::LongPackageNames_PathTooShort);
	}
	if (InLongPackageName[0] != TEXT('/'))
	{
		return Fail(EErrorCode::LongPackageNames_PathWithNoStartingSlash);
	}
	if (InLongPackageName[InLongPackageName.Len() - 1] == TEXT('/'))
	{
		return Fail(EErrorCode::LongPackageNames_PathWithTrailingSlash);
	}
	if (ContainsDoubleSlash(InLongPackageName))
	{
		return Fail(EErrorCode::LongPackageNames_PathWithDoubleSlash);
	}
	if (ContainsAny(InLongPackageName, INVALID_LONGPACKAGE_CHARACTERS))
	{
		return Fail(EErrorCode::PackageNameContainsInvalidCharacters);
	}
	return true;
}

bool FPackageName::IsValidTextForLongPackageName(FStringView InLongPackageName, FText* OutReason)
{
	EErrorCode Code = EErrorCode::PackageNameUnknown;
	const bool bValid = IsValidTextForLongPackageName(InLongPackageName, &Code);
	if (!bValid && OutReason)
	{
		*OutReason = FormatErrorAsText(InLongPackageName, Code);
	}
	return bValid;
}

bool FPackageName::IsValidLongPackageName(FStringView InLongPackageName, bool bIncludeReadOnlyRoots, EErrorCode* OutReason)
{
	if (!IsValidTextForLongPackageName(InLongPackageName, OutReason))
	{
		return false;
	}
	const FMountPoint* Mount = FindClosestMount(InLongPackageName);
	if (Mount && (bIncludeReadOnlyRoots || !Mount->bReadOnly))
	{
		return true;
	}
	if (!Mount && bIncludeReadOnlyRoots && InLongPackageName.StartsWith(TEXT("/Memory/"), ESearchCase::IgnoreCase))
	{
		return true;
	}
	if (OutReason)
	{
		*OutReason = EErrorCode::PackageNamePathNotMounted;
	}
	return false;
}

bool FPackageName::IsValidLongPackageName(FStringView InLongPackageName, bool bIncludeReadOnlyRoots, FText* OutReason)
{
	EErrorCode Code = EErrorCode::PackageNameUnknown;
	if (IsValidLongPackageName(InLongPackageName, bIncludeReadOnlyRoots, &Code))
	{
		return true;
	}
	if (OutReason)
	{
		if (Code == EErrorCode::PackageNamePathNotMounted)
		{
			*OutReason = FText::FromString(
				FString::Printf(TEXT("Path does not start with a valid root. Path must begin with one of: %s"), *JoinedRoots(bIncludeReadOnlyRoots)));
		}
		else
		{
			*OutReason = FormatErrorAsText(InLongPackageName, Code);
		}
	}
	return false;
}

FText FPackageName::FormatErrorAsText(FStringView InPath, EErrorCode ErrorCode)
{
	const FString Path(InPath);
	switch (ErrorCode)
	{
	case EErrorCode::PackageNameUnknown:
		return FText::FromString(FString::Printf(TEXT("Input '%s' caused undocumented internal error."), *Path));
	case EErrorCode::PackageNameEmptyPath:
		return FText::FromString(FString::Printf(TEXT("Input '%s' was empty."), *Path));
	case EErrorCode::PackageNamePathNotMounted:
		return FText::FromString(FString::Printf(TEXT("Input '%s' is not a child of an existing mount point."), *Path));
	case EErrorCode::PackageNamePathIsMemoryOnly:
		return FText::FromString(FString::Printf(TEXT("Input '%s' is in a memory-only mount point."), *Path));
	case EErrorCode::PackageNameSpacesNotAllowed:
		return FText::FromString(FString::Printf(
			TEXT("Input '%s' includes a space. A space is not valid in ObjectPaths unless it is delimiting a ClassName in a full ObjectPath, and full ObjectPaths are not supported in this function."),
			*Path));
	case EErrorCode::PackageNameContainsInvalidCharacters:
		return FText::FromString(FString::Printf(TEXT("Input '%s' contains one of the invalid characters for LongPackageNames: '%s'."), *Path,
			INVALID_LONGPACKAGE_CHARACTERS));
	case EErrorCode::LongPackageNames_PathTooShort:
		return FText::FromString(
			FString::Printf(TEXT("Input '%s' contains fewer than the minimum number of characters %d for LongPackageNames."), *Path, MinPackageNameLength));
	case EErrorCode::LongPackageNames_PathWithNoStartingSlash:
		return FText::FromString(FString::Printf(TEXT("Input '%s' does not start with a '/', which is required for LongPackageNames."), *Path));
	case EErrorCode::LongPackageNames_PathWithTrailingSlash:
		return FText::FromString(FString::Printf(TEXT("Input '%s' ends with a '/', which is invalid for LongPackageNames."), *Path));
	case EErrorCode::LongPackageNames_PathWithDoubleSlash:
		return FText::FromString(FString::Printf(TEXT("Input '%s' contains '//', which is invalid for LongPackageNames."), *Path));
	default:
		return FText::FromString(FString::Printf(TEXT("Input '%s caused undocumented internal error."), *Path));
	}
}

FString FPackageName::FormatErrorAsString(FStringView InPath, EErrorCode ErrorCode)
{
	return FormatErrorAsText(InPath, ErrorCode).ToString();
}

bool FPackageName::TryConvertLongPackageNameToFilename(const FString& InLongPackageName, FString& OutFilename, const FString& InExtension)
{
	return TryConvertLongPackageNameToFilename(FStringView(*InLongPackageName, InLongPackageName.Len()), OutFilename,
		FStringView(*InExtension, InExtension.Len()));
}

bool FPackageName::TryConvertLongPackageNameToFilename(FStringView InLongPackageName, FString& OutFilename, FStringView InExtension)
{
	const FMountPoint* Mount = FindClosestMount(InLongPackageName);
	if (!Mount)
	{
		return false;
	}
	OutFilename = Mount->ContentPath;
	OutFilename.Append(InLongPackageName.RightChop(Mount->RootPath.Len()));
	OutFilename.Append(InExtension);
	return true;
}

bool FPackageName::TryConvertFilenameToLongPackageName(const FString& InFilename, FString& OutPackageName, FString* OutFailureReason)
{
	const FString Full = FPaths::ConvertRelativePathToFull(InFilename);
	const FMountPoint* Best = nullptr;
	for (const FMountPoint& Point : MountPoints())
	{
		const FString Content = FPaths::ConvertRelativePathToFull(Point.ContentPath);
		if (Full.StartsWith(Content, ESearchCase::CaseSensitive) && (!Best || Point.ContentPath.Len() > Best->ContentPath.Len()))
		{
			Best = &Point;
		}
	}
	if (!Best)
	{
		if (OutFailureReason)
		{
			*OutFailureReason = FString::Printf(TEXT("'%s' is not under any mounted content folder"), *InFilename);
		}
		return false;
	}
	FString Relative = Full.RightChop(FPaths::ConvertRelativePathToFull(Best->ContentPath).Len());
	if (Relative.EndsWith(GetAssetPackageExtension()))
	{
		Relative = Relative.LeftChop(GetAssetPackageExtension().Len());
	}
	OutPackageName = Best->RootPath + Relative;
	return true;
}

FString FPackageName::LongPackageNameToFilename(const FString& InLongPackageName, const FString& InExtension)
{
	FString Result;
	if (!TryConvertLongPackageNameToFilename(InLongPackageName, Result, InExtension))
	{
		UE_LOG(LogPackageName, Warning, TEXT("LongPackageNameToFilename failed to convert '%s'. Path does not map to any roots."), *InLongPackageName);
	}
	return Result;
}

FString FPackageName::GetLongPackageAssetName(const FString& InLongPackageName)
{
	int32 Slash = INDEX_NONE;
	return InLongPackageName.FindLastChar(TEXT('/'), Slash) ? InLongPackageName.RightChop(Slash + 1) : InLongPackageName;
}

FString FPackageName::GetLongPackagePath(const FString& InLongPackageName)
{
	int32 Slash = INDEX_NONE;
	return InLongPackageName.FindLastChar(TEXT('/'), Slash) ? InLongPackageName.Left(Slash) : InLongPackageName;
}

FString FPackageName::GetShortName(const FString& LongName)
{
	FString Name = GetLongPackageAssetName(LongName);
	int32 Dot = INDEX_NONE;
	if (Name.FindChar(TEXT('.'), Dot))
	{
		Name = Name.Left(Dot);
	}
	return Name;
}

FString FPackageName::ObjectPathToPackageName(const FString& InObjectPath)
{
	int32 Dot = INDEX_NONE;
	return InObjectPath.FindChar(TEXT('.'), Dot) ? InObjectPath.Left(Dot) : InObjectPath;
}

bool FPackageName::IsShortPackageName(FStringView PossiblyLongName)
{
	for (const TCHAR Char : PossiblyLongName)
	{
		if (Char == TEXT('/'))
		{
			return false;
		}
	}
	return true;
}

bool FPackageName::DoesPackageExist(const FString& LongPackageName, FString* OutFilename, bool InAllowTextFormats)
{
	EErrorCode Reason = EErrorCode::PackageNameUnknown;
	if (!IsValidLongPackageName(LongPackageName, true, &Reason))
	{
		UE_LOG(LogPackageName, Warning, TEXT("DoesPackageExist called on PackageName that will always return false. Reason: %s"),
			*FormatErrorAsString(LongPackageName, Reason));
		return false;
	}
	if (LongPackageName.StartsWith(TEXT("/Script/")) || LongPackageName.StartsWith(TEXT("/Memory/")))
	{
		return false;
	}
	FString Filename;
	if (!TryConvertLongPackageNameToFilename(LongPackageName, Filename, GetAssetPackageExtension()))
	{
		return false;
	}
	const FString Existing = UE::Headless::FindPathIgnoringCase(Filename);
	if (Existing.IsEmpty() || !FPaths::FileExists(Existing))
	{
		return false;
	}
	if (OutFilename)
	{
		*OutFilename = Existing;
	}
	return true;
}

const FString& FPackageName::GetAssetPackageExtension()
{
	static const FString Extension(TEXT(".uasset.json"));
	return Extension;
}

void FPackageName::RegisterMountPoint(const FString& RootPath, const FString& ContentPath)
{
	UnRegisterMountPoint(RootPath, ContentPath);
	FMountPoint Point;
	Point.RootPath = RootPath;
	Point.ContentPath = ContentPath;
	Point.bReadOnly = RootPath.Equals(TEXT("/Script/"), ESearchCase::IgnoreCase) || RootPath.Equals(TEXT("/Temp/"), ESearchCase::IgnoreCase)
		|| RootPath.Equals(TEXT("/Config/"), ESearchCase::IgnoreCase);
	const bool bEngineRoot = RootPath.Equals(TEXT("/Engine/"), ESearchCase::IgnoreCase) || RootPath.Equals(TEXT("/Game/"), ESearchCase::IgnoreCase) || Point.bReadOnly;
	// Plugin roots go to the front of the list, as the engine inserts them.
	if (bEngineRoot)
	{
		MountPoints().Add(Point);
	}
	else
	{
		MountPoints().Insert(Point, 0);
	}
}

void FPackageName::UnRegisterMountPoint(const FString& RootPath, const FString& ContentPath)
{
	MountPoints().RemoveAll([&RootPath](const FMountPoint& Point) { return Point.RootPath.Equals(RootPath, ESearchCase::IgnoreCase); });
}

bool FPackageName::MountPointExists(FStringView RootPath)
{
	return MountPoints().ContainsByPredicate([RootPath](const FMountPoint& Point)
	{
		return FStringView(*Point.RootPath, Point.RootPath.Len()).Equals(RootPath, ESearchCase::IgnoreCase);
	});
}

void FPackageName::QueryRootContentPaths(TArray<FString>& OutRootContentPaths, bool bIncludeReadOnlyRoots)
{
	OutRootContentPaths.Reset();
	for (const FMountPoint& Point : MountPoints())
	{
		if (bIncludeReadOnlyRoots || !Point.bReadOnly)
		{
			OutRootContentPaths.Add(Point.RootPath);
		}
	}
}

namespace UE::Headless
{
	void MountDefaultRoots()
	{
		MountPoints().Empty();
		FPackageName::RegisterMountPoint(TEXT("/Engine/"), FPaths::EngineContentDir());
		FPackageName::RegisterMountPoint(TEXT("/Game/"), FPaths::ProjectContentDir());
		FPackageName::RegisterMountPoint(TEXT("/Script/"), FPaths::ProjectDir() + TEXT("Script/"));
		FPackageName::RegisterMountPoint(TEXT("/Temp/"), FPaths::ProjectSavedDir());
		FPackageName::RegisterMountPoint(TEXT("/Config/"), FPaths::ProjectConfigDir());
	}
}
