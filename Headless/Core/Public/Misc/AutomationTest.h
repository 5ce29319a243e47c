// The engine's automation tests: simple tests register themselves when their library loads.
#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Math/UnrealMathUtility.h"
#include "Templates/UnrealTemplate.h"
#include "UObject/NameTypes.h"

enum class EAutomationTestFlags : uint32
{
	None = 0x00000000,
	EditorContext = 0x00000001,
	ClientContext = 0x00000002,
	ServerContext = 0x00000004,
	CommandletContext = 0x00000008,
	ProgramContext = 0x00000010,
	NonNullRHI = 0x00000100,
	RequiresUser = 0x00000200,
	Disabled = 0x00010000,
	SupportsAutoRTFM = 0x00020000,
	CriticalPriority = 0x00100000,
	HighPriority = 0x00200000,
	MediumPriority = 0x00400000,
	LowPriority = 0x00800000,
	SmokeFilter = 0x01000000,
	EngineFilter = 0x02000000,
	ProductFilter = 0x04000000,
	PerfFilter = 0x08000000,
	StressFilter = 0x10000000,
	NegativeFilter = 0x20000000,
};
ENUM_CLASS_FLAGS(EAutomationTestFlags);

inline constexpr EAutomationTestFlags EAutomationTestFlags_ApplicationContextMask = EAutomationTestFlags::EditorContext
	| EAutomationTestFlags::ClientContext | EAutomationTestFlags::ServerContext | EAutomationTestFlags::CommandletContext
	| EAutomationTestFlags::ProgramContext;
inline constexpr EAutomationTestFlags EAutomationTestFlags_FilterMask = EAutomationTestFlags::SmokeFilter | EAutomationTestFlags::EngineFilter
	| EAutomationTestFlags::ProductFilter | EAutomationTestFlags::PerfFilter | EAutomationTestFlags::StressFilter | EAutomationTestFlags::NegativeFilter;

namespace UE::Headless
{
	struct FAutomationAccess;

	namespace Private
	{
		constexpr bool HasExactlyOneFilterFlag(EAutomationTestFlags Flags)
		{
			const uint32 Filters = (uint32)(Flags & EAutomationTestFlags_FilterMask);
			return Filters != 0 && (Filters & (Filters - 1)) == 0;
		}
	}
}

class FAutomationTestBase
{
public:
	CORE_API FAutomationTestBase(const FString& InName, const bool bInComplexTask);
	CORE_API virtual ~FAutomationTestBase();

	[[nodiscard]] virtual EAutomationTestFlags GetTestFlags() const = 0;
	[[nodiscard]] virtual FString GetBeautifiedTestName() const = 0;

	CORE_API virtual void AddError(const FString& InError, int32 StackOffset = 0);
	CORE_API virtual void AddWarning(const FString& InWarning, int32 StackOffset = 0);
	CORE_API virtual void AddInfo(const FString& InLogItem, int32 StackOffset = 0, bool bCaptureStack = false);

	CORE_API bool TestTrue(const TCHAR* What, bool Value);
	bool TestTrue(const FString& What, bool Value) { return TestTrue(*What, Value); }
	CORE_API bool TestFalse(const TCHAR* What, bool Value);
	bool TestFalse(const FString& What, bool Value) { return TestFalse(*What, Value); }

	CORE_API bool TestEqual(const TCHAR* What, int32 Actual, int32 Expected);
	CORE_API bool TestEqual(const TCHAR* What, int64 Actual, int64 Expected);
	CORE_API bool TestEqual(const TCHAR* What, double Actual, double Expected, double Tolerance = UE_KINDA_SMALL_NUMBER);
	// Ignores letter case, as the engine's string comparison does; TestEqualSensitive does not.
	CORE_API bool TestEqual(const TCHAR* What, const FString& Actual, const FString& Expected);
	CORE_API bool TestEqual(const TCHAR* What, const TCHAR* Actual, const TCHAR* Expected);
	CORE_API bool TestEqualSensitive(const TCHAR* What, const FString& Actual, const FString& Expected);
	bool TestEqual(const FString& What, const FString& Actual, const FString& Expected) { return TestEqual(*What, Actual, Expected); }
	bool TestEqual(const FString& What, int32 Actual, int32 Expected) { return TestEqual(*What, Actual, Expected); }

