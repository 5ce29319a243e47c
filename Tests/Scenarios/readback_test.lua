-- The readback of assembly data read from package files: counts, the node cap, per-part counts over all
-- nodes, bases of indices, transforms, spaces, render data, and every key with its type.
local log = require("Support.log")
local packages = require("Support.packages")

local cube = "/Engine/BasicShapes/Cube.Cube"
local sphere = "/Engine/BasicShapes/Sphere.Sphere"
local material = { { material = "/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial", slot = "BasicShapeMaterial" } }

packages.write_mesh("/Game/Readback/SM_300", { nanite = true, materials = material, parts = { { mesh = cube } }, nodes = packages.nodes_of_part(300) })
packages.write_mesh("/Game/Readback/SM_256", { nanite = true, parts = { { mesh = cube } }, nodes = packages.nodes_of_part(256) })
packages.write_mesh("/Game/Readback/SM_1000", { nanite = true, parts = { { mesh = cube } }, nodes = packages.nodes_of_part(1000) })

local info = nanite_assembly_info("/Game/Readback/SM_300")
expect.eq(info.node_count, 300, "300: node_count")
expect.eq(#info.nodes, 256, "300: listed nodes")
expect.eq(info.nodes_truncated, true, "300: truncated")
expect.eq(info.parts[1].node_count, 300, "300: the part counts every node")
expect.eq(info.nodes[256].location.x, 2550, "300: the 256th node is node 255 of the data")
expect.eq(info.material_slot_count, 1, "300: material slots")
expect.eq(log.last(), '[OK] nanite_assembly_info("/Game/Readback/SM_300") -> is_assembly=true, parts=1, nodes=300')

info = nanite_assembly_info("/Game/Readback/SM_256")
expect.eq(#info.nodes, 256, "256: listed nodes")
expect.eq(info.nodes_truncated, false, "256: not truncated")
nanite_assembly_info("/Game/Readback/SM_1000")
expect.eq(log.last(), '[OK] nanite_assembly_info("/Game/Readback/SM_1000") -> is_assembly=true, parts=1, nodes=1000')

-- Nodes whose part index is out of range count for no part; remaps are reported as stored.
packages.write_mesh("/Game/Readback/SM_Ranges", {
	nanite = true,
	parts = { { mesh = cube, remap = { 3, -1 } }, { mesh = sphere } },
	nodes = { { part = 0 }, { part = 1 }, { part = 1 }, { part = 5 }, { part = -1 } },
})
info = nanite_assembly_info("/Game/Readback/SM_Ranges")
expect.eq(info.node_count, 5, "ranges: node_count")
expect.eq(info.parts[1].node_count, 1, "ranges: part 0 count")
expect.eq(info.parts[2].node_count, 2, "ranges: part 1 count")
expect.eq(info.parts[1].material_remap[1], 3, "ranges: remap[1]")
expect.eq(info.parts[1].material_remap[2], -1, "ranges: remap[2]")
expect.eq(#info.parts[1].material_remap, 2, "ranges: remap length")
expect.eq(#info.parts[2].material_remap, 0, "ranges: empty remap")
expect.eq(info.nodes[4].part, 6, "ranges: part is the index plus one")
expect.eq(info.nodes[4].part_index, 5, "ranges: part_index as stored")
expect.eq(info.nodes[5].part, 0, "ranges: part of index -1")

-- Parts without nodes are not valid assembly data, nor an assembly.
packages.write_mesh("/Game/Readback/SM_NoNodes", { nanite = true, parts = { { mesh = cube }, { mesh = sphere } }, nodes = {} })
info = nanite_assembly_info("/Game/Readback/SM_NoNodes")
expect.eq(info.assembly_data_valid, false, "no nodes: data valid")
expect.eq(info.is_assembly, false, "no nodes: is_assembly")
expect.eq(info.part_count, 2, "no nodes: part_count")
expect.eq(info.parts[1].node_count + info.parts[2].node_count, 0, "no nodes: part counts")

-- Identity, a bone-relative node, and a yawed node; zero-based indices beside one-based positions.
local s = math.sqrt(0.5)
packages.write_mesh("/Game/Readback/SM_Transforms", {
	nanite = true,
	parts = { { mesh = cube } },
	nodes = {
		{ part = 0 },
		{ part = 0, space = 1, location = { 1.5, -2, 3 }, scale = { 2, 3, 4 } },
		{ part = 0, rotation = { 0, 0, s, s } },
	},
})
info = nanite_assembly_info("/Game/Readback/SM_Transforms")
local node = info.nodes[1]
expect.fields(node, { part = "number", part_index = "number", location = "table", rotation = "table",
	scale = "table", transform_space = "string" }, "node")
expect.eq(math.type(node.part), "integer", "part is an integer")
expect.eq(node.part, 1, "identity: part")
expect.eq(node.part_index, 0, "identity: part_index")
expect.eq(info.parts[1].index, 0, "first part index")
for axis, value in pairs({ x = 0, y = 0, z = 0 }) do
	expect.eq(node.location[axis], value, "identity location " .. axis)
end
for axis, value in pairs({ pitch = 0, yaw = 0, roll = 0 }) do
	expect.eq(node.rotation[axis], value, "identity rotation " .. axis)
end
for axis, value in pairs({ x = 1, y = 1, z = 1 }) do
	expect.eq(node.scale[axis], value, "identity scale " .. axis)
end
expect.eq(node.transform_space, "local", "identity space")
expect.eq(info.nodes[2].transform_space, "bone_relative", "bone-relative space")
expect.eq(info.nodes[2].location.x, 1.5, "location x")
expect.eq(info.nodes[2].location.y, -2, "location y")
expect.eq(info.nodes[2].scale.z, 4, "scale z")
expect.near(info.nodes[3].rotation.yaw, 90, 1e-3, "yaw from the quaternion")
expect.near(info.nodes[3].rotation.pitch, 0, 1e-3, "pitch from the quaternion")

-- No source model: nothing to build, so no render data.
packages.write_mesh("/Game/Readback/SM_NoRender", { nanite = true, parts = { { mesh = cube } }, nodes = { { part = 0 } }, source_models = 0 })
info = nanite_assembly_info("/Game/Readback/SM_NoRender")
expect.eq(info.render_data_available, false, "no render data")
expect.eq(info.valid_nanite_data, false, "no Nanite data without render data")
expect.eq(info.compiling, false, "not compiling")

-- Assembly data on a mesh whose Nanite setting is off: stored, but not an assembly.
packages.write_mesh("/Game/Readback/SM_NaniteOff", { nanite = false, parts = { { mesh = cube } }, nodes = { { part = 0 } } })
info = nanite_assembly_info("/Game/Readback/SM_NaniteOff")
expect.eq(info.nanite_enabled, false, "nanite off")
expect.eq(info.nanite_settings_enabled, false, "stored setting off")
expect.eq(info.assembly_data_valid, true, "data still valid")
expect.eq(info.is_assembly, false, "not an assembly with Nanite off")

-- Nodes without parts: listed as stored, counted by no part, and no valid assembly data.
packages.write_mesh("/Game/Readback/SM_NoParts", { nanite = true, parts = {}, nodes = { { part = 0 }, { part = 3 } } })
info = nanite_assembly_info("/Game/Readback/SM_NoParts")
expect.eq(info.part_count, 0, "no parts: part_count")
expect.eq(#info.parts, 0, "no parts: parts")
expect.eq(info.node_count, 2, "no parts: node_count")
expect.eq(info.nodes[2].part, 4, "no parts: part of the second node")
expect.eq(info.assembly_data_valid, false, "no parts: data valid")

-- The stored Nanite setting is reported as stored, even where the engine forces Nanite on.
headless.set_cvar("r.Nanite.ForceEnableMeshes", 1)
info = nanite_assembly_info("/Game/Readback/SM_NaniteOff")
expect.eq(info.nanite_enabled, true, "forced: nanite enabled")
expect.eq(info.nanite_settings_enabled, false, "forced: stored setting still off")
headless.set_cvar("r.Nanite.ForceEnableMeshes", 0)

-- The readback needs neither the builder plugin, nor the editor, nor the asset registry.
headless.set_plugin_enabled("NaniteAssemblyEditorUtils", false)
headless.set_editor_available(false)
headless.set_asset_registry_available(false)
info = nanite_assembly_info("/Game/Readback/SM_256")
expect.eq(info.ok, true, "without the plugin, the editor and the registry")
expect.eq(info.node_count, 256, "without the plugin, the editor and the registry: nodes")
headless.set_plugin_enabled("NaniteAssemblyEditorUtils", true)
headless.set_editor_available(true)
headless.set_asset_registry_available(true)

-- Every key of the readback, with its type.
info = nanite_assembly_info("/Game/Readback/SM_300")
expect.fields(info, {
	ok = "boolean", asset = "string", object_path = "string", nanite_enabled = "boolean",
	nanite_settings_enabled = "boolean", is_assembly = "boolean", assembly_data_valid = "boolean",
	part_count = "number", node_count = "number", material_slot_count = "number", parts = "table",
	nodes = "table", nodes_truncated = "boolean", compiling = "boolean", render_data_available = "boolean",
	valid_nanite_data = "boolean", assemblies_supported = "boolean",
}, "info")
for _, key in ipairs({ "part_count", "node_count", "material_slot_count" }) do
	expect.eq(math.type(info[key]), "integer", key .. " is an integer")
end
expect.fields(info.parts[1], { index = "number", mesh = "string", node_count = "number", material_remap = "table" }, "part")
expect.fields(info.nodes[1].location, { x = "number", y = "number", z = "number" }, "location")
expect.fields(info.nodes[1].rotation, { pitch = "number", yaw = "number", roll = "number" }, "rotation")
expect.eq(info.asset, "/Game/Readback/SM_300", "asset")
expect.eq(info.render_data_available, true, "render data")
expect.eq(info.assemblies_supported, true, "assemblies supported")
expect.eq(info.valid_nanite_data, true, "valid Nanite data: the assembly's nodes count while assemblies are supported")

-- While the renderer ignores assemblies, a mesh with no triangles of its own builds no Nanite data.
headless.set_cvar("r.Nanite.AllowAssemblies", 0)
packages.write_mesh("/Game/Readback/SM_Ignored", { nanite = true, parts = { { mesh = cube } }, nodes = { { part = 0 } } })
info = nanite_assembly_info("/Game/Readback/SM_Ignored")
expect.eq(info.is_assembly, true, "ignored: still an assembly")
expect.eq(info.part_count, 1, "ignored: parts kept")
expect.eq(info.assemblies_supported, false, "ignored: assemblies_supported")
expect.eq(info.valid_nanite_data, false, "ignored: no Nanite data")
