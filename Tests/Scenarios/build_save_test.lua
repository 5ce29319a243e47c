-- Saving inside a caller's transaction: the save runs after the build's own transaction has closed.
local log = require("Support.log")

local cube = "/Engine/BasicShapes/Cube"
headless.begin_transaction("Script edits")
expect.eq(headless.transaction_depth(), 1, "the caller's transaction is open")

local result = nanite_assembly_build{
	output = "/Game/Saved/SM_Saved",
	save = true,
	parts = { { mesh = cube, transforms = { { location = { x = 5, y = 6, z = 7 } }, { rotation = { yaw = 45 }, scale = 3 } } } },
}
expect.eq(result.ok, true, "built " .. tostring(result.error))
expect.eq(result.transaction_owned, false, "not owned inside a caller's transaction")
expect.eq(result.saved, true, "saved")
expect.eq(result.compiled, true, "compiled")
expect.eq(result.created, true, "created")

local saves = headless.saved_packages()
expect.eq(#saves, 1, "exactly one package-saved notification")
expect.eq(saves[1].package, "/Game/Saved/SM_Saved", "the output package was saved")
expect.eq(saves[1].depth, 1, "only the caller's transaction was open during the save")
expect.eq(headless.transaction_depth(), 1, "the depth is the caller's again")
expect.eq(headless.is_package_dirty("/Game/Saved/SM_Saved"), false, "not dirty after the save")
expect.eq(headless.package_file_exists("/Game/Saved/SM_Saved"), true, "the file is on disk")
expect.eq(log.last(), "[OK] nanite_assembly_build -> /Game/Saved/SM_Saved.SM_Saved (created) parts=1 nodes=2 nanite=true assembly=true "
	.. "registered=true compiled=true saved=true assemblies_supported=true")
headless.end_transaction()
expect.eq(headless.transaction_depth(), 0, "no transaction after the caller closes its own")

-- A save always waits for the compile, even when the script asked not to wait.
local unwaited = nanite_assembly_build{ output = "/Game/Saved/SM_NoWait", save = true, wait_for_compile = false, parts = { { mesh = cube, transforms = { {} } } } }
expect.eq(unwaited.ok, true, "built without waiting " .. tostring(unwaited.error))
expect.eq(unwaited.compiled, true, "compiled anyway")
expect.eq(unwaited.compiling, false, "not compiling")
saves = headless.saved_packages()
expect.eq(#saves, 2, "a second notification")
expect.eq(saves[2].depth, 0, "no transaction open at the second save")
