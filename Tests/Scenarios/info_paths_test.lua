-- Asset paths as scripts write them reach the same mesh; refusals quote the path as given.
local log = require("Support.log")

local cube = nanite_assembly_info("/Engine/BasicShapes/Cube")
expect.eq(cube.ok, true, "cube by package path")
expect.eq(cube.object_path, "/Engine/BasicShapes/Cube.Cube", "cube object path")
expect.eq(cube.asset, "/Engine/BasicShapes/Cube", "cube asset")
expect.eq(cube.is_assembly, false, "cube is not an assembly")
expect.eq(cube.part_count, 0, "cube part_count")
expect.eq(cube.node_count, 0, "cube node_count")
expect.eq(next(cube.parts), nil, "cube parts empty")
expect.eq(next(cube.nodes), nil, "cube nodes empty")
expect.eq(cube.nodes_truncated, false, "cube nodes_truncated")
expect.eq(log.last(), '[OK] nanite_assembly_info("/Engine/BasicShapes/Cube") -> is_assembly=false, parts=0, nodes=0')
expect.eq(nanite_assembly_info("/Engine/BasicShapes/Cube.Cube").object_path, "/Engine/BasicShapes/Cube.Cube", "cube by object path")

-- Two meshes of the project: one in a folder, one at the content root, saved to disk.
for _, output in ipairs({ "/Game/Meshes/SM_Rock", "SM_Rock" }) do
	local built = nanite_assembly_build{ output = output, save = true, parts = { { mesh = "/Engine/BasicShapes/Sphere", transforms = { {} } } } }
	expect.eq(built.ok, true, "built " .. output .. " " .. tostring(built.error))
end

for _, path in ipairs({ "Meshes/SM_Rock", "/Game/Meshes/SM_Rock", "/Game/Meshes/SM_Rock.SM_Rock", "/game/meshes/sm_rock.SM_ROCK" }) do
	local info = nanite_assembly_info(path)
	expect.eq(info.object_path, "/Game/Meshes/SM_Rock.SM_Rock", path .. " object path")
	expect.eq(log.last(), '[OK] nanite_assembly_info("' .. path .. '") -> is_assembly=true, parts=1, nodes=1')
end
for _, path in ipairs({ "SM_Rock", "/Game/SM_Rock", "/Game/SM_Rock.SM_Rock" }) do
	expect.eq(nanite_assembly_info(path).object_path, "/Game/SM_Rock.SM_Rock", path .. " object path")
end

-- Refusals: empty, missing (quoted as given), engine-missing, and a path that names a material.
expect.refused(nanite_assembly_info(""), "static mesh not found: ", "nanite_assembly_info", "empty path")
expect.refused(nanite_assembly_info("Meshes/Missing"), "static mesh not found: Meshes/Missing", "nanite_assembly_info", "missing path")
expect.refused(nanite_assembly_info("/Engine/BasicShapes/NoSuchMesh_Corvane"), "static mesh not found: /Engine/BasicShapes/NoSuchMesh_Corvane",
	"nanite_assembly_info", "missing engine path")
expect.refused(nanite_assembly_info("/Engine/BasicShapes/BasicShapeMaterial"), "static mesh not found: /Engine/BasicShapes/BasicShapeMaterial",
	"nanite_assembly_info", "material path")
local refusal = nanite_assembly_info("Meshes/Missing")
local count = 0
for _ in pairs(refusal) do
	count = count + 1
end
expect.eq(count, 2, "a refusal holds ok and error only")

-- A missing mesh is looked up exactly twice (as given, then as an object path): the engine warns once per
-- look-up. A path whose last segment ends in '.' is looked up as it stands both times.
local function lookups_of(path)
	local before = #headless.engine_log()
	nanite_assembly_info(path)
	local lines = {}
	for index, line in ipairs(headless.engine_log()) do
		if index > before and line:find("Failed to find object", 1, true) then
			lines[#lines + 1] = line
		end
	end
	return lines
end
local lookups = lookups_of("Meshes/Missing")
expect.eq(#lookups, 2, "two look-ups of a missing mesh")
lookups = lookups_of("/Game/Meshes/SM_Rock.")
expect.eq(#lookups, 2, "two look-ups of a trailing-dot path")
expect.eq(lookups[1], lookups[2], "the trailing-dot path is looked up as it stands both times")
expect.eq(nanite_assembly_info("/Game/Meshes/SM_Rock.").ok, false, "trailing dot is kept")
