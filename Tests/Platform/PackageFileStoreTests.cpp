// Saving package files as the engine saves them: a read-only file is refused, a failed write leaves the old file
// and no temporary file, and the temporary files of a save cut short are removed when the editor starts.
#include "PackageFileTestUtils.h"

#include "Headless/EngineLog.h"
#include "Headless/Faults.h"
#include "Misc/PackageName.h"
#include "Misc/Paths.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace PackageFileTest;
using PlatformTest::Utf8;

namespace
{
	// A mesh saved once as "First"; the next save would write "Second".
	struct FSavedMesh
	{
		UStaticMesh* Mesh = nullptr;
		FString Filename;
		std::string Before;

		FSavedMesh(FTestProject& Project, const TCHAR* PackageName, const TCHAR* RelativeFile)
		{
			Mesh = MakeMesh(PackageName, *FPackageName::GetShortName(PackageName));
			Mesh->GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(TEXT("First")), FName(TEXT("First"))));
			Save({ Mesh->GetPackage() }, false);
			Filename = ContentFile(Project, RelativeFile);
			Before = ReadText(Filename);
			Mesh->GetStaticMaterials()[0].MaterialSlotName = FName(TEXT("Second"));
			Mesh->MarkPackageDirty();
		}

		// The save failed with Reason: the package stays dirty, the file and its folder are as they were.
		void ExpectFailedSave(const std::string& Reason) const
		{
			UE::Headless::ClearEngineLog();
			EXPECT_FALSE(Save({ Mesh->GetPackage() }, true));
			const std::string PackageName = Utf8(Mesh->GetPackage()->GetName());
			EXPECT_EQ(PlatformTest::LogOf(TEXT("LogFileHelpers")),
				std::vector<std::string>({ "Error: The asset '" + PackageName + "' (" + Utf8(Filename) + ") failed to save. " + Reason }));
			EXPECT_TRUE(Mesh->GetPackage()->IsDirty());
			EXPECT_EQ(ReadText(Filename), Before);
			EXPECT_EQ(FilesUnder(FPaths::GetPath(Filename)), std::vector<std::string>({ Utf8(FPaths::GetCleanFilename(Filename)) }));
		}
	};

	pid_t ExitedProcess()
	{
		const pid_t Child = fork();
		if (Child == 0)
		{
			_exit(0);
		}
		waitpid(Child, nullptr, 0);
		return Child;
	}
}

TEST(PackageFileStore, AReadOnlyFileIsNotReplaced)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	const FSavedMesh Saved(Project, TEXT("/Game/Locked/Rock"), TEXT("Locked/Rock.uasset.json"));
	ASSERT_EQ(chmod(Utf8(Saved.Filename).c_str(), 0444), 0);
	Saved.ExpectFailedSave("cannot replace '" + Utf8(Saved.Filename) + "', which is read-only: Permission denied");
	EXPECT_EQ(FilesUnder(Project.GetDir() + TEXT("/Saved/Backup")), std::vector<std::string>());

	ASSERT_EQ(chmod(Utf8(Saved.Filename).c_str(), 0644), 0);
	EXPECT_TRUE(Save({ Saved.Mesh->GetPackage() }, true));
	EXPECT_NE(ReadText(Saved.Filename), Saved.Before);
}

TEST(PackageFileStore, AFailedWriteKeepsTheOldFileAndRemovesTheTemporaryOne)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	const FSavedMesh Saved(Project, TEXT("/Game/Full/Rock"), TEXT("Full/Rock.uasset.json"));
	const std::string Temporary = Utf8(Saved.Filename) + ".tmp-" + std::to_string(getpid());

	// A file size limit below the new file's size: the write fails with the system's reason.
	Saved.Mesh->GetNaniteSettings().NaniteAssemblyData.Nodes.SetNum(2000);
	rlimit Limit;
	ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &Limit), 0);
	const rlimit Small{ 65536, Limit.rlim_max };
	const auto PreviousHandler = std::signal(SIGXFSZ, SIG_IGN);
	ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &Small), 0);
	Saved.ExpectFailedSave("cannot write '" + Temporary + "': File too large");
	setrlimit(RLIMIT_FSIZE, &Limit);
	std::signal(SIGXFSZ, PreviousHandler);

	// A full disk, made to happen.
	UE::Headless::FailNext(TEXT("WritePackageFile"));
	Saved.ExpectFailedSave("cannot write '" + Temporary + "': No space left on device");
	UE::Headless::FailNext(TEXT("WritePackageFile"), TEXT("Disk quota exceeded"));
	Saved.ExpectFailedSave("cannot write '" + Temporary + "': Disk quota exceeded");
}

TEST(PackageFileStore, TemporaryFilesOfProcessesThatEndedAreRemovedAtStartUp)
{
	FTestProject Project;
	const std::string Dead = std::to_string(ExitedProcess());
	const std::string Running = std::to_string(getppid());
	const std::vector<std::string> Files = { "Content/Rock.uasset.json.tmp-" + Dead, "Content/Deep/Er/Rock.uasset.json.tmp-" + Dead,
		"Content/Rock.uasset.json.tmp-" + Running, "Content/Rock.uasset.json.tmp-" + std::to_string(getpid()), "Content/Notes.tmp-draft",
		"Saved/Scratch.uasset.json.tmp-" + Dead };
	for (const std::string& File : Files)
	{
		Project.WriteFile(File, "partial");
	}
	ASSERT_TRUE(Project.Start());
	std::vector<std::string> Kept = { "Deep", "Deep/Er", "Notes.tmp-draft", "Rock.uasset.json.tmp-" + std::to_string(getpid()), "Rock.uasset.json.tmp-" + Running };
	std::sort(Kept.begin(), Kept.end());
	EXPECT_EQ(FilesUnder(Project.GetDir() + TEXT("/Content")), Kept);
	EXPECT_FALSE(std::filesystem::exists(Utf8(Project.GetDir()) + "/Saved/Scratch.uasset.json.tmp-" + Dead));
}
