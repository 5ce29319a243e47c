// Assertions: a failed check is a fatal error, as in the engine; ensure logs once and goes on.
#pragma once

#include "HAL/Platform.h"

namespace UE::Assert::Private
{
	[[noreturn]] CORE_API void OnCheckFailed(const char* Expression, const char* File, int Line);
	CORE_API bool OnEnsureFailed(const char* Expression, const char* File, int Line);
}

#define check(Expr) do { if (!(Expr)) { ::UE::Assert::Private::OnCheckFailed(#Expr, __FILE__, __LINE__); } } while (0)
#define checkf(Expr, ...) check(Expr)
#define checkSlow(Expr) check(Expr)
#define checkNoEntry() ::UE::Assert::Private::OnCheckFailed("Enclosing block should never be called", __FILE__, __LINE__)
#define verify(Expr) check(Expr)
#define ensure(Expr) ((Expr) || ::UE::Assert::Private::OnEnsureFailed(#Expr, __FILE__, __LINE__))
#define ensureMsgf(Expr, ...) ensure(Expr)
