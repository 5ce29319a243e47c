#include "CvaiCommands.h"

#include "Headless/LuaReference.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <string>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Prints the reference of everything a script can call: the module's three verbs and the headless table, each\n"
			"function with its arguments and results, and every field of the tables they take and give back, with its type\n"
			"and when it is there. --markdown prints it as the README's reference section; --luals DIR writes it as a\n"
			"definition file of the Lua language server, DIR/cvai.lua, so that editors complete and check the calls. No\n"
			"project is needed.\n";

		constexpr const char* ExitStatus = "Exit status: 0 when the reference was printed or written, 1 when the definition file cannot be written,\n"
			"2 for a usage error.\n";

		constexpr FOption MarkdownOption{ "--markdown", nullptr, "print the reference as Markdown" };
		constexpr FOption LuaLsOption{ "--luals", "DIR", "write the Lua language server's definition file DIR/cvai.lua instead" };

		// The folder is made when it is missing; the file is written whole or not at all.
		int WriteDefinitions(const std::string& Dir, const std::string& Text)
		{
			namespace fs = std::filesystem;
			const fs::path Path = fs::path(Dir) / "cvai.lua";
			// A folder that cannot be made shows as the file that cannot be written.
			std::error_code Ignored;
			fs::create_directories(Dir, Ignored);
			const fs::path Temporary = fs::path(Path).concat(".tmp-" + std::to_string(::getpid()));
			std::string Reason;
			std::ofstream File(Temporary, std::ios::binary | std::ios::trunc);
			if (!File.is_open())
			{
				Reason = std::strerror(errno);
			}
			else if (File << Text, File.close(), !File)
			{
				Reason = "the write failed";
			}
			else if (std::error_code Error; fs::rename(Temporary, Path, Error), Error)
			{
				Reason = Error.message();
			}
			if (!Reason.empty())
			{
				fs::remove(Temporary, Ignored);
				std::fprintf(stderr, "cvai: cannot write '%s': %s\n", Path.string().c_str(), Reason.c_str());
				return ExitFailure;
			}
			std::printf("Wrote %s\n", Path.string().c_str());
			return ExitOk;
		}

		int RunDocs(const FCommandLine& CommandLine)
		{
			const std::vector<FLuaReferenceSection> Reference = GetLuaReference();
			if (CommandLine.Has(LuaLsOption.Name))
			{
				if (CommandLine.Has(MarkdownOption.Name))
				{
					return UsageError("--markdown and --luals cannot be used together", "docs");
				}
				return WriteDefinitions(CommandLine.Get(LuaLsOption.Name, ""), FormatLuaLanguageServerDefinitions(Reference));
			}
			const std::string Text = CommandLine.Has(MarkdownOption.Name) ? FormatLuaReferenceMarkdown(Reference) : FormatLuaReferenceText(Reference);
			std::fputs(Text.c_str(), stdout);
			return ExitOk;
		}
	}

	const FCommand DocsCommand{ .Run = &RunDocs,
		.Syntax = { .Name = "docs", .Summary = "print the reference of the verbs and the headless table", .Description = Help,
			.ExitStatus = ExitStatus, .Options = { MarkdownOption, LuaLsOption },
			.Positionals = { .DashedWord = EDashedWord::UnknownOption, .ExtraMessage = "docs takes no arguments" } } };
}
