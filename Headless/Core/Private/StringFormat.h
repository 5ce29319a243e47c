// The printf-style formatter behind FString::Printf and UE_LOG.
#pragma once

#include "Containers/UnrealString.h"

#include <cstdarg>

namespace UE::Core::Private
{
	// Formats as the engine's Printf does: %s takes a TCHAR string, %hs an 8-bit one, %c a character,
	// %d %i %u %x %X %o integers (with h, hh, l, ll, z and j sizes), %f %e %g and their capitals doubles,
	// %p a pointer and %% a percent sign; flags, width and precision (also '*') are honoured.
	FString FormatV(const TCHAR* Fmt, va_list Args);
}
