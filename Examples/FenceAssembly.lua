-- A garden fence as one Nanite Assembly: cylinder posts, and two rails between each pair of posts.
-- Run it with: cvai run Examples/FenceAssembly.lua --project <project folder>

local probe = nanite_assembly_support()
if not probe.available then
	error("the Nanite Assembly builder is not available here: " .. probe.reason)
end

local post_count = 6
local spacing = 200 -- centimetres between posts

local posts = {}
for i = 0, post_count - 1 do
	posts[#posts + 1] = { location = { x = i * spacing, z = 60 }, scale = { x = 0.12, y = 0.12, z = 1.2 } }
end

local rails = {}
for i = 0, post_count - 2 do
	for _, height in ipairs({ 40, 95 }) do
		rails[#rails + 1] = {
			location = { x = i * spacing + spacing / 2, z = height },
			rotation = { yaw = 0 },
			scale = { x = spacing / 100, y = 0.06, z = 0.12 },
		}
	end
end

local result = nanite_assembly_build{
	output = "/Game/Examples/SM_Fence",
	overwrite = true,
	save = true,
	parts = {
		{ mesh = "/Engine/BasicShapes/Cylinder", transforms = posts },
		{ mesh = "/Engine/BasicShapes/Cube", transforms = rails },
	},
}
if not result.ok then
	error(result.error)
end

print(string.format("Built %s: %d parts, %d nodes, %d material slots, saved=%s, valid Nanite data=%s",
	result.object_path, result.part_count, result.node_count, result.material_slot_count,
	tostring(result.saved), tostring(result.valid_nanite_data)))

local info = nanite_assembly_info(result.asset)
for _, part in ipairs(info.parts) do
	print(string.format("  part %d: %s placed %d times", part.index + 1, part.mesh, part.node_count))
end
local first_rail = info.nodes[post_count + 1]
print(string.format("  first rail at x=%.1f z=%.1f, scale %.2f x %.2f x %.2f",
	first_rail.location.x, first_rail.location.z, first_rail.scale.x, first_rail.scale.y, first_rail.scale.z))
