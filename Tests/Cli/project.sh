#!/usr/bin/env bash
# The project folder and the files cvai writes: a folder that is not a project is a usage error of each command
# that starts an editor, and so is a --log file that cannot be written, before the script runs.
source "$(dirname "$0")/lib/common.sh"
project=$(new_project Project)
echo 'print("ran")' > "$work/ok.lua"
mkdir -p "$work/empty"
touch "$work/file.txt"

for command in "run $work/ok.lua" "info /Engine/BasicShapes/Cube" automation; do
	refused "no .uproject file in '$work/empty/'; make a project there with: cvai new $work/empty/" $command --project "$work/empty"
	refused "'$work/missing/' is not a folder; make a project with: cvai new <folder>" $command --project "$work/missing"
	refused "'$work/file.txt/' is not a folder; make a project with: cvai new <folder>" $command --project "$work/file.txt"
done
# Without --project the current folder is the project.
cd "$work/empty"
refused "no .uproject file in '$work/empty/'; make a project there with: cvai new $work/empty/" automation
cd - > /dev/null
[ -e "$work/empty/Saved" ] && fail "a refused command wrote into the folder"

refused "cannot write the log file '$work/missing/session.log': No such file or directory" \
	run "$work/ok.lua" --project "$project" --log "$work/missing/session.log"
[ -e "$work/missing" ] && fail "--log made the missing folder"
refused "cannot write the log file '$work/empty': Is a directory" run "$work/ok.lua" --project "$project" --log "$work/empty"

# The project is checked before the log file is made.
refused "no .uproject file in '$work/empty/'; make a project there with: cvai new $work/empty/" \
	run "$work/ok.lua" --project "$work/empty" --log "$work/session.log"
[ -e "$work/session.log" ] && fail "a refused run made its log file"

finish
