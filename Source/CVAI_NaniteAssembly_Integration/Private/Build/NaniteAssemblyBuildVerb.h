#pragma once

#include <sol/sol.hpp>

class FLuaSessionData;

// nanite_assembly_build{...}: reads the request, runs the build, and turns the outcome into the result
// table and one session log line.
sol::table NaniteAssemblyBuildVerb(FLuaSessionData& Session, sol::this_state State, const sol::table& Argument);
