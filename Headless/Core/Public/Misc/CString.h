// C-string helpers of the engine: TCString and FCString, with ASCII case folding.
#pragma once

#include "GenericPlatform/GenericPlatformStricmp.h"
#include "HAL/Platform.h"

#include <type_traits>


namespace ESearchCase
{
	enum Type
	{
		CaseSensitive,
		IgnoreCase,
	};
}

namespace ESearchDir
{
	enum Type
	{
		FromStart,
		FromEnd,
	};
}

template <typename CharType>
struct TCString
{
	static int32 Strlen(const CharType* String)
	{
		int32 Length = 0;
		while (String[Length])
		{
			++Length;
		}
		return Length;
	}

	static int32 Strcmp(const CharType* String1, const CharType* String2)
	{
		for (;; ++String1, ++String2)
		{
			if (*String1 != *String2 || !*String1)
			{
				return (int32)(std::make_unsigned_t<CharType>)*String1 - (int32)(std::make_unsigned_t<CharType>)*String2;
			}
		}
	}

	static int32 Strncmp(const CharType* String1, const CharType* String2, SIZE_T Count)
	{
		for (; Count > 0; --Count, ++String1, ++String2)
		{
			if (*String1 != *String2 || !*String1)
			{
				return (int32)(std::make_unsigned_t<CharType>)*String1 - (int32)(std::make_unsigned_t<CharType>)*String2;
			}
		}
		return 0;
	}

	static int32 Stricmp(const CharType* String1, const CharType* String2)
	{
		return FGenericPlatformStricmp::Stricmp(String1, String2);
	}

	static int32 Strnicmp(const CharType* String1, const CharType* String2, SIZE_T Count)
	{
		return FGenericPlatformStricmp::Strnicmp(String1, String2, Count);
	}

	static const CharType* Strchr(const CharType* String, CharType Char)
	{
		for (; *String; ++String)
		{
			if (*String == Char)
			{
				return String;
			}
		}
		return Char == 0 ? String : nullptr;
	}
};

typedef TCString<TCHAR> FCString;
typedef TCString<ANSICHAR> FCStringAnsi;
