-- FenceAssembly.lua builds and saves a fence of six posts and ten rails.
dofile("FenceAssembly.lua")

local info = expect.ok(nanite_assembly_info("/Game/Examples/SM_Fence"))
expect.eq(info.is_assembly, true, "an assembly")
expect.eq(info.node_count, 16, "posts and rails")
expect.eq(info.parts[1].mesh, "/Engine/BasicShapes/Cylinder.Cylinder", "the posts' mesh")
expect.eq(info.parts[1].node_count, 6, "posts")
expect.eq(info.parts[2].mesh, "/Engine/BasicShapes/Cube.Cube", "the rails' mesh")
expect.eq(info.parts[2].node_count, 10, "rails")
local last_post, first_rail = info.nodes[6], info.nodes[7]
expect.near(last_post.location.x, 1000, 1e-3, "the last post's x")
expect.near(first_rail.location.x, 100, 1e-3, "the first rail's x")
expect.near(first_rail.location.z, 40, 1e-3, "the first rail's height")
expect.near(first_rail.scale.x, 2, 1e-3, "the first rail spans two metres")
expect.eq(headless.package_file_exists("/Game/Examples/SM_Fence"), true, "saved")
expect.eq(headless.is_package_dirty("/Game/Examples/SM_Fence"), false, "nothing left unsaved")
