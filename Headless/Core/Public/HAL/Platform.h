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

#ifndef WITH_EDITOR
#define WITH_EDITOR 1
#endif
#ifndef WITH_EDITORONLY_DATA
#define WITH_EDITORONLY_DATA 1
#endif
#ifndef WITH_DEV_AUTOMATION_TESTS
#define WITH_DEV_AUTOMATION_TESTS 1
#endif
#ifndef WITH_PERF_AUTOMATION_TESTS
#define WITH_PERF_AUTOMATION_TESTS 0
#endif
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

#ifndef CORE_API
#define CORE_API DLLEXPORT
#endif
#ifndef COREUOBJECT_API
#define COREUOBJECT_API DLLEXPORT
#endif
#ifndef ENGINE_API
#define ENGINE_API DLLEXPORT
#endif
#ifndef RENDERCORE_API
#define RENDERCORE_API DLLEXPORT
#endif
#ifndef PROJECTS_API
#define PROJECTS_API DLLEXPORT
#endif
#ifndef UNREALED_API
#define UNREALED_API DLLEXPORT
#endif
#ifndef ASSETREGISTRY_API
#define ASSETREGISTRY_API DLLEXPORT
#endif
#ifndef NANITEASSEMBLYEDITORUTILS_API
#define NANITEASSEMBLYEDITORUTILS_API DLLEXPORT
#endif

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
