#!/usr/bin/env bash
# Installs what is missing, builds for both MinGW targets and runs every test: ./test.sh [CTEST-OPTION...]
# The 32 bit tests run where Debian's package wine32 is installed.
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
if [ -n "$(wine32)" ]; then
  configure_and_build mingw-x86-release
else
  # Nothing here can run the 32 bit tests, so only what ships is built.
  configure_and_build mingw-x86-release pagevalidatefilter filterhost
fi

start_wine
step "running the tests"
ctest --preset mingw-x64-release -j 2 "$@"
if [ -n "$(wine32)" ]; then
  step "running the 32 bit tests"
  ctest --preset mingw-x86-release -j 2 "$@"
fi
