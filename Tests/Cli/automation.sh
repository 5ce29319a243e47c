#!/usr/bin/env bash
# The module's editor automation checks, run by cvai in a fresh project, twice (a second run finds the
# first run's assets).
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Automation)

for run in first second; do
	expect_status 0 "$cvai" automation Corvane.GeometryScripting --project "$project"
	for check in NaniteAssemblyBuild NaniteAssemblyRefusals NaniteAssemblySave NaniteAssemblyUndo; do
		expect_line "$work/out" "[PASS] Corvane.GeometryScripting.$check"
	done
	[ "$(tail -1 "$work/out")" = "4 passed, 0 failed" ] || fail "$run run: last line is '$(tail -1 "$work/out")'"
done

expect_status 0 "$cvai" automation NaniteAssemblyUndo --project "$project"
[ "$(tail -1 "$work/out")" = "1 passed, 0 failed" ] || fail "filter: last line is '$(tail -1 "$work/out")'"
expect_status 1 "$cvai" automation Nothing.Matches --project "$project"
[ "$(tail -1 "$work/out")" = "0 passed, 0 failed" ] || fail "no match: last line is '$(tail -1 "$work/out")'"

finish
