#!/usr/bin/env bash
# cvai view without looking at the picture: the page's legend and its independence from any network, where the
# files go, and every refusal, the missing or failing Chromium included, with nothing left behind.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project View)

cat > "$work/build.lua" <<'LUA'
local r = nanite_assembly_build{ output = "/Game/View/SM_Pair", save = true, parts = {
	{ mesh = "/Engine/BasicShapes/Cube", transforms = { { location = { x = 0 } }, { location = { x = 200 } } } },
	{ mesh = "/Engine/BasicShapes/Cone", transforms = { { location = { z = 150 } } } } } }
assert(r.ok, r.error)
LUA
expect_status 0 "$cvai" run "$work/build.lua" --project "$project"

# The page of an assembly, named as info names it.
expect_status 0 "$cvai" view View/SM_Pair --project "$project" --html "$work/pair.html"
expect_file "$work/out" "wrote $work/pair.html"
expect_file "$work/err" ""
page=$work/pair.html
expect_line "$page" "<title>/Game/View/SM_Pair.SM_Pair</title>"
expect_line "$page" "<h1>/Game/View/SM_Pair.SM_Pair</h1>"
expect_line "$page" "<p>2 parts, 3 nodes</p>"
expect_line "$page" '<li><span class="swatch" style="background:#3687d9"></span><span class="path">/Engine/BasicShapes/Cube.Cube</span><span class="count">2 instances</span></li>'
expect_line "$page" '<li><span class="swatch" style="background:#d98836"></span><span class="path">/Engine/BasicShapes/Cone.Cone</span><span class="count">1 instance</span></li>'
# Nothing in it reaches for a network or a file beside it.
if grep -qiE 'https?://|src=' "$page"; then fail "the page names something to fetch: $(grep -oiE '(https?://|src=).{0,40}' "$page" | head -3)"; fi

# A mesh that is not an assembly is itself, once; without --html and --png the page is named after the mesh, here.
mkdir -p "$work/here"
cd "$work/here"
expect_status 0 "$cvai" view /Engine/BasicShapes/Sphere.Sphere --project "$project"
expect_file "$work/out" "wrote Sphere.html"
expect_line Sphere.html "<p>a static mesh, not an assembly</p>"
expect_line Sphere.html '<li><span class="swatch" style="background:#3687d9"></span><span class="path">/Engine/BasicShapes/Sphere.Sphere</span><span class="count">1 instance</span></li>'
[ "$(ls -A)" = "Sphere.html" ] || fail "view left more than its page: $(ls -A)"
rm Sphere.html
cd - > /dev/null

# A mesh that cannot be found or read: the reason, and no page.
cd "$work/here"
expect_status 1 "$cvai" view Meshes/Missing --project "$project"
expect_file "$work/err" "cvai: static mesh not found: Meshes/Missing"
mkdir -p "$project/Content/Broken"
: > "$project/Content/Broken/SM_Empty.uasset.json"
expect_status 1 "$cvai" view Broken/SM_Empty --project "$project" --png "$work/here/broken.png"
message="'$project/Content/Broken/SM_Empty.uasset.json' is not a valid package file: it is empty"
# The readback verb that finds the mesh tries the package twice, as it does for cvai info.
expect_file "$work/err" "LogLinker: Error: Failed to load package '/Game/Broken/SM_Empty': $message
LogLinker: Error: Failed to load package '/Game/Broken/SM_Empty': $message
cvai: $message"
[ -z "$(ls -A)" ] || fail "a view that failed left $(ls -A)"
cd - > /dev/null

# The command line.
refused "view needs the path of a static mesh" view
refused "view takes one path" view a b
refused "--html needs a value" view a --html
refused "--html needs a file name, not ''" view a --html ""
refused "--png needs a file name, not ''" view a --png ""
for size in 1280 1280x x720 1280X720 1280x720x1 0x720 15x720 1280x8193 " 1280x720" 1280x720\  +1280x720 -1x720 1e3x720 0x10 \
	012345x720 ""; do
	refused "--size needs a size in pixels from 16x16 to 8192x8192, such as 1280x720, not '$size'" view a --png a.png --size "$size"
done
refused "--size is the size of the --png picture; give --png too" view a --size 800x450 --html a.html
refused "unknown option '--bogus'" view a --bogus

# Outputs that cannot be written stop the command before anything is written or Chromium starts.
touch "$work/file" "$work/read-only.png"
chmod a-w "$work/read-only.png"
mkdir -p "$work/folder.html"
expect_status 1 "$cvai" view View/SM_Pair --project "$project" --html "$work/file/page.html"
expect_file "$work/err" "cvai: cannot create the folder of '$work/file/page.html': Not a directory"
expect_status 1 "$cvai" view View/SM_Pair --project "$project" --html "$work/folder.html"
expect_file "$work/err" "cvai: cannot write '$work/folder.html': it is a folder"
expect_status 1 "$cvai" view View/SM_Pair --project "$project" --html "$work/page.html" --png "$work/read-only.png"
expect_file "$work/err" "cvai: cannot replace '$work/read-only.png', which is read-only: Permission denied"
[ ! -e "$work/page.html" ] || fail "the page was written though the picture could not be"

# Without Chromium, or with one that fails, --png says so, and Chromium's own output only then.
expect_status 1 env PATH=/nonexistent "$cvai" view View/SM_Pair --project "$project" --png "$work/pair.png"
expect_file "$work/err" "cvai: --png needs Chromium, and there is no 'chromium' on PATH (make deps installs Debian's chromium)"
mkdir -p "$work/fake" "$work/tmp"
echo 'print("ran")' > "$work/ok.lua"
# The fake Chromium also finds the project free: view lets go of it before the picture.
cat > "$work/fake/chromium" <<SH
#!/bin/sh
"$cvai" run "$work/ok.lua" --project "$project" --lock-timeout 0 > /dev/null 2>&1
echo "a writer took the project: exit status \$?"
echo "GPU process isn't usable. Goodbye." >&2
exit 3
SH
chmod +x "$work/fake/chromium"
expect_status 1 env PATH="$work/fake:$PATH" TMPDIR="$work/tmp" "$cvai" view View/SM_Pair --project "$project" --png "$work/pair.png" \
	--html "$work/page.html"
expect_file "$work/err" "cvai: Chromium stopped before the page was drawn (exit status 3); it printed:
a writer took the project: exit status 0
GPU process isn't usable. Goodbye."
expect_file "$work/out" ""
[ ! -e "$work/pair.png" ] && [ ! -e "$work/page.html" ] || fail "a failed picture left files behind"
[ -z "$(ls -A "$work/tmp")" ] || fail "Chromium's temporary folder was left behind: $(ls -A "$work/tmp")"
[ -z "$(ls -A "$work" | grep '\.tmp-')" ] || fail "temporary files were left behind: $(ls -A "$work")"

finish
