#!/usr/bin/env bash
# Every refusal of the command line: status 2, the whole message and the hint to the help, and nothing run.
source "$(dirname "$0")/lib/common.sh"

for word in frobnicate --bogus -x; do
	expect_status 2 "$cvai" "$word"
	expect_file "$work/err" "cvai: unknown command '$word'
Try 'cvai --help'."
	expect_file "$work/out" ""
done

mkdir -p "$work/here"
cd "$work/here"
refused "new needs the folder to create" new
refused "new takes exactly one folder" new a b
# new takes no options, and a folder named like one is taken for a mistyped one.
for word in --bogus -x - --project; do
	refused "new takes exactly one folder" new "$word"
done
[ -z "$(ls -A)" ] || fail "a refused new created $(ls -A)"
cd - > /dev/null

echo 'print("ran")' > "$work/ok.lua"
refused "run needs a script" run
refused "run needs a script" run --verbose
refused "run takes one script" run a.lua b.lua
refused "run takes one script" run a.lua b.lua --bogus
refused "--project needs a value" run a.lua --project
refused "--log needs a value" run a.lua --log
refused "unknown option '--bogus'" run --bogus a.lua b.lua
refused "unknown option '-x'" run a.lua -x
refused "unknown option '--'" run a.lua --
refused "unknown option '--bogus=.'" run a.lua --bogus=.
refused "--lock-timeout needs a number of seconds, not 'x'" run a.lua --lock-timeout=x
refused "unknown option '--json'" run a.lua --json
for seconds in soon -1 1e3 inf 1.2.3 . ""; do
	refused "--lock-timeout needs a number of seconds, not '$seconds'" run a.lua --lock-timeout "$seconds"
done
refused "cannot read the script '$work/missing.lua'" run "$work/missing.lua"
refused "cannot read the script '$work'" run "$work"
# '-' is a script's name like any other.
refused "cannot read the script '-'" run -

refused "info needs the path of a static mesh" info
refused "info needs the path of a static mesh" info --verbose --json
refused "info takes one path" info a b
refused "--project needs a value" info a --project
refused "unknown option '--bogus'" info a --bogus
refused "unknown option '--log'" info a --log x.log

refused "automation takes one filter" automation a b
refused "--project needs a value" automation --project
refused "unknown option '--json'" automation --json

# A path or a filter that starts with a single dash is looked up: what stops these is the folder without a
# project, after the command line was accepted.
mkdir -p "$work/empty"
for command in info automation; do
	for word in -x -; do
		refused "no .uproject file in '$work/empty/'; make a project there with: cvai new $work/empty/" \
			"$command" "$word" --project "$work/empty"
	done
done

finish
