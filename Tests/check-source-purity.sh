#!/usr/bin/env bash
# Fails when the module's source names the harness in any way: the word "headless" in any letter case
# (the UE::Headless namespace, Headless/ headers, harness macros such as IMPLEMENT_HEADLESS_CLASS, the
# scripts' headless table), in code, strings or comments. Every harness-only name carries that word.
set -u
root=${1:-.}
hits=$(grep -rniE 'headless' "$root/Source" || true)
if [ -n "$hits" ]; then
	echo "Source/ names the harness, which the editor does not have:"
	echo "$hits"
	exit 1
fi
echo "Source/ uses only engine, host, Lua and sol2 names."
