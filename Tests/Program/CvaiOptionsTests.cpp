// The cvai command-line parser on shapes of command line that today's commands do not have yet: short options
// with values, repeated options, several and repeating positionals. The commands' own refusals are checked
// end to end by Tests/Cli.
#include "CvaiOptions.h"

#include <gtest/gtest.h>

namespace
{
	using namespace UE::Headless::Cvai;

	// A test runner's command line: cvai test SUITE [SCRIPT...] [-j N] [--junit FILE] [--sandbox] [--trace]
	FCommandSyntax TestSyntax()
	{
		return {
			.Name = "test",
			.Options = { { "-j", "N" }, { "--junit", "FILE" }, { "--sandbox" }, Unlisted({ "--trace" }) },
			.Positionals = { .Names = { "SUITE", "SCRIPT" }, .MinCount = 1, .bLastRepeats = true, .MissingMessage = "test needs a suite" },
		};
	}

	TEST(CvaiOptionsTest, SortsOptionsFromPositionals)
	{
		const FParseResult Parsed = ParseCommandLine(TestSyntax(), { "Suite", "-j", "4", "a.lua", "--sandbox", "b.lua", "--junit", "-", "c.lua", "-j", "8" });
		ASSERT_EQ(Parsed.Error, "");
		EXPECT_FALSE(Parsed.bHelp);
		EXPECT_STREQ(Parsed.CommandLine.Command, "test");
		EXPECT_EQ(Parsed.CommandLine.Positionals, (std::vector<std::string>{ "Suite", "a.lua", "b.lua", "c.lua" }));
		// The last of a repeated option wins, and a value is taken as it is, dash or not.
		EXPECT_EQ(Parsed.CommandLine.Get("-j", "1"), "8");
		EXPECT_EQ(Parsed.CommandLine.Get("--junit", ""), "-");
		EXPECT_TRUE(Parsed.CommandLine.Has("--sandbox"));
		EXPECT_FALSE(Parsed.CommandLine.Has("--trace"));
		EXPECT_EQ(Parsed.CommandLine.Get("--timeout", "60"), "60");
		EXPECT_EQ(Parsed.CommandLine.GetPositional(4, "none"), "none");
	}

	TEST(CvaiOptionsTest, RefusesAtTheFirstWordThatDoesNotFit)
	{
		const FCommandSyntax Syntax = TestSyntax();
		EXPECT_EQ(ParseCommandLine(Syntax, {}).Error, "test needs a suite");
		EXPECT_EQ(ParseCommandLine(Syntax, { "--sandbox" }).Error, "test needs a suite");
		EXPECT_EQ(ParseCommandLine(Syntax, { "Suite", "-j" }).Error, "-j needs a value");
		EXPECT_EQ(ParseCommandLine(Syntax, { "Suite", "-k", "--junit" }).Error, "unknown option '-k'");
		EXPECT_EQ(ParseCommandLine(Syntax, { "--junit", "-k" }).Error, "test needs a suite");
		EXPECT_EQ(ParseCommandLine(Syntax, { "Suite", "-" }).Error, "");
	}

	TEST(CvaiOptionsTest, HelpWinsOverEveryError)
	{
		for (const FArguments& Arguments : { FArguments{ "--bogus", "--help" }, FArguments{ "-j", "-h" }, FArguments{ "--help" } })
		{
			const FParseResult Parsed = ParseCommandLine(TestSyntax(), Arguments);
			EXPECT_TRUE(Parsed.bHelp) << Arguments.front();
			EXPECT_EQ(Parsed.Error, "") << Arguments.front();
		}
	}

	TEST(CvaiOptionsTest, TellsDashedWordsByTheCommandsRule)
	{
		FCommandSyntax Syntax{ .Name = "find", .Positionals = { .Names = { "PATTERN" }, .MissingMessage = "find needs a pattern", .ExtraMessage = "find takes one pattern" } };

		Syntax.Positionals.DashedWord = EDashedWord::UnknownOption;
		EXPECT_EQ(ParseCommandLine(Syntax, { "-x" }).Error, "unknown option '-x'");
		EXPECT_EQ(ParseCommandLine(Syntax, { "-" }).CommandLine.Positionals, FArguments{ "-" });

		Syntax.Positionals.DashedWord = EDashedWord::ValueUnlessDoubleDash;
		EXPECT_EQ(ParseCommandLine(Syntax, { "-x" }).CommandLine.Positionals, FArguments{ "-x" });
		EXPECT_EQ(ParseCommandLine(Syntax, { "--x" }).Error, "unknown option '--x'");
		EXPECT_EQ(ParseCommandLine(Syntax, { "a", "-x" }).Error, "find takes one pattern");

		Syntax.Positionals.DashedWord = EDashedWord::ExtraArgument;
		for (const char* Word : { "-", "-x", "--x" })
		{
			EXPECT_EQ(ParseCommandLine(Syntax, { Word }).Error, "find takes one pattern") << Word;
		}
	}

