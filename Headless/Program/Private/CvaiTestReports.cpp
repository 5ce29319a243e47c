#include "CvaiTestReports.h"

#include <cstdio>
#include <sstream>
#include <vector>

namespace UE::Headless::Cvai
{
	namespace
	{
		std::string FormatSeconds(double Seconds)
		{
			char Text[32];
			std::snprintf(Text, sizeof(Text), "%.2f", Seconds);
			return Text;
		}

		size_t Count(const std::vector<FTestResult>& Results, ETestOutcome Outcome)
		{
			size_t Number = 0;
			for (const FTestResult& Result : Results)
			{
				Number += Result.Outcome == Outcome ? 1 : 0;
			}
			return Number;
		}

		// Each line of Text, Prefix before it; a last line without its newline gets one.
		std::string Indent(const std::string& Text, const std::string& Prefix)
		{
			std::string Indented;
			std::istringstream Lines(Text);
			for (std::string Line; std::getline(Lines, Line);)
			{
				Indented += Prefix + Line + "\n";
			}
			return Indented;
		}

		// What the result lines show of a failed script's output: its last lines, since they hold the failure. The
		// JUnit file keeps the whole of it.
		constexpr size_t ShownOutputLines = 40;

		std::string LastLines(const std::string& Text)
		{
			std::vector<std::string> Lines;
			std::istringstream Stream(Text);
			for (std::string Line; std::getline(Stream, Line);)
			{
				Lines.push_back(std::move(Line));
			}
			if (Lines.size() <= ShownOutputLines)
			{
				return Text;
			}
			const size_t Earlier = Lines.size() - ShownOutputLines;
			std::string Shown = "(" + std::to_string(Earlier) + " earlier lines left out; --junit keeps them all)\n";
			for (size_t Index = Earlier; Index < Lines.size(); ++Index)
			{
				Shown += Lines[Index] + "\n";
			}
			return Shown;
		}

		// Text as XML character data or an attribute value; the control characters that XML 1.0 cannot hold
		// become '?'.
		std::string EscapeXml(const std::string& Text)
		{
			std::string Escaped;
			for (const char Character : Text)
			{
				switch (Character)
				{
				case '&': Escaped += "&amp;"; break;
				case '<': Escaped += "&lt;"; break;
				case '>': Escaped += "&gt;"; break;
				case '"': Escaped += "&quot;"; break;
				case '\'': Escaped += "&apos;"; break;
				default:
					const bool bAllowed = static_cast<unsigned char>(Character) >= 0x20 || Character == '\n' || Character == '\t' || Character == '\r';
					Escaped += bAllowed ? Character : '?';
				}
			}
			return Escaped;
		}

		std::string FirstLine(const std::string& Text)
		{
			return Text.substr(0, Text.find('\n'));
		}

		std::string Folder(const std::string& Path)
		{
			const size_t Slash = Path.rfind('/');
			return Slash == std::string::npos ? "." : Path.substr(0, Slash);
		}
	}

	std::string FormatResultText(const FTestResult& Result)
	{
		switch (Result.Outcome)
		{
		case ETestOutcome::Passed:
			return "PASS " + Result.Path + " (" + FormatSeconds(Result.Seconds) + " s)\n";
		case ETestOutcome::Skipped:
			return "SKIP " + Result.Path + " (" + Result.Message + ")\n";
		case ETestOutcome::Failed:
			break;
		}
		std::string Text = "FAIL " + Result.Path + " (" + FormatSeconds(Result.Seconds) + " s)\n" + Indent(Result.Message, "    ");
		if (!Result.Output.empty())
		{
			Text += "    output:\n" + Indent(LastLines(Result.Output), "    | ");
		}
		return Text;
	}

	std::string FormatSummary(const std::vector<FTestResult>& Results)
	{
		std::string Summary = std::to_string(Count(Results, ETestOutcome::Passed)) + " passed, " + std::to_string(Count(Results, ETestOutcome::Failed)) + " failed";
		if (const size_t Skipped = Count(Results, ETestOutcome::Skipped); Skipped > 0)
		{
			Summary += ", " + std::to_string(Skipped) + " skipped";
		}
		return Summary + "\n";
	}

	std::string FormatTapHeader(size_t ScriptCount)
	{
		return "TAP version 13\n1.." + std::to_string(ScriptCount) + "\n";
	}

	std::string FormatTapResult(const FTestResult& Result, size_t Number)
	{
		const std::string Test = std::to_string(Number) + " - " + Result.Path;
		switch (Result.Outcome)
		{
		case ETestOutcome::Passed:
			return "ok " + Test + "\n";
		case ETestOutcome::Skipped:
			return "ok " + Test + " # SKIP " + Result.Message + "\n";
		case ETestOutcome::Failed:
			break;
		}
		std::string Text = "not ok " + Test + "\n  ---\n  message: |\n" + Indent(Result.Message, "    ");
		if (!Result.Output.empty())
		{
			Text += "  output: |\n" + Indent(LastLines(Result.Output), "    ");
		}
		return Text + "  ...\n";
	}

	std::string FormatJUnit(const std::vector<FTestResult>& Results, double Seconds)
	{
		const std::string Counts = "tests=\"" + std::to_string(Results.size()) + "\" failures=\"" + std::to_string(Count(Results, ETestOutcome::Failed))
			+ "\" errors=\"0\" skipped=\"" + std::to_string(Count(Results, ETestOutcome::Skipped)) + "\" time=\"" + FormatSeconds(Seconds) + "\"";
		std::string Xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"cvai test\" " + Counts + ">\n";
		Xml += "  <testsuite name=\"cvai test\" " + Counts + ">\n";
		for (const FTestResult& Result : Results)
		{
			Xml += "    <testcase classname=\"" + EscapeXml(Folder(Result.Path)) + "\" name=\"" + EscapeXml(Result.Path) + "\" time=\"" + FormatSeconds(Result.Seconds) + "\">\n";
			if (Result.Outcome == ETestOutcome::Failed)
			{
				Xml += "      <failure message=\"" + EscapeXml(FirstLine(Result.Message)) + "\">" + EscapeXml(Result.Message) + "</failure>\n";
			}
			else if (Result.Outcome == ETestOutcome::Skipped)
			{
				Xml += "      <skipped message=\"" + EscapeXml(Result.Message) + "\"/>\n";
			}
			Xml += "      <system-out>" + EscapeXml(Result.Output) + "</system-out>\n    </testcase>\n";
		}
		return Xml + "  </testsuite>\n</testsuites>\n";
	}
}
