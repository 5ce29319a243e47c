#include "CvaiOptions.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace UE::Headless::Cvai
{
	namespace
	{
		bool IsHelp(const std::string& Word)
		{
			return Word == "--help" || Word == "-h";
		}

		const FOption* FindOption(const FCommandSyntax& Syntax, const std::string& Word)
		{
			const auto Found = std::find_if(Syntax.Options.begin(), Syntax.Options.end(), [&Word](const FOption& Option) { return Word == Option.Name; });
			return Found == Syntax.Options.end() ? nullptr : &*Found;
		}

		struct FAttachedValue
		{
			const FOption* Option = nullptr;
			std::string Value;
		};

		// A value written in the option's own word, as other tools take it: "--timeout=5", or "-j2" for a short
		// option. Only a declared option is split, so a value such as "-x" is still read as the command reads it.
		FAttachedValue SplitAttachedValue(const FCommandSyntax& Syntax, const std::string& Word)
		{
			FAttachedValue Attached;
			const size_t Equals = Word.find('=');
			if (Word.starts_with("--") && Equals != std::string::npos)
			{
				Attached.Option = FindOption(Syntax, Word.substr(0, Equals));
				Attached.Value = Word.substr(Equals + 1);
			}
			else if (Word.size() > 2 && Word[0] == '-' && Word[1] != '-')
			{
				const FOption* Short = FindOption(Syntax, Word.substr(0, 2));
				Attached.Option = Short && Short->ValueName ? Short : nullptr;
				Attached.Value = Word.substr(2);
			}
			return Attached;
		}

		// The usage error for a word that is none of the command's options; nothing when the word is a value.
		std::optional<std::string> RefuseWord(const FPositionals& Positionals, const std::string& Word)
		{
			if (Word.empty() || Word[0] != '-')
			{
				return std::nullopt;
			}
			switch (Positionals.DashedWord)
			{
			case EDashedWord::UnknownOption:
				if (Word == "-")
				{
					return std::nullopt;
				}
				break;
			case EDashedWord::ValueUnlessDoubleDash:
				if (Word.rfind("--", 0) != 0)
				{
					return std::nullopt;
				}
				break;
			case EDashedWord::ExtraArgument:
				return std::string(Positionals.ExtraMessage);
			}
			return "unknown option '" + Word + "'";
		}
	}

	bool IsSeconds(const std::string& Value)
	{
		// Digits with at most one point among them: strtod would also take "inf", "1e3" and "0x10".
		const size_t Point = Value.find('.');
		const bool bOnePoint = Point == std::string::npos || Value.find('.', Point + 1) == std::string::npos;
		return bOnePoint && Value.find_first_not_of("0123456789.") == std::string::npos && Value.find_first_of("0123456789") != std::string::npos;
	}

	bool FCommandLine::Has(const std::string& Name) const
	{
		return Options.count(Name) != 0;
	}

	std::string FCommandLine::Get(const std::string& Name, const std::string& Default) const
	{
		const auto Found = Options.find(Name);
		return Found == Options.end() ? Default : Found->second;
	}

	std::string FCommandLine::GetPositional(size_t Index, const std::string& Default) const
	{
		return Index < Positionals.size() ? Positionals[Index] : Default;
	}

	FParseResult ParseCommandLine(const FCommandSyntax& Syntax, const FArguments& Arguments)
	{
		FParseResult Result;
		Result.CommandLine.Command = Syntax.Name;
		// Help wins over every error: "cvai run --project --help" asks for help, not for a project named --help.
		if (std::any_of(Arguments.begin(), Arguments.end(), &IsHelp))
		{
			Result.bHelp = true;
			return Result;
		}
		const FPositionals& Positionals = Syntax.Positionals;
		const size_t MaxCount = Positionals.bLastRepeats ? Arguments.size() : Positionals.Names.size();
		for (size_t Index = 0; Index < Arguments.size(); ++Index)
		{
			const std::string& Word = Arguments[Index];
			const FAttachedValue Attached = SplitAttachedValue(Syntax, Word);
			if (const FOption* Option = Attached.Option ? Attached.Option : FindOption(Syntax, Word))
			{
				const std::string Name = Option->Name;
				if (!Option->ValueName)
				{
					if (Attached.Option)
					{
						Result.Error = Name + " takes no value";
						return Result;
					}
					Result.CommandLine.Options[Name].clear();
					continue;
				}
				if (!Attached.Option && Index + 1 >= Arguments.size())
				{
					Result.Error = Name + " needs a value";
					return Result;
				}
				// The next word is the value whatever it looks like, so a value may start with '-'.
				const std::string& Value = Attached.Option ? Attached.Value : Arguments[++Index];
				if (Option->IsValidValue && !Option->IsValidValue(Value))
				{
					Result.Error = Name + " needs " + Option->ValueRule + ", not '" + Value + "'";
					return Result;
				}
				Result.CommandLine.Options[Name] = Value;
				continue;
			}
			if (std::optional<std::string> Refusal = RefuseWord(Positionals, Word))
			{
				Result.Error = *Refusal;
				return Result;
			}
			if (Result.CommandLine.Positionals.size() >= MaxCount)
			{
				Result.Error = Positionals.ExtraMessage;
				return Result;
			}
			Result.CommandLine.Positionals.push_back(Word);
		}
		if (Result.CommandLine.Positionals.size() < Positionals.MinCount)
		{
			Result.Error = Positionals.MissingMessage;
		}
		return Result;
	}

	std::string FormatUsage(const FCommandSyntax& Syntax)
	{
		std::string Usage = std::string("cvai ") + Syntax.Name;
		const FPositionals& Positionals = Syntax.Positionals;
		for (size_t Index = 0; Index < Positionals.Names.size(); ++Index)
		{
			std::string Name = Positionals.Names[Index];
			if (Positionals.bLastRepeats && Index + 1 == Positionals.Names.size())
			{
				Name += "...";
			}
			Usage += Index < Positionals.MinCount ? " " + Name : " [" + Name + "]";
		}
		for (const FOption& Option : Syntax.Options)
		{
			if (!Option.bUnlisted)
			{
				Usage += std::string(" [") + Option.Name + (Option.ValueName ? std::string(" ") + Option.ValueName : std::string()) + "]";
			}
		}
		return Usage;
	}

	std::string FormatHelp(const FCommandSyntax& Syntax)
	{
		std::string Help = "Usage: " + FormatUsage(Syntax) + "\n\n" + (Syntax.Description ? Syntax.Description : "");
		std::vector<std::pair<std::string, const char*>> Listed;
		size_t Width = 0;
		for (const FOption& Option : Syntax.Options)
		{
			if (!Option.bUnlisted && Option.Help)
			{
				Listed.emplace_back(std::string(Option.Name) + (Option.ValueName ? std::string(" ") + Option.ValueName : std::string()), Option.Help);
				Width = std::max(Width, Listed.back().first.size());
			}
		}
		if (!Listed.empty())
		{
			Help += "\nOptions:\n";
			// A help text of several lines keeps its column.
			const std::string Indent(Width + 4, ' ');
			for (const auto& [Usage, Text] : Listed)
			{
				Help += "  " + Usage + std::string(Width - Usage.size() + 2, ' ');
				for (const char* Char = Text; *Char; ++Char)
				{
					Help += *Char;
					Help += *Char == '\n' ? Indent : "";
				}
				Help += '\n';
			}
		}
		if (Syntax.ExitStatus)
		{
			Help += std::string("\n") + Syntax.ExitStatus;
		}
		return Help;
	}
}
