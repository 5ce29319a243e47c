-- One build is one undo step: Undo takes the whole build back, Redo brings it again.
local packages = require("Support.packages")

local cube, sphere = "/Engine/BasicShapes/Cube", "/Engine/BasicShapes/Sphere"
packages.write_mesh("/Game/Undo/SM_Base", {
	nanite = false,
	flags = { "RF_Public", "RF_Standalone", "RF_Transactional" },
	materials = { { material = "/Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial", slot = "Base" } },
})

local before = nanite_assembly_info("/Game/Undo/SM_Base")
expect.eq(before.part_count, 0, "no parts before")
expect.eq(before.nanite_enabled, false, "Nanite off before")

local result = nanite_assembly_build{
	output = "/Game/Undo/SM_Base",
	overwrite = true,
	parts = {
		{ mesh = cube, transforms = { {}, { location = { x = 50 } } } },
		{ mesh = sphere, transforms = { { location = { y = 50 } } } },
	},
}
expect.eq(result.ok, true, "built " .. tostring(result.error))
expect.eq(result.overwritten, true, "edited in place")
expect.eq(result.transaction_owned, true, "owned its transaction")
expect.eq(result.part_count, 2, "two parts")
expect.eq(result.node_count, 3, "three nodes")
expect.eq(result.nanite_enabled, true, "Nanite on")
expect.eq(table.concat(headless.undo_history(), "|"), "Build Nanite Assembly", "one undo step")

local function check(state, parts, nodes, nanite, assembly)
	local info = nanite_assembly_info("/Game/Undo/SM_Base")
	expect.eq(info.part_count, parts, state .. ": parts")
	expect.eq(info.node_count, nodes, state .. ": nodes")
	expect.eq(info.nanite_enabled, nanite, state .. ": Nanite")
	expect.eq(info.is_assembly, assembly, state .. ": assembly")
	return info
end

expect.eq(headless.undo(), true, "undo")
local undone = check("after undo", 0, 0, false, false)
expect.eq(undone.material_slot_count, 1, "after undo: the base material slot again")
expect.eq(undone.assembly_data_valid, false, "after undo: no assembly data")
expect.eq(headless.undo(), false, "only one step to undo")

expect.eq(headless.redo(), true, "redo")
local redone = check("after redo", 2, 3, true, true)
expect.eq(redone.nodes[2].location.x, 50, "after redo: node transforms back")
expect.eq(headless.redo(), false, "nothing more to redo")

-- A new build after an undo drops the step that could have been redone.
expect.eq(headless.undo(), true, "undo again")
local other = nanite_assembly_build{ output = "/Game/Undo/SM_Other", parts = { { mesh = cube, transforms = { {} } } } }
expect.eq(other.ok, true, "second build")
expect.eq(headless.redo(), false, "redo list dropped by the new build")

-- A refused build leaves the undo history alone, redo list included.
expect.eq(headless.undo(), true, "undo the second build")
local refused = nanite_assembly_build{ output = "/Game/Undo/SM_Other", parts = { { mesh = "Missing", transforms = { {} } } }, overwrite = true }
expect.eq(refused.ok, false, "refused")
expect.eq(headless.redo(), true, "the redo step survived the refusal")
