#pragma once

#include "HAL/Platform.h"

// An asset whose derived data is built asynchronously.
class IInterface_AsyncCompilation
{
public:
	virtual ~IInterface_AsyncCompilation() = default;
	// True while an asynchronous build of the asset is in flight; never waits.
	[[nodiscard]] virtual bool IsCompiling() const = 0;
};
