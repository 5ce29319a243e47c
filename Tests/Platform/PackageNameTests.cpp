// FPackageName: text checks and their reasons, mount points, file names and the search for package files.
#include "PlatformTestUtils.h"
#include "TestProject.h"

#include "Misc/PackageName.h"
#include "Misc/Paths.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

using PlatformTest::Utf8;
using EErrorCode = FPackageName::EErrorCode;

namespace
{
	const std::string InvalidCharacters = "\\:*?\"<>|' ,.&!~\n\r\t@#";
}

TEST(PackageName, TextChecksRunInOrderAndGiveTheEngineReasons)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	const struct
	{
		const TCHAR* Name;
		EErrorCode Code;
		std::string Reason;
	} Cases[] = {
		{ TEXT(""), EErrorCode::LongPackageNames_PathTooShort, "Input '' contains fewer than the minimum number of characters 4 for LongPackageNames." },
		{ TEXT("/ab"), EErrorCode::LongPackageNames_PathTooShort, "Input '/ab' contains fewer than the minimum number of characters 4 for LongPackageNames." },
		{ TEXT("Rock/"), EErrorCode::LongPackageNames_PathWithNoStartingSlash, "Input 'Rock/' does not start with a '/', which is required for LongPackageNames." },
		{ TEXT("/Game//Rock/"), EErrorCode::LongPackageNames_PathWithTrailingSlash, "Input '/Game//Rock/' ends with a '/', which is invalid for LongPackageNames." },
		{ TEXT("/Game//Big Rock"), EErrorCode::LongPackageNames_PathWithDoubleSlash, "Input '/Game//Big Rock' contains '//', which is invalid for LongPackageNames." },
		{ TEXT("/Game/Big Rock"), EErrorCode::PackageNameContainsInvalidCharacters,
			"Input '/Game/Big Rock' contains one of the invalid characters for LongPackageNames: '" + InvalidCharacters + "'." },
		{ TEXT("/Game/../Rock"), EErrorCode::PackageNameContainsInvalidCharacters,
			"Input '/Game/../Rock' contains one of the invalid characters for LongPackageNames: '" + InvalidCharacters + "'." },
	};
	for (const auto& Case : Cases)
	{
		EErrorCode Code = EErrorCode::PackageNameUnknown;
		EXPECT_FALSE(FPackageName::IsValidTextForLongPackageName(Case.Name, &Code)) << Utf8(FString(Case.Name));
		EXPECT_EQ(Code, Case.Code) << Utf8(FString(Case.Name));
		FText Reason;
		EXPECT_FALSE(FPackageName::IsValidLongPackageName(Case.Name, true, &Reason));
		EXPECT_EQ(Utf8(Reason), Case.Reason);
	}
	EXPECT_TRUE(FPackageName::IsValidTextForLongPackageName(TEXT("/abc")) && FPackageName::IsValidTextForLongPackageName(TEXT("/Nowhere/Rock_01-x")));

	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT("/Nope/A"), EErrorCode::PackageNamePathNotMounted)),
		"Input '/Nope/A' is not a child of an existing mount point.");
	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT(""), EErrorCode::PackageNameEmptyPath)), "Input '' was empty.");
	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT("/Memory/A"), EErrorCode::PackageNamePathIsMemoryOnly)),
		"Input '/Memory/A' is in a memory-only mount point.");
	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT("/X/A"), EErrorCode::PackageNameUnknown)), "Input '/X/A' caused undocumented internal error.");
	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT("/Game/A B"), EErrorCode::PackageNameSpacesNotAllowed)),
		"Input '/Game/A B' includes a space. A space is not valid in ObjectPaths unless it is delimiting a ClassName in a full ObjectPath, and full "
		"ObjectPaths are not supported in this function.");
	EXPECT_EQ(Utf8(FPackageName::FormatErrorAsString(TEXT("/X/A"), (EErrorCode)99)), "Input '/X/A caused undocumented internal error.");
}

