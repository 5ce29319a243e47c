// Harness-only: running the registered automation tests.
#pragma once

#include "Misc/AutomationTest.h"

namespace UE::Headless
{
	struct FAutomationAccess
	{
		// Runs one test by its registered name; false (with the reasons) when it failed or does not exist.
		static CORE_API bool RunTest(const FString& TestName, TArray<FString>& OutErrors);
	};
}
