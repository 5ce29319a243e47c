# Shared by the command-line tests: a scratch folder, a fresh project, and checks that name what failed.
set -u
cvai=$1
root=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
	echo "FAILED: $*" >&2
	failures=$((failures + 1))
}

# expect_status WANT COMMAND...: runs the command, keeping its output in $work/out and $work/err.
expect_status() {
	local want=$1
	shift
	"$@" > "$work/out" 2> "$work/err"
	local got=$?
	if [ "$got" -ne "$want" ]; then
		fail "'$*' exited $got, expected $want; stderr: $(cat "$work/err")"
	fi
}

expect_line() {
	local file=$1 line=$2
	grep -qxF -- "$line" "$file" || fail "no line '$line' in $(basename "$file"): $(cat "$file")"
}

expect_text() {
	local file=$1 text=$2
	grep -qF -- "$text" "$file" || fail "no '$text' in $(basename "$file"): $(cat "$file")"
}

# expect_file FILE TEXT: the file holds exactly TEXT, plus a final newline unless TEXT is empty.
expect_file() {
	local file=$1 text=$2
	if [ -n "$text" ]; then printf '%s\n' "$text" > "$work/expected"; else : > "$work/expected"; fi
	diff -u "$work/expected" "$file" > "$work/diff" || fail "$(basename "$file") differs from what was expected:
$(cat "$work/diff")"
}

# refused MESSAGE COMMAND ARGS...: cvai COMMAND ARGS... is a usage error: status 2, nothing on standard output, and
# on standard error exactly the message and the hint to the command's help.
refused() {
	local message=$1
	shift
	expect_status 2 "$cvai" "$@"
	expect_file "$work/err" "cvai: $message
Try 'cvai $1 --help'."
	expect_file "$work/out" ""
}

new_project() {
	"$cvai" new "$work/$1" > /dev/null || fail "cvai new $1"
	echo "$work/$1"
}

finish() {
	[ "$failures" -eq 0 ] || exit 1
	exit 0
}
