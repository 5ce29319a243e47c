-- Every refusal of the request reader, reached by a request a script could send, with the whole message.

local cube = "/Engine/BasicShapes/Cube"
local out = "/Game/Reader/SM_Out"
local P = "nanite_assembly_build parts[1]"
local T = P .. ".transforms[1]"

local function part(fields)
	local p = { mesh = cube, transforms = { {} } }
	for k, v in pairs(fields or {}) do
		p[k] = v
	end
	return p
end

local function one_transform(t)
	return { parts = { part({ transforms = { t } }) }, output = out }
end

local function holes(list, length)
	return setmetatable(list, { __len = function() return length end })
end

local cases = {
	-- the top level, in the order its checks run
	{ { output = out }, "nanite_assembly_build: 'parts' must be a non-empty list of { mesh=, transforms={...} }" },
	{ { parts = 5, output = out }, "nanite_assembly_build: 'parts' must be a non-empty list of { mesh=, transforms={...} }" },
	{ { parts = {}, output = out }, "nanite_assembly_build: 'parts' is empty; at least one part with one transform is required" },
	{ { parts = { part() } }, "nanite_assembly_build: 'output' (package path of the assembly mesh to create) is required" },
	{ { parts = { part() }, output = 42 }, "nanite_assembly_build: 'output' (package path of the assembly mesh to create) is required" },
	{ { parts = "not read yet" }, "nanite_assembly_build: 'output' (package path of the assembly mesh to create) is required" },
	{ { parts = { part() }, output = out, bogus = 1 }, "nanite_assembly_build: unknown key 'bogus' (accepted: parts|output|overwrite|save|wait_for_compile)" },
	{ { Parts = { part() }, output = out }, "nanite_assembly_build: unknown key 'Parts' (accepted: parts|output|overwrite|save|wait_for_compile)" },
	{ { parts = { part() }, output = out, [1] = true }, "nanite_assembly_build: only string keys are accepted" },
	{ { part() }, "nanite_assembly_build: only string keys are accepted" },
	{ { parts = { part() }, output = out, overwrite = "yes" }, "nanite_assembly_build: 'overwrite' must be a boolean" },
	{ { parts = { part() }, output = out, overwrite = 1 }, "nanite_assembly_build: 'overwrite' must be a boolean" },
	{ { parts = { part() }, output = out, save = 0 }, "nanite_assembly_build: 'save' must be a boolean" },
	{ { parts = { part() }, output = out, wait_for_compile = "true" }, "nanite_assembly_build: 'wait_for_compile' must be a boolean" },
	{ { parts = { part() }, output = out, save = function() end }, "nanite_assembly_build: 'save' must be a boolean" },
	{ { parts = 5, output = out, overwrite = "yes" }, "nanite_assembly_build: 'overwrite' must be a boolean" },

	-- parts
	{ { parts = { 5 }, output = out }, P .. ": must be a table { mesh=, transforms={...} }" },
	{ { parts = { part(), 5 }, output = out }, "nanite_assembly_build parts[2]: must be a table { mesh=, transforms={...} }" },
	{ { parts = holes({ part(), nil, part() }, 3), output = out }, "nanite_assembly_build parts[2]: must be a table { mesh=, transforms={...} }" },
	{ { parts = { part({ colour = 1 }) }, output = out }, P .. ": unknown key 'colour' (accepted: mesh|transforms|material_merge|material_overrides)" },
	{ { parts = { { mesh = cube, transforms = { {} }, [1] = 1 } }, output = out }, P .. ": only string keys are accepted" },
	{ { parts = { { transforms = { {} } } }, output = out }, P .. ": 'mesh' (static mesh path) is required" },
	{ { parts = { part({ mesh = 42 }) }, output = out }, P .. ": 'mesh' (static mesh path) is required" },
	{ { parts = { part({ mesh = "" }) }, output = out }, P .. ": 'mesh' (static mesh path) is required" },
	{ { parts = { part({ mesh = {} }) }, output = out }, P .. ": 'mesh' (static mesh path) is required" },
	{ { parts = { { mesh = cube } }, output = out }, P .. ": 'transforms' must be a non-empty list of transform tables" },
	{ { parts = { part({ transforms = "x" }) }, output = out }, P .. ": 'transforms' must be a non-empty list of transform tables" },
	{ { parts = { part({ transforms = {} }) }, output = out }, P .. ": 'transforms' is empty; every part needs at least one transform ({} is identity)" },
	{ { parts = { part({ material_merge = 1 }) }, output = out }, P .. ": 'material_merge' must be a string (identical_materials|slot_names|material_indices)" },
	{ { parts = { part({ material_merge = "nope" }) }, output = out }, P .. ": unknown material_merge 'nope' (identical_materials|slot_names|material_indices)" },
	{ { parts = { part({ material_merge = "everything" }) }, output = out }, P .. ": unknown material_merge 'everything' (identical_materials|slot_names|material_indices)" },
	{ { parts = { part({ material_merge = " slot_names" }) }, output = out }, P .. ": unknown material_merge ' slot_names' (identical_materials|slot_names|material_indices)" },
	{ { parts = { part({ material_merge = "" }) }, output = out }, P .. ": unknown material_merge '' (identical_materials|slot_names|material_indices)" },
	{ { parts = { part({ material_overrides = "x" }) }, output = out }, P .. ": 'material_overrides' must be a list of material paths" },
	{ { parts = { part({ material_overrides = { "" } }) }, output = out }, P .. ".material_overrides[1]: must be a material path string" },
	{ { parts = { part({ material_overrides = { "/Game/M", 5 } }) }, output = out }, P .. ".material_overrides[2]: must be a material path string" },
	{ { parts = { part({ mesh = "" }), 5 }, output = out }, P .. ": 'mesh' (static mesh path) is required" },
	{ { parts = { part(), part({ transforms = {} }) }, output = out }, "nanite_assembly_build parts[2]: 'transforms' is empty; every part needs at least one transform ({} is identity)" },

	-- transforms
	{ { parts = { part({ transforms = { 5 } }) }, output = out }, T .. ": each transform must be a table {location=,rotation=,scale=}" },
	{ { parts = { part({ transforms = holes({}, 1) }) }, output = out }, T .. ": each transform must be a table {location=,rotation=,scale=}" },
	{ { parts = { part({ transforms = { {}, "x" } }) }, output = out }, P .. ".transforms[2]: each transform must be a table {location=,rotation=,scale=}" },
	{ one_transform({ position = { x = 1 } }), T .. ": unknown key 'position' (accepted: location|translation|rotation|scale)" },
	{ one_transform({ Location = { x = 1 } }), T .. ": unknown key 'Location' (accepted: location|translation|rotation|scale)" },
	{ one_transform({ location = { 1, 2, 3 } }), T .. ".location: only string keys are accepted" },
	{ one_transform({ location = { x = "1" } }), T .. ".location: 'x' must be a number" },
	{ one_transform({ location = { y = true } }), T .. ".location: 'y' must be a number" },
	{ one_transform({ location = { x = 0 / 0 } }), T .. ".location: 'x' must be finite" },
	{ one_transform({ location = { x = math.huge } }), T .. ".location: 'x' must be finite" },
	{ one_transform({ location = { z = -math.huge } }), T .. ".location: 'z' must be finite" },
	{ one_transform({ location = { x = "1", y = 0 / 0 } }), T .. ".location: 'x' must be a number" },
	{ one_transform({ location = { w = 1 } }), T .. ".location: unknown key 'w' (accepted: x|y|z)" },
	{ one_transform({ location = { x = 1, y = function() end } }), T .. ".location: 'y' must be a number" },
	{ one_transform({ location = 5 }), T .. ": 'location' must be a table {x,y,z}" },
	{ one_transform({ translation = "here" }), T .. ": 'location' must be a table {x,y,z}" },
	{ one_transform({ translation = { x = "1" } }), T .. ".location: 'x' must be a number" },
	{ one_transform({ rotation = 5 }), T .. ": 'rotation' must be a table {pitch,yaw,roll} or Euler {x,y,z}" },
	{ one_transform({ rotation = { pitch = 10, x = 5 } }), T .. ".rotation: use either {pitch,yaw,roll} or Euler {x,y,z}, not both" },
	{ one_transform({ rotation = { roll = "a", z = "b" } }), T .. ".rotation: use either {pitch,yaw,roll} or Euler {x,y,z}, not both" },
	{ one_transform({ rotation = { yaw = "1" } }), T .. ".rotation: 'yaw' must be a number" },
	{ one_transform({ rotation = { z = true } }), T .. ".rotation: 'z' must be a number" },
	{ one_transform({ rotation = { pitch = math.huge } }), T .. ".rotation: 'pitch' must be finite" },
	{ one_transform({ rotation = { bank = 1 } }), T .. ".rotation: unknown key 'bank' (accepted: pitch|yaw|roll|x|y|z)" },
	{ one_transform({ scale = "big" }), T .. ": 'scale' must be a number or a table {x,y,z}" },
	{ one_transform({ scale = true }), T .. ": 'scale' must be a number or a table {x,y,z}" },
	{ one_transform({ scale = math.huge }), T .. ": 'scale' must be finite" },
	{ one_transform({ scale = 0 / 0 }), T .. ": 'scale' must be finite" },
	{ one_transform({ scale = { z = 0 / 0 } }), T .. ".scale: 'z' must be finite" },
	{ one_transform({ scale = { k = 1 } }), T .. ".scale: unknown key 'k' (accepted: x|y|z)" },
	{ one_transform({ location = 5, scale = "big" }), T .. ": 'location' must be a table {x,y,z}" },
	{ one_transform({ rotation = 5, scale = "big" }), T .. ": 'rotation' must be a table {pitch,yaw,roll} or Euler {x,y,z}" },
	{ one_transform({ location = { x = 1 }, rotation = { yaw = "a" }, scale = "big" }), T .. ".rotation: 'yaw' must be a number" },
}

for index, case in ipairs(cases) do
	expect.refused(nanite_assembly_build(case[1]), case[2], "nanite_assembly_build", "case " .. index)
end

-- A refusal touches nothing: no object at the output, no undo step.
expect.eq(headless.object_info(out .. ".SM_Out"), nil, "nothing created at the output")
expect.eq(#headless.undo_history(), 0, "no undo step")
expect.eq(#headless.log_lines(), #cases, "one log line per call")
