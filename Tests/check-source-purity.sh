#!/usr/bin/env bash
# Fails when a file under Source/ includes a harness-only header or names the harness namespace.
set -u
root=${1:-.}
hits=$(grep -rnE 'UE::Headless|namespace[[:space:]]+Headless|#[[:space:]]*include[[:space:]]*[<"]Headless/' "$root/Source" || true)
if [ -n "$hits" ]; then
	echo "Source/ reaches into harness-only code:"
	echo "$hits"
	exit 1
fi
echo "Source/ uses only engine, host, Lua and sol2 headers."
