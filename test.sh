#!/usr/bin/env bash
# Installs what is missing, builds for both MinGW targets and runs every test:
#
#   ./test.sh [--long] [CTEST-OPTION...]
#   ./test.sh [--tidy] [--clang] [--coverage] [--traps] [--fuzz N] [--mutants N]
#
#   --long       the long form of the tests that have one
#   --tidy       runs clang-tidy over src and devkit instead of the tests
#   --clang      compiles everything with a second compiler and runs its analyser, instead of the tests
#   --coverage   prints how much of src and devkit the tests reach, instead of the tests' results
#   --traps      runs the tests of a build that ends where its behaviour is undefined
#   --fuzz N     has the filter meet N bad jobs, made of those that reached new code; the summary is build/fuzz.json
#   --mutants N  changes N lines of src, one at a time, and prints those whose change no test notices
#   --help       prints this
#
# Everything else is handed to ctest: ./test.sh -R devkit_package runs the tests whose names match.
# The 32 bit tests run where Debian's package wine32 is installed.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"
cd "$root"
mkdir -p build

checks=()
ctest_options=()
fuzz=
mutants=
while [ $# -gt 0 ]; do
  case $1 in
    --tidy | --clang | --coverage | --traps) checks+=("${1#--}") ;;
    --fuzz | --fuzz=*)
      if [ "$1" = --fuzz ]; then fuzz=${2:-}; shift $(($# > 1)); else fuzz=${1#*=}; fi
      [[ $fuzz =~ ^[1-9][0-9]*$ ]] || fail "--fuzz wants a number"
      checks+=(fuzz) ;;
    --mutants | --mutants=*)
      if [ "$1" = --mutants ]; then mutants=${2:-}; shift $(($# > 1)); else mutants=${1#*=}; fi
      [[ $mutants =~ ^[1-9][0-9]*$ ]] || fail "--mutants wants a number"
      checks+=(mutants) ;;
    --long) export PAGEVALIDATE_LONG=1 ;;
    --help) sed -n '2,/^set /{/^set /d; s/^# \{0,1\}//; p}' "$0"; exit ;;
    *) ctest_options+=("$1") ;;
  esac
  shift
done
[ ${#checks[@]} -eq 0 ] || [ ${#ctest_options[@]} -eq 0 ] ||
  fail "--${checks[0]} hands nothing to ctest: ${ctest_options[*]}"

# The whole of x64 with its tests; of x86 what can be run here, or else what ships.
build_all() {
  build_dependencies x64 90
  configure mingw-x64-release
  build mingw-x64-release 300
  if [ -n "$(wine32)" ]; then
    build_dependencies x86 90
    configure mingw-x86-release
    build mingw-x86-release 300
  else
    configure mingw-x86-release -DPAGEVALIDATE_DEVKIT=OFF
    build mingw-x86-release 30
  fi
}

check_format() {
  local program
  program=$(command -v clang-format-14 || command -v clang-format) || true
  # Other versions break lines elsewhere.
  if [[ $("$program" --version 2>/dev/null) != *"version 14."* ]]; then
    step "skipped: the format is not checked, because clang-format 14 is not here"
    return
  fi
  step "checking the format"
  find src devkit tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 "$program" --dry-run --Werror || fail "clang-format finds lines to change"
}

run_tests() { # PRESET CTEST-OPTION...
  local preset=$1 log
  shift
  step "running the tests of $preset"
  log=$(log_of "tests of $preset")
  : >"$log"
  in_background report_tests "$log"
  # Two for each processor: much of what the long ones do is to wait for a filter that hangs.
  ctest --preset "$preset" -j $((2 * $(nproc))) "$@" | tee "$log"
}

# Every half minute how many tests have run, until their log says that it was all.
report_tests() {
  local start=$SECONDS elapsed counted
  while sleep 30 && ! grep -q '^Total Test time' "$1"; do
    elapsed=$((SECONDS - start))
    counted=$(grep -oE '^ *[0-9]+/[0-9]+ Test' "$1" | tail -n 1 | tr -d ' Test') || true
    [ -z "$counted" ] ||
      printf '   %s tests after %d s, about %d s left\n' "${counted%/*} of ${counted#*/}" "$elapsed" \
        $((elapsed * (${counted#*/} - ${counted%/*}) / ${counted%/*}))
  done
}

if [ ${#checks[@]} -gt 0 ]; then
  for check in "${checks[@]}"; do . "cmake/checks/$check.sh"; done
  exit
fi

install 60 "${build_packages[@]}" googletest g++-mingw-w64-i686-posix
prepare_to_run clang-format python3-jsonschema
build_all
finish_preparing
check_format
start_wine
run_tests mingw-x64-release "${ctest_options[@]}"
[ -z "$(wine32)" ] || run_tests mingw-x86-release "${ctest_options[@]}"
