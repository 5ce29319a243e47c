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
	libassimp-dev assimp-testmodels     # mesh import, and model files nobody here wrote for its tests
	libtinygltf-dev                     # glTF export
	chromium                            # the viewer's pictures (headless, software WebGL)
	fonts-dejavu-core                   # the letters of the viewer's legend in its pictures
	libxml2-utils                       # xmllint, which checks the JUnit XML of cvai test
)
# Node.js and npm for the viewer's three.js and the glTF validator; a machine that has them from elsewhere
# (NodeSource's nodejs ships its own npm) keeps them.
if ! command -v node > /dev/null; then
	packages+=(nodejs)
fi
if ! command -v npm > /dev/null; then
	packages+=(npm)
fi

missing=()
for package in "${packages[@]}"; do
	if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
		missing+=("$package")
	fi
done

if [ ${#missing[@]} -gt 0 ]; then
	echo "Installing: ${missing[*]}"
	sudo=""
	if [ "$(id -u)" -ne 0 ]; then
		sudo="sudo"
	fi
	export DEBIAN_FRONTEND=noninteractive
	$sudo apt-get update -qq
	$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The npm packages, exactly as the lock file pins them; again only when the lock changed since the last install.
web="$(dirname "$0")/Web"
if [ ! -f "$web/node_modules/.package-lock.json" ] || [ "$web/package-lock.json" -nt "$web/node_modules/.package-lock.json" ]; then
	echo "Installing the npm packages of $web"
	(cd "$web" && npm ci --no-audit --no-fund --loglevel=error)
fi
