#!/usr/bin/env bash
# The help texts, whole: the program's (on standard error, status 2, when no command is given) and each command's,
# which --help or -h shows wherever it stands, even where an option expects its value.
source "$(dirname "$0")/lib/common.sh"
help=$root/Tests/Cli/Help

# expect_help FILE ARGS...: cvai ARGS... prints FILE's text on standard output, nothing else, and exits 0.
expect_help() {
	local file=$1
	shift
	expect_status 0 "$cvai" "$@"
	expect_file "$work/out" "$(cat "$file")"
	expect_file "$work/err" ""
}

for asked in --help -h help; do
	expect_help "$help/cvai.txt" "$asked"
done
expect_status 2 "$cvai"
expect_file "$work/err" "$(cat "$help/cvai.txt")"
expect_file "$work/out" ""

for command in new run info import export view automation test docs; do
	expect_help "$help/$command.txt" "$command" --help
	expect_help "$help/$command.txt" "$command" -h
	expect_help "$help/$command.txt" "$command" a b c --bogus --help
	expect_help "$help/$command.txt" "$command" --project --help
done

finish
