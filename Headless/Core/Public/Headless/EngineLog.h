// Harness-only access to the engine log that UE_LOG writes.
#pragma once

#include "Containers/UnrealString.h"
#include "Logging/LogVerbosity.h"

#include <functional>

namespace UE::Headless
{
	struct FEngineLogLine
	{
		FString Category;
		ELogVerbosity::Type Verbosity = ELogVerbosity::Log;
		FString Message;

		// "Category: Verbosity: Message", as the engine's log file shows a line ("Category: Message" at Log).
		[[nodiscard]] CORE_API FString Format() const;
	};

	CORE_API const TArray<FEngineLogLine>& GetEngineLog();
	CORE_API void ClearEngineLog();

	// Receives every line as it is logged (for example to echo it or to write a log file); empty to stop.
	CORE_API void SetEngineLogListener(std::function<void(const FEngineLogLine&)> Listener);
}
