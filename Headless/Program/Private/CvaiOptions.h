// The one command-line parser of the cvai commands: a command declares its syntax, the parser reads the words
// after the command's name against it, and the usage lines of the help come from the same declaration.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace UE::Headless::Cvai
{
	using FArguments = std::vector<std::string>;

	struct FOption
	{
		// As it is typed: "--project", or "-j" for a short one.
		const char* Name = nullptr;
		// What the value stands for in the usage line ("DIR"); nullptr when the option is a flag.
		const char* ValueName = nullptr;
		// Its line under "Options:" in the command's help.
		const char* Help = nullptr;
		// The check of the value and what it asks for ("a number of seconds"); without one any value is taken.
		bool (*IsValidValue)(const std::string& Value) = nullptr;
		const char* ValueRule = nullptr;
		// Accepted but left out of the usage line and the help.
		bool bUnlisted = false;
	};

	constexpr FOption Unlisted(FOption Option)
	{
		Option.bUnlisted = true;
		return Option;
	}

	// A value check for options that take a duration: a decimal number, not negative ("0", "2.5").
	bool IsSeconds(const std::string& Value);

	// What a word that starts with '-', and is none of the command's options, is to that command.
	enum class EDashedWord
	{
		// An unknown option. '-' alone is still a value: a file may be named so.
		UnknownOption,
		// A value when it starts with a single '-', since what the value names is free text (a mesh path, a
		// filter); only "--word" is an unknown option.
		ValueUnlessDoubleDash,
		// One argument too many: the command has no options, and a value named like one is a mistyped option.
		ExtraArgument,
	};

	struct FPositionals
	{
		// Their names in the usage line, in order.
		std::vector<const char*> Names;
		// The names from this one on are optional.
		size_t MinCount = 0;
		// The last name takes any number of values.
		bool bLastRepeats = false;
		EDashedWord DashedWord = EDashedWord::UnknownOption;
		// The usage errors for fewer values than MinCount and for more than there are names.
		const char* MissingMessage = nullptr;
		const char* ExtraMessage = nullptr;
	};

	struct FCommandSyntax
	{
		const char* Name = nullptr;
		// Its line in the program's help.
		const char* Summary = nullptr;
		// Its help after the usage line and a blank line; the options follow it, then ExitStatus.
		const char* Description = nullptr;
		const char* ExitStatus = nullptr;
		std::vector<FOption> Options;
		FPositionals Positionals;
	};

	// The words of one command line, sorted out.
	struct FCommandLine
	{
		const char* Command = nullptr;
		std::vector<std::string> Positionals;
		// The options given, by name; a flag's value is empty. An option given twice keeps its last value.
		std::map<std::string, std::string> Options;

		bool Has(const std::string& Name) const;
		std::string Get(const std::string& Name, const std::string& Default) const;
		std::string GetPositional(size_t Index, const std::string& Default) const;
	};

	struct FParseResult
	{
		// --help or -h was among the words, wherever it stood: nothing else was read.
		bool bHelp = false;
		// The usage error, without the "cvai: " prefix; empty when the words fit the syntax.
		std::string Error;
		FCommandLine CommandLine;
	};

	// Reads the words from the first on; the first word that does not fit is the error.
	FParseResult ParseCommandLine(const FCommandSyntax& Syntax, const FArguments& Arguments);

	// "cvai run SCRIPT.lua [--project DIR] ...", as both the program's and the command's help show it.
	std::string FormatUsage(const FCommandSyntax& Syntax);

	// The command's --help text.
	std::string FormatHelp(const FCommandSyntax& Syntax);
}
