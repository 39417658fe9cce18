#!/usr/bin/env bash
# Builds the filter and its host, sends XPS documents through the filter and shows what became of them:
#   ./run.sh [FILE...]
# Without a file it takes the project's own sample, once for a printer that feeds the short edge first and once for
# one that feeds the long edge first. What comes out lies in build/out, with before.png, after.png and a page to look
# at, report.html, beside it.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"
files=()
for file in "$@"; do
  [ -f "$file" ] || fail "no such file: $file"
  files+=("$(realpath "$file")")
done
cd "$root"
mkdir -p build/out

install 60 "${build_packages[@]}"
prepare_to_run
build_dependencies x64 50 libxml2 libzip
# A build folder that has the tests as well serves as it is.
[ -e build/mingw-x64-release/build.ninja ] || configure mingw-x64-release -DPAGEVALIDATE_TESTS=OFF
build mingw-x64-release 120 filterhost pagevalidatefilter simulated_prntvpt samples
finish_preparing
start_wine

bin=$root/build/mingw-x64-release/bin
status=0
reports=()

# send DEVICE INPUT OUTPUT: through the filter, then before the eyes of programs that know nothing of it.
send() {
  step "sending $(basename "$2") to the printer model $1"
  local report=build/out/report-${#reports[@]}.json failed=0
  rm -f "$report"
  cmake/wine-run.sh "$bin/filterhost.exe" run "$(windows_path "$2")" -o "$(windows_path "$3")" --device "$1" \
    --json "$(windows_path "$report")" || failed=$?
  [ ! -e "$report" ] || reports+=("$report")
  [ $failed -eq 0 ] || { status=$failed; return; }
  step "judging the output"
  "$python" tools/checkdocument.py "$3" || status=1
  "$python" tools/contactsheet.py "$2" build/out/before.png
  "$python" tools/contactsheet.py "$3" build/out/after.png
}

if [ ${#files[@]} -eq 0 ]; then
  sample=build/mingw-x64-release/samples/sample.xps
  send simprinter "$sample" build/out/sample-short-edge.xps
  send longedge "$sample" build/out/sample-long-edge.xps
else
  for file in "${files[@]}"; do send simprinter "$file" "build/out/$(basename "$file")"; done
fi
[ ${#reports[@]} -eq 0 ] || "$python" tools/report/makereport.py "${reports[@]}" -o build/out/report.html
step "the pages of the last document before and after: build/out/before.png, build/out/after.png"
step "all that the filter did, with its tickets and pages: build/out/report.html"
exit "$status"
