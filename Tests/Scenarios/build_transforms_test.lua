-- Transforms as read from Lua reach the nodes: defaults, aliases, both rotation notations, scales, order.

local transforms = {
	{},
	{ location = { x = 100 } },
	{ translation = { z = 5 } },
	{ location = { x = 1 }, translation = { x = 2 } },
	{ rotation = { yaw = 90 } },
	{ rotation = { z = 90 } },
	{ rotation = { x = 30 } },
	{ rotation = { y = 20 } },
	{ rotation = { pitch = 10, yaw = 20, roll = 30 } },
	{ rotation = {} },
	{ scale = 2 },
	{ scale = { z = 3 } },
	{ location = { x = 3, y = -4.5 }, scale = { x = 0.5, y = 0.25 } },
	{ rotation = { yaw = 370 } },
	{ scale = 0 },
	{ scale = { x = -1 }, rotation = { pitch = 720, roll = -400 } },
}
local result = nanite_assembly_build{
	output = "/Game/Transforms/SM_All",
	parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = transforms }, extra = true, [0] = "ignored" },
}
expect.eq(result.ok, true, "built " .. tostring(result.error))
expect.eq(result.part_count, 1, "keys of the parts list outside 1..n are ignored")
expect.eq(result.node_count, #transforms, "one node per transform")
expect.eq(result.saved, false, "save defaults to false")
expect.eq(result.created, true, "overwrite defaults to false and the output is new")
expect.eq(result.compiled, true, "wait_for_compile defaults to true")

local nodes = nanite_assembly_info("/Game/Transforms/SM_All").nodes
local function near3(node_part, a, b, c, what)
	local keys = node_part.pitch and { "pitch", "yaw", "roll" } or { "x", "y", "z" }
	expect.near(node_part[keys[1]], a, 1e-3, what .. " " .. keys[1])
	expect.near(node_part[keys[2]], b, 1e-3, what .. " " .. keys[2])
	expect.near(node_part[keys[3]], c, 1e-3, what .. " " .. keys[3])
end
near3(nodes[1].location, 0, 0, 0, "identity location")
near3(nodes[1].rotation, 0, 0, 0, "identity rotation")
near3(nodes[1].scale, 1, 1, 1, "identity scale")
near3(nodes[2].location, 100, 0, 0, "location")
near3(nodes[3].location, 0, 0, 5, "translation alias")
near3(nodes[4].location, 1, 0, 0, "location wins over translation")
near3(nodes[5].rotation, 0, 90, 0, "yaw")
near3(nodes[6].rotation, 0, 90, 0, "Euler z is yaw")
near3(nodes[7].rotation, 0, 0, 30, "Euler x is roll")
near3(nodes[8].rotation, 20, 0, 0, "Euler y is pitch")
near3(nodes[9].rotation, 10, 20, 30, "pitch, yaw and roll")
near3(nodes[10].rotation, 0, 0, 0, "empty rotation")
near3(nodes[11].scale, 2, 2, 2, "uniform scale")
near3(nodes[12].scale, 1, 1, 3, "per-axis scale with defaults")
near3(nodes[13].location, 3, -4.5, 0, "integers and fractions")
near3(nodes[13].scale, 0.5, 0.25, 1, "fractional scale")
near3(nodes[14].rotation, 0, 10, 0, "yaw 370 is yaw 10")
-- Magnitudes are not judged: a zero or negative scale and any angle are taken as they are.
near3(nodes[15].scale, 0, 0, 0, "zero scale")
near3(nodes[16].scale, -1, 1, 1, "negative scale")
near3(nodes[16].rotation, 0, 0, -40, "pitch 720 and roll -400")

-- Merge words in any letter case, but not trimmed.
local merged = nanite_assembly_build{ output = "/Game/Transforms/SM_Merge", parts = {
	{ mesh = "/Engine/BasicShapes/Cube", transforms = { {} }, material_merge = "SLOT_NAMES" },
	{ mesh = "/Engine/BasicShapes/Sphere", transforms = { {} }, material_merge = "Material_Indices" },
	{ mesh = "/Engine/BasicShapes/Cone", transforms = { {} }, material_merge = "identical_materials",
		material_overrides = { "/Engine/BasicShapes/BasicShapeMaterial" } },
	{ mesh = "/Engine/BasicShapes/Cylinder", transforms = { {} }, material_overrides = {} },
} }
expect.eq(merged.ok, true, "merge words " .. tostring(merged.error))
expect.eq(merged.part_count, 4, "four parts, one with an empty override list")
