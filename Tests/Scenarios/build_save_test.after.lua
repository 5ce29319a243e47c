-- A new editor session loads what the earlier one saved, nodes included.

local info = nanite_assembly_info("/Game/Saved/SM_Saved")
expect.eq(info.ok, true, "loaded " .. tostring(info.error))
expect.eq(info.is_assembly, true, "an assembly after reload")
expect.eq(info.node_count, 2, "nodes after reload")
expect.eq(info.nodes[1].location.x, 5, "node 1 x")
expect.eq(info.nodes[1].location.y, 6, "node 1 y")
expect.eq(info.nodes[1].location.z, 7, "node 1 z")
expect.near(info.nodes[2].rotation.yaw, 45, 1e-3, "node 2 yaw")
expect.eq(info.nodes[2].scale.x, 3, "node 2 scale")
expect.eq(info.parts[1].mesh, "/Engine/BasicShapes/Cube.Cube", "part mesh")
expect.eq(info.valid_nanite_data, true, "valid Nanite data after reload")
expect.eq(headless.is_package_dirty("/Game/Saved/SM_Saved"), false, "a loaded package is clean")
local flags = table.concat(headless.object_info(info.object_path).flags, "|")
expect.match(flags, "RF_Transactional", "the saved flags came back")

-- Overwriting the loaded mesh and saving again replaces the file's content.
local again = nanite_assembly_build{ output = "/Game/Saved/SM_Saved", overwrite = true, save = true,
	parts = { { mesh = "/Engine/BasicShapes/Cone", transforms = { {} } } } }
expect.eq(again.ok, true, "saved again " .. tostring(again.error))
expect.eq(again.overwritten, true, "overwritten")
