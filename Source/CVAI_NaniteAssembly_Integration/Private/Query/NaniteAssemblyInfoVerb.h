#pragma once

#include <sol/sol.hpp>

#include <string>

class FLuaSessionData;

// nanite_assembly_info(mesh_path): the read-only readback of one static mesh, nodes included.
sol::table NaniteAssemblyInfoVerb(FLuaSessionData& Session, sol::this_state State, const std::string& MeshPath);
