// Assertions: a failed check is a fatal error, as in the engine; ensure logs once and goes on. Formats of
// checkf and ensureMsgf are checked against their arguments as UE_LOG's are.
#pragma once

#include "HAL/Platform.h"
#include "String/FormatStringSan.h"

namespace UE::Headless::Private
{
	[[noreturn]] CORE_API void OnCheckFailed(const char* Expression, const char* File, int Line);
	CORE_API bool OnEnsureFailed(const char* Expression, const char* File, int Line);
}

#define check(Expr) do { if (!(Expr)) { ::UE::Headless::Private::OnCheckFailed(#Expr, __FILE__, __LINE__); } } while (0)
#define checkf(Expr, Format, ...) do { UE_CHECK_FORMAT_STRING(Format, ##__VA_ARGS__); check(Expr); } while (0)
#define checkSlow(Expr) check(Expr)
#define checkNoEntry() ::UE::Headless::Private::OnCheckFailed("Enclosing block should never be called", __FILE__, __LINE__)
#define verify(Expr) check(Expr)
#define ensure(Expr) ((Expr) || ::UE::Headless::Private::OnEnsureFailed(#Expr, __FILE__, __LINE__))
#define ensureMsgf(Expr, Format, ...) ([&]() { UE_CHECK_FORMAT_STRING(Format, ##__VA_ARGS__); return ensure(Expr); }())
