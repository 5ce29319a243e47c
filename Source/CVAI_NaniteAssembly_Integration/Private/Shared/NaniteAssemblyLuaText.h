// How texts cross between Lua and the engine: Lua strings are UTF-8 bytes, engine texts are wide; both ways
// the text crosses as it stands, without trimming or case change.
#pragma once

#include "CoreMinimal.h"

struct lua_State;

namespace CVAI::NaniteAssembly
{
	// A Lua string's bytes as an engine text; an embedded NUL ends it.
	[[nodiscard]] FString TextFromUtf8(const char* Utf8);

	// [-0, +1, m] Pushes the text as a Lua string.
	void PushText(lua_State* L, const FString& Text);
}
