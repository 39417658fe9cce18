#!/usr/bin/env bash
# Builds the release programs, measures and prints the tables of docs/performance.md: bench/measure.sh [--noisy]
# The machine must have nothing else to do; when it has, this says so and prints no table.
set -euo pipefail
. "$(dirname "$0")/../cmake/setup.sh"
cd "$root"
preset=${PRESET:-mingw-x64-release}
folder=${BUILD_FOLDER:-build/$preset}
if [ -z "${BUILD_FOLDER:-}" ]; then
  configure_and_build "$preset" bench_pagevalidate filterhost pagevalidatefilter passthrough simulated_prntvpt >&2
fi
start_wine >&2
"$python" bench/measure.py "$folder" "$@"
