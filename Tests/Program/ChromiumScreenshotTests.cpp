// Pictures by headless Chromium when they cannot be had: a page that reports a failure and a Chromium that never
// answers both end in a reason, in bounded time, with no process and no temporary file left. The pictures that
// succeed are checked end to end by Tests/Cli/view_picture.sh.
#include "Headless/ChromiumScreenshot.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{
	namespace fs = std::filesystem;
	using namespace UE::Headless;

	// A scratch folder that TMPDIR points at for as long as it lives, named with characters a file URL escapes.
	class FScratchTemp
	{
	public:
		FScratchTemp()
		{
			char Template[] = "/tmp/cvai-chromium-test-XXXXXX";
			Root = mkdtemp(Template);
			Temp = Root / "temp with space #1";
			fs::create_directories(Temp);
			const char* Previous = std::getenv("TMPDIR");
			PreviousTemp = Previous ? Previous : "";
			setenv("TMPDIR", Temp.c_str(), 1);
		}

		~FScratchTemp()
		{
			if (PreviousTemp.empty())
			{
				unsetenv("TMPDIR");
			}
			else
			{
				setenv("TMPDIR", PreviousTemp.c_str(), 1);
			}
			std::error_code Error;
			fs::remove_all(Root, Error);
		}

		bool IsTempEmpty() const { return fs::is_empty(Temp); }

		fs::path Root;
		fs::path Temp;

	private:
		std::string PreviousTemp;
	};

	std::string FirstLine(const std::string& Text)
	{
		return Text.substr(0, Text.find('\n'));
	}
}

TEST(ChromiumScreenshot, APageThatCannotDrawSaysWhy)
{
	const std::string Chromium = FindChromium();
	ASSERT_FALSE(Chromium.empty()) << "no chromium on PATH";
	const FScratchTemp Scratch;
	FPageScreenshot Request;
	Request.PageHtml = "<!DOCTYPE html><html><body><script>document.documentElement.dataset.viewState = 'error: no WebGL here';</script></body></html>";
	Request.Width = 320;
	Request.Height = 200;
	std::vector<uint8_t> Png = { 1 };
	std::string Error;
	EXPECT_FALSE(CapturePageScreenshot(Chromium, Request, Png, Error));
	// What Chromium printed follows, on lines of its own.
	EXPECT_EQ(FirstLine(Error), "the page could not draw the view in Chromium: error: no WebGL here; it printed:") << Error;
	EXPECT_TRUE(Scratch.IsTempEmpty()) << "the profile or the page was left in " << Scratch.Temp;
}

TEST(ChromiumScreenshot, AChromiumThatNeverAnswersIsStoppedAtTheTimeout)
{
	const FScratchTemp Scratch;
	const fs::path Fake = Scratch.Root / "chromium";
	const fs::path PidFile = Scratch.Root / "pid";
	{
		std::ofstream Script(Fake);
		Script << "#!/bin/sh\necho $$ > '" << PidFile.string() << "'\necho 'listening, not answering' >&2\nexec sleep 60\n";
	}
	fs::permissions(Fake, fs::perms::owner_all);
	FPageScreenshot Request;
	Request.PageHtml = "<p>never drawn</p>";
	Request.TimeoutSeconds = 1.5;
	std::vector<uint8_t> Png;
	std::string Error;
	const auto Start = std::chrono::steady_clock::now();
	EXPECT_FALSE(CapturePageScreenshot(Fake.string(), Request, Png, Error));
	const double Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
	EXPECT_EQ(Error, "Chromium did not draw the page within 1.5 s; it printed:\nlistening, not answering");
	// The timeout, and the few seconds Chromium is given to close by itself.
	EXPECT_GE(Seconds, 1.5);
	EXPECT_LT(Seconds, 15.0);
	int Pid = 0;
	std::ifstream(PidFile) >> Pid;
	ASSERT_GT(Pid, 0);
	EXPECT_NE(kill(Pid, 0), 0) << "the stalled Chromium still runs";
	EXPECT_TRUE(Scratch.IsTempEmpty());
}

TEST(ChromiumScreenshot, FindsChromiumOnPath)
{
	const FScratchTemp Scratch;
	const fs::path Folder = Scratch.Root / "bin";
	fs::create_directories(Folder / "chromium-folder" / "chromium");
	std::ofstream(Folder / "chromium") << "#!/bin/sh\n";
	const char* Previous = std::getenv("PATH");
	const std::string SavedPath = Previous ? Previous : "";
	// A folder named chromium and a file that cannot run are passed over.
	fs::permissions(Folder / "chromium", fs::perms::owner_read | fs::perms::owner_write);
	setenv("PATH", ((Folder / "chromium-folder").string() + ":" + Folder.string()).c_str(), 1);
	EXPECT_EQ(FindChromium(), "");
	fs::permissions(Folder / "chromium", fs::perms::owner_all);
	EXPECT_EQ(FindChromium(), (Folder / "chromium").string());
	setenv("PATH", SavedPath.c_str(), 1);
}
