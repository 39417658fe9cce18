#!/usr/bin/env bash
# Builds the release benchmarks, runs them and prints the tables of docs/performance.md: bench/measure.sh
# The machine should have nothing else to do. Takes about three minutes behind the build.
set -euo pipefail
. "$(dirname "$0")/../cmake/setup.sh"
cd "$root"
preset=${PRESET:-mingw-x64-release}
folder=${BUILD_FOLDER:-build/$preset}
if [ -z "${BUILD_FOLDER:-}" ]; then
  configure_and_build "$preset" bench_pagevalidate >&2
fi
start_wine >&2
program=$folder/bin/bench_pagevalidate.exe
results=$folder/bench
mkdir -p "$results"

step "measuring the time" >&2
cmake/wine-run.sh "$program" --benchmark_repetitions=7 --benchmark_min_time=0.2 \
  --benchmark_enable_random_interleaving=true --benchmark_format=json >"$results/time.json"

step "measuring the memory" >&2
: >"$results/memory.txt"
for megabytes in 1 10 100; do
  for round in 1 2 3; do
    for what in floor rewrite; do
      echo "$what $megabytes $(cmake/wine-run.sh "$program" --memory $what $megabytes | tr -d '\r')" \
        >>"$results/memory.txt"
    done
  done
done

"$python" bench/table.py "$results/time.json" "$results/memory.txt"
