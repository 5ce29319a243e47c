#!/usr/bin/env bash
# The README's script reference is the output of `cvai docs --markdown`, between two marker lines. This writes it
# there afresh, or with --check only says whether it is up to date (status 1 and a diff when it is not).
#
#   Tools/readme-reference.sh [--check] [CVAI [README]]     CVAI: build/bin/cvai, README: README.md by default
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
check=false
if [ "${1:-}" = --check ]; then
	check=true
	shift
fi
cvai=${1:-$root/build/bin/cvai}
readme=${2:-$root/README.md}
begin='<!-- The reference below is written by Tools/readme-reference.sh from `cvai docs --markdown`: edit the descriptions in the code. -->'
end='<!-- End of the written reference. -->'

for marker in "$begin" "$end"; do
	if [ "$(grep -cxF -- "$marker" "$readme")" != 1 ]; then
		echo "readme-reference.sh: $readme must hold the line '$marker' exactly once" >&2
		exit 2
	fi
done

reference=$(mktemp)
updated=$(mktemp)
trap 'rm -f "$reference" "$updated"' EXIT
"$cvai" docs --markdown > "$reference"
awk -v begin="$begin" -v end="$end" -v reference="$reference" '
	$0 == end { inside = 0 }
	!inside { print }
	$0 == begin { print ""; while ((getline line < reference) > 0) print line; print ""; inside = 1 }
' "$readme" > "$updated"

if $check; then
	if ! diff -u "$readme" "$updated"; then
		echo "readme-reference.sh: the reference in $readme is not what cvai docs --markdown prints; run Tools/readme-reference.sh" >&2
		exit 1
	fi
	exit 0
fi
cat "$updated" > "$readme"
