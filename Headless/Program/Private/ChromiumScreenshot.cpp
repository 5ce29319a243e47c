#include "Headless/ChromiumScreenshot.h"

#include "Headless/Base64.h"

#include <nlohmann/json.hpp>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace UE::Headless
{
	namespace
	{
		namespace fs = std::filesystem;
		using FJson = nlohmann::json;
		using FClock = std::chrono::steady_clock;

		// Chromium reads the DevTools protocol from its descriptor 3 and answers on 4 (--remote-debugging-pipe).
		constexpr int BrowserReadsFrom = 3;
		constexpr int BrowserWritesTo = 4;
		// How often the page is asked whether it has drawn, and how long Chromium gets to close by itself.
		constexpr auto PollInterval = std::chrono::milliseconds(50);
		constexpr auto CloseTimeout = std::chrono::seconds(5);
		// The end of Chromium's output that an error shows.
		constexpr size_t ShownOutputLines = 20;

		class FTemporaryFolder
		{
		public:
			~FTemporaryFolder()
			{
				if (!Path.empty())
				{
					std::error_code Ignored;
					fs::remove_all(Path, Ignored);
				}
			}

			bool Create(std::string& OutError)
			{
				std::error_code Error;
				std::string Pattern = (fs::temp_directory_path(Error) / "cvai-view-XXXXXX").string();
				if (Error || !mkdtemp(Pattern.data()))
				{
					OutError = "cannot make a temporary folder for Chromium: " + (Error ? Error.message() : std::string(std::strerror(errno)));
					return false;
				}
				Path = Pattern;
				return true;
			}

			fs::path Path;
		};

		// A write to a Chromium that has gone reports EPIPE instead of ending this process.
		class FScopedIgnoreBrokenPipe
		{
		public:
			FScopedIgnoreBrokenPipe() { Previous = std::signal(SIGPIPE, SIG_IGN); }
			~FScopedIgnoreBrokenPipe() { std::signal(SIGPIPE, Previous); }

		private:
			void (*Previous)(int) = SIG_DFL;
		};

		// A descriptor above the ones the child is given, so that placing one cannot overwrite another; -1 stays -1.
		int MoveAside(int Descriptor)
		{
			if (Descriptor < 0)
			{
				return -1;
			}
			const int Moved = fcntl(Descriptor, F_DUPFD_CLOEXEC, 10);
			close(Descriptor);
			return Moved;
		}

		std::string FileUrl(const fs::path& Path)
		{
			std::string Url = "file://";
			for (const unsigned char Char : Path.string())
			{
				if (std::isalnum(Char) || std::strchr("/-._~", Char))
				{
					Url += (char)Char;
				}
				else
				{
					char Escaped[4];
					std::snprintf(Escaped, sizeof(Escaped), "%%%02X", Char);
					Url += Escaped;
				}
			}
			return Url;
		}

		std::string DescribeExit(int Status)
		{
			if (WIFSIGNALED(Status))
			{
				return "killed by signal " + std::to_string(WTERMSIG(Status));
			}
			return "exit status " + std::to_string(WEXITSTATUS(Status));
		}

		// Chromium and its helper processes, in a process group of their own so that they all end together.
		class FBrowser
		{
		public:
			explicit FBrowser(double InTimeoutSeconds)
				: TimeoutSeconds(InTimeoutSeconds)
				, Deadline(FClock::now() + std::chrono::duration_cast<FClock::duration>(std::chrono::duration<double>(InTimeoutSeconds)))
			{
			}

			~FBrowser()
			{
				CloseDescriptors();
				if (Process > 0)
				{
					kill(-Process, SIGKILL);
					waitpid(Process, nullptr, 0);
				}
			}

			bool Start(const std::string& Chromium, const std::vector<std::string>& Arguments, const fs::path& OutputFile, std::string& OutError)
			{
				int ToBrowser[2] = { -1, -1 };
				int FromBrowser[2] = { -1, -1 };
				const bool bPiped = pipe2(ToBrowser, O_CLOEXEC) == 0 && pipe2(FromBrowser, O_CLOEXEC) == 0;
				const int BrowserInput = MoveAside(ToBrowser[0]);
				const int BrowserOutput = MoveAside(FromBrowser[1]);
				Input = MoveAside(FromBrowser[0]);
				Output = MoveAside(ToBrowser[1]);
				if (!bPiped || BrowserInput < 0 || BrowserOutput < 0 || Input < 0 || Output < 0)
				{
					OutError = std::string("cannot make the pipes to Chromium: ") + std::strerror(errno);
					close(BrowserInput);
					close(BrowserOutput);
					return false;
				}

				posix_spawn_file_actions_t Actions;
				posix_spawn_file_actions_init(&Actions);
				posix_spawn_file_actions_addopen(&Actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
				posix_spawn_file_actions_addopen(&Actions, STDOUT_FILENO, OutputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
				posix_spawn_file_actions_adddup2(&Actions, STDOUT_FILENO, STDERR_FILENO);
				posix_spawn_file_actions_adddup2(&Actions, BrowserInput, BrowserReadsFrom);
				posix_spawn_file_actions_adddup2(&Actions, BrowserOutput, BrowserWritesTo);
				posix_spawnattr_t Attributes;
				posix_spawnattr_init(&Attributes);
				sigset_t Defaults;
				sigemptyset(&Defaults);
				// This program ignores both; Chromium should not inherit that.
				sigaddset(&Defaults, SIGPIPE);
				sigaddset(&Defaults, SIGXFSZ);
				posix_spawnattr_setsigdefault(&Attributes, &Defaults);
				posix_spawnattr_setpgroup(&Attributes, 0);
				posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);

				std::vector<char*> Argv{ const_cast<char*>(Chromium.c_str()) };
				for (const std::string& Argument : Arguments)
				{
					Argv.push_back(const_cast<char*>(Argument.c_str()));
				}
				Argv.push_back(nullptr);
				const int Error = posix_spawn(&Process, Chromium.c_str(), &Actions, &Attributes, Argv.data(), environ);
				posix_spawn_file_actions_destroy(&Actions);
				posix_spawnattr_destroy(&Attributes);
				close(BrowserInput);
				close(BrowserOutput);
				if (Error != 0)
				{
					Process = 0;
					OutError = "cannot start '" + Chromium + "': " + std::strerror(Error);
					return false;
				}
				return true;
			}

			// Sends one command and waits for its answer, passing over the events that come before it.
			bool Call(const std::string& Method, const FJson& Params, const std::string& Session, FJson& OutResult, std::string& OutError)
			{
				FJson Message = { { "id", ++LastId }, { "method", Method }, { "params", Params } };
				if (!Session.empty())
				{
					Message["sessionId"] = Session;
				}
				if (!Send(Message.dump() + '\0', OutError))
				{
					return false;
				}
				while (true)
				{
					std::string Text;
					if (!Receive(Text, OutError))
					{
						return false;
					}
					const FJson Answer = FJson::parse(Text, nullptr, false);
					if (!Answer.is_object() || Answer.value("id", -1) != LastId)
					{
						continue;
					}
					if (Answer.contains("error"))
					{
						OutError = Method + " failed: " + Answer["error"].value("message", std::string("no reason given"));
						return false;
					}
					OutResult = Answer.value("result", FJson::object());
					return true;
				}
			}

			// Asks Chromium to close and waits a little for it; what is left is killed by the destructor.
			void Close()
			{
				std::string Ignored;
				if (Process > 0)
				{
					Send(FJson{ { "id", ++LastId }, { "method", "Browser.close" } }.dump() + '\0', Ignored);
					int Status = 0;
					WaitForExit(Status);
				}
			}

		private:
			bool Send(const std::string& Text, std::string& OutError)
			{
				size_t Sent = 0;
				while (Sent < Text.size())
				{
					const ssize_t Written = write(Output, Text.data() + Sent, Text.size() - Sent);
					if (Written < 0 && errno == EINTR)
					{
						continue;
					}
					if (Written <= 0)
					{
						OutError = Stopped();
						return false;
					}
					Sent += (size_t)Written;
				}
				return true;
			}

			bool Receive(std::string& OutText, std::string& OutError)
			{
				while (true)
				{
					const size_t End = Buffer.find('\0');
					if (End != std::string::npos)
					{
						OutText = Buffer.substr(0, End);
						Buffer.erase(0, End + 1);
						return true;
					}
					const auto Left = std::chrono::duration_cast<std::chrono::milliseconds>(Deadline - FClock::now()).count();
					if (Left <= 0)
					{
						char Seconds[32];
						std::snprintf(Seconds, sizeof(Seconds), "%g", TimeoutSeconds);
						OutError = std::string("Chromium did not draw the page within ") + Seconds + " s";
						return false;
					}
					pollfd Poll{ Input, POLLIN, 0 };
					const int Ready = poll(&Poll, 1, (int)std::min<long long>(Left, 1000));
					if (Ready < 0 && errno != EINTR)
					{
						OutError = std::string("cannot read from Chromium: ") + std::strerror(errno);
						return false;
					}
					if (Ready <= 0)
					{
						continue;
					}
					char Chunk[65536];
					const ssize_t Read = read(Input, Chunk, sizeof(Chunk));
					if (Read < 0 && errno == EINTR)
					{
						continue;
					}
					if (Read <= 0)
					{
						OutError = Stopped();
						return false;
					}
					Buffer.append(Chunk, (size_t)Read);
				}
			}

			// Why the pipe broke: Chromium ended, or is ending.
			std::string Stopped()
			{
				int Status = 0;
				if (WaitForExit(Status))
				{
					return "Chromium stopped before the page was drawn (" + DescribeExit(Status) + ")";
				}
				return "Chromium stopped answering before the page was drawn";
			}

			// True, with the exit status, when Chromium ended within CloseTimeout; helpers that outlive it would keep the
			// profile folder busy and are ended with it.
			bool WaitForExit(int& OutStatus)
			{
				const FClock::time_point GiveUp = FClock::now() + CloseTimeout;
				while (Process > 0)
				{
					if (waitpid(Process, &OutStatus, WNOHANG) == Process)
					{
						kill(-Process, SIGKILL);
						Process = 0;
						return true;
					}
					if (FClock::now() >= GiveUp)
					{
						break;
					}
					std::this_thread::sleep_for(PollInterval);
				}
				return false;
			}

			void CloseDescriptors()
			{
				for (int* Descriptor : { &Input, &Output })
				{
					if (*Descriptor >= 0)
					{
						close(*Descriptor);
						*Descriptor = -1;
					}
				}
			}

			const double TimeoutSeconds;
			const FClock::time_point Deadline;
			pid_t Process = 0;
			int Input = -1;
			int Output = -1;
			int LastId = 0;
			std::string Buffer;
		};

		std::string LastLines(const fs::path& File)
		{
			std::ifstream Stream(File);
			std::vector<std::string> Lines;
			for (std::string Line; std::getline(Stream, Line);)
			{
				Lines.push_back(Line);
			}
			std::string Text;
			for (size_t Index = Lines.size() > ShownOutputLines ? Lines.size() - ShownOutputLines : 0; Index < Lines.size(); ++Index)
			{
				Text += (Text.empty() ? "" : "\n") + Lines[Index];
			}
			return Text;
		}

		bool Capture(FBrowser& Browser, const FPageScreenshot& Request, const fs::path& Page, std::vector<uint8_t>& OutPng, std::string& OutError)
		{
			FJson Result;
			if (!Browser.Call("Target.createTarget", { { "url", "about:blank" } }, "", Result, OutError))
			{
				return false;
			}
			const std::string Target = Result.value("targetId", std::string());
			if (!Browser.Call("Target.attachToTarget", { { "targetId", Target }, { "flatten", true } }, "", Result, OutError))
			{
				return false;
			}
			const std::string Session = Result.value("sessionId", std::string());
			const FJson Metrics = { { "width", Request.Width }, { "height", Request.Height }, { "deviceScaleFactor", 1 }, { "mobile", false } };
			if (!Browser.Call("Emulation.setDeviceMetricsOverride", Metrics, Session, Result, OutError)
				|| !Browser.Call("Page.navigate", { { "url", FileUrl(Page) } }, Session, Result, OutError))
			{
				return false;
			}
			if (Result.contains("errorText"))
			{
				OutError = "Chromium cannot open the page: " + Result["errorText"].get<std::string>();
				return false;
			}
			const FJson State = { { "expression", "document.documentElement.dataset.viewState || ''" }, { "returnByValue", true } };
			while (true)
			{
				if (!Browser.Call("Runtime.evaluate", State, Session, Result, OutError))
				{
					return false;
				}
				const FJson& Value = Result["result"]["value"];
				const std::string Text = Value.is_string() ? Value.get<std::string>() : std::string();
				if (Text == "rendered")
				{
					break;
				}
				if (!Text.empty())
				{
					OutError = "the page could not draw the view in Chromium: " + Text;
					return false;
				}
				std::this_thread::sleep_for(PollInterval);
			}
			if (!Browser.Call("Page.captureScreenshot", { { "format", "png" } }, Session, Result, OutError))
			{
				return false;
			}
			if (!DecodeBase64(Result.value("data", std::string()), OutPng) || OutPng.empty())
			{
				OutError = "Chromium sent a picture that is not Base64";
				return false;
			}
			return true;
		}
	}

	std::string FindChromium()
	{
		const char* Path = std::getenv("PATH");
		std::stringstream Folders(Path ? Path : "");
		for (std::string Folder; std::getline(Folders, Folder, ':');)
		{
			const fs::path Candidate = fs::path(Folder.empty() ? "." : Folder) / "chromium";
			if (access(Candidate.c_str(), X_OK) == 0 && !fs::is_directory(Candidate))
			{
				return fs::absolute(Candidate).string();
			}
		}
		return std::string();
	}

	bool CapturePageScreenshot(const std::string& Chromium, const FPageScreenshot& Request, std::vector<uint8_t>& OutPng, std::string& OutError)
	{
		FTemporaryFolder Folder;
		if (!Folder.Create(OutError))
		{
			return false;
		}
		// Declared after the folder, so that Chromium has ended before its profile is removed. Chromium's start
		// counts towards the timeout.
		FBrowser Browser(Request.TimeoutSeconds);
		const fs::path Page = Folder.Path / "view.html";
		const fs::path Output = Folder.Path / "chromium-output.txt";
		{
			std::ofstream Stream(Page, std::ios::binary);
			Stream.write(Request.PageHtml.data(), (std::streamsize)Request.PageHtml.size());
			if (!Stream.flush())
			{
				OutError = "cannot write the page to '" + Page.string() + "'";
				return false;
			}
		}
		const FScopedIgnoreBrokenPipe IgnoreBrokenPipe;
		// WebGL in software (SwiftShader), with nothing that reaches for the network or a first-run dialogue. Letters
		// are smoothed in grey, not in coloured fringes, and colours stay as the page gives them.
		const std::vector<std::string> Arguments = { "--headless", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
			"--remote-debugging-pipe", "--user-data-dir=" + (Folder.Path / "profile").string(), "--no-first-run", "--no-default-browser-check",
			"--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-extensions", "--disable-quic",
			"--hide-scrollbars", "--mute-audio", "--disable-lcd-text", "--force-color-profile=srgb",
			"--window-size=" + std::to_string(Request.Width) + "," + std::to_string(Request.Height), "about:blank" };
		if (!Browser.Start(Chromium, Arguments, Output, OutError))
		{
			return false;
		}
		if (!Capture(Browser, Request, Page, OutPng, OutError))
		{
			Browser.Close();
			const std::string Printed = LastLines(Output);
			OutError += Printed.empty() ? std::string() : "; it printed:\n" + Printed;
			return false;
		}
		Browser.Close();
		return true;
	}
}