	TEST(CvaiOptionsTest, WritesTheUsageFromTheSyntax)
	{
		EXPECT_EQ(FormatUsage(TestSyntax()), "cvai test SUITE [SCRIPT...] [-j N] [--junit FILE] [--sandbox]");

		FCommandSyntax Syntax = TestSyntax();
		Syntax.Description = "Runs the suite.\n";
		EXPECT_EQ(FormatHelp(Syntax), "Usage: cvai test SUITE [SCRIPT...] [-j N] [--junit FILE] [--sandbox]\n\nRuns the suite.\n");
		EXPECT_EQ(FormatUsage({ .Name = "docs" }), "cvai docs");
	}

	TEST(CvaiOptionsTest, ChecksTheValuesOfOptionsThatDeclareARule)
	{
		const FCommandSyntax Syntax{ .Name = "wait", .Options = { { "--for", "SECONDS", nullptr, &IsSeconds, "a number of seconds" }, { "--note", "TEXT" } } };
		for (const char* Seconds : { "0", "30", "0.25", "2.", ".5" })
		{
			const FParseResult Parsed = ParseCommandLine(Syntax, { "--for", Seconds });
			EXPECT_EQ(Parsed.Error, "") << Seconds;
			EXPECT_EQ(Parsed.CommandLine.Get("--for", ""), Seconds);
		}
		for (const char* Seconds : { "", ".", "-1", "+1", "1e3", "inf", "nan", "0x10", "1.2.3", " 1", "1s" })
		{
			EXPECT_EQ(ParseCommandLine(Syntax, { "--for", Seconds }).Error, std::string("--for needs a number of seconds, not '") + Seconds + "'") << Seconds;
		}
		// An option without a rule takes any value, one that looks like an option too.
		EXPECT_EQ(ParseCommandLine(Syntax, { "--note", "--for" }).CommandLine.Get("--note", ""), "--for");
	}

	TEST(CvaiOptionsTest, TakesAValueWrittenInTheOptionsOwnWord)
	{
		const FParseResult Attached = ParseCommandLine(TestSyntax(), { "-j2", "--junit=out.xml", "suite", "--junit=" });
		EXPECT_EQ(Attached.Error, "");
		EXPECT_EQ(Attached.CommandLine.Get("-j", ""), "2");
		EXPECT_EQ(Attached.CommandLine.Get("--junit", "none"), "");
		EXPECT_EQ(Attached.CommandLine.Positionals, (std::vector<std::string>{ "suite" }));
		// The value's rule holds as for a separate word; a flag takes none; only a declared option is split.
		const FCommandSyntax Wait{ .Name = "wait", .Options = { { "--for", "SECONDS", nullptr, &IsSeconds, "a number of seconds" } } };
		EXPECT_EQ(ParseCommandLine(Wait, { "--for=soon" }).Error, "--for needs a number of seconds, not 'soon'");
		EXPECT_EQ(ParseCommandLine(Wait, { "--for=2.5" }).CommandLine.Get("--for", ""), "2.5");
		EXPECT_EQ(ParseCommandLine(TestSyntax(), { "suite", "--sandbox=yes" }).Error, "--sandbox takes no value");
		EXPECT_EQ(ParseCommandLine(TestSyntax(), { "suite", "--jobs=2" }).Error, "unknown option '--jobs=2'");
		EXPECT_EQ(ParseCommandLine(TestSyntax(), { "suite", "-x2" }).Error, "unknown option '-x2'");
	}

	TEST(CvaiOptionsTest, ListsTheOptionsWithAHelpTextAfterTheDescription)
	{
		const FCommandSyntax Syntax{ .Name = "serve",
			.Description = "Serves the project.\n",
			.ExitStatus = "Exit status: 0 when stopped.\n",
			.Options = { { "--port", "N", "the port to listen on" }, { "--quiet" }, { "--log-level", "LEVEL", "one of:\nerror, warning, log" },
				Unlisted({ "--trace", nullptr, "every request" }) } };
		EXPECT_EQ(FormatHelp(Syntax), "Usage: cvai serve [--port N] [--quiet] [--log-level LEVEL]\n"
									  "\n"
									  "Serves the project.\n"
									  "\n"
									  "Options:\n"
									  "  --port N           the port to listen on\n"
									  "  --log-level LEVEL  one of:\n"
									  "                     error, warning, log\n"
									  "\n"
									  "Exit status: 0 when stopped.\n");
	}
}
