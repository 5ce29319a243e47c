#include "CvaiCommands.h"
#include "CvaiEditorSession.h"
#include "CvaiMeshPaths.h"

#include "Engine/StaticMesh.h"
#include "Headless/AssemblyViewPage.h"
#include "Headless/ChromiumScreenshot.h"
#include "Headless/PackageFileStore.h"
#include "Headless/StringUtils.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Writes a page that shows the static mesh at PATH in 3D as the editor would place it: each part of an assembly in\n"
			"a colour of its own at each of its nodes, with orbit controls (drag to turn, right-drag to pan, wheel to zoom)\n"
			"and a legend that names each part's mesh with its colour and its number of instances, and the number of\n"
			"nodes. A mesh that is not an assembly shows as one part with one instance. The page is one HTML file with\n"
			"three.js inside it: it opens from the disk in a current browser, with no network and no files beside it.\n"
			"PATH is completed as info completes it. Without --html and --png the page is written to the mesh's name with\n"
			".html (SM_Fence.html) in the current folder.\n"
			"\n"
			"--png draws the page with Chromium (headless, software WebGL; the first 'chromium' on PATH) and writes the\n"
			"picture as the page first shows it: the assembly seen from the engine's +Y side, a little from -X and from\n"
			"above, framed whole, so that +X runs to the right and +Z up. Faces are lit but keep their part's hue. The\n"
			"project is let go before Chromium starts, and nothing is written when the picture cannot be drawn.\n";

		constexpr const char* ExitStatus = "Exit status: 0 when the files were written, 1 when the mesh was not found or its file cannot be read, an\n"
			"output cannot be written or Chromium is missing or failed (what it printed follows the reason), 2 for a usage\n"
			"error, 3 when another cvai process kept the project past --lock-timeout, 4 when memory ran out.\n";

		constexpr int MinPictureSide = 16;
		constexpr int MaxPictureSide = 8192;
		constexpr const char* DefaultPictureSize = "1280x720";

		struct FPictureSize
		{
			int Width = 0;
			int Height = 0;
		};

		// "WIDTHxHEIGHT" in decimal digits only, each side within the limits.
		std::optional<FPictureSize> ParsePictureSize(const std::string& Text)
		{
			const size_t Cross = Text.find('x');
			if (Cross == std::string::npos)
			{
				return std::nullopt;
			}
			int Sides[2] = { 0, 0 };
			const std::string Words[2] = { Text.substr(0, Cross), Text.substr(Cross + 1) };
			for (int Index = 0; Index < 2; ++Index)
			{
				const std::string& Word = Words[Index];
				if (Word.empty() || Word.size() > 5 || Word.find_first_not_of("0123456789") != std::string::npos)
				{
					return std::nullopt;
				}
				Sides[Index] = std::stoi(Word);
				if (Sides[Index] < MinPictureSide || Sides[Index] > MaxPictureSide)
				{
					return std::nullopt;
				}
			}
			return FPictureSize{ Sides[0], Sides[1] };
		}

		bool IsPictureSize(const std::string& Text)
		{
			return ParsePictureSize(Text).has_value();
		}

		bool IsFileName(const std::string& Text)
		{
			return !Text.empty();
		}

		constexpr FOption HtmlOption{ "--html", "OUT.html", "write the page to OUT.html", &IsFileName, "a file name" };
		constexpr FOption PngOption{ "--png", "OUT.png", "write a picture of the page, drawn by headless Chromium, to OUT.png", &IsFileName,
			"a file name" };
		constexpr FOption SizeOption{ "--size", "WxH", "the picture's width and height in pixels (default 1280x720)", &IsPictureSize,
			"a size in pixels from 16x16 to 8192x8192, such as 1280x720" };

		// An output file, written whole or not at all: into a temporary file beside it that Commit moves into place.
		class FOutputFile
		{
		public:
			bool Open(const std::string& Path)
			{
				namespace fs = std::filesystem;
				Name = Path;
				std::error_code Error;
				const fs::path Absolute = fs::absolute(Path, Error);
				FString Reason;
				if (fs::is_directory(Absolute, Error))
				{
					Reason = FromUtf8("cannot write '" + Absolute.string() + "': it is a folder");
				}
				else if (Writer.Open(FromUtf8(Absolute.string()), Reason))
				{
					return true;
				}
				std::fprintf(stderr, "cvai: %s\n", ToUtf8(Reason).c_str());
				return false;
			}

			void Write(const void* Data, size_t Size)
			{
				Writer.Write(Data, (int64)Size);
			}

			bool Commit()
			{
				FString Reason;
				if (!Writer.Commit(Reason))
				{
					std::fprintf(stderr, "cvai: %s\n", ToUtf8(Reason).c_str());
					return false;
				}
				std::printf("wrote %s\n", Name.c_str());
				return true;
			}

		private:
			std::string Name;
			FSafeFileWriter Writer;
		};

		int RunView(const FCommandLine& CommandLine)
		{
			const bool bPicture = CommandLine.Has(PngOption.Name);
			if (CommandLine.Has(SizeOption.Name) && !bPicture)
			{
				return UsageError("--size is the size of the --png picture; give --png too", CommandLine.Command);
			}
			FEditorSession Editor(CommandLine);
			if (!Editor.FindProject())
			{
				return ExitUsage;
			}
			// Before the project is opened: without Chromium there is nothing to do.
			const std::string Chromium = bPicture ? FindChromium() : std::string();
			if (bPicture && Chromium.empty())
			{
				std::fprintf(stderr, "cvai: --png needs Chromium, and there is no 'chromium' on PATH (make deps installs Debian's chromium)\n");
				return ExitFailure;
			}
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				return Exit;
			}
			std::string Error;
			const UStaticMesh* Mesh = LoadStaticMeshByPath(Editor, CommandLine.Positionals[0], Error);
			if (!Mesh)
			{
				std::fprintf(stderr, "cvai: %s\n", Error.c_str());
				return ExitFailure;
			}
			const std::string Page = MakeAssemblyViewPage(MakeAssemblyView(*Mesh));
			const std::string PagePath = CommandLine.Get(HtmlOption.Name, bPicture ? std::string() : ToUtf8(Mesh->GetName()) + ".html");
			// The picture takes seconds; the project's other users need not wait for it.
			Editor.Close();

			// Both outputs are opened before either is written, so that one that cannot be written stops the command
			// before Chromium is started.
			FOutputFile PageFile;
			FOutputFile PictureFile;
			if ((!PagePath.empty() && !PageFile.Open(PagePath)) || (bPicture && !PictureFile.Open(CommandLine.Get(PngOption.Name, ""))))
			{
				return ExitFailure;
			}
			if (bPicture)
			{
				const FPictureSize Size = *ParsePictureSize(CommandLine.Get(SizeOption.Name, DefaultPictureSize));
				std::vector<uint8_t> Png;
				if (!CapturePageScreenshot(Chromium, { .PageHtml = Page, .Width = Size.Width, .Height = Size.Height }, Png, Error))
				{
					std::fprintf(stderr, "cvai: %s\n", Error.c_str());
					return ExitFailure;
				}
				PictureFile.Write(Png.data(), Png.size());
			}
			if (!PagePath.empty())
			{
				PageFile.Write(Page.data(), Page.size());
				if (!PageFile.Commit())
				{
					return ExitFailure;
				}
			}
			return !bPicture || PictureFile.Commit() ? ExitOk : ExitFailure;
		}
	}

	const FCommand ViewCommand{ .Run = &RunView,
		.Syntax = { .Name = "view", .Summary = "write a 3D page (or a picture) of a mesh or an assembly", .Description = Help,
			.ExitStatus = ExitStatus, .Options = { HtmlOption, PngOption, SizeOption, ProjectOption, Unlisted(VerboseOption) },
			.Positionals = { .Names = { "PATH" }, .MinCount = 1, .DashedWord = EDashedWord::ValueUnlessDoubleDash,
				.MissingMessage = "view needs the path of a static mesh", .ExtraMessage = "view takes one path" } } };
}
