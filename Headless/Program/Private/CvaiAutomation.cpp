#include "CvaiCommands.h"

#include "CoreGlobals.h"
#include "Headless/Automation.h"
#include "Headless/EngineLog.h"
#include "Headless/HeadlessEditor.h"
#include "Headless/StringUtils.h"

#include <cstdio>

namespace UE::Headless::Cvai
{
	int RunAutomationCommand(const FArguments& Arguments)
	{
		std::string Filter;
		bool bHaveFilter = false;
		FEditorOptions Options;
		for (size_t Index = 0; Index < Arguments.size(); ++Index)
		{
			const std::string& Argument = Arguments[Index];
			if (Argument == "--project")
			{
				if (Index + 1 >= Arguments.size())
				{
					return UsageError("--project needs a value", "automation");
				}
				Options.ProjectDir = Arguments[++Index];
			}
			else if (Argument == "--verbose")
			{
				Options.bVerbose = true;
			}
			else if (Argument.rfind("--", 0) == 0)
			{
				return UsageError("unknown option '" + Argument + "'", "automation");
			}
			else if (!bHaveFilter)
			{
				Filter = Argument;
				bHaveFilter = true;
			}
			else
			{
				return UsageError("automation takes one filter", "automation");
			}
		}

		FProjectInfo Project;
		FString Error;
		if (!FindProject(FromUtf8(Options.ProjectDir), Project, Error))
		{
			return UsageError(ToUtf8(Error), "automation");
		}
		RouteEngineLog(ToUtf8(Project.ProjectDir), Options.bVerbose);
		FHeadlessEditor Editor;
		if (!Editor.Start(Project.ProjectDir, Error))
		{
			std::fprintf(stderr, "cvai: %s\n", ToUtf8(Error).c_str());
			return ExitFailure;
		}

		TArray<FAutomationTestInfo> Tests;
		FAutomationTestFramework::Get().GetValidTestNames(Tests);
		const FString FilterText = FromUtf8(Filter);
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
		Editor.Stop();
		SetEngineLogListener(nullptr);
		std::printf("%d passed, %d failed\n", Passed, Failed);
		return Failed == 0 && Passed > 0 ? ExitOk : ExitFailure;
	}
}
