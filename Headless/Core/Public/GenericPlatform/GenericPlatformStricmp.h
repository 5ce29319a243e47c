// Case-insensitive comparison of C strings; letters are folded in the ASCII range only.
#pragma once

#include "HAL/Platform.h"

struct FGenericPlatformStricmp
{
	static CORE_API int32 Stricmp(const ANSICHAR* String1, const ANSICHAR* String2);
	static CORE_API int32 Stricmp(const WIDECHAR* String1, const WIDECHAR* String2);
	static CORE_API int32 Stricmp(const UTF8CHAR* String1, const UTF8CHAR* String2);
	static CORE_API int32 Stricmp(const UTF32CHAR* String1, const UTF32CHAR* String2);
	static CORE_API int32 Strnicmp(const ANSICHAR* String1, const ANSICHAR* String2, SIZE_T Count);
	static CORE_API int32 Strnicmp(const WIDECHAR* String1, const WIDECHAR* String2, SIZE_T Count);
	static CORE_API int32 Strnicmp(const UTF8CHAR* String1, const UTF8CHAR* String2, SIZE_T Count);
	static CORE_API int32 Strnicmp(const UTF32CHAR* String1, const UTF32CHAR* String2, SIZE_T Count);
};
