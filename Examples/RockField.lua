-- A field of scattered rocks as one Nanite Assembly: flattened spheres and cones at random places,
-- turns and sizes (the same every run: the random generator is seeded). Then a denser rebuild that is
-- taken back with the editor's Undo.
-- Run it with: cvai run Examples/RockField.lua --project <project folder>

local probe = nanite_assembly_support()
if not probe.available then
	error("the Nanite Assembly builder is not available here: " .. probe.reason)
end

math.randomseed(20261122)

local function scatter(count, radius, min_size, max_size, flatten)
	local transforms = {}
	for i = 1, count do
		local angle = math.random() * 2 * math.pi
		local distance = math.sqrt(math.random()) * radius
		local size = min_size + math.random() * (max_size - min_size)
		transforms[i] = {
			location = { x = math.cos(angle) * distance, y = math.sin(angle) * distance, z = 0 },
			rotation = { yaw = math.random(0, 359), pitch = math.random(-8, 8), roll = math.random(-8, 8) },
			scale = { x = size, y = size * (0.7 + math.random() * 0.6), z = size * flatten },
		}
	end
	return transforms
end

local function build_field(boulders, spikes, overwrite)
	return nanite_assembly_build{
		output = "/Game/Examples/SM_RockField",
		overwrite = overwrite,
		parts = {
			{ mesh = "/Engine/BasicShapes/Sphere", transforms = scatter(boulders, 2000, 0.4, 2.5, 0.45) },
			{ mesh = "/Engine/BasicShapes/Cone", transforms = scatter(spikes, 2000, 0.2, 0.8, 1.6), material_merge = "slot_names" },
		},
		save = true,
	}
end

local field = build_field(120, 40, true)
if not field.ok then
	error(field.error)
end
print(string.format("Rock field %s: %d rocks in %d parts (saved=%s, valid Nanite data=%s)",
	field.object_path, field.node_count, field.part_count, tostring(field.saved), tostring(field.valid_nanite_data)))

-- A denser field, then the editor's Undo: the mesh holds the sparser field again (the package file keeps
-- the denser one until the next save).
headless.begin_transaction("Try a denser field")
local dense = build_field(400, 150, true)
headless.end_transaction()
print(string.format("Denser field: %d rocks (saved=%s)", dense.node_count, tostring(dense.saved)))
headless.undo()

local info = nanite_assembly_info("/Game/Examples/SM_RockField")
print(string.format("After Undo: %d rocks; the first rock sits at (%.0f, %.0f) turned %.0f degrees",
	info.node_count, info.nodes[1].location.x, info.nodes[1].location.y, info.nodes[1].rotation.yaw))
