#!/usr/bin/env bash
# cvai test: its counts, result lines and exit status for each way a script ends, follow-up sessions, the order of
# the lines, --filter, -j, --tap, --junit, the template project left as it was, and the expect library's messages.
source "$(dirname "$0")/lib/common.sh"

suite=$work/suite
mkdir -p "$suite/deeper" "$suite/.hidden"
cat > "$suite/pass_test.lua" <<'LUA'
expect.eq(nanite_assembly_support().ok, true)
expect.near(0.1 + 0.2, 0.3, 1e-9)
expect.refused(nanite_assembly_info(""), "static mesh not found: ", "nanite_assembly_info")
expect.eq(expect.error(function() error("gone") end, "gone"), "gone")
LUA
printf 'expect.eq("one\\ntwo\\nthree", "one\\ntwX\\nthree", "text")\n' > "$suite/diff_test.lua"
echo 'skip("no renderer here")' > "$suite/skip_test.lua"
echo 'while true do end' > "$suite/deeper/spin_test.lua"
echo 'local t = nil; print(t.x)' > "$suite/deeper/error_test.lua"
echo 'print("about to crash"); io.stdout:flush(); os.execute("kill -SEGV $PPID")' > "$suite/deeper/crash_test.lua"
# A session that ends on its own status, or without a word to the runner.
echo 'os.exit(3)' > "$suite/deeper/status_test.lua"
echo 'os.exit(0)' > "$suite/deeper/silent_test.lua"
echo 'error("hidden folders are not searched")' > "$suite/.hidden/never_test.lua"
echo 'error("not a test script")' > "$suite/helper.lua"
# What XML must escape, and a control character it cannot hold at all.
printf 'error("<a & \\"b\\" \x27c\x27>\\1", 0)\n' > "$suite/deeper/xml_test.lua"
# A follow-up session sees what the script saved, on the same project copy.
cat > "$suite/save_test.lua" <<'LUA'
expect.ok(nanite_assembly_build{ output = "/Game/S/SM_A", save = true, parts = { { mesh = "/Engine/BasicShapes/Cube", transforms = { {} } } } })
LUA
echo 'expect.eq(nanite_assembly_info("/Game/S/SM_A").node_count, 1, "saved nodes")' > "$suite/save_test.after.lua"
echo 'expect.eq(nanite_assembly_info("/Game/S/SM_A").node_count, 2, "second follow-up")' > "$suite/save_test.after2.lua"

template=$(new_project Template)
# Every copy of the project goes into TMPDIR, and is gone when its script has finished.
export TMPDIR=$work/tmp
mkdir "$TMPDIR"
# The sessions that crash or leave through os.exit must end as they would without sanitizers (in a sanitized build
# AddressSanitizer would take the signal, and LeakSanitizer the exit status, for its own report).
ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}handle_segv=0:detect_leaks=0 \
	expect_status 1 "$cvai" test "$suite" --project "$template" --timeout 1 -j 3 --no-sandbox --junit "$work/results.xml"
sed -E 's/\([0-9]+\.[0-9]+ s\)/(T s)/' "$work/out" | grep -v '^    |' > "$work/lines"
expect_file "$work/lines" "FAIL $suite/deeper/crash_test.lua (T s)
    crashed: killed by signal 11 (SIGSEGV)
    output:
FAIL $suite/deeper/error_test.lua (T s)
    error_test.lua:1: attempt to index a nil value (local 't')
    output:
FAIL $suite/deeper/silent_test.lua (T s)
    the session ended with exit status 0 but no test report
FAIL $suite/deeper/spin_test.lua (T s)
    timeout: still running after 1 s
    output:
FAIL $suite/deeper/status_test.lua (T s)
    ended with exit status 3
FAIL $suite/deeper/xml_test.lua (T s)
    <a & \"b\" 'c'>$(printf '\001')
    output:
FAIL $suite/diff_test.lua (T s)
    diff_test.lua:1: text: strings differ at line 2, column 3
    expected: \"twX\\n\"
    actual:   \"two\\n\"
    output:
PASS $suite/pass_test.lua (T s)
FAIL $suite/save_test.lua (T s)
    save_test.after2.lua: save_test.after2.lua:1: second follow-up: expected 2, got 1
    output:
