#include "Misc/AutomationTest.h"

#include "Headless/Automation.h"
#include "Misc/CString.h"

FAutomationTestBase::FAutomationTestBase(const FString& InName, const bool bInComplexTask)
	: TestName(InName)
	, bComplexTask(bInComplexTask)
{
	FAutomationTestFramework::Get().RegisterAutomationTest(InName, this);
}

FAutomationTestBase::~FAutomationTestBase()
{
	FAutomationTestFramework::Get().UnregisterAutomationTest(TestName);
}

void FAutomationTestBase::AddError(const FString& InError, int32 StackOffset)
{
	Errors.Add(InError);
}

void FAutomationTestBase::AddWarning(const FString& InWarning, int32 StackOffset)
{
}

void FAutomationTestBase::AddInfo(const FString& InLogItem, int32 StackOffset, bool bCaptureStack)
{
}

bool FAutomationTestBase::TestTrue(const TCHAR* What, bool Value)
{
	if (!Value)
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be true."), What));
	}
	return Value;
}

bool FAutomationTestBase::TestFalse(const TCHAR* What, bool Value)
{
	if (Value)
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be false."), What));
	}
	return !Value;
}

bool FAutomationTestBase::TestEqual(const TCHAR* What, int32 Actual, int32 Expected)
{
	return TestEqual(What, (int64)Actual, (int64)Expected);
}

bool FAutomationTestBase::TestEqual(const TCHAR* What, int64 Actual, int64 Expected)
{
	if (Actual != Expected)
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be %lld, but it was %lld."), What, (long long)Expected, (long long)Actual));
		return false;
	}
	return true;
}

bool FAutomationTestBase::TestEqual(const TCHAR* What, double Actual, double Expected, double Tolerance)
{
	if (FMath::Abs(Actual - Expected) > Tolerance)
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be %f, but it was %f within tolerance %f."), What, Expected, Actual, Tolerance));
		return false;
	}
	return true;
}

bool FAutomationTestBase::TestEqual(const TCHAR* What, const FString& Actual, const FString& Expected)
{
	if (!Actual.Equals(Expected, ESearchCase::IgnoreCase))
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be \"%s\", but it was \"%s\"."), What, *Expected, *Actual));
		return false;
	}
	return true;
}

bool FAutomationTestBase::TestEqual(const TCHAR* What, const TCHAR* Actual, const TCHAR* Expected)
{
	return TestEqual(What, FString(Actual), FString(Expected));
}

bool FAutomationTestBase::TestEqualSensitive(const TCHAR* What, const FString& Actual, const FString& Expected)
{
	if (!Actual.Equals(Expected, ESearchCase::CaseSensitive))
	{
		AddError(FString::Printf(TEXT("Expected '%s' to be \"%s\", but it was \"%s\"."), What, *Expected, *Actual));
		return false;
	}
	return true;
}

FAutomationTestFramework& FAutomationTestFramework::Get()
{
	static FAutomationTestFramework Framework;
	return Framework;
}

bool FAutomationTestFramework::RegisterAutomationTest(const FString& InTestNameToRegister, FAutomationTestBase* InTestToRegister)
{
	if (Tests.ContainsByPredicate([&](const FRegistration& Registration) { return Registration.Name.Equals(InTestNameToRegister); }))
	{
		return false;
	}
	Tests.Add(FRegistration{ InTestNameToRegister, InTestToRegister });
	return true;
}

bool FAutomationTestFramework::UnregisterAutomationTest(const FString& InTestNameToUnregister)
{
	return Tests.RemoveAll([&](const FRegistration& Registration) { return Registration.Name.Equals(InTestNameToUnregister); }) > 0;
}

void FAutomationTestFramework::GetValidTestNames(TArray<FAutomationTestInfo>& TestInfo) const
{
	TestInfo.Reset();
	for (const FRegistration& Registration : Tests)
	{
		if (!EnumHasAnyFlags(Registration.Test->GetTestFlags(), EAutomationTestFlags::Disabled))
		{
			TestInfo.Add(FAutomationTestInfo{ Registration.Test->GetBeautifiedTestName(), Registration.Name, Registration.Test->GetTestFlags() });
		}
	}
}

namespace UE::Headless
{
	bool FAutomationAccess::RunTest(const FString& TestName, TArray<FString>& OutErrors)
	{
		TArray<FAutomationTestFramework::FRegistration>& Tests = FAutomationTestFramework::Get().Tests;
		OutErrors.Reset();
		FAutomationTestFramework::FRegistration* Registration = Tests.FindByPredicate([&](const FAutomationTestFramework::FRegistration& Entry) { return Entry.Name.Equals(TestName); });
	if (!Registration)
	{
		OutErrors.Add(FString::Printf(TEXT("no automation test is registered as '%s'"), *TestName));
		return false;
	}
	Registration->Test->ClearExecutionInfo();
	const bool bReturned = Registration->Test->RunTest(FString());
	OutErrors = Registration->Test->Errors;
	if (!bReturned && OutErrors.IsEmpty())
	{
		OutErrors.Add(TEXT("the test returned false"));
	}
	return bReturned && OutErrors.IsEmpty();
	}
}
