-- A new output and an overwrite: what is created, its flags and data, the result table and the log line.
local log = require("Support.log")

local cube, sphere, cone = "/Engine/BasicShapes/Cube", "/Engine/BasicShapes/Sphere", "/Engine/BasicShapes/Cone"
local result = nanite_assembly_build{
	output = "/Game/Results/SM_Three",
	parts = {
		{ mesh = cube, transforms = { { location = { x = 10 } }, { location = { x = 20 } } } },
		{ mesh = sphere, transforms = { { location = { y = 30 } } } },
		{ mesh = cone, transforms = { { location = { z = 40 } } } },
	},
}
expect.eq(result.ok, true, "built " .. tostring(result.error))
-- A new output is looked for, not loaded: nothing on disk, so no load is tried and the engine log stays empty.
expect.eq(table.concat(headless.engine_log(), "\n"), "", "engine log")
expect.fields(result, {
	ok = "boolean", asset = "string", object_path = "string", nanite_enabled = "boolean",
	nanite_settings_enabled = "boolean", is_assembly = "boolean", assembly_data_valid = "boolean",
	part_count = "number", node_count = "number", material_slot_count = "number", parts = "table",
	compiling = "boolean", render_data_available = "boolean", valid_nanite_data = "boolean",
	assemblies_supported = "boolean", created = "boolean", overwritten = "boolean", saved = "boolean",
	compiled = "boolean", transaction_owned = "boolean", plugin_enabled = "boolean", registered = "boolean",
}, "build result")
expect.eq(result.asset, "/Game/Results/SM_Three", "asset")
expect.eq(result.object_path, "/Game/Results/SM_Three.SM_Three", "object_path")
expect.eq(result.created, true, "created")
expect.eq(result.overwritten, false, "overwritten")
expect.eq(result.transaction_owned, true, "transaction owned")
expect.eq(result.nanite_enabled, true, "Nanite enabled")
expect.eq(result.nanite_settings_enabled, true, "stored Nanite setting")
expect.eq(result.is_assembly, true, "an assembly")
expect.eq(result.registered, true, "registered")
expect.eq(result.compiled, true, "compiled")
expect.eq(result.compiling, false, "not compiling")
expect.eq(result.render_data_available, true, "render data")
expect.eq(result.valid_nanite_data, true, "valid Nanite data")
expect.eq(result.saved, false, "not saved")
expect.eq(result.plugin_enabled, true, "plugin enabled")
expect.eq(result.warning, nil, "no warning while assemblies are supported")
expect.eq(result.part_count, 3, "three parts")
expect.eq(result.node_count, 4, "four nodes")
expect.eq(result.material_slot_count, 1, "identical materials merge into one slot")
expect.eq(result.parts[1].mesh, "/Engine/BasicShapes/Cube.Cube", "part 0 mesh")
expect.eq(result.parts[3].mesh, "/Engine/BasicShapes/Cone.Cone", "part 2 mesh")
expect.eq(result.parts[1].node_count, 2, "part 0 nodes")
expect.eq(result.parts[1].material_remap[1], 0, "part 0 remap")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Results/SM_Three.SM_Three (created) parts=3 nodes=4 nanite=true assembly=true "
	.. "registered=true compiled=true saved=false assemblies_supported=true")

local object = headless.object_info(result.object_path)
expect.eq(object.class, "StaticMesh", "class")
expect.eq(table.concat(object.flags, "|"), "RF_Public|RF_Standalone|RF_Transactional", "flags")
expect.eq(object.garbage, false, "not garbage")
expect.eq(object.package, "/Game/Results/SM_Three", "package")
expect.eq(headless.is_package_dirty("/Game/Results/SM_Three"), true, "the new package is dirty")
expect.eq(headless.package_file_exists("/Game/Results/SM_Three"), false, "not on disk")
local history = headless.undo_history()
expect.eq(history[#history], "Build Nanite Assembly", "the transaction's title")

local info = nanite_assembly_info(result.object_path)
local expected_nodes = { { 0, 10, 0, 0 }, { 0, 20, 0, 0 }, { 1, 0, 30, 0 }, { 2, 0, 0, 40 } }
for i, want in ipairs(expected_nodes) do
	expect.eq(info.nodes[i].part_index, want[1], "node " .. i .. " part")
	expect.eq(info.nodes[i].location.x, want[2], "node " .. i .. " x")
	expect.eq(info.nodes[i].location.y, want[3], "node " .. i .. " y")
	expect.eq(info.nodes[i].location.z, want[4], "node " .. i .. " z")
end

-- Overwrite: the same object, its earlier parts and nodes replaced rather than extended.
local again = nanite_assembly_build{ output = "Results/SM_Three", overwrite = true, parts = { { mesh = sphere, transforms = { { scale = 2 } } } } }
expect.eq(again.ok, true, "overwrite " .. tostring(again.error))
expect.eq(again.created, false, "overwrite: created")
expect.eq(again.overwritten, true, "overwrite: overwritten")
expect.eq(again.object_path, "/Game/Results/SM_Three.SM_Three", "overwrite: same object path")
expect.eq(again.part_count, 1, "overwrite: one part")
expect.eq(again.node_count, 1, "overwrite: one node")
expect.eq(again.parts[1].mesh, "/Engine/BasicShapes/Sphere.Sphere", "overwrite: the new part")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Results/SM_Three.SM_Three (overwritten) parts=1 nodes=1 nanite=true assembly=true "
	.. "registered=true compiled=true saved=false assemblies_supported=true")
for _, r in ipairs({ result, again }) do
	expect.eq(r.nodes, nil, "a build result has no nodes")
	expect.eq(r.nodes_truncated, nil, "a build result has no nodes_truncated")
end

-- Overwrite allowed but nothing there yet: the output is created.
local fresh = nanite_assembly_build{ output = "/Game/Results/SM_Fresh", overwrite = true, parts = { { mesh = cube, transforms = { {} } } } }
expect.eq(fresh.ok, true, "overwrite of nothing " .. tostring(fresh.error))
expect.eq(fresh.created, true, "overwrite of nothing: created")
expect.eq(fresh.overwritten, false, "overwrite of nothing: not overwritten")

-- Without a compile wait the result says so. The build holds every property of the mesh, so the readback's
-- first look at the material list finishes it, as in the editor: by "compiling" it is done.
local quick = nanite_assembly_build{ output = "/Game/Results/SM_Quick", wait_for_compile = false, parts = { { mesh = cube, transforms = { {} } } } }
expect.eq(quick.ok, true, "quick " .. tostring(quick.error))
expect.eq(quick.compiled, false, "not compiled without the wait")
expect.eq(quick.compiling, false, "the material list read finished the build")
expect.eq(quick.render_data_available, true, "render data once the build finished")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Results/SM_Quick.SM_Quick (created) parts=1 nodes=1 nanite=true assembly=true "
	.. "registered=true compiled=false saved=false assemblies_supported=true")
