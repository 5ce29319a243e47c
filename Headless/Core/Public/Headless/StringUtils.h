// Harness-only conversions between engine strings and the standard library's UTF-8 strings.
#pragma once

#include "Containers/UnrealString.h"

#include <string>
#include <string_view>

namespace UE::Headless
{
	CORE_API std::string ToUtf8(const FString& Str);
	CORE_API FString FromUtf8(std::string_view Str);
}
