#include "Misc/AssertionMacros.h"

#include <cstdio>
#include <cstdlib>

namespace UE::Headless::Private
{
	void OnCheckFailed(const char* Expression, const char* File, int Line)
	{
		std::fprintf(stderr, "Assertion failed: %s [File:%s] [Line: %d]\n", Expression, File, Line);
		std::fflush(stderr);
		std::abort();
	}

	bool OnEnsureFailed(const char* Expression, const char* File, int Line)
	{
		std::fprintf(stderr, "Ensure condition failed: %s [File:%s] [Line: %d]\n", Expression, File, Line);
		return false;
	}
}
