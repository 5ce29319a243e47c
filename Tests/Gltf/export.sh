#!/usr/bin/env bash
# cvai export on the examples and the engine's shapes: its summary line, files that the Khronos glTF validator passes,
# and its refusals, none of which leaves a file behind.
#   export.sh CVAI SOURCE_DIR NODE
source "$(dirname "$0")/../Cli/lib/common.sh"
node=$3
project=$(new_project Export)
files=$work/files
mkdir -p "$files"

# expect_export PATH FILE OBJECT COUNTS [OPTION...]: the export succeeds, says so in one line that gives the file's
# real size, and the file passes the validator.
expect_export() {
	local path=$1 file=$2 object=$3 counts=$4
	shift 4
	expect_status 0 "$cvai" export "$path" "$file" --project "$project" "$@"
	expect_file "$work/out" "Exported $object to $file: $counts, $(stat -c %s "$file" 2>/dev/null) bytes"
	"$node" "$root/Tests/Gltf/validate.mjs" "$file" > "$work/validation" 2>&1 || fail "the validator rejected $file: $(cat "$work/validation")"
}

# expect_refusal MESSAGE ARGS...: cvai export ARGS... fails with status 1 and MESSAGE as its last line on standard
# error, prints nothing on standard output, and leaves no file (nor a temporary one) among the outputs.
expect_refusal() {
	local message=$1
	shift
	local before
	before=$(ls -A "$files")
	expect_status 1 "$cvai" export "$@" --project "$project"
	[ "$(tail -1 "$work/err")" = "cvai: $message" ] || fail "export $* ended with: $(tail -1 "$work/err")"
	expect_file "$work/out" ""
	[ "$(ls -A "$files")" = "$before" ] || fail "export $* left: $(ls -A "$files")"
}

expect_status 0 "$cvai" run "$root/Examples/FenceAssembly.lua" --project "$project"
fence=/Game/Examples/SM_Fence.SM_Fence
expect_export Examples/SM_Fence "$files/fence.glb" $fence "2 meshes, 16 instances, 1 material"
expect_export /Game/Examples/SM_Fence.SM_Fence "$files/fence.gltf" $fence "2 meshes, 16 instances, 1 material"
expect_export /Game/Examples/SM_Fence "$files/fence-nodes.glb" $fence "2 meshes, 16 instances, 1 material" --no-instancing
[ "$(grep -c EXT_mesh_gpu_instancing "$files/fence-nodes.glb")" = 0 ] || fail "--no-instancing still uses EXT_mesh_gpu_instancing"
[ "$(grep -c EXT_mesh_gpu_instancing "$files/fence.glb")" = 1 ] || fail "the instanced fence does not name EXT_mesh_gpu_instancing once"

# The rock field's package file holds the denser field that the example saved before its Undo.
expect_status 0 "$cvai" run "$root/Examples/RockField.lua" --project "$project"
expect_export Examples/SM_RockField "$files/rocks.glb" /Game/Examples/SM_RockField.SM_RockField "2 meshes, 550 instances, 1 material"
expect_export Examples/SM_RockField "$files/rocks.gltf" /Game/Examples/SM_RockField.SM_RockField "2 meshes, 550 instances, 1 material" --no-instancing

for shape in Cube Sphere Cylinder Cone Plane; do
	expect_export /Engine/BasicShapes/$shape "$files/$shape.glb" /Engine/BasicShapes/$shape.$shape "1 mesh, 1 instance, 1 material"
done

# A relative output is relative to the current folder, as the summary gives it.
(cd "$files" && "$cvai" export Examples/SM_Fence relative.GLB --project "$project" > "$work/out" 2> "$work/err") || fail "a relative output failed: $(cat "$work/err")"
expect_file "$work/out" "Exported $fence to relative.GLB: 2 meshes, 16 instances, 1 material, $(stat -c %s "$files/relative.GLB") bytes"

# Usage errors, checked before the project is opened.
refused "the output file must end in .glb or .gltf: 'fence.obj'" export Examples/SM_Fence fence.obj --project "$project"
refused "export needs the path of a static mesh and an output file" export Examples/SM_Fence
refused "export takes one path and one output file" export Examples/SM_Fence a.glb b.glb
refused "unknown option '--instancing'" export Examples/SM_Fence a.glb --instancing

expect_refusal "static mesh not found: Meshes/Missing" Meshes/Missing "$files/missing.glb"
expect_refusal "static mesh not found: /Engine/BasicShapes/BasicShapeMaterial" /Engine/BasicShapes/BasicShapeMaterial "$files/material.glb"
mkdir -p "$project/Content/Broken"
: > "$project/Content/Broken/SM_Empty.uasset.json"
expect_refusal "'$project/Content/Broken/SM_Empty.uasset.json' is not a valid package file: it is empty" Broken/SM_Empty "$files/broken.glb"

# An assembly whose part mesh was deleted after the build names the part.
mkdir -p "$project/Content/Parts"
cp "$(dirname "$cvai")/../Engine/Content/BasicShapes/Cube.uasset.json" "$project/Content/Parts/Cube.uasset.json"
cat > "$work/build.lua" <<'LUA'
local r = nanite_assembly_build{ output = "/Game/Parts/SM_Boxes", save = true, parts = {
	{ mesh = "/Engine/BasicShapes/Sphere", transforms = { {} } }, { mesh = "/Game/Parts/Cube", transforms = { {}, { location = { x = 100 } } } } } }
assert(r.ok, r.error)
LUA
expect_status 0 "$cvai" run "$work/build.lua" --project "$project"
expect_export Parts/SM_Boxes "$files/boxes.glb" /Game/Parts/SM_Boxes.SM_Boxes "2 meshes, 3 instances, 1 material"
rm "$project/Content/Parts/Cube.uasset.json"
expect_refusal "cannot export /Game/Parts/SM_Boxes.SM_Boxes: part 2: its mesh '/Game/Parts/Cube.Cube' cannot be loaded" Parts/SM_Boxes "$files/boxes-2.glb"

# Outputs that cannot be written: the earlier file stays whole and no temporary file is left.
: > "$files/plain-file"
expect_refusal "cannot export $fence: cannot create the folder of '$files/plain-file/fence.glb': Not a directory" \
	Examples/SM_Fence "$files/plain-file/fence.glb"
mkdir "$files/folder.glb"
expect_status 1 "$cvai" export Examples/SM_Fence "$files/folder.glb" --project "$project"
[ "$(sed 's/\.tmp-[0-9]*/.tmp-PID/' "$work/err")" = "cvai: cannot export $fence: cannot move '$files/folder.glb.tmp-PID' over '$files/folder.glb': Is a directory" ] \
	|| fail "an output that is a folder: $(cat "$work/err")"
cp "$files/fence.glb" "$work/fence-before.glb"
expect_status 1 bash -c "ulimit -f 2 && exec '$cvai' export Examples/SM_RockField '$files/fence.glb' --project '$project'"
[ "$(tail -1 "$work/err" | sed 's/\.tmp-[0-9]*/.tmp-PID/')" = "cvai: cannot export /Game/Examples/SM_RockField.SM_RockField: cannot write '$files/fence.glb.tmp-PID': File too large" ] \
	|| fail "an export past the file size limit: $(cat "$work/err")"
cmp -s "$files/fence.glb" "$work/fence-before.glb" || fail "a failed export changed the earlier file"
[ -z "$(find "$files" -name '*.tmp-*')" ] || fail "temporary files were left: $(find "$files" -name '*.tmp-*')"

finish
