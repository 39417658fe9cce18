#!/usr/bin/env bash
# Builds the release archive for 64 bit Windows and says where it is: tools/release.sh
# On a bare Debian 12 it installs what building takes, as run.sh does.
set -euo pipefail
. "$(dirname "$0")/../cmake/setup.sh"
cd "$root"
install 60 "${build_packages[@]}"
build_dependencies x64 50 libxml2 libzip
[ -e build/mingw-x64-release/build.ninja ] || configure mingw-x64-release -DPAGEVALIDATE_TESTS=OFF
build mingw-x64-release 120 filterhost pagevalidatefilter simulated_prntvpt
watched "packing" 5 cpack --config build/mingw-x64-release/CPackConfig.cmake
step "the archive: $(ls build/release/*-x64.zip), with its checksum beside it"
