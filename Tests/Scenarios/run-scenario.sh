#!/usr/bin/env bash
# Runs one scenario script with cvai in a fresh project. A script Name.lua may have follow-ups
# Name.after.lua, Name.after2.lua, ...: each runs afterwards in a new cvai session on the same project.
set -euo pipefail
cvai=$1
script=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$cvai" new "$work/Project" > /dev/null
cd "$(dirname "$script")"
name=$(basename "$script" .lua)
"$cvai" run "$name.lua" --project "$work/Project"
for follow in "$name".after*.lua; do
	[ -e "$follow" ] || continue
	"$cvai" run "$follow" --project "$work/Project"
done
