// Harness-only fault injection: makes the next call of a named engine or host operation fail.
#pragma once

#include "Containers/UnrealString.h"

namespace UE::Headless
{
	// The operations whose next call can be made to fail, in the order the harness documents them.
	CORE_API const TArray<FString>& GetFaultableOperations();

	// Arms a fault for a coming call of Operation: the next one, or the one after SkippedCalls calls that
	// succeed. False when the operation is unknown.
	CORE_API bool FailNext(const FString& Operation, const FString& Reason = FString(), int32 SkippedCalls = 0);

	// Called by an operation on entry: true (and the reason) when a fault was armed for it, which it disarms.
	CORE_API bool ConsumeFault(const TCHAR* Operation, FString* OutReason = nullptr);

	CORE_API void ClearFaults();
}