TEST(PackageName, MountPointsAndReadOnlyRoots)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());

	FText Reason;
	EXPECT_FALSE(FPackageName::IsValidLongPackageName(TEXT("/Nope/Rock"), false, &Reason));
	EXPECT_EQ(Utf8(Reason), "Path does not start with a valid root. Path must begin with one of: /Engine/, /Game/");
	EXPECT_FALSE(FPackageName::IsValidLongPackageName(TEXT("/Nope/Rock"), true, &Reason));
	EXPECT_EQ(Utf8(Reason), "Path does not start with a valid root. Path must begin with one of: /Engine/, /Game/, /Script/, /Temp/, /Config/, /Memory/");
	EErrorCode Code = EErrorCode::PackageNameUnknown;
	EXPECT_FALSE(FPackageName::IsValidLongPackageName(TEXT("/Nope/Rock"), false, &Code));
	EXPECT_EQ(Code, EErrorCode::PackageNamePathNotMounted);

	// The read-only roots count only when asked for; /Memory/ is no mount but is then accepted too.
	for (const TCHAR* Name : { TEXT("/Temp/Rock"), TEXT("/Script/Engine"), TEXT("/Config/Rock"), TEXT("/Memory/Rock") })
	{
		EXPECT_FALSE(FPackageName::IsValidLongPackageName(Name, false, &Reason)) << Utf8(FString(Name));
		EXPECT_EQ(Utf8(Reason), "Path does not start with a valid root. Path must begin with one of: /Engine/, /Game/");
		EXPECT_TRUE(FPackageName::IsValidLongPackageName(Name, true)) << Utf8(FString(Name));
	}
	EXPECT_TRUE(FPackageName::IsValidLongPackageName(TEXT("/Game/Rock")) && FPackageName::IsValidLongPackageName(TEXT("/Engine/BasicShapes/Cube")));
	EXPECT_FALSE(FPackageName::IsValidLongPackageName(TEXT("/Gamer/Rock")));

	// A plugin root goes to the front of the list.
	FPackageName::RegisterMountPoint(TEXT("/HeadlessPlugin/"), Project.GetDir() + TEXT("/Plugins/HeadlessPlugin/Content/"));
	EXPECT_TRUE(FPackageName::MountPointExists(TEXT("/headlessplugin/")));
	EXPECT_TRUE(FPackageName::IsValidLongPackageName(TEXT("/HeadlessPlugin/Rock")));
	EXPECT_FALSE(FPackageName::IsValidLongPackageName(TEXT("/Nope/Rock"), false, &Reason));
	EXPECT_EQ(Utf8(Reason), "Path does not start with a valid root. Path must begin with one of: /HeadlessPlugin/, /Engine/, /Game/");
	FPackageName::UnRegisterMountPoint(TEXT("/HeadlessPlugin/"), FString());
	EXPECT_FALSE(FPackageName::MountPointExists(TEXT("/HeadlessPlugin/")));
	TArray<FString> Roots;
	FPackageName::QueryRootContentPaths(Roots, true);
	EXPECT_EQ(Utf8(FString::Join(Roots, TEXT(","))), "/Engine/,/Game/,/Script/,/Temp/,/Config/");
}

TEST(PackageName, FileNamesFollowTheMountPoints)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	FString Filename;
	ASSERT_TRUE(FPackageName::TryConvertLongPackageNameToFilename(FString(TEXT("/Game/Dir/Rock")), Filename, FString(TEXT(".uasset"))));
	EXPECT_EQ(Utf8(Filename), Utf8(Project.GetDir() + TEXT("/Content/Dir/Rock.uasset")));
	ASSERT_TRUE(FPackageName::TryConvertLongPackageNameToFilename(FString(TEXT("/Temp/Logs/Run")), Filename));
	EXPECT_EQ(Utf8(Filename), Utf8(Project.GetDir() + TEXT("/Saved/Logs/Run")));
	ASSERT_TRUE(FPackageName::TryConvertLongPackageNameToFilename(FString(TEXT("/Engine/BasicShapes/Cube")), Filename));
	EXPECT_EQ(Utf8(Filename), Utf8(FPaths::EngineContentDir() + TEXT("BasicShapes/Cube")));
	// The characters are not checked.
	ASSERT_TRUE(FPackageName::TryConvertLongPackageNameToFilename(FString(TEXT("/Game/Big Rock")), Filename));
	EXPECT_EQ(Utf8(Filename), Utf8(Project.GetDir() + TEXT("/Content/Big Rock")));
	Filename = TEXT("unchanged");
	for (const TCHAR* Unmounted : { TEXT("/Memory/Rock"), TEXT("/Nope/Rock"), TEXT("/") })
	{
		EXPECT_FALSE(FPackageName::TryConvertLongPackageNameToFilename(FString(Unmounted), Filename));
	}
	EXPECT_EQ(Utf8(Filename), "unchanged");

	EXPECT_EQ(Utf8(FPackageName::GetLongPackageAssetName(TEXT("/Game/Dir/Rock")) + TEXT("|") + FPackageName::GetLongPackageAssetName(TEXT("Rock"))), "Rock|Rock");
	EXPECT_EQ(Utf8(FPackageName::GetLongPackagePath(TEXT("/Game/Dir/Rock"))), "/Game/Dir");
}

TEST(PackageName, PackagesExistOnlyAsFilesFoundIgnoringCase)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	Project.WriteFile("Content/meshes/ROCK.uasset.json", "{}");
	Project.WriteFile("Saved/Scratch.uasset.json", "{}");
	Project.WriteFile("Script/Engine.uasset.json", "{}");

	FString Filename;
	ASSERT_TRUE(FPackageName::DoesPackageExist(TEXT("/Game/Meshes/Rock"), &Filename));
	EXPECT_EQ(Utf8(Filename), Utf8(Project.GetDir() + TEXT("/Content/meshes/ROCK.uasset.json")));
	EXPECT_TRUE(FPackageName::DoesPackageExist(TEXT("/Temp/Scratch")));
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("/Script/Engine")));
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("/Game/Meshes/Rock2")));

	// A package made in memory has no file yet.
	ASSERT_NE(CreatePackage(TEXT("/Game/Meshes/InMemory")), nullptr);
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("/Game/Meshes/InMemory")));

	UE::Headless::ClearEngineLog();
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("Game/Rock")));
	EXPECT_FALSE(FPackageName::DoesPackageExist(TEXT("/Nope/Rock")));
	const std::vector<std::string> Expected = {
		"Warning: DoesPackageExist called on PackageName that will always return false. Reason: Input 'Game/Rock' does not start with a '/', which is "
		"required for LongPackageNames.",
		"Warning: DoesPackageExist called on PackageName that will always return false. Reason: Input '/Nope/Rock' is not a child of an existing mount "
		"point.",
	};
	EXPECT_EQ(PlatformTest::LogOf(TEXT("LogPackageName")), Expected);
}
