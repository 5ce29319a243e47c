#!/usr/bin/env bash
# cvai info: the readable summary, the JSON table, refusals, and the reason a package file cannot be read.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Info)

expect_status 0 "$cvai" info /Engine/BasicShapes/Cube --project "$project"
expect_line "$work/out" "/Engine/BasicShapes/Cube.Cube"
expect_line "$work/out" "  parts: 0   nodes: 0   material slots: 1"
expect_line "$work/out" "  render data: yes   valid Nanite data: no   compiling: no   assemblies supported: yes"
expect_line "$work/out" "  vertices: 24   triangles: 12   bounds: (-50, -50, -50) to (50, 50, 50)"
expect_line "$work/out" "  slot 1: BasicShapeMaterial   material: /Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"
expect_status 0 "$cvai" info /Engine/BasicShapes/Plane --project "$project"
expect_line "$work/out" "  vertices: 4   triangles: 2   bounds: (-50, -50, 0) to (50, 50, 0)"

cat > "$work/build.lua" <<'LUA'
local r = nanite_assembly_build{ output = "/Game/Info/SM_Pair", save = true, parts = {
	{ mesh = "/Engine/BasicShapes/Cube", transforms = { { location = { x = 1, y = 2, z = 3 } }, { scale = 2 } } } } }
assert(r.ok, r.error)
LUA
expect_status 0 "$cvai" run "$work/build.lua" --project "$project"
expect_status 0 "$cvai" info Info/SM_Pair --project "$project"
expect_line "$work/out" "/Game/Info/SM_Pair.SM_Pair"
expect_line "$work/out" "  Nanite enabled: yes (stored setting: yes)   assembly: yes   assembly data valid: yes"
expect_line "$work/out" "  part 1: /Engine/BasicShapes/Cube.Cube   nodes: 2   material remap: [0]"
expect_line "$work/out" "    1: part 1   location (1, 2, 3)   rotation (0, 0, 0)   scale (1, 1, 1)   local"
# An assembly's own geometry is only a placeholder for its slots: the summary leaves it out.
if grep -q "^  vertices:" "$work/out"; then fail "an assembly's summary shows its placeholder geometry"; fi

expect_status 0 "$cvai" info /Game/Info/SM_Pair --project "$project" --json
expect_line "$work/out" '  "ok": true,'
expect_line "$work/out" '  "object_path": "/Game/Info/SM_Pair.SM_Pair",'
expect_line "$work/out" '  "node_count": 2,'
expect_line "$work/out" '  "nodes_truncated": false,'
[ "$(head -2 "$work/out" | tail -1)" = '  "ok": true,' ] || fail "ok is not the first key"

expect_status 1 "$cvai" info Meshes/Missing --project "$project"
expect_text "$work/err" "static mesh not found: Meshes/Missing"
expect_status 1 "$cvai" info Meshes/Missing --project "$project" --json
expect_line "$work/out" '  "error": "static mesh not found: Meshes/Missing"'

# A package file that exists but cannot be read is reported with its reason instead of "not found", never a crash.
mkdir -p "$project/Content/Broken"
head -c 200 "$project/Content/Info/SM_Pair.uasset.json" > "$project/Content/Broken/SM_Truncated.uasset.json"
echo '{"format": "something-else", "version": 1, "objects": []}' > "$project/Content/Broken/SM_Format.uasset.json"
echo '{"format": "cvai-headless-package", "version": 99, "objects": []}' > "$project/Content/Broken/SM_Version.uasset.json"
echo '{"format": "cvai-headless-package", "version": 1, "objects": [{"name": "SM_Types", "class": "StaticMesh", "properties": {"static_materials": 5}}]}' \
	> "$project/Content/Broken/SM_Types.uasset.json"
echo '{"format": "cvai-headless-package", "version": 1, "objects": [{"name": "SM_Nodes", "class": "StaticMesh", "properties": {"static_materials": [], "nanite": {"enabled": true, "assembly": {"parts": [], "nodes": [[0, 0, "x"]]}}}}]}' \
	> "$project/Content/Broken/SM_Nodes.uasset.json"
: > "$project/Content/Broken/SM_Empty.uasset.json"
reasons=(
	"SM_Truncated|its JSON text is damaged: A string is opened, but never closed."
	"SM_Format|its format is not 'cvai-headless-package'"
	"SM_Version|it was written by a newer format version 99; this build reads up to 2"
	"SM_Types|objects[0].properties.static_materials is not a list"
	"SM_Nodes|objects[0].properties.nanite.assembly.nodes[0] has 3 values instead of 12, or 13 with its bone influences"
	"SM_Empty|it is empty"
)
for entry in "${reasons[@]}"; do
	name=${entry%%|*}
	message="'$project/Content/Broken/$name.uasset.json' is not a valid package file: ${entry#*|}"
	expect_status 1 "$cvai" info "Broken/$name" --project "$project"
	[ "$(tail -1 "$work/err")" = "cvai: $message" ] || fail "info Broken/$name ended with: $(tail -1 "$work/err")"
	expect_line "$work/err" "LogLinker: Error: Failed to load package '/Game/Broken/$name': $message"
done
# The same file named by its object path, in another letter case.
expect_status 1 "$cvai" info /game/broken/sm_empty.SM_Empty --project "$project"
[ "$(tail -1 "$work/err")" = "cvai: '$project/Content/Broken/SM_Empty.uasset.json' is not a valid package file: it is empty" ] \
	|| fail "info of an object path ended with: $(tail -1 "$work/err")"

finish