SKIP $suite/skip_test.lua (no renderer here)
1 passed, 8 failed, 1 skipped"
expect_line "$work/out" "    | about to crash"
# The session's own guard stopped the runaway script between two instructions, and said so.
expect_line "$work/out" "    | timeout: the script ran longer than --timeout 1 s"
expect_line "$work/out" "    | [OK] nanite_assembly_info(\"/Game/S/SM_A\") -> is_assembly=true, parts=1, nodes=1"
[ -z "$(ls -A "$TMPDIR")" ] || fail "temporary folders left behind: $(ls "$TMPDIR")"
# The template is copied, never used itself.
[ -z "$(ls -A "$template/Content")" ] || fail "the template project was changed: $(ls -R "$template/Content")"

# JUnit XML: well formed, with the counts and one testcase per script.
xmllint --noout "$work/results.xml" || fail "the JUnit file is not well-formed XML"
expect_line "$work/results.xml" '<testsuites name="cvai test" tests="10" failures="8" errors="0" skipped="1"'"$(grep -o ' time="[^"]*"' "$work/results.xml" | head -1)"'>'
[ "$(grep -c '<testcase ' "$work/results.xml")" -eq 10 ] || fail "not 10 testcases: $(cat "$work/results.xml")"
expect_text "$work/results.xml" "    <testcase classname=\"$suite/deeper\" name=\"$suite/deeper/crash_test.lua\" time=\""
expect_line "$work/results.xml" '      <skipped message="no renderer here"/>'
expect_line "$work/results.xml" '      <failure message="&lt;a &amp; &quot;b&quot; &apos;c&apos;&gt;?">&lt;a &amp; &quot;b&quot; &apos;c&apos;&gt;?</failure>'
expect_line "$work/results.xml" '      <failure message="crashed: killed by signal 11 (SIGSEGV)">crashed: killed by signal 11 (SIGSEGV)</failure>'

# --filter: a text held by the path, or a glob over the whole path; TAP output.
expect_status 0 "$cvai" test "$suite" --filter pass_ --tap
expect_file "$work/out" "TAP version 13
1..1
ok 1 - $suite/pass_test.lua
# 1 passed, 0 failed"
expect_status 1 "$cvai" test "$suite" --filter '*/s[ak]*_test.lua' --tap -j 1 --timeout 30
grep -v '^    ' "$work/out" > "$work/lines"
expect_file "$work/lines" "TAP version 13
1..2
not ok 1 - $suite/save_test.lua
  ---
  message: |
  output: |
  ...
ok 2 - $suite/skip_test.lua # SKIP no renderer here
# 0 passed, 1 failed, 1 skipped"

# A script named on its own runs whatever its name; a path that is neither is a usage error.
expect_status 0 "$cvai" test "$suite/pass_test.lua" "$suite/pass_test.lua"
# The sessions get the limit as it was written, whatever its size.
expect_status 0 "$cvai" test "$suite/pass_test.lua" --timeout 100000000
expect_file "$work/out" "PASS $suite/pass_test.lua ($(grep -o '[0-9.]* s' "$work/out"))
1 passed, 0 failed"
refused "no script or folder '$work/missing'" test "$work/missing"
expect_status 1 "$cvai" test "$suite" --filter nothing-matches
expect_file "$work/err" "cvai: no test scripts (*_test.lua) found"

# -j: two scripts that each wait for the other pass only when they run at the same time.
mkdir -p "$work/meet" "$work/pair"
for pair in a:b b:a; do
	cat > "$work/pair/${pair%:*}_test.lua" <<LUA
io.open("$work/meet/${pair%:*}", "w"):close()
while not io.open("$work/meet/${pair#*:}") do os.execute("sleep 0.02") end
LUA
done
expect_status 0 "$cvai" test "$work/pair" -j 2 --timeout 20 --no-sandbox
expect_line "$work/out" "2 passed, 0 failed"
rm -f "$work/meet"/*
expect_status 1 "$cvai" test "$work/pair" -j 1 --timeout 1 --no-sandbox
expect_line "$work/out" "1 passed, 1 failed"
expect_line "$work/out" "    timeout: still running after 1 s"

# A failed script's output is shown by its last 40 lines; the JUnit file keeps it whole.
mkdir -p "$work/chatty"
echo 'for i = 1, 100 do print("line " .. i) end error("the end", 0)' > "$work/chatty/chatty_test.lua"
expect_status 1 "$cvai" test "$work/chatty" --junit "$work/chatty.xml"
{
	echo "FAIL $work/chatty/chatty_test.lua (T s)"
	echo "    the end"
	echo "    output:"
	echo "    | (64 earlier lines left out; --junit keeps them all)"
	for i in $(seq 65 100); do echo "    | line $i"; done
	echo "    | the end"
	echo "    | stack traceback:"
	echo "0 passed, 1 failed"
} > "$work/chatty.expected"
sed -E 's/\([0-9]+\.[0-9]+ s\)/(T s)/' "$work/out" | grep -v '^    | 	' > "$work/chatty.lines"
diff "$work/chatty.expected" "$work/chatty.lines" > /dev/null || fail "the output was not cut to its last lines: $(diff "$work/chatty.expected" "$work/chatty.lines")"
[ "$(grep -c '^line ' "$work/chatty.xml")" -eq 99 ] && grep -q '<system-out>line 1$' "$work/chatty.xml" || fail "the JUnit file lost output: $(head -5 "$work/chatty.xml")"

# The sessions run in cvai run's sandbox unless --no-sandbox, and under the memory limit given.
mkdir -p "$work/guarded"
echo 'os.execute("true")' > "$work/guarded/shell_test.lua"
echo 'local t = {} for i = 1, 1e7 do t[i] = i end' > "$work/guarded/memory_test.lua"
expect_status 1 "$cvai" test "$work/guarded" --max-memory 16
sed -E 's/\([0-9]+\.[0-9]+ s\)/(T s)/' "$work/out" | grep -v '^    |' > "$work/lines"
expect_file "$work/lines" "FAIL $work/guarded/memory_test.lua (T s)
    not enough memory
    output:
FAIL $work/guarded/shell_test.lua (T s)
    shell_test.lua:1: os.execute: not allowed in the sandbox (it runs shell commands)
    output:
0 passed, 2 failed"
expect_line "$work/out" "    | memory limit: the script needed more than --max-memory 16 MB"
expect_status 0 "$cvai" test "$work/guarded/shell_test.lua" --no-sandbox
expect_line "$work/out" "1 passed, 0 failed"

# Stopped from outside, cvai test ends what it started and removes its copies.
echo 'while true do end' > "$work/spin_test.lua"
"$cvai" test "$work/spin_test.lua" --timeout 0 > "$work/out" 2> "$work/err" &
runner=$!
for _ in $(seq 100); do
	[ -n "$(ls -A "$TMPDIR")" ] && pgrep -P "$runner" > /dev/null && break
	sleep 0.05
done
session=$(pgrep -P "$runner")
[ -n "$session" ] || fail "no session started"
kill -INT "$runner"
wait "$runner"
status=$?
[ "$status" -eq 130 ] || fail "an interrupted cvai test exited $status"
expect_file "$work/err" "cvai: interrupted"
kill -0 "$session" 2> /dev/null && fail "the session $session still runs"
[ -z "$(ls -A "$TMPDIR")" ] || fail "temporary folders left behind: $(ls "$TMPDIR")"

# The template is read under the project's lock: a run that changes it keeps cvai test waiting, here not at all.
echo 'while true do end' > "$work/forever.lua"
"$cvai" run "$work/forever.lua" --project "$template" > /dev/null 2>&1 &
holder=$!
for _ in $(seq 100); do
	[ -e "$template/Saved/Logs/cvai.log" ] && break
	sleep 0.05
done
expect_status 3 "$cvai" test "$suite/pass_test.lua" --project "$template" --lock-timeout 0
expect_file "$work/err" "cvai: the project '$template/' is in use by process $holder"
kill "$holder"
wait "$holder" 2> /dev/null

refused "-j needs a positive whole number, not '0'" test -j 0
refused "--max-memory needs a number of megabytes above 0, not '0'" test --max-memory 0
refused "--timeout needs a number of seconds, not '-1'" test --timeout -1

finish
