#!/usr/bin/env bash
# Work a script leaves unsaved is named when it ends, never lost silently; headless.save_packages and --save-on-exit
# save it through the editor's save path.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Unsaved)

cat > "$work/lib.lua" <<'LUA'
function build(name)
	local result = nanite_assembly_build{ output = "/Game/Yard/" .. name, parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } } } }
	assert(result.ok, result.error)
end
LUA
# script NAME LUA: a script that first builds SM_Gate and SM_Fence (in that order, which is not the listing's) and
# a transient mesh, which is never listed.
script() {
	printf 'dofile("%s")\nbuild("SM_Gate") build("SM_Fence") headless.create_transient_mesh("SM_Scratch")\n%s\n' "$work/lib.lua" "$2" > "$work/$1.lua"
}

script leave ''
expect_status 0 "$cvai" run "$work/leave.lua" --project "$project"
expect_file "$work/err" "not saved: /Game/Yard/SM_Fence
not saved: /Game/Yard/SM_Gate"
[ -e "$project/Content/Yard" ] && fail "a run without saves wrote $(ls "$project/Content/Yard")"

# After a Lua error too, below the error.
script fail 'error("gave up")'
expect_status 1 "$cvai" run "$work/fail.lua" --project "$project"
expect_file "$work/err" "$work/fail.lua:3: gave up
stack traceback:
	[C]: in function 'error'
	$work/fail.lua:3: in main chunk
not saved: /Game/Yard/SM_Fence
not saved: /Game/Yard/SM_Gate"

# save_packages: the packages named, or every one with unsaved changes; true, or false and the reason.
script some '
print(headless.save_packages{ "/Game/Yard/SM_Gate", "/Game/Yard/SM_Nowhere" })
print(headless.save_packages{ "/Game/Yard/SM_Gate" })
print(headless.is_package_dirty("/Game/Yard/SM_Gate"), headless.is_package_dirty("/Game/Yard/SM_Fence"))
print(pcall(headless.save_packages, { "/Game/Yard/SM_Fence", 7 }))
build("SM_Post")
headless.fail_next("SavePackages", "disk full")
print(headless.save_packages())
print(headless.save_packages{})'
expect_status 0 "$cvai" run "$work/some.lua" --project "$project"
grep -v '^\[OK\]' "$work/out" > "$work/printed"
expect_file "$work/printed" "false	no package named '/Game/Yard/SM_Nowhere' is loaded
true
false	true
false	headless.save_packages(packages?): argument #1 'packages' entry 2 must be a string, got number
false	Saving failed (injected fault: disk full).
true"
expect_file "$work/err" "LogFileHelpers: Error: Saving failed (injected fault: disk full)."
ls "$project/Content/Yard" > "$work/files"
expect_file "$work/files" "SM_Fence.uasset.json
SM_Gate.uasset.json
SM_Post.uasset.json"
expect_line "$project/Content/Yard/SM_Post.uasset.json" '	"package": "/Game/Yard/SM_Post",'

# --save-on-exit saves what the script left, after a Lua error too; a save that fails is named and ends with status 1.
rm -r "$project/Content/Yard"
expect_status 1 "$cvai" run "$work/fail.lua" --project "$project" --save-on-exit
expect_file "$work/err" "$work/fail.lua:3: gave up
stack traceback:
	[C]: in function 'error'
	$work/fail.lua:3: in main chunk"
ls "$project/Content/Yard" > "$work/files"
expect_file "$work/files" "SM_Fence.uasset.json
SM_Gate.uasset.json"

rm -r "$project/Content/Yard"
script refused 'headless.fail_next("SavePackages", "disk full")'
expect_status 1 "$cvai" run "$work/refused.lua" --project "$project" --save-on-exit
expect_file "$work/err" "LogFileHelpers: Error: Saving failed (injected fault: disk full).
cvai: --save-on-exit could not save every package: Saving failed (injected fault: disk full).
not saved: /Game/Yard/SM_Fence
not saved: /Game/Yard/SM_Gate"
[ -e "$project/Content/Yard" ] && fail "a failed save wrote $(ls "$project/Content/Yard")"

finish
