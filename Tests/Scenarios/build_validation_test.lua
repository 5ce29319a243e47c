-- Validation refusals in their order, each leaving the project as it was.
local packages = require("Support.packages")

local cube = "/Engine/BasicShapes/Cube"
local function request(output, parts, overwrite)
	return { output = output, overwrite = overwrite, parts = parts or { { mesh = cube, transforms = { {} } } } }
end

-- Things that exist before the refusals: an assembly, a plain existing mesh and a material.
local assembly = nanite_assembly_build(request("/Game/Val/SM_Assembly"))
expect.eq(assembly.ok, true, "assembly built " .. tostring(assembly.error))
local existing = nanite_assembly_build(request("/Game/Val/SM_Existing", { { mesh = cube, transforms = { {}, {} } } }))
expect.eq(existing.ok, true, "existing built " .. tostring(existing.error))
packages.write_text("/Game/Val/M_Thing", [[{"format":"cvai-headless-package","version":1,"package":"/Game/Val/M_Thing",
"objects":[{"name":"M_Thing","class":"Material","outer":"","flags":["RF_Public","RF_Standalone"],"properties":{}}]}]])
packages.write_mesh("/Game/Val/SM_Plain", { nanite = false })
local transient = headless.create_transient_mesh("CorvaneTransientPart")
expect.eq(transient, "/Engine/Transient.CorvaneTransientPart", "transient mesh path")
local undo_steps = #headless.undo_history()

local invalid_chars = "'\\:*?\"<>|' ,.&!~\n\r\t@#'"
local engine_content = "is not a valid writable package path (engine content is read-only for this verb; use /Game/...)"
local no_root = "Path does not start with a valid root. Path must begin with one of: /Engine/, /Game/"
local cases = {
	{ request("/Temp/CorvaneNaniteAssembly"), "output '/Temp/CorvaneNaniteAssembly' is not a valid writable package path (" .. no_root .. ")" },
	{ request("/Config/SM_X"), "output '/Config/SM_X' is not a valid writable package path (" .. no_root .. ")" },
	{ request("/Unmounted/SM_X"), "output '/Unmounted/SM_X' is not a valid writable package path (" .. no_root .. ")" },
	{ request("/Game"), "output '/Game' is not a valid writable package path (" .. no_root .. ")" },
	{ request("not a package path"), "output 'not a package path' is not a valid writable package path (Input '/Game/not a package path' contains one "
		.. "of the invalid characters for LongPackageNames: " .. invalid_chars .. ".)" },
	{ request(""), "output '' is not a valid writable package path ()" },
	{ request("/Game/"), "output '/Game/' is not a valid writable package path (Input '/Game/' ends with a '/', which is invalid for LongPackageNames.)" },
	{ request("/Game//SM_X"), "output '/Game//SM_X' is not a valid writable package path (Input '/Game//SM_X' contains '//', which is invalid for LongPackageNames.)" },
	{ request("/G"), "output '/G' is not a valid writable package path (Input '/G' contains fewer than the minimum number of characters 4 for LongPackageNames.)" },
	{ request("/Engine/BasicShapes/Cube"), "output '/Engine/BasicShapes/Cube' " .. engine_content },
	{ request("/Engine/BasicShapes/NA_CorvaneDoesNotExist"), "output '/Engine/BasicShapes/NA_CorvaneDoesNotExist' " .. engine_content },
	{ request("/Engine/BasicShapes/BasicShapeMaterial"), "output '/Engine/BasicShapes/BasicShapeMaterial' " .. engine_content },
	{ request("/engine/BasicShapes/SM_Lower"), "output '/engine/BasicShapes/SM_Lower' " .. engine_content },
	{ request("Val/M_Thing"), "output '/Game/Val/M_Thing.M_Thing' already exists and is a Material, not a StaticMesh" },
	{ request("Val/SM_Existing"), "output '/Game/Val/SM_Existing.SM_Existing' already exists; pass overwrite=true to rebuild its assembly parts" },
	{ request("/Game/Val/SM_Existing.SM_Existing"), "output '/Game/Val/SM_Existing.SM_Existing' already exists; pass overwrite=true to rebuild its assembly parts" },
	{ request("/Temp/X", { { mesh = "/Engine/BasicShapes/DoesNotExist_Corvane", transforms = { {} } } }), "output '/Temp/X' is not a valid writable package path (" .. no_root .. ")" },

	{ request("/Game/Val/SM_New", { { mesh = "\0hidden", transforms = { {} } } }), "parts[1]: mesh path is empty" },
	{ request("/Game/Val/SM_New", { { mesh = "/Engine/BasicShapes/DoesNotExist_Corvane", transforms = { {} } } }), "parts[1]: static mesh not found: /Engine/BasicShapes/DoesNotExist_Corvane" },
	{ request("/Game/Val/SM_New", { { mesh = "Nowhere/SM_Missing", transforms = { {} } } }), "parts[1]: static mesh not found: Nowhere/SM_Missing" },
	{ request("/Game/Val/SM_New", { { mesh = "/Engine/BasicShapes/BasicShapeMaterial", transforms = { {} } } }), "parts[1]: '/Engine/BasicShapes/BasicShapeMaterial' is a Material, not a StaticMesh" },
	{ request("/Game/Val/SM_New", { { mesh = "Val/M_Thing", transforms = { {} } } }), "parts[1]: 'Val/M_Thing' is a Material, not a StaticMesh" },
	{ request("/Game/Val/SM_New", { { mesh = transient, transforms = { {} } } }), "parts[1]: '/Engine/Transient.CorvaneTransientPart' lives in a transient package and could not be reloaded by the assembly build" },
	{ request("/Game/Val/SM_New", { { mesh = "Val/SM_Assembly", transforms = { {} } } }), "parts[1]: '/Game/Val/SM_Assembly.SM_Assembly' is itself a Nanite Assembly; assemblies of assemblies are not supported" },
	{ request("/Game/Val/SM_New", { { mesh = cube, transforms = { {} }, material_overrides = { "/Engine/BasicShapes/NoSuchMaterial_Corvane" } } }),
		"parts[1].material_overrides[1]: material not found: /Engine/BasicShapes/NoSuchMaterial_Corvane" },
	{ request("/Game/Val/SM_New", { { mesh = cube, transforms = { {} }, material_overrides = { "/Engine/BasicShapes/BasicShapeMaterial", "/Engine/BasicShapes/Cube" } } }),
		"parts[1].material_overrides[2]: material not found: /Engine/BasicShapes/Cube" },
	{ request("/Game/Val/SM_New", { { mesh = cube, transforms = { {} } }, { mesh = "Missing2", transforms = { {} } } }), "parts[2]: static mesh not found: Missing2" },
}
for index, case in ipairs(cases) do
	expect.refused(nanite_assembly_build(case[1]), case[2], "nanite_assembly_build", "case " .. index)
