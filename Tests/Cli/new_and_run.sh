#!/usr/bin/env bash
# cvai new writes a project; cvai run runs a script in it with the session's log on standard output.
source "$(dirname "$0")/lib/common.sh"

expect_status 0 "$cvai" new "$work/My Project"
expect_file "$work/out" "Created project My_Project in $work/My Project/"
expect_line "$work/My Project/My_Project.uproject" '		{ "Name": "NaniteAssemblyEditorUtils", "Enabled": true },'
expect_line "$work/My Project/Config/DefaultEngine.ini" "[ConsoleVariables]"
expect_line "$work/My Project/Config/DefaultEngine.ini" "r.Nanite.AllowAssemblies=1"
[ -d "$work/My Project/Content" ] || fail "no Content folder"
[ -z "$(ls -A "$work/My Project/Content")" ] || fail "Content is not empty"
expect_status 1 "$cvai" new "$work/My Project"
expect_file "$work/err" "cvai: '$work/My Project/' already holds a project (My_Project.uproject)"

project="$work/My Project"
cat > "$work/ok.lua" <<'LUA'
print("before")
nanite_assembly_support()
print("after")
nanite_assembly_info("")
LUA
# The log file holds this run's lines only, whatever it held before.
printf 'a much longer log of an earlier run, which must not show through\n%.0s' 1 2 3 > "$work/session.log"
expect_status 0 "$cvai" run "$work/ok.lua" --project "$project" --log "$work/session.log"
printf '%s\n' "before" "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true" "after" \
	"[FAIL] nanite_assembly_info -> static mesh not found: " > "$work/want"
diff "$work/want" "$work/out" > /dev/null || fail "stdout: $(cat "$work/out")"
printf '%s\n' "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true" \
	"[FAIL] nanite_assembly_info -> static mesh not found: " > "$work/want"
diff "$work/want" "$work/session.log" > /dev/null || fail "log file: $(cat "$work/session.log")"
[ -f "$project/Saved/Logs/cvai.log" ] || fail "no engine log file"

# The project folder defaults to the current one.
(cd "$project" && "$cvai" run "$work/ok.lua" > "$work/out2" 2>&1) || fail "run in the project folder"
expect_line "$work/out2" "after"

# A Lua error ends the run with status 1, the message and a traceback on standard error.
cat > "$work/bad.lua" <<'LUA'
nanite_assembly_support()
local function deeper() error("the script gave up") end
deeper()
print("not reached")
LUA
expect_status 1 "$cvai" run "$work/bad.lua" --project "$project"
expect_text "$work/err" "bad.lua:2: the script gave up"
expect_text "$work/err" "stack traceback:"
expect_line "$work/out" "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true"
grep -q "not reached" "$work/out" && fail "the script went on after its error"

# An argument error of a verb is a Lua error too.
echo 'nanite_assembly_info(42)' > "$work/arg.lua"
expect_status 1 "$cvai" run "$work/arg.lua" --project "$project"
expect_text "$work/err" "arg.lua:1: stack index 1, expected string, received number: (bad argument into '"

echo 'this is not lua' > "$work/syntax.lua"
expect_status 1 "$cvai" run "$work/syntax.lua" --project "$project"
expect_text "$work/err" "syntax.lua:1:"

finish
