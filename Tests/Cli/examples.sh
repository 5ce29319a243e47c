#!/usr/bin/env bash
# The examples run on a fresh project, as make run runs the first one.
source "$(dirname "$0")/lib/common.sh"

for example in "$root"/Examples/*.lua; do
	# The examples' own checks are run by cvai test.
	case $example in *_test.lua | *_test.after*.lua) continue ;; esac
	project=$(new_project "$(basename "$example" .lua)")
	expect_status 0 "$cvai" run "$example" --project "$project"
	expect_line "$work/out" "[OK] nanite_assembly_support -> available=true, plugin_enabled=true, assemblies_supported=true"
	grep -q '^\[OK\] nanite_assembly_build -> ' "$work/out" || fail "$(basename "$example") built nothing: $(cat "$work/out")"
done

finish
