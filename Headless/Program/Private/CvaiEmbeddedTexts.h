// The Lua texts built into the cvai program (Headless/Program/Lua), embedded by Headless/Program/EmbedTexts.cmake.
#pragma once

#include <string_view>

namespace UE::Headless::Cvai
{
	// expect.lua: the assertion library of the scripts that cvai test runs.
	extern const std::string_view ExpectLibrary;
}
