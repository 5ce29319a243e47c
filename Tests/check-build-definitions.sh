#!/usr/bin/env bash
# Fails when a header or source file defines one of the build's definitions, which UnrealBuildTool passes on the
# compiler's command line (and the build here too): a file that tested one before its first #include would see
# another value than the files after it.
set -u
root=${1:-.}
names='UE_BUILD_[A-Z]+|UE_EDITOR|WITH_EDITOR|WITH_EDITORONLY_DATA|WITH_ENGINE|WITH_DEV_AUTOMATION_TESTS|WITH_PERF_AUTOMATION_TESTS|IS_MONOLITHIC|IS_PROGRAM|[A-Z0-9_]+_API'
hits=$(grep -rnE "^[[:space:]]*#[[:space:]]*define[[:space:]]+($names)\b" "$root/Headless" "$root/Source" --include='*.h' --include='*.hpp' --include='*.cpp' --include='*.inl' || true)
if [ -n "$hits" ]; then
	echo "These build definitions belong on the command line, not in a file:"
	echo "$hits"
	exit 1
fi
echo "The build's definitions come from the command line only."
