-- Writes package files straight into the project's Content folder, for meshes whose assembly data a
-- script could not produce through the builder (300 nodes of one part, out-of-range part indices, ...).
local packages = {}

local function number(value)
	return string.format("%.9g", value)
end

local function list(items, convert)
	local out = {}
	for i, item in ipairs(items) do
		out[i] = convert(item)
	end
	return "[" .. table.concat(out, ",") .. "]"
end

-- The file of a /Game/ package in this project.
function packages.file_of(package_name)
	return headless.project_dir() .. "Content/" .. package_name:gsub("^/Game/", "") .. ".uasset.json"
end

function packages.write_text(package_name, text)
	local path = packages.file_of(package_name)
	os.execute('mkdir -p "' .. path:match("^(.*)/[^/]*$") .. '"')
	local file = assert(io.open(path, "wb"))
	file:write(text)
	file:close()
	return path
end

-- mesh: { nanite = bool, flags = {...}, materials = { {material = path|nil, slot = name}, ... },
--         parts = { {mesh = path, remap = {...}}, ... },
--         nodes = { {part = index, space = 0|1, rotation = {x,y,z,w}, location = {x,y,z}, scale = {x,y,z}}, ... },
--         source_models = n }
function packages.write_mesh(package_name, mesh)
	local name = package_name:match("([^/]+)$")
	local materials = list(mesh.materials or {}, function(m)
		return string.format('{"material":%s,"slot_name":"%s","imported_slot_name":"%s"}',
			m.material and ('"' .. m.material .. '"') or "null", m.slot or "", m.slot or "")
	end)
	local parts = list(mesh.parts or {}, function(p)
		return string.format('{"mesh":"%s","material_remap":%s}', p.mesh, list(p.remap or {}, tostring))
	end)
	local nodes = list(mesh.nodes or {}, function(n)
		local r = n.rotation or { 0, 0, 0, 1 }
		local t = n.location or { 0, 0, 0 }
		local s = n.scale or { 1, 1, 1 }
		return string.format("[%d,%d,%s,%s,%s,%s,%s,%s,%s,%s,%s,%s]", n.part, n.space or 0,
			number(r[1]), number(r[2]), number(r[3]), number(r[4]), number(t[1]), number(t[2]), number(t[3]),
			number(s[1]), number(s[2]), number(s[3]))
	end)
	local flags = list(mesh.flags or { "RF_Public", "RF_Standalone" }, function(f) return '"' .. f .. '"' end)
	local text = string.format([[{
	"format": "cvai-headless-package",
	"version": 1,
	"package": "%s",
	"objects": [
		{"name":"%s","class":"StaticMesh","outer":"","flags":%s,"properties":{"static_materials":%s,"nanite":{"enabled":%s,"assembly":{"parts":%s,"nodes":%s}},"source_models":%d}}
	]
}
]], package_name, name, flags, materials, tostring(mesh.nanite and true or false), parts, nodes, mesh.source_models or 1)
	return packages.write_text(package_name, text)
end

-- n nodes that all place part 0, at x = 0, 10, 20, ...
function packages.nodes_of_part(count, part)
	local nodes = {}
	for i = 1, count do
		nodes[i] = { part = part or 0, location = { (i - 1) * 10, 0, 0 } }
	end
	return nodes
end

return packages
