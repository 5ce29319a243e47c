#!/usr/bin/env bash
# cvai run --timeout, --max-memory and --sandbox: a runaway script is stopped with its own status and message, memory
# over the limit is Lua's error and not the end of the process, a guard that fires inside a verb leaves the project as
# it was, and every way out of the sandbox is refused. The scripts are in Tests/Guards.
source "$(dirname "$0")/lib/common.sh"

guards=$root/Tests/Guards
project=$(new_project Guarded)
cd "$guards" || exit 1

timeout_trace() {
	printf '%s\n' "timeout: the script ran longer than --timeout 0.5 s" "stack traceback:" "$@"
}

# A loop that never ends, stopped between two instructions.
expect_status 5 "$cvai" run runaway.lua --project "$project" --timeout 0.5
expect_file "$work/err" "$(timeout_trace "	runaway.lua:2: in main chunk")"
expect_file "$work/out" ""

# Catching the timeout does not keep the script going.
expect_status 5 "$cvai" run runaway_caught.lua --project "$project" --timeout 0.5
expect_file "$work/err" "$(timeout_trace "	[C]: in function 'pcall'" "	runaway_caught.lua:2: in main chunk")"
expect_file "$work/out" ""

# Where no hook runs, the backstop ends the process a little after the limit, with the same message and status.
expect_status 5 "$cvai" run runaway_finalizer.lua --project "$project" --timeout 0.5
expect_file "$work/err" "timeout: the script ran longer than --timeout 0.5 s
cvai: the script could not be stopped between two instructions; the process was ended"
expect_file "$work/out" ""

# Stopped while the verb reads its request: nothing was built, saved or left unsaved.
expect_status 5 "$cvai" run timeout_in_verb.lua --project "$project" --timeout 0.5
# sol2 reports the error that left the verb, as it does with its safeties on.
expect_file "$work/err" "[sol2] An exception occurred: timeout: the script ran longer than --timeout 0.5 s
$(timeout_trace "	[C]: in function 'nanite_assembly_build'" "	timeout_in_verb.lua:3: in main chunk")"
expect_file "$work/out" ""
[ -z "$(ls -A "$project/Content")" ] || fail "the stopped build wrote $(ls -A "$project/Content")"

# Memory over the limit is Lua's error, which the script may catch; the process goes on, and the run still ends with
# the memory limit's status.
expect_status 6 "$cvai" run memory_caught.lua --project "$project" --max-memory 16
expect_file "$work/out" "false	not enough memory
false	not enough memory
1048576"
expect_file "$work/err" "memory limit: the script needed more than --max-memory 16 MB"

expect_status 6 "$cvai" run memory_uncaught.lua --project "$project" --max-memory 16.5
expect_file "$work/err" "not enough memory
memory limit: the script needed more than --max-memory 16.5 MB"
expect_file "$work/out" ""

# Over the limit inside a verb: the build is refused before it changes anything.
expect_status 6 "$cvai" run memory_in_verb.lua --project "$project" --max-memory 16
expect_file "$work/out" "false	not enough memory
transactions	0
undo history grew	false
object	nil
dirty	false
file	false"
expect_file "$work/err" "[sol2] An exception occurred: not enough memory
memory limit: the script needed more than --max-memory 16 MB"

# Under both guards, errors of natives read as without them, and the limit holds after them.
expect_status 6 "$cvai" run native_errors.lua --project "$project" --max-memory 16 --timeout 30
sol_error="stack index 1, expected string, received number: (bad argument into 'sol::basic_table_core<false, sol::stack_reference>(const std::__cxx11::basic_string<char>&, sol::this_state)')"
expect_file "$work/out" "false	$sol_error
false	headless.set_cvar(name, value): argument #1 'name' must be a string, got no value
false	not enough memory
[OK] nanite_assembly_build -> /Game/Guarded.Guarded (created) parts=1 nodes=1 nanite=true assembly=true registered=true compiled=true saved=false assemblies_supported=true
built	true"
expect_file "$work/err" "native_errors.lua:8: $sol_error
stack traceback:
	[C]: in function 'nanite_assembly_info'
	native_errors.lua:8: in main chunk
memory limit: the script needed more than --max-memory 16 MB
not saved: /Game/Guarded"

# Without the options nothing is limited.
expect_status 1 "$cvai" run native_errors.lua --project "$project"
expect_line "$work/out" "true	67108864"

# Wrong values are usage errors.
refused "--timeout needs a number of seconds, not 'soon'" run runaway.lua --project "$project" --timeout soon
refused "--max-memory needs a number of megabytes above 0, not '0'" run runaway.lua --project "$project" --max-memory 0
refused "--max-memory needs a number of megabytes above 0, not '-5'" run runaway.lua --project "$project" --max-memory -5

# The sandbox: each escape refused (the script checks every message), and nothing made outside the project.
sandboxed=$(new_project Sandboxed)
echo "kept out" > "$work/secret.txt"
ln -s "$work" "$sandboxed/escape"
ln -s "$work/made_through_a_link.txt" "$sandboxed/dangling"
expect_status 0 "$cvai" run sandbox_escapes.lua --project "$sandboxed" --sandbox
expect_line "$work/out" "sandbox held"
[ -s "$work/err" ] && fail "sandbox_escapes.lua: $(cat "$work/err")"
[ -e "$work/made_through_a_link.txt" ] && fail "a write went through the dangling link"
[ -e "$work/made.txt" ] && fail "a write went through the link"
[ -e "$guards/written_by_sandbox.txt" ] && fail "a write landed in the script's folder" && rm -f "$guards/written_by_sandbox.txt"

# Without --sandbox the same script is let out at its first check.
cat > "$work/unsandboxed.lua" <<'LUA'
print(pcall(os.tmpname) and "os.tmpname ran")
LUA
expect_status 0 "$cvai" run "$work/unsandboxed.lua" --project "$sandboxed"
expect_file "$work/out" "os.tmpname ran"

# A timeout of 0 is no limit, beside a memory limit too.
expect_status 0 "$cvai" run "$work/unsandboxed.lua" --project "$sandboxed" --timeout 0 --max-memory 64
expect_file "$work/out" "os.tmpname ran"
expect_file "$work/err" ""

finish
