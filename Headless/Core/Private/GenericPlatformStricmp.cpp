#include "GenericPlatform/GenericPlatformStricmp.h"

#include <type_traits>

namespace
{
	template <typename CharType>
	uint32 Fold(CharType Char)
	{
		const uint32 Code = (uint32)(std::make_unsigned_t<CharType>)Char;
		return (Code >= 'A' && Code <= 'Z') ? Code + 32 : Code;
	}

	template <typename CharType>
	int32 CompareFolded(const CharType* String1, const CharType* String2, SIZE_T Count)
	{
		for (; Count > 0; --Count, ++String1, ++String2)
		{
			const uint32 A = Fold(*String1);
			const uint32 B = Fold(*String2);
			if (A != B || A == 0)
			{
				return (int32)A - (int32)B;
			}
		}
		return 0;
	}
}

int32 FGenericPlatformStricmp::Stricmp(const ANSICHAR* String1, const ANSICHAR* String2) { return CompareFolded(String1, String2, (SIZE_T)-1); }
int32 FGenericPlatformStricmp::Stricmp(const WIDECHAR* String1, const WIDECHAR* String2) { return CompareFolded(String1, String2, (SIZE_T)-1); }
int32 FGenericPlatformStricmp::Stricmp(const UTF8CHAR* String1, const UTF8CHAR* String2) { return CompareFolded(String1, String2, (SIZE_T)-1); }
int32 FGenericPlatformStricmp::Stricmp(const UTF32CHAR* String1, const UTF32CHAR* String2) { return CompareFolded(String1, String2, (SIZE_T)-1); }
int32 FGenericPlatformStricmp::Strnicmp(const ANSICHAR* String1, const ANSICHAR* String2, SIZE_T Count) { return CompareFolded(String1, String2, Count); }
int32 FGenericPlatformStricmp::Strnicmp(const WIDECHAR* String1, const WIDECHAR* String2, SIZE_T Count) { return CompareFolded(String1, String2, Count); }
int32 FGenericPlatformStricmp::Strnicmp(const UTF8CHAR* String1, const UTF8CHAR* String2, SIZE_T Count) { return CompareFolded(String1, String2, Count); }
int32 FGenericPlatformStricmp::Strnicmp(const UTF32CHAR* String1, const UTF32CHAR* String2, SIZE_T Count) { return CompareFolded(String1, String2, Count); }
