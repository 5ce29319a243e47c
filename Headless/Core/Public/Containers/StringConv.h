// Conversions between the engine's wide strings and UTF-8. As the engine's, they can be moved, not copied.
#pragma once

#include "Containers/Array.h"
#include "HAL/Platform.h"

// Engine wide text to UTF-8 bytes (NUL-terminated); unpaired surrogates become '?'.
class FTCHARToUTF8
{
public:
	CORE_API explicit FTCHARToUTF8(const TCHAR* Source);
	CORE_API FTCHARToUTF8(const TCHAR* Source, int32 SourceLen);
	FTCHARToUTF8(FTCHARToUTF8&&) = default;
	FTCHARToUTF8(const FTCHARToUTF8&) = delete;
	FTCHARToUTF8& operator=(const FTCHARToUTF8&) = delete;

	[[nodiscard]] const UTF8CHAR* Get() const { return (const UTF8CHAR*)Buffer.GetData(); }
	[[nodiscard]] int32 Length() const { return Buffer.Num() - 1; }

private:
	TArray<ANSICHAR> Buffer;
};

// UTF-8 bytes to engine wide text; malformed sequences become '?', one per bad byte.
class FUTF8ToTCHAR
{
public:
	CORE_API explicit FUTF8ToTCHAR(const ANSICHAR* Source);
	CORE_API FUTF8ToTCHAR(const ANSICHAR* Source, int32 SourceLen);
	CORE_API explicit FUTF8ToTCHAR(const UTF8CHAR* Source);
	CORE_API FUTF8ToTCHAR(const UTF8CHAR* Source, int32 SourceLen);
	FUTF8ToTCHAR(FUTF8ToTCHAR&&) = default;
	FUTF8ToTCHAR(const FUTF8ToTCHAR&) = delete;
	FUTF8ToTCHAR& operator=(const FUTF8ToTCHAR&) = delete;

	[[nodiscard]] const TCHAR* Get() const { return Buffer.GetData(); }
	[[nodiscard]] int32 Length() const { return Buffer.Num() - 1; }

private:
	TArray<TCHAR> Buffer;
};

#define TCHAR_TO_UTF8(Str) ((ANSICHAR*)FTCHARToUTF8((const TCHAR*)(Str)).Get())
#define UTF8_TO_TCHAR(Str) ((TCHAR*)FUTF8ToTCHAR((const ANSICHAR*)(Str)).Get())
