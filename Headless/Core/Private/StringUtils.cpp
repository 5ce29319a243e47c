#include "Headless/StringUtils.h"

#include "Containers/StringConv.h"

namespace UE::Headless
{
	std::string ToUtf8(const FString& Str)
	{
		const FTCHARToUTF8 Converted(*Str, Str.Len());
		return std::string((const char*)Converted.Get(), (size_t)Converted.Length());
	}

	FString FromUtf8(std::string_view Str)
	{
		return FString::ConstructFromPtrSize((const UTF8CHAR*)Str.data(), (int32)Str.size());
	}
}
