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

new_project() {
	"$cvai" new "$work/$1" > /dev/null || fail "cvai new $1"
	echo "$work/$1"
}

finish() {
	[ "$failures" -eq 0 ] || exit 1
	exit 0
}