end

-- A part that is the output itself, found in another letter case; an output that is an assembly is refused
-- as a part for that first.
expect.refused(nanite_assembly_build(request("/Game/Val/SM_Plain", { { mesh = "/game/val/sm_plain", transforms = { {} } } }, true)),
	"parts[1]: '/Game/Val/SM_Plain.SM_Plain' is the output mesh; the target cannot be one of its own parts", "nanite_assembly_build", "part is the output")
expect.refused(nanite_assembly_build(request("/Game/Val/SM_Existing", { { mesh = "Val/SM_Existing", transforms = { {} } } }, true)),
	"parts[1]: '/Game/Val/SM_Existing.SM_Existing' is itself a Nanite Assembly; assemblies of assemblies are not supported", "nanite_assembly_build",
	"an assembly output as its own part")
expect.eq(nanite_assembly_info("Val/SM_Plain").part_count, 0, "the plain mesh is unchanged")

-- None of this touched anything.
expect.eq(headless.object_info("/Game/Val/SM_New.SM_New"), nil, "no new mesh")
expect.eq(headless.object_info("/Game/Val/SM_New"), nil, "no new package")
expect.eq(headless.package_file_exists("/Game/Val/SM_New"), false, "no new file")
expect.eq(#headless.undo_history(), undo_steps, "no undo step")
local still = nanite_assembly_info("Val/SM_Existing")
expect.eq(still.node_count, 2, "the existing mesh keeps its nodes")
expect.eq(headless.object_info("/Engine/BasicShapes/NA_CorvaneDoesNotExist"), nil, "no engine package")
