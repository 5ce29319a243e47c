-- Faults inside a build: the exact messages, the roll-back when the build owns its transaction, and no
-- roll-back inside a caller's transaction.
local log = require("Support.log")
local packages = require("Support.packages")

local cube, sphere = "/Engine/BasicShapes/Cube", "/Engine/BasicShapes/Sphere"
local function build(output, extra)
	local request = { output = output, parts = { { mesh = cube, transforms = { {} } }, { mesh = sphere, transforms = { {} } } } }
	for k, v in pairs(extra or {}) do
		request[k] = v
	end
	return nanite_assembly_build(request)
end

-- A new output whose build fails is left behind as nothing: not public, not standalone, garbage, its new
-- package as clean as it was, and no undo step.
local function check_discarded(output, what)
	local name = output:match("([^/]+)$")
	local object = headless.object_info(output .. "." .. name)
	expect.eq(type(object), "table", what .. ": the mesh object")
	if object then
		expect.eq(object.garbage, true, what .. ": garbage")
		expect.eq(table.concat(object.flags, "|"), "RF_Transactional", what .. ": public and standalone taken away")
	end
	expect.eq(headless.is_package_dirty(output), false, what .. ": package dirty flag restored")
	expect.eq(#headless.undo_history(), 0, what .. ": no undo step")
	expect.eq(nanite_assembly_info(output).ok, false, what .. ": no mesh to load")
end

local faults = {
	{ "BeginEditStaticMeshAssemblyBuild", 0, "BeginEditStaticMeshAssemblyBuild refused the target mesh (see LogNaniteAssemblyBuilder)" },
	{ "AddAssemblyParts", 0, "AddAssemblyParts refused parts[1] '/Engine/BasicShapes/Cube.Cube' (see LogNaniteAssemblyBuilder)" },
	{ "AddAssemblyParts", 1, "AddAssemblyParts refused parts[2] '/Engine/BasicShapes/Sphere.Sphere' (see LogNaniteAssemblyBuilder)" },
	{ "FinishAssemblyBuild", 0, "FinishAssemblyBuild failed (no assembly parts were applied)" },
}
for index, fault in ipairs(faults) do
	local output = "/Game/Faults/SM_Rollback" .. index
	headless.fail_next(fault[1], nil, fault[2])
	expect.refused(build(output), fault[3], "nanite_assembly_build", fault[1] .. " " .. fault[2])
	check_discarded(output, fault[1] .. " " .. fault[2])
end

headless.fail_next("NewObject")
expect.refused(build("/Game/Faults/SM_NoObject"), "failed to create StaticMesh '/Game/Faults/SM_NoObject.SM_NoObject'", "nanite_assembly_build", "NewObject")
expect.eq(headless.object_info("/Game/Faults/SM_NoObject.SM_NoObject"), nil, "NewObject: no mesh")
expect.eq(#headless.undo_history(), 0, "NewObject: no undo step")

headless.fail_next("CreatePackage")
expect.refused(build("/Game/Faults/SM_NoPackage"), "cannot create package '/Game/Faults/SM_NoPackage'", "nanite_assembly_build", "CreatePackage")
expect.eq(headless.object_info("/Game/Faults/SM_NoPackage"), nil, "CreatePackage: no package")

headless.fail_next("EnsurePackageEditable", "checked out by someone else")
expect.refused(build("/Game/Faults/SM_Locked"), "package '/Game/Faults/SM_Locked' is not editable: checked out by someone else", "nanite_assembly_build", "editability")
expect.eq(headless.object_info("/Game/Faults/SM_Locked.SM_Locked"), nil, "editability: no mesh")
headless.fail_next("EnsurePackageEditable")
expect.refused(build("/Game/Faults/SM_Locked"), "package '/Game/Faults/SM_Locked' is not editable: the session's editing policy refused the package",
	"nanite_assembly_build", "editability without a reason")

-- An existing mesh without RF_Transactional gets it for the build and loses it again on roll-back.
packages.write_mesh("/Game/Faults/SM_Existing", { nanite = false })
expect.eq(nanite_assembly_info("/Game/Faults/SM_Existing").ok, true, "existing mesh loads")
headless.fail_next("FinishAssemblyBuild")
expect.refused(build("/Game/Faults/SM_Existing", { overwrite = true }), "FinishAssemblyBuild failed (no assembly parts were applied)", "nanite_assembly_build", "existing")
local existing = headless.object_info("/Game/Faults/SM_Existing.SM_Existing")
expect.eq(existing.garbage, false, "existing: kept")
expect.eq(table.concat(existing.flags, "|"):find("RF_Transactional", 1, true), nil, "existing: RF_Transactional taken away")
expect.eq(headless.is_package_dirty("/Game/Faults/SM_Existing"), false, "existing: clean again")

-- Inside a caller's transaction nothing is rolled back and the message says so.
headless.begin_transaction("Caller")
headless.fail_next("AddAssemblyParts", nil, 1)
expect.refused(build("/Game/Faults/SM_Outer"),
	"AddAssemblyParts refused parts[2] '/Engine/BasicShapes/Sphere.Sphere' (see LogNaniteAssemblyBuilder); ran inside an outer transaction, Undo retained",
	"nanite_assembly_build", "outer transaction")
local outer = headless.object_info("/Game/Faults/SM_Outer.SM_Outer")
expect.eq(outer.garbage, false, "outer: the mesh stays")
expect.eq(table.concat(outer.flags, "|"), "RF_Public|RF_Standalone|RF_Transactional", "outer: flags stay")
expect.eq(headless.is_package_dirty("/Game/Faults/SM_Outer"), true, "outer: the package stays dirty")
expect.eq(headless.transaction_depth(), 1, "outer: only the caller's transaction is open")
headless.end_transaction()
expect.eq(#headless.undo_history(), 1, "outer: the caller's transaction holds the edits")

-- The save fails after the build stood: the result names what was built, and the build stays.
local function check_save_failure(result, message, output, what)
	expect.eq(result.ok, false, what .. ": ok")
	expect.eq(result.error, message, what .. ": error")
	expect.eq(result.asset, output, what .. ": asset")
	expect.eq(result.object_path, output .. "." .. output:match("([^/]+)$"), what .. ": object_path")
	expect.eq(result.saved, false, what .. ": saved")
	local count = 0
	for _ in pairs(result) do
		count = count + 1
	end
	expect.eq(count, 5, what .. ": five keys")
	expect.eq(log.last(), "[FAIL] nanite_assembly_build -> " .. message, what .. ": log line")
	local info = nanite_assembly_info(output)
	expect.eq(info.is_assembly, true, what .. ": the build stands")
	expect.eq(headless.package_file_exists(output), false, what .. ": nothing on disk")
	expect.eq(headless.is_package_dirty(output), true, what .. ": still dirty")
end

headless.fail_next("EnsurePackageEditableForSave", "read-only file")
check_save_failure(build("/Game/Faults/SM_NoSave", { save = true }),
	"built '/Game/Faults/SM_NoSave.SM_NoSave' but package is not editable for save: read-only file", "/Game/Faults/SM_NoSave", "save refused")
headless.fail_next("SavePackages")
check_save_failure(build("/Game/Faults/SM_DiskFull", { save = true }),
	"built '/Game/Faults/SM_DiskFull.SM_DiskFull' but failed to save package '/Game/Faults/SM_DiskFull' to disk", "/Game/Faults/SM_DiskFull", "save failed")
expect.eq(#headless.saved_packages(), 0, "no package-saved notification")

-- The builder's own reasons go to its log category, not into the messages.
local logged = false
for _, line in ipairs(headless.engine_log()) do
	logged = logged or line:find("^LogNaniteAssemblyBuilder: Error: %[AddAssemblyParts%]") ~= nil
end
expect.eq(logged, true, "the builder logged under LogNaniteAssemblyBuilder")
