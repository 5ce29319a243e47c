// Basic platform types and macros of the Linux build: TCHAR is char16_t, as on the engine's Unix platforms.
#pragma once

#include <cstddef>
#include <cstdint>

#define PLATFORM_LINUX 1
#define PLATFORM_UNIX 1
#define PLATFORM_WINDOWS 0
#define PLATFORM_TCHAR_IS_CHAR16 1
#define PLATFORM_WCHAR_IS_4_BYTES 1
#define PLATFORM_64BITS 1

#define WITH_AUTOMATION_TESTS (WITH_DEV_AUTOMATION_TESTS || WITH_PERF_AUTOMATION_TESTS)
#define WITH_AUTOMATION_WORKER WITH_AUTOMATION_TESTS

typedef std::uint8_t uint8;
typedef std::uint16_t uint16;
typedef std::uint32_t uint32;
typedef std::uint64_t uint64;
typedef std::int8_t int8;
typedef std::int16_t int16;
typedef std::int32_t int32;
typedef std::int64_t int64;
typedef std::size_t SIZE_T;
typedef std::ptrdiff_t SSIZE_T;
typedef std::uintptr_t UPTRINT;
typedef std::intptr_t PTRINT;

typedef char ANSICHAR;
typedef char16_t WIDECHAR;
typedef WIDECHAR TCHAR;
typedef char8_t UTF8CHAR;
typedef char16_t UTF16CHAR;
typedef char16_t UCS2CHAR;
typedef char32_t UTF32CHAR;

#define TEXT_PASTE(x) u ## x
#define TEXT(x) TEXT_PASTE(x)

#define DLLEXPORT __attribute__((visibility("default")))
#define DLLIMPORT __attribute__((visibility("default")))


#define FORCEINLINE inline __attribute__((always_inline))
#define UE_FORCEINLINE_HINT inline
#define FORCENOINLINE __attribute__((noinline))
#define VARARGS
#define CDECL
#define UE_NODISCARD [[nodiscard]]
#define UE_NODISCARD_CTOR [[nodiscard]]
#define UE_DEPRECATED(Version, Message) [[deprecated(Message)]]
#define PURE_VIRTUAL(Func, ...) { __VA_ARGS__ }
#define ABSTRACT
// The number of elements of an array; a pointer does not compile.
template <typename T, std::size_t N>
char (&UEArrayCountHelper(const T (&)[N]))[N + 1];
#define UE_ARRAY_COUNT(Array) (sizeof(UEArrayCountHelper(Array)) - 1)

#define MAX_int32 ((int32)0x7fffffff)
#define MIN_int32 ((int32)0x80000000)
#define MAX_uint32 ((uint32)0xffffffff)
#define MAX_uint8 ((uint8)0xff)
