#!/usr/bin/env bash
# cvai import: the one line it prints, the package it saves, refusals that change nothing, --replace and its backup.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Import)
data=$root/Tests/Data/Import
models=/usr/share/assimp/models

expect_status 0 "$cvai" import "$data/TwoMaterialBox.obj" Meshes/SM_Box --project "$project"
expect_file "$work/out" "/Game/Meshes/SM_Box.SM_Box: 24 vertices, 12 triangles, 2 material slots: Red, Blue_wall"
expect_file "$work/err" ""
saved=$project/Content/Meshes/SM_Box.uasset.json
[ -f "$saved" ] || fail "no package file at $saved"
expect_status 0 "$cvai" info Meshes/SM_Box --project "$project"
expect_line "$work/out" "  vertices: 24   triangles: 12   bounds: (-1, -3, 0) to (1, 3, 4)"
expect_line "$work/out" "  slot 2: Blue_wall   material: /Engine/BasicShapes/BasicShapeMaterial.BasicShapeMaterial"

# Refusals: status 1, the reason on standard error, and the package as it was.
cp "$saved" "$work/before"
expect_status 1 "$cvai" import "$data/Nodes.gltf" /Game/Meshes/SM_Box --project "$project"
expect_file "$work/err" "cvai: cannot import to '/Game/Meshes/SM_Box': /Game/Meshes/SM_Box already exists (replace it with --replace, or replace = true in a script)"
expect_file "$work/out" ""
cmp -s "$saved" "$work/before" || fail "a refused import changed the package file"
expect_status 1 "$cvai" import "$models/invalid/malformed.obj" Meshes/SM_Broken --project "$project"
expect_file "$work/err" "cvai: cannot import '$models/invalid/malformed.obj': OBJ: Invalid face index."
[ ! -e "$project/Content/Meshes/SM_Broken.uasset.json" ] || fail "a file that cannot be read made a package"
expect_status 1 "$cvai" import "$data/Nodes.gltf" /Engine/BasicShapes/SM_Box --project "$project"
expect_file "$work/err" "cvai: cannot import to '/Engine/BasicShapes/SM_Box': engine content is read-only; import under /Game/"

# --replace: the new mesh in place of the old, whose file is kept under Saved/Backup.
expect_status 0 "$cvai" import "$data/Nodes.gltf" Meshes/SM_Box.SM_Box --project "$project" --replace
expect_file "$work/out" "/Game/Meshes/SM_Box.SM_Box: 12 vertices, 4 triangles, 2 material slots: Metal, Material_1"
backups=("$project"/Saved/Backup/Game/Meshes/SM_Box_*.uasset.json)
[ ${#backups[@]} -eq 1 ] && cmp -s "${backups[0]}" "$work/before" || fail "the replaced package file was not kept: ${backups[*]}"

# A model file nobody here wrote: a 3ds Max box, Z up in metres, standing 1.2 m tall on the ground.
expect_status 0 "$cvai" import "$models/FBX/embedded_ascii/box.FBX" Props/SM_MaxBox --project "$project"
expect_file "$work/out" "/Game/Props/SM_MaxBox.SM_MaxBox: 24 vertices, 12 triangles, 1 material slot: 03_-_Default"
expect_status 0 "$cvai" info Props/SM_MaxBox --project "$project"
expect_line "$work/out" "  vertices: 24   triangles: 12   bounds: (-60, -60, 0) to (60, 60, 120)"

refused "import needs a model file and a destination path" import "$data/Nodes.gltf" --project "$project"
refused "import takes one model file and one destination path" import "$data/Nodes.gltf" A B --project "$project"
refused "unknown option '--overwrite'" import "$data/Nodes.gltf" A --overwrite --project "$project"

finish
