#include "CvaiCommands.h"
#include "CvaiEditorSession.h"

#include "CoreGlobals.h"
#include "Headless/Automation.h"
#include "Headless/FatalExit.h"
#include "Headless/StringUtils.h"

#include <cstdio>

namespace UE::Headless::Cvai
{
	namespace
	{
		constexpr const char* Help = "Runs the editor automation checks that the module registered when it loaded, whose names contain FILTER\n"
			"(all of them without one), for example: cvai automation Corvane.GeometryScripting\n"
			"The checks build, save and undo assets under /Game/CorvaneAutomation in the project.\n"
			"The project stays locked while they run, as for cvai run. The last line is \"N passed, N failed\".\n";

		constexpr const char* ExitStatus = "Exit status: 0 when every check passed, 1 when a check failed or none matched, 2 for a usage error, 3 when\n"
			"another cvai process kept the project past --lock-timeout, 4 when memory ran out.\n";

		int RunAutomation(const FCommandLine& CommandLine)
		{
			FEditorSession Editor(CommandLine, EProjectAccess::Write);
			if (const int Exit = Editor.Open(); Exit != ExitOk)
			{
				return Exit;
			}

			TArray<FAutomationTestInfo> Tests;
			FAutomationTestFramework::Get().GetValidTestNames(Tests);
			const FString FilterText = FromUtf8(CommandLine.GetPositional(0, ""));
			int32 Passed = 0;
			int32 Failed = 0;
			GIsAutomationTesting = true;
			for (const FAutomationTestInfo& Test : Tests)
			{
				if (!FilterText.IsEmpty() && !Test.DisplayName.Contains(FilterText))
				{
					continue;
				}
				TArray<FString> Errors;
				const FScopedActivity Activity(TEXT("running the automation check ") + Test.DisplayName);
				if (FAutomationAccess::RunTest(Test.TestName, Errors))
				{
					++Passed;
					std::printf("[PASS] %s\n", ToUtf8(Test.DisplayName).c_str());
				}
				else
				{
					++Failed;
					std::printf("[FAIL] %s\n", ToUtf8(Test.DisplayName).c_str());
					for (const FString& Reason : Errors)
					{
						std::printf("    %s\n", ToUtf8(Reason).c_str());
					}
				}
			}
			GIsAutomationTesting = false;
			// The summary stays the last line, after whatever shutting down prints.
			Editor.Close();
			std::printf("%d passed, %d failed\n", Passed, Failed);
			return Failed == 0 && Passed > 0 ? ExitOk : ExitFailure;
		}
	}

	const FCommand AutomationCommand{ .Run = &RunAutomation,
		.Syntax = { .Name = "automation", .Summary = "run the module's editor automation checks", .Description = Help, .ExitStatus = ExitStatus,
			.Options = { ProjectOption, Unlisted(VerboseOption) },
			// A filter is matched as plain text against the checks' names, dashes and all.
			.Positionals = { .Names = { "FILTER" }, .DashedWord = EDashedWord::ValueUnlessDoubleDash, .ExtraMessage = "automation takes one filter" } } };
}
