#include "Headless/EngineLog.h"
#include "Logging/LogMacros.h"

#include "Containers/StringConv.h"
#include "StringFormat.h"

#include <cstdio>
#include <cstdlib>

DEFINE_LOG_CATEGORY(LogTemp);
DEFINE_LOG_CATEGORY(LogCore);

namespace
{
	struct FEngineLogState
	{
		TArray<UE::Headless::FEngineLogLine> Lines;
		std::function<void(const UE::Headless::FEngineLogLine&)> Listener;

		static FEngineLogState& Get()
		{
			static FEngineLogState State;
			return State;
		}
	};
}

const TCHAR* ToString(ELogVerbosity::Type Verbosity)
{
	switch (Verbosity)
	{
	case ELogVerbosity::NoLogging:
		return TEXT("NoLogging");
	case ELogVerbosity::Fatal:
		return TEXT("Fatal");
	case ELogVerbosity::Error:
		return TEXT("Error");
	case ELogVerbosity::Warning:
		return TEXT("Warning");
	case ELogVerbosity::Display:
		return TEXT("Display");
	case ELogVerbosity::Log:
		return TEXT("Log");
	case ELogVerbosity::Verbose:
		return TEXT("Verbose");
	case ELogVerbosity::VeryVerbose:
		return TEXT("VeryVerbose");
	default:
		return TEXT("Unknown");
	}
}

FLogCategoryBase::FLogCategoryBase(const TCHAR* InCategoryName, ELogVerbosity::Type DefaultVerbosity)
	: CategoryName(InCategoryName)
	, Verbosity(DefaultVerbosity)
{
}

void VARARGS FMsg::LogfImpl(const ANSICHAR* File, int32 Line, const FName& Category, ELogVerbosity::Type Verbosity, const TCHAR* Fmt, ...)
{
	va_list Args;
	va_start(Args, Fmt);
	UE::Headless::FEngineLogLine LogLine;
	LogLine.Category = Category.ToString();
	LogLine.Verbosity = Verbosity;
	LogLine.Message = UE::Core::Private::FormatV(Fmt, Args);
	va_end(Args);

	FEngineLogState& State = FEngineLogState::Get();
	if (State.Listener)
	{
		State.Listener(LogLine);
	}
	State.Lines.Add(LogLine);

	if (Verbosity == ELogVerbosity::Fatal)
	{
		const FString Text = LogLine.Format();
		std::fprintf(stderr, "Fatal error: [File:%s] [Line: %d]\n%s\n", File, Line, (const char*)FTCHARToUTF8(*Text).Get());
		std::abort();
	}
}

namespace UE::Headless
{
	FString FEngineLogLine::Format() const
	{
		if (Verbosity == ELogVerbosity::Log)
		{
			return FString::Printf(TEXT("%s: %s"), *Category, *Message);
		}
		return FString::Printf(TEXT("%s: %s: %s"), *Category, ::ToString(Verbosity), *Message);
	}

	const TArray<FEngineLogLine>& GetEngineLog()
	{
		return FEngineLogState::Get().Lines;
	}

	void ClearEngineLog()
	{
		FEngineLogState::Get().Lines.Empty();
	}

	void SetEngineLogListener(std::function<void(const FEngineLogLine&)> Listener)
	{
		FEngineLogState::Get().Listener = MoveTemp(Listener);
	}
}
