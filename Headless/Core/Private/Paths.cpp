#include "Misc/Paths.h"

#include "Headless/Environment.h"
#include "Headless/StringUtils.h"

#include <filesystem>

FString FPaths::ConvertRelativePathToFull(const FString& InPath)
{
	return ConvertRelativePathToFull(UE::Headless::GetExecutableDir(), InPath);
}

FString FPaths::ConvertRelativePathToFull(const FString& BasePath, const FString& InPath)
{
	FString Full = InPath.Replace(TEXT("\\"), TEXT("/"));
	if (IsRelative(Full))
	{
		FString Base = BasePath.Replace(TEXT("\\"), TEXT("/"));
		Full = Base / *Full;
	}
	CollapseRelativeDirectories(Full);
	if (Full.IsEmpty())
	{
		Full = TEXT("/");
	}
	return Full;
}

bool FPaths::IsRelative(const FString& InPath)
{
	return !InPath.StartsWith(TEXT("/"));
}

bool FPaths::IsUnderDirectory(const FString& InPath, const FString& InDirectory)
{
	const FString Path = ConvertRelativePathToFull(InPath);
	FString Directory = ConvertRelativePathToFull(InDirectory);
	if (Directory.EndsWith(TEXT("/")))
	{
		Directory = Directory.LeftChop(1);
	}
	if (!Path.StartsWith(Directory, ESearchCase::CaseSensitive) && !(Directory.IsEmpty()))
	{
		return false;
	}
	return Path.Len() == Directory.Len() || Path[Directory.Len()] == TEXT('/');
}

bool FPaths::IsSamePath(const FString& PathA, const FString& PathB)
{
	FString A = ConvertRelativePathToFull(PathA);
	FString B = ConvertRelativePathToFull(PathB);
	NormalizeDirectoryName(A);
	NormalizeDirectoryName(B);
	return A.Equals(B, ESearchCase::CaseSensitive);
}

void FPaths::NormalizeFilename(FString& InPath)
{
	InPath = InPath.Replace(TEXT("\\"), TEXT("/"));
}

void FPaths::NormalizeDirectoryName(FString& InPath)
{
	NormalizeFilename(InPath);
	while (InPath.Len() > 1 && InPath.EndsWith(TEXT("/")))
	{
		InPath = InPath.LeftChop(1);
	}
}

bool FPaths::CollapseRelativeDirectories(FString& InPath)
{
	const bool bAbsolute = InPath.StartsWith(TEXT("/"));
	const bool bTrailingSlash = InPath.EndsWith(TEXT("/"));
	TArray<FString> Parts;
	InPath.ParseIntoArray(Parts, TEXT("/"), true);
	TArray<FString> Kept;
	for (const FString& Part : Parts)
	{
		if (Part.Equals(TEXT(".")))
		{
			continue;
		}
		if (Part.Equals(TEXT("..")))
		{
			if (Kept.Num() == 0 || Kept.Last().Equals(TEXT("..")))
			{
				if (bAbsolute)
				{
					return false;
				}
				Kept.Add(Part);
			}
			else
			{
				Kept.Pop();
			}
			continue;
		}
		Kept.Add(Part);
	}
	FString Result = bAbsolute ? FString(TEXT("/")) : FString();
	Result += FString::Join(Kept, TEXT("/"));
	if (bTrailingSlash && Kept.Num() > 0)
	{
		Result += TEXT("/");
	}
	InPath = Result;
	return true;
}

FString FPaths::GetCleanFilename(const FString& InPath)
{
	int32 Slash = INDEX_NONE;
	FString Normalized = InPath.Replace(TEXT("\\"), TEXT("/"));
	return Normalized.FindLastChar(TEXT('/'), Slash) ? Normalized.RightChop(Slash + 1) : Normalized;
}

FString FPaths::GetBaseFilename(const FString& InPath, bool bRemovePath)
{
	FString Name = bRemovePath ? GetCleanFilename(InPath) : InPath;
	int32 Dot = INDEX_NONE;
	if (Name.FindLastChar(TEXT('.'), Dot))
	{
		int32 Slash = INDEX_NONE;
		Name.FindLastChar(TEXT('/'), Slash);
		if (Dot > Slash)
		{
			Name = Name.Left(Dot);
		}
	}
	return Name;
}

FString FPaths::GetPath(const FString& InPath)
{
	int32 Slash = INDEX_NONE;
	FString Normalized = InPath.Replace(TEXT("\\"), TEXT("/"));
	return Normalized.FindLastChar(TEXT('/'), Slash) ? Normalized.Left(Slash) : FString();
}

FString FPaths::GetExtension(const FString& InPath, bool bIncludeDot)
{
	const FString Filename = GetCleanFilename(InPath);
	int32 Dot = INDEX_NONE;
	if (Filename.FindLastChar(TEXT('.'), Dot))
	{
		return Filename.RightChop(bIncludeDot ? Dot : Dot + 1);
	}
	return FString();
}

bool FPaths::FileExists(const FString& InPath)
{
	std::error_code Error;
	return std::filesystem::is_regular_file(UE::Headless::ToUtf8(InPath), Error);
}

bool FPaths::DirectoryExists(const FString& InPath)
{
	std::error_code Error;
	return std::filesystem::is_directory(UE::Headless::ToUtf8(InPath), Error);
}

FString FPaths::Combine(const FString& A, const FString& B)
{
	return A / B;
}

FString FPaths::Combine(const FString& A, const FString& B, const FString& C)
{
	return A / B / C;
}
