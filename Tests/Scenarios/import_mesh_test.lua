-- headless.import_mesh: a model file becomes a saved static mesh that an assembly can use as a part; refusals
-- return nil and the reason and leave nothing behind; replace keeps the old file as a backup, and a replacement
-- that cannot be saved leaves the old mesh as it was.

local data = "../Data/Import/"
local box = headless.import_mesh(data .. "TwoMaterialBox.obj", "Imported/SM_Box")
expect.eq(box, "/Game/Imported/SM_Box.SM_Box", "the object path of the imported mesh")
expect.eq(headless.package_file_exists("/Game/Imported/SM_Box"), true, "saved")
expect.eq(headless.is_package_dirty("/Game/Imported/SM_Box"), false, "nothing left unsaved")
local info = headless.object_info(box)
expect.eq(info.class, "StaticMesh", "a static mesh")
expect.eq(table.concat(info.flags, ","), "RF_Public,RF_Standalone,RF_WasLoaded,RF_LoadCompleted", "flags of a saved asset")
expect.eq(#headless.saved_packages(), 1, "one save")
expect.eq(headless.saved_packages()[1].package, "/Game/Imported/SM_Box", "the import's package was saved")

local readback = nanite_assembly_info(box)
expect.eq(readback.ok, true, "the verb reads it back")
expect.eq(readback.material_slot_count, 2, "one slot per used material")
expect.eq(readback.is_assembly, false, "a plain mesh")

-- The imported mesh as a part of an assembly, a row of three.
local row = nanite_assembly_build{ output = "/Game/Imported/SM_Row", save = true, parts = { { mesh = box,
	transforms = { { location = { x = 0 } }, { location = { x = 300 } }, { location = { x = 600 } } } } } }
expect.eq(row.ok, true, "built from the imported part " .. tostring(row.error))
expect.eq(row.parts[1].mesh, box, "the part")
expect.eq(row.node_count, 3, "three nodes")
expect.eq(#row.parts[1].material_remap, 2, "both slots remapped")

-- An existing package is refused without replace, whatever made it.
local path, message = headless.import_mesh(data .. "Nodes.gltf", "/Game/Imported/SM_Box.SM_Box")
expect.eq(path, nil, "no path when refused")
expect.eq(message, "cannot import to '/Game/Imported/SM_Box.SM_Box': /Game/Imported/SM_Box already exists (replace it with --replace, or replace = true in a script)",
	"refused over an existing package")
-- Replace takes the place of a static mesh only.
local material_file = headless.project_dir() .. "Content/Imported/M_Paint.uasset.json"
local file = assert(io.open(material_file, "w"))
file:write('{"format": "cvai-headless-package", "version": 2, "package": "/Game/Imported/M_Paint", "objects": [\n'
	.. '{"name": "M_Paint", "class": "Material", "outer": "", "flags": ["RF_Public", "RF_Standalone"], "properties": {}}\n]}\n')
file:close()
path, message = headless.import_mesh(data .. "Nodes.gltf", "Imported/M_Paint", { replace = true })
expect.eq(message, "cannot import to 'Imported/M_Paint': /Game/Imported/M_Paint.M_Paint is a Material, and an import replaces only a StaticMesh",
	"a material in the way")

-- A file that cannot be read creates nothing.
path, message = headless.import_mesh(data .. "Missing.glb", "Imported/SM_Missing")
expect.eq(message, "cannot import '" .. data .. "Missing.glb': no such file", "a missing file")
expect.eq(headless.object_info("/Game/Imported/SM_Missing.SM_Missing"), nil, "no object")
path, message = headless.import_mesh(data .. "TwoMaterialBox.mtl", "Imported/SM_Mtl")
expect.eq(message, "cannot import '" .. data .. "TwoMaterialBox.mtl': only .gltf, .glb, .obj and .fbx files can be imported", "not a model file")
path, message = headless.import_mesh(data .. "Nodes.gltf", "/Engine/BasicShapes/SM_Mine")
expect.eq(message, "cannot import to '/Engine/BasicShapes/SM_Mine': engine content is read-only; import under /Game/", "engine content")
path, message = headless.import_mesh(data .. "Nodes.gltf", "/Game/Bad Name")
expect.eq(message, "cannot import to '/Game/Bad Name': it is not a valid package path (Input '/Game/Bad Name' contains one of the invalid characters "
	.. "for LongPackageNames: '\\:*?\"<>|' ,.&!~\n\r\t@#'.)", "a bad name")

-- A save that fails takes a new mesh away again, and puts a replaced one back as it was.
headless.fail_next("SavePackages")
path, message = headless.import_mesh(data .. "Nodes.gltf", "Imported/SM_Unsaved")
expect.eq(message, "cannot import to 'Imported/SM_Unsaved': the package was not saved: Saving failed (injected fault).", "a failed save")
expect.eq(headless.object_info("/Game/Imported/SM_Unsaved.SM_Unsaved").garbage, true, "the new mesh is gone")
expect.eq(headless.package_file_exists("/Game/Imported/SM_Unsaved"), false, "no file")
expect.eq(headless.is_package_dirty("/Game/Imported/SM_Unsaved"), false, "nothing left to save")
expect.eq(headless.import_mesh(data .. "Nodes.gltf", "Imported/SM_Unsaved"), "/Game/Imported/SM_Unsaved.SM_Unsaved", "the same import again")

headless.fail_next("NewObject")
path, message = headless.import_mesh(data .. "Nodes.gltf", "Imported/SM_NoObject")
expect.eq(message, "cannot import to 'Imported/SM_NoObject': the editor could not create the mesh", "no object made")
expect.eq(headless.is_package_dirty("/Game/Imported/SM_NoObject"), false, "no package left to save")
headless.fail_next("CreatePackage")
path, message = headless.import_mesh(data .. "Nodes.gltf", "Imported/SM_NoPackage")
expect.eq(message, "cannot import to 'Imported/SM_NoPackage': the editor could not create the mesh", "no package made")

-- Without the asset registry (as early in an editor's start) the import goes on.
headless.set_asset_registry_available(false)
expect.eq(headless.import_mesh(data .. "Nodes.gltf", "Imported/SM_Unregistered"), "/Game/Imported/SM_Unregistered.SM_Unregistered", "imported")
headless.set_asset_registry_available(true)

headless.fail_next("SavePackages")
path, message = headless.import_mesh(data .. "ZUpInches.fbx", "Imported/SM_Box", { replace = true })
expect.eq(path, nil, "a replacement that was not saved")
expect.eq(nanite_assembly_info(box).material_slot_count, 2, "the old slots are back")
expect.eq(headless.is_package_dirty("/Game/Imported/SM_Box"), false, "and nothing to save")

expect.eq(headless.import_mesh(data .. "ZUpInches.fbx", "Imported/SM_Box", { replace = true }), box, "replaced")
expect.eq(nanite_assembly_info(box).material_slot_count, 1, "the new mesh's one slot")
local backups = {}
for name in io.popen("ls '" .. headless.project_dir() .. "Saved/Backup/Game/Imported'"):lines() do
	backups[#backups + 1] = name
end
expect.eq(#backups, 1, "one backup")
expect.match(backups[1], "^SM_Box_%d+%-%d+%-%d+%-%d+%-%d+%-%d+%.uasset%.json$", "the replaced file is kept")

-- Wrong arguments are script errors.
local function error_of(...)
	local arguments = table.pack(...)
	local ok, err = pcall(function() return headless.import_mesh(table.unpack(arguments, 1, arguments.n)) end)
	-- Without the place of the call, which the wrapper adds.
	return not ok and err:gsub("^[^:]+:%d+: ", "") or nil
end
expect.eq(error_of(data .. "Nodes.gltf"), "headless.import_mesh(file, dest, options?): argument #2 'dest' must be a string, got no value", "no destination")
expect.eq(error_of(data .. "Nodes.gltf", "Imported/SM_X", { overwrite = true }), "headless.import_mesh(file, dest, options?): argument #3 'options' has an unknown key overwrite (the only option is replace)", "an unknown option")
expect.eq(error_of(data .. "Nodes.gltf", "Imported/SM_X", { replace = "yes" }), "headless.import_mesh(file, dest, options?): argument #3 'options' field 'replace' must be a boolean, got string", "replace not a boolean")
expect.eq(error_of(data .. "Nodes.gltf", "Imported/SM_X", true), "headless.import_mesh(file, dest, options?): argument #3 'options' must be a table, got boolean", "options not a table")
