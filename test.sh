#!/usr/bin/env bash
# Installs what is missing, builds for both MinGW targets and runs every test: ./test.sh [CTEST-OPTION...]
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"
cd "$root"
mkdir -p build

install "${build_packages[@]}" clang-format g++-mingw-w64-i686-posix

step "checking the format"
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror || fail "clang-format finds lines to change"

cmake/dependencies.sh x64
cmake/dependencies.sh x86
configure_and_build mingw-x64-release
configure_and_build mingw-x86-release

start_wine
step "running the tests"
ctest --preset mingw-x64-release -j 2 "$@"
