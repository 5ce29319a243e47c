// A failed allocation, of operator new or of a Lua session, ends the process as the engine's out-of-memory handler
// does: one message that names what was going on, the temporary files of unfinished writes removed, the installed
// status. Each case runs in a child process and allocates more than any address space holds.
#include "TestProject.h"

#include "Engine/StaticMesh.h"
#include "FileHelpers.h"
#include "Headless/CorvaneHost.h"
#include "Headless/FatalExit.h"
#include "Headless/PackageFileStore.h"
#include "UObject/ObjectSaveContext.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

namespace
{
	namespace fs = std::filesystem;
	using namespace UE::Headless;

	constexpr int OutOfMemoryStatus = 42;

	void AllocateMoreThanTheAddressSpace()
	{
		volatile size_t Size = size_t(1) << 50;
		::operator delete(::operator new(Size));
	}

	// Lets the process map only this much more memory, so that a Lua string that keeps doubling soon finds no room.
	void LimitAddressSpace(rlim_t MoreBytes)
	{
		std::ifstream Status("/proc/self/statm");
		rlim_t Pages = 0;
		Status >> Pages;
		const rlimit Limit{ Pages * sysconf(_SC_PAGESIZE) + MoreBytes, RLIM_INFINITY };
		setrlimit(RLIMIT_AS, &Limit);
	}

	class FatalExitTest : public testing::Test
	{
	protected:
		void SetUp() override
		{
#if defined(__SANITIZE_ADDRESS__)
			GTEST_SKIP() << "AddressSanitizer's allocator reports a failed allocation itself";
#endif
			// The child is a fork, so that it sees the files made here.
			GTEST_FLAG_SET(death_test_style, "fast");
			Dir = fs::temp_directory_path() / ("FatalExitTest-" + std::to_string(getpid()));
			fs::create_directories(Dir);
		}

		void TearDown() override
		{
			std::error_code Error;
			fs::remove_all(Dir, Error);
		}

		std::string MakeFile(const char* Name) const
		{
			const std::string Path = (Dir / Name).string();
			std::ofstream(Path) << "written";
			return Path;
		}

		fs::path Dir;
	};

	TEST_F(FatalExitTest, AFailedNewNamesTheInnermostActivityAndRemovesTheTemporaryFiles)
	{
		const std::string Unfinished = MakeFile("SM_Fence.uasset.json.tmp-1");
		const std::string Finished = MakeFile("SM_Gate.uasset.json.tmp-1");
		const std::string Kept = MakeFile("SM_Fence.uasset.json");
		EXPECT_EXIT(
			{
				InstallOutOfMemoryHandler("Tests", OutOfMemoryStatus);
				const FScopedActivity Running("running Scripts/Fence.lua");
				{
					// Scopes that ended are forgotten, whatever they held.
					const FScopedActivity Saving("saving /Game/Props/SM_Gate");
					const FScopedTemporaryFile Written(Finished.c_str());
				}
				const FScopedActivity Saving(TEXT("saving /Game/Props/SM_Fence"));
				const FScopedTemporaryFile Writing(FString(Unfinished.c_str()));
				AllocateMoreThanTheAddressSpace();
			},
			testing::ExitedWithCode(OutOfMemoryStatus), "^Tests: out of memory while saving /Game/Props/SM_Fence\n$");
		EXPECT_FALSE(fs::exists(Unfinished));
		EXPECT_TRUE(fs::exists(Finished));
		EXPECT_TRUE(fs::exists(Kept));

		EXPECT_EXIT(
			{
				InstallOutOfMemoryHandler("Tests", OutOfMemoryStatus);
				AllocateMoreThanTheAddressSpace();
			},
			testing::ExitedWithCode(OutOfMemoryStatus), "^Tests: out of memory\n$");
	}

	TEST_F(FatalExitTest, AFileWriteCutShortLeavesTheOldFileAndNoTemporaryFile)
	{
		const std::string Target = MakeFile("SM_Fence.uasset.json");
		EXPECT_EXIT(
			{
				InstallOutOfMemoryHandler("Tests", OutOfMemoryStatus);
				FSafeFileWriter Writer;
				FString Error;
				// The child's own process id names its temporary file.
				if (!Writer.Open(FString(Target.c_str()), Error) || !fs::exists(Target + ".tmp-" + std::to_string(getpid())))
				{
					_exit(1);
				}
				Writer.Write("new", 3);
				AllocateMoreThanTheAddressSpace();
			},
			testing::ExitedWithCode(OutOfMemoryStatus), "^Tests: out of memory\n$");
		for (const fs::directory_entry& Entry : fs::directory_iterator(Dir))
		{
			EXPECT_EQ(Entry.path().filename().string().find(".tmp-"), std::string::npos) << Entry.path();
		}
		std::ifstream Kept(Target);
		EXPECT_EQ(std::string(std::istreambuf_iterator<char>(Kept), {}), "written");
	}

	TEST_F(FatalExitTest, ALuaSessionOutOfMemoryIsNotAnErrorTheScriptCouldCatch)
	{
		EXPECT_EXIT(
			{
				InstallOutOfMemoryHandler("Tests", OutOfMemoryStatus);
				FCorvaneLuaSession Session;
				const FScopedActivity Running("running Scripts/Grow.lua");
				LimitAddressSpace(size_t(256) << 20);
				std::string Error;
				Session.RunString("local text = 'x' print('caught', pcall(function() while true do text = text .. text end end))", "Grow", Error);
			},
			testing::ExitedWithCode(OutOfMemoryStatus), "^Tests: out of memory while running Scripts/Grow.lua\n$");
	}

	TEST_F(FatalExitTest, SavePackagesNamesThePackageBeingSaved)
	{
		EXPECT_EXIT(
			{
				InstallOutOfMemoryHandler("Tests", OutOfMemoryStatus);
				FTestProject Project;
				Project.Start();
				UPackage* Package = CreatePackage(TEXT("/Game/Props/SM_Fence"));
				NewObject<UStaticMesh>(Package, FName(TEXT("SM_Fence")), RF_Public | RF_Standalone);
				// Runs inside the save of the package, once its file is written.
				UPackage::PackageSavedWithContextEvent.AddLambda([](const FString&, UPackage*, FObjectPostSaveContext) { AllocateMoreThanTheAddressSpace(); });
				TArray<UPackage*> Packages;
				Packages.Add(Package);
				UEditorLoadingAndSavingUtils::SavePackages(Packages, false);
			},
			testing::ExitedWithCode(OutOfMemoryStatus), "^Tests: out of memory while saving /Game/Props/SM_Fence\n$");
	}
}
