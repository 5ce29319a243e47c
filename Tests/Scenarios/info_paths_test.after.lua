-- A new editor session on the same project: the saved meshes load from disk, whatever the letter case,
-- and reading them back changes nothing.

expect.eq(headless.object_info("/Game/Meshes/SM_Rock.SM_Rock"), nil, "not in memory before it is asked for")
local info = nanite_assembly_info("/game/MESHES/sm_rock")
expect.eq(info.ok, true, "loaded from disk " .. tostring(info.error))
expect.eq(info.object_path, "/Game/Meshes/SM_Rock.SM_Rock", "the object keeps the spelling it was saved with")
expect.eq(info.part_count, 1, "part_count after reload")
expect.eq(info.node_count, 1, "node_count after reload")
expect.eq(info.parts[1].mesh, "/Engine/BasicShapes/Sphere.Sphere", "part mesh after reload")
expect.eq(nanite_assembly_info("SM_Rock").object_path, "/Game/SM_Rock.SM_Rock", "content-root mesh after reload")

for _ = 1, 3 do
	nanite_assembly_info("Meshes/SM_Rock")
	nanite_assembly_info("/Engine/BasicShapes/Cube")
end
expect.eq(headless.is_package_dirty("/Game/Meshes/SM_Rock"), false, "info never dirties a package")
expect.eq(headless.is_package_dirty("/Engine/BasicShapes/Cube"), false, "info never dirties engine content")
expect.eq(#headless.undo_history(), 0, "info leaves no undo step")
expect.eq(headless.undo(), false, "nothing to undo")
