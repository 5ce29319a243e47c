#pragma once

#include <sol/sol.hpp>

class FLuaSessionData;

// nanite_assembly_support(): the capability probe; it always succeeds and changes nothing.
sol::table NaniteAssemblySupportVerb(FLuaSessionData& Session, sol::this_state State);
