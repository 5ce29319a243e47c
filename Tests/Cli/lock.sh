#!/usr/bin/env bash
# One writer per project: run and automation hold the project alone and info waits for them; a command that finds
# the project held waits up to --lock-timeout and then gives up naming the holder, and a holder that dies lets go.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Locked)

# wait_until COMMAND...: polls the command for up to 30 s.
wait_until() {
	for _ in $(seq 600); do
		"$@" && return 0
		sleep 0.05
	done
	fail "gave up waiting until: $*"
}

# hold NAME: starts a cvai run that holds the project until $work/NAME.release exists (or $work is gone), then notes
# "NAME done" in $work/order; returns once the script runs, with its process id in $holder.
hold() {
	local name=$1
	cat > "$work/$name.lua" <<LUA
local function exists(path) local file = io.open(path) if file then file:close() end return file ~= nil end
io.open("$work/$name.ready", "w"):close()
while exists("$work/$name.ready") and not exists("$work/$name.release") do os.execute("sleep 0.05") end
local order = io.open("$work/order", "a") order:write("$name done\n") order:close()
LUA
	"$cvai" run "$work/$name.lua" --project "$project" > "$work/$name.out" 2>&1 &
	holder=$!
	wait_until test -e "$work/$name.ready"
}

cat > "$work/second.lua" <<LUA
local order = io.open("$work/order", "a") order:write("second ran\n") order:close()
LUA

# Refused at once with --lock-timeout 0, and after the time given otherwise, by each command that opens the project.
hold first
for command in "run $work/second.lua" automation "info /Engine/BasicShapes/Cube"; do
	expect_status 3 "$cvai" $command --project "$project" --lock-timeout 0
	expect_file "$work/err" "cvai: the project '$project/' is in use by process $holder"
	expect_file "$work/out" ""
done
expect_status 3 "$cvai" run "$work/second.lua" --project "$project" --lock-timeout 0.2
expect_file "$work/err" "cvai: the project '$project/' is in use by process $holder; waiting up to 0.2 s
cvai: the project '$project/' is still in use by process $holder after 0.2 s"
[ -e "$work/order" ] && fail "a refused run ran its script"
# A refused run leaves the log of an earlier run as it was, and makes none where there was none.
echo "an earlier run's log" > "$work/earlier.log"
expect_status 3 "$cvai" run "$work/second.lua" --project "$project" --lock-timeout 0 --log "$work/earlier.log"
expect_file "$work/earlier.log" "an earlier run's log"
expect_status 3 "$cvai" run "$work/second.lua" --project "$project" --lock-timeout 0 --log "$work/new.log"
[ -e "$work/new.log" ] && fail "a refused run left a log file"

# A run that waits starts once the holder has ended.
"$cvai" run "$work/second.lua" --project "$project" > "$work/second.out" 2> "$work/second.err" &
second=$!
wait_until grep -q waiting "$work/second.err"
touch "$work/first.release"
wait "$holder" || fail "the holding run failed: $(cat "$work/first.out")"
wait "$second" || fail "the waiting run failed: $(cat "$work/second.err")"
expect_file "$work/order" "first done
second ran"
expect_file "$work/second.err" "cvai: the project '$project/' is in use by process $holder; waiting up to 30 s"

# info waits for a writer.
hold writer
"$cvai" info /Engine/BasicShapes/Cube --project "$project" > "$work/info.out" 2> "$work/info.err" &
reader=$!
wait_until grep -q waiting "$work/info.err"
touch "$work/writer.release"
wait "$holder" || fail "the writing run failed: $(cat "$work/writer.out")"
wait "$reader" || fail "the waiting info failed: $(cat "$work/info.err")"
expect_file "$work/info.err" "cvai: the project '$project/' is in use by process $holder; waiting up to 30 s"
expect_line "$work/info.out" "/Engine/BasicShapes/Cube.Cube"

# A holder killed outright blocks no one.
hold killed
kill -KILL "$holder"
wait "$holder" 2> /dev/null
: > "$work/order"
expect_status 0 "$cvai" run "$work/second.lua" --project "$project" --lock-timeout 0
expect_file "$work/err" ""
expect_file "$work/order" "second ran"

finish
