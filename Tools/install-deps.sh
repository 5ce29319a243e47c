#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, and nothing when all are present.
set -euo pipefail

packages=(
	cmake ninja-build make g++          # the build
	liblua5.4-dev                       # Lua 5.4, as the host runs it
	nlohmann-json3-dev                  # package files and project files of the headless editor
	libsimdjson-dev                     # reading package files
	libxxhash-dev                       # the checksum of a package file's binary section
	libgtest-dev                        # unit tests
	libbenchmark-dev                    # benchmark programs
	clang libclang-rt-dev               # libFuzzer target of the request reader
	libclang-dev                        # the build's check for declarations that hide others
)

missing=()
for package in "${packages[@]}"; do
	if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
		missing+=("$package")
	fi
done

if [ ${#missing[@]} -eq 0 ]; then
	exit 0
fi

echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
	sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
