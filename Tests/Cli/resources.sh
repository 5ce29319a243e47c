#!/usr/bin/env bash
# Running out of a resource: past a file-size limit a save fails as any failed write does and the run goes on; out of
# memory cvai ends at once with its own status and one message, leaving every file of the project as it was.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Limits)

# limited OPTION VALUE COMMAND...: runs the command under ulimit OPTION VALUE.
limited() {
	local option=$1 value=$2
	shift 2
	(ulimit "$option" "$value" && exec "$@")
}

# The fingerprint of every file of the project but the engine log and the lock file.
fingerprint() {
	(cd "$project" && find . -type f ! -path './Saved/*' -print0 | sort -z | xargs -0 sha256sum)
}

cat > "$work/row.lua" <<'LUA'
local transforms = {}
for i = 1, 40 do transforms[i] = { location = { x = i * 100 } } end
local result = nanite_assembly_build{ output = "/Game/Limits/SM_Row", overwrite = true, save = true,
	parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = transforms } } }
print(result.ok, result.error)
LUA
# The package file takes some 3 KB, more than a limit of 2 KB allows.
expect_status 0 limited -f 2 "$cvai" run "$work/row.lua" --project "$project"
expect_file "$work/out" "[FAIL] nanite_assembly_build -> built '/Game/Limits/SM_Row.SM_Row' but failed to save package '/Game/Limits/SM_Row' to disk
false	built '/Game/Limits/SM_Row.SM_Row' but failed to save package '/Game/Limits/SM_Row' to disk"
sed 's/\.tmp-[0-9]*/.tmp-PID/' "$work/err" > "$work/err.pidless"
expect_file "$work/err.pidless" "LogFileHelpers: Error: The asset '/Game/Limits/SM_Row' ($project/Content/Limits/SM_Row.uasset.json) failed to save. cannot write '$project/Content/Limits/SM_Row.uasset.json.tmp-PID': File too large
not saved: /Game/Limits/SM_Row"
[ -z "$(ls -A "$project/Content/Limits")" ] || fail "the failed save left $(ls -A "$project/Content/Limits")"

if ldd "$cvai" | grep -q libasan; then
	echo "The out-of-memory cases are left out: AddressSanitizer reserves more address space than they allow."
	finish
fi
expect_status 0 "$cvai" run "$work/row.lua" --project "$project"
fingerprint > "$work/before"

# Lua's memory, and the editor's: a script that grows a table of strings, and one that rebuilds the saved mesh ever
# larger, without saving. Neither error is one the script could catch.
cat > "$work/grow.lua" <<'LUA'
local pieces = {}
print(pcall(function() for i = 1, math.huge do pieces[i] = string.rep("x", 1 << 20) .. i end end))
LUA
cat > "$work/rebuild.lua" <<'LUA'
local transforms = {}
for i = 1, 20000 do transforms[i] = { location = { x = i } } end
for round = 1, math.huge do
	local ok, result = pcall(nanite_assembly_build, { output = "/Game/Limits/SM_Row", overwrite = true,
		parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = transforms } } })
	if not ok or not result.ok then print("caught", result) end
end
LUA
for script in grow rebuild; do
	expect_status 4 limited -v 200000 "$cvai" run "$work/$script.lua" --project "$project"
	expect_file "$work/err" "cvai: out of memory while running $work/$script.lua"
	grep -v '^\[OK\] nanite_assembly_build -> /Game/Limits/SM_Row.SM_Row (overwritten) ' "$work/out" > "$work/printed"
	expect_file "$work/printed" ""
	fingerprint > "$work/after"
	diff "$work/before" "$work/after" > /dev/null || fail "running out of memory in $script.lua changed the project: $(diff "$work/before" "$work/after")"
done

finish
