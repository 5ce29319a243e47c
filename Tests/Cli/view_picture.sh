#!/usr/bin/env bash
# cvai view --png in the real headless Chromium: the picture is drawn, each part shows in the colour the legend
# gives it, and a known layout lands where the engine's axes say: +X to the right, +Y towards the viewer (lower in
# the picture), +Z up. A mirrored or tipped frame moves a part to the wrong side.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Picture)

cat > "$work/layout.lua" <<'LUA'
local row = {}
for i = 0, 4 do row[#row + 1] = { location = { x = i * 150 } } end
local r = nanite_assembly_build{ output = "/Game/View/SM_Layout", save = true, parts = {
	{ mesh = "/Engine/BasicShapes/Cube", transforms = row },
	{ mesh = "/Engine/BasicShapes/Sphere", transforms = { { location = { y = 300 } } } },
	{ mesh = "/Engine/BasicShapes/Cone", transforms = { { location = { z = 250 } } } } } }
assert(r.ok, r.error)
LUA
expect_status 0 "$cvai" run "$work/layout.lua" --project "$project"
expect_status 0 "$cvai" run "$root/Examples/FenceAssembly.lua" --project "$project"

# picture NAME MESH SIZE: draws MESH into $work/NAME.png and its page into $work/NAME.html, and reads the picture
# with the legend's colours into the variables name, size, coloured and, per part in the legend's order, count_N,
# x_N, y_N (its centre) and left_N, right_N, top_N, bottom_N.
picture() {
	name=$1
	local mesh=$2 wanted=$3
	expect_status 0 "$cvai" view "$mesh" --project "$project" --png "$work/$name.png" --html "$work/$name.html" --size "$wanted"
	# Chromium's own chatter stays out of sight when all went well.
	expect_file "$work/err" ""
	expect_file "$work/out" "wrote $work/$name.html
wrote $work/$name.png"
	local colours
	colours=$(grep -o 'class="swatch" style="background:#[0-9a-f]*"' "$work/$name.html" | grep -o '#[0-9a-f]*')
	# shellcheck disable=SC2086
	node "$root/Tests/Cli/lib/picture-colours.cjs" "$work/$name.png" $colours > "$work/$name.colours" || fail "cannot read $name.png"
	size=$(sed -n 's/^size \([0-9]*\) \([0-9]*\)$/\1x\2/p' "$work/$name.colours")
	coloured=$(sed -n 's/^coloured //p' "$work/$name.colours")
	local part=0 colour count x y left right top bottom
	while read -r colour count x y left right top bottom; do
		part=$((part + 1))
		printf -v "count_$part" %s "$count"
		printf -v "x_$part" %s "$x"
		printf -v "y_$part" %s "$y"
		printf -v "left_$part" %s "$left"
		printf -v "right_$part" %s "$right"
		printf -v "top_$part" %s "$top"
		printf -v "bottom_$part" %s "$bottom"
	done < <(grep '^#' "$work/$name.colours")
}

# check CONDITION WHAT: an arithmetic condition on the picture's numbers.
check() {
	(($1)) || fail "$2 ($1 is false; the picture's colours: $(tr '\n' ';' < "$work/$name.colours"))"
}

picture layout View/SM_Layout 640x400
[ "$size" = 640x400 ] || fail "the picture is $size, not 640x400"
# Drawn at all: a good share of the picture is in the parts' colours, and every part shows, well beyond its
# swatch in the legend.
check "coloured > 640 * 400 / 50" "the picture is nearly blank"
check "count_1 > 2000 && count_2 > 500 && count_3 > 500" "a part is missing from the picture"
# The cubes stand in a row along +X: wide and low, running to the right of the sphere and the cone at X = 0.
check "right_1 - left_1 > 3 * (bottom_1 - top_1)" "the row of cubes does not run across the picture"
check "x_2 < x_1 - (right_1 - left_1) / 4" "the sphere at +Y is not at the left end of the row"
check "x_3 < x_1 - (right_1 - left_1) / 4" "the cone above the origin is not at the left end of the row"
# +Y comes towards the viewer, below the row; +Z goes up, above it.
check "y_2 > y_1 + 10" "the sphere at +Y is not in front of (below) the row"
check "y_3 < y_1 - 10" "the cone at +Z is not above the row"

picture fence Examples/SM_Fence 800x450
check "coloured > 800 * 450 / 100" "the fence's picture is nearly blank"
check "count_1 > 300 && count_2 > 1000" "the posts or the rails are missing from the fence's picture"
check "right_2 - left_2 > 4 * (bottom_2 - top_2)" "the fence's rails do not run across the picture"
check "left_1 < left_2 && right_1 > right_2" "the end posts do not stand beyond the rails"

finish
