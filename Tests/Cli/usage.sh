#!/usr/bin/env bash
# Help texts and usage errors: status 2 for every misuse, 0 for help.
source "$(dirname "$0")/lib/common.sh"

expect_status 2 "$cvai"
expect_status 0 "$cvai" --help
expect_text "$work/out" "cvai run SCRIPT.lua [--project DIR] [--log FILE]"
expect_text "$work/out" "Exit status: 0 success, 1 failure"
expect_status 0 "$cvai" run --help
expect_text "$work/out" "Exit status: 0 when the script ran to its end, 1 when it raised a Lua error"
expect_text "$work/out" "nanite_assembly_build{...}"
for command in new info automation; do
	expect_status 0 "$cvai" "$command" --help
	expect_text "$work/out" "Usage: cvai $command"
done

expect_status 2 "$cvai" frobnicate
expect_text "$work/err" "unknown command 'frobnicate'"
expect_status 2 "$cvai" run
expect_text "$work/err" "run needs a script"
expect_status 2 "$cvai" run a.lua b.lua
expect_status 2 "$cvai" run a.lua --project
expect_text "$work/err" "--project needs a value"
expect_status 2 "$cvai" run a.lua --bogus
expect_text "$work/err" "unknown option '--bogus'"
expect_status 2 "$cvai" run "$work/missing.lua"
expect_text "$work/err" "cannot read the script"
expect_status 2 "$cvai" new
expect_status 2 "$cvai" info
expect_status 2 "$cvai" info a b

# A folder without a project is refused with the way to make one.
echo 'print("never")' > "$work/ok.lua"
mkdir -p "$work/empty"
expect_status 2 "$cvai" run "$work/ok.lua" --project "$work/empty"
expect_text "$work/err" "no .uproject file in '$work/empty/'; make a project there with: cvai new $work/empty/"
expect_status 2 "$cvai" info /Engine/BasicShapes/Cube --project "$work/empty"

finish