	template <typename ValueType>
	bool TestNotNull(const TCHAR* What, const ValueType* Pointer)
	{
		return TestTrue(What, Pointer != nullptr);
	}

	template <typename ValueType>
	bool TestNull(const TCHAR* What, const ValueType* Pointer)
	{
		return TestTrue(What, Pointer == nullptr);
	}

	[[nodiscard]] bool HasAnyErrors() const { return Errors.Num() > 0; }
	[[nodiscard]] const FString& GetTestName() const { return TestName; }
	void ClearExecutionInfo() { Errors.Reset(); }

protected:
	// Only the automation framework runs a test.
	virtual bool RunTest(const FString& Parameters) = 0;

	FString TestName;
	bool bComplexTask = false;

private:
	friend struct UE::Headless::FAutomationAccess;

	TArray<FString> Errors;
};

struct FAutomationTestInfo
{
	FString DisplayName;
	FString TestName;
	EAutomationTestFlags TestFlags = EAutomationTestFlags::None;
};

class FAutomationTestFramework
{
public:
	static CORE_API FAutomationTestFramework& Get();

	CORE_API bool RegisterAutomationTest(const FString& InTestNameToRegister, FAutomationTestBase* InTestToRegister);
	CORE_API bool UnregisterAutomationTest(const FString& InTestNameToUnregister);
	CORE_API void GetValidTestNames(TArray<FAutomationTestInfo>& TestInfo) const;

private:
	friend struct UE::Headless::FAutomationAccess;

	struct FRegistration
	{
		FString Name;
		FAutomationTestBase* Test = nullptr;
	};

	TArray<FRegistration> Tests;
};

#if WITH_AUTOMATION_WORKER
#define IMPLEMENT_SIMPLE_AUTOMATION_TEST(TClass, PrettyName, TFlags) \
	class TClass : public FAutomationTestBase \
	{ \
	public: \
		TClass(const FString& InName) \
			: FAutomationTestBase(InName, false) \
		{ \
			static_assert(((TFlags) & EAutomationTestFlags_ApplicationContextMask) != EAutomationTestFlags::None, \
				"AutomationTest has no application flag. It shouldn't run. See AutomationTest.h."); \
			static_assert(::UE::Headless::Private::HasExactlyOneFilterFlag(TFlags), \
				"All AutomationTests must have exactly 1 filter type specified. See AutomationTest.h."); \
		} \
		virtual EAutomationTestFlags GetTestFlags() const override { return TFlags; } \
		virtual FString GetBeautifiedTestName() const override { return TEXT(PrettyName); } \
	protected: \
		virtual bool RunTest(const FString& Parameters) override; \
	}; \
	namespace \
	{ \
		TClass TClass##AutomationTestInstance(TEXT(#TClass)); \
	}
#else
#define IMPLEMENT_SIMPLE_AUTOMATION_TEST(TClass, PrettyName, TFlags) \
	class TClass : public FAutomationTestBase \
	{ \
	public: \
		TClass(const FString& InName) \
			: FAutomationTestBase(InName, false) \
		{ \
			static_assert(((TFlags) & EAutomationTestFlags_ApplicationContextMask) != EAutomationTestFlags::None, \
				"AutomationTest has no application flag. It shouldn't run. See AutomationTest.h."); \
			static_assert(::UE::Headless::Private::HasExactlyOneFilterFlag(TFlags), \
				"All AutomationTests must have exactly 1 filter type specified. See AutomationTest.h."); \
		} \
		virtual EAutomationTestFlags GetTestFlags() const override { return TFlags; } \
		virtual FString GetBeautifiedTestName() const override { return TEXT(PrettyName); } \
	protected: \
		virtual bool RunTest(const FString& Parameters) override; \
	};
#endif

#define UTEST_TRUE(What, Value) \
	if (!TestTrue(What, Value)) \
	{ \
		return false; \
	}
#define UTEST_FALSE(What, Value) \
	if (!TestFalse(What, Value)) \
	{ \
		return false; \
	}
#define UTEST_EQUAL(What, Actual, Expected) \
	if (!TestEqual(What, Actual, Expected)) \
	{ \
		return false; \
	}
