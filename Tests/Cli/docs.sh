#!/usr/bin/env bash
# cvai docs: the reference as text, as the README's section (which must be what it prints) and as a Lua
# language-server definition file; its usage errors and a file it cannot write.
source "$(dirname "$0")/lib/common.sh"

expect_status 0 "$cvai" docs
expect_line "$work/out" "headless.set_plugin_enabled(name, enabled)"
expect_line "$work/out" "    enabled boolean: its new state"
expect_line "$work/out" "nanite_assembly_info(mesh_path) -> NaniteAssemblyInfoResult"
expect_file "$work/err" ""

# The README holds exactly what --markdown prints, and the script that writes it finds a stale copy.
expect_status 0 bash "$root/Tools/readme-reference.sh" --check "$cvai" "$root/README.md"
sed 's/^| `warning` | `string` |/| `warning` | `integer` |/' "$root/README.md" > "$work/README.md"
expect_status 1 bash "$root/Tools/readme-reference.sh" --check "$cvai" "$work/README.md"
expect_line "$work/err" "readme-reference.sh: the reference in $work/README.md is not what cvai docs --markdown prints; run Tools/readme-reference.sh"
expect_status 0 bash "$root/Tools/readme-reference.sh" "$cvai" "$work/README.md"
cmp -s "$work/README.md" "$root/README.md" || fail "readme-reference.sh did not write the section back as cvai prints it"

# The definition file goes into a folder made as needed, replacing an older one.
expect_status 0 "$cvai" docs --luals "$work/types/cvai"
expect_file "$work/out" "Wrote $work/types/cvai/cvai.lua"
[ "$(head -n 1 "$work/types/cvai/cvai.lua")" = "---@meta" ] || fail "the definition file does not begin with ---@meta"
expect_line "$work/types/cvai/cvai.lua" "function nanite_assembly_build(request) end"
expect_status 0 "$cvai" docs --luals "$work/types/cvai"
[ -z "$(ls "$work/types/cvai" | grep -v '^cvai\.lua$')" ] || fail "docs --luals left other files: $(ls "$work/types/cvai")"

expect_status 2 "$cvai" docs --markdown --luals "$work/types"
expect_file "$work/err" "cvai: --markdown and --luals cannot be used together
Try 'cvai docs --help'."
expect_status 2 "$cvai" docs extra
expect_file "$work/err" "cvai: docs takes no arguments
Try 'cvai docs --help'."
touch "$work/file"
expect_status 1 "$cvai" docs --luals "$work/file"
expect_file "$work/err" "cvai: cannot write '$work/file/cvai.lua': Not a directory"
expect_file "$work/out" ""

finish
