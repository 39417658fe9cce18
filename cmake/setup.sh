# Sourced by run.sh, test.sh and bench/measure.sh: what they need of a bare Debian 12. Functions only; every one is quick
# and needs no network when there is nothing left to do.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
# A bare container has no locale, and without one names outside ASCII cannot be opened under Wine.
export LC_ALL=C.UTF-8 LANG=C.UTF-8
# Debian's own Python: the packages below give it the imaging and the font library.
python=/usr/bin/python3

# What building takes, the samples included, and what running and judging takes besides.
build_packages=(ca-certificates cmake dpkg-dev g++-mingw-w64-x86-64-posix libcli11-dev libz-mingw-w64-dev ninja-build
  nlohmann-json3-dev procps python3 python3-fonttools python3-pil)
run_packages=(libgxps-utils libxml2-utils mupdf-tools python3-jinja2 wine64)

step() { printf '== %s\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# missing PACKAGE...: those that are not installed.
missing() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -Wf '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s\n' "$package"
  done
}

# install SECONDS PACKAGE...: installs with apt-get those that are missing, as root or through sudo. SECONDS is about how
# long all of them take.
install() {
  local seconds=$1 packages
  shift
  mapfile -t packages < <(missing "$@")
  [ ${#packages[@]} -eq 0 ] && return
  become_root "${packages[*]}"
  watched "installing ${packages[*]}" "$seconds" apt_install "${packages[@]}"
}

# Root, or sudo that asks for the password now and not from a job in the background.
as_root=()
become_root() {
  [ "$(id -u)" -eq 0 ] && return
  command -v sudo >/dev/null || fail "needs root or sudo to install: $1"
  as_root=(sudo)
  sudo -v || fail "sudo refuses"
}

apt_install() {
  "${as_root[@]}" apt-get update -qq &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$@"
}

# Installs what is missing to run and judge, with the packages named besides, and makes the Wine prefix, behind the back
# of the build. finish_preparing waits for it.
prepare_to_run() {
  preparing="installing what runs and judges"
  local packages
  mapfile -t packages < <(missing "${run_packages[@]}" "$@")
  [ ${#packages[@]} -eq 0 ] || become_root "${packages[*]}"
  in_background install_to_run "${packages[@]}" >"$(log_of "$preparing")" 2>&1 </dev/null
  preparing_job=$!
}
install_to_run() {
  [ $# -eq 0 ] || apt_install "$@"
  make_wine_prefix
}
finish_preparing() {
  runs "$preparing_job" && step "$preparing"
  follow "$preparing_job" "$preparing" 60
}

# watched TITLE SECONDS COMMAND...: runs a command with its output in a log. Every ten seconds a line says how far it is:
# by the last "[n/m]" that the command printed, else by SECONDS, about how long it takes as a whole.
watched() {
  local title=$1 seconds=$2
  shift 2
  step "$title"
  in_background "$@" >"$(log_of "$title")" 2>&1 </dev/null
  follow $! "$title" "$seconds"
}

log_of() {
  mkdir -p "$root/build/logs"
  printf '%s/build/logs/%s.log' "$root" "$(printf '%s' "$1" | tr -cs '[:alnum:]' - | cut -c1-60)"
}

# A job that ends with the script, also by Ctrl+C, which jobs in the background do not hear of.
jobs_started=()
in_background() {
  ("$@") &
  jobs_started+=($!)
}
# Whether a job of this script has not ended: the number of one that has may be another process's by now.
runs() { [[ $'\n'$(jobs -rp)$'\n' == *$'\n'"$1"$'\n'* ]]; }
end_jobs() {
  local job children
  for job in "${jobs_started[@]}"; do
    runs "$job" || continue
    # The job before its children, of whose end it would tell.
    mapfile -t children < <(pgrep -P "$job" 2>/dev/null)
    kill "$job" "${children[@]}" 2>/dev/null || true
  done
}
at_exit() {
  end_jobs
  stop_wine
}
trap at_exit EXIT
trap 'exit 130' INT TERM

# follow PID TITLE SECONDS: waits for a job that writes the log of TITLE, and reports on it. Fails when the job does.
follow() {
  local pid=$1 title=$2 seconds=$3 log start=$SECONDS last=$SECONDS
  log=$(log_of "$title")
  while runs "$pid"; do
    sleep 0.2
    [ $((SECONDS - last)) -lt 10 ] && continue
    last=$SECONDS
    report_progress "$title" $((SECONDS - start)) "$seconds" "$log"
  done
  wait "$pid" && return
  # ninja names what failed and goes on with what it had begun.
  if grep -q '^FAILED: ' "$log"; then sed -n '/^FAILED: /,$p' "$log" | head -n 60 >&2; else tail -n 30 "$log" >&2; fi
  fail "$title failed; the whole log is $log"
}

report_progress() {
  local title=$1 elapsed=$2 left=$(($3 - $2)) counted share=
  counted=$(tail -c 4000 "$4" | grep -o '^\[[0-9]*/[0-9]*\]' | tail -n 1 | tr -d '[]') || true
  if [ -n "$counted" ]; then
    share=" $((100 * ${counted%/*} / ${counted#*/})) %,"
    [ "${counted%/*}" -gt 0 ] && left=$((elapsed * (${counted#*/} - ${counted%/*}) / ${counted%/*}))
  fi
  if [ "$left" -gt 0 ]; then left="about $left s left"; else left="longer than usual"; fi
  printf '   %s:%s %d s so far, %s\n' "${title%% *}" "$share" "$elapsed" "$left"
}

# build_dependencies TARGET SECONDS [NAME...]: the libraries that are not there yet, all when none is named.
build_dependencies() {
  local target=$1 seconds=$2 name names=()
  shift 2
  [ $# -gt 0 ] || set -- libxml2 libzip googletest benchmark
  for name in "$@"; do
    [ -e "$root/build/dependencies/$target/.stamps/$name" ] || names+=("$name")
  done
  [ ${#names[@]} -eq 0 ] && return
  watched "building the libraries for $target: ${names[*]}" "$seconds" "$root/cmake/dependencies.sh" "$target" "${names[@]}"
}

# configure PRESET [CMAKE-OPTION...]: where the build folder is missing or was configured with other options or presets.
configure() {
  local preset=$1 options
  options="$* $(cksum <"$root/CMakePresets.json")"
  local folder=$root/build/$preset
  shift
  [ -e "$folder/build.ninja" ] && [ "$(cat "$folder/.options" 2>/dev/null)" = "$options" ] && return
  watched "configuring $preset" 20 cmake -S "$root" --preset "$preset" "$@"
  printf '%s' "$options" >"$folder/.options"
}

# build PRESET SECONDS [TARGET...]: all targets when none is named. One compiler for each processor: each takes up to 0.9 GB.
build() {
  local preset=$1 seconds=$2 targets=()
  shift 2
  [ $# -gt 0 ] && targets=(--target "$@")
  watched "building $preset" "$seconds" cmake --build "$root/build/$preset" --parallel "$(nproc)" \
    "${targets[@]}"
}

configure_and_build() { # PRESET [TARGET...]
  configure "$1"
  build "$1" 300 "${@:2}"
}

# The path as a Windows program sees it: Wine maps the root folder to Z:.
windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

make_wine_prefix() {
  "$root/cmake/wine-run.sh" cmd /c exit
}

# One Wine session for the whole script: a program then starts in a tenth of the time. A shell that waits for input
# keeps Wine's service processes alive. Without it the next program would start them, and they would hold its output
# open, so that whoever waits for the end of that output hangs.
wine_keeper=
start_wine() {
  make_wine_prefix >/dev/null 2>&1 </dev/null || fail "Wine does not start"
  (sleep 100000 | "$root/cmake/wine-run.sh" cmd /q >/dev/null 2>&1) >/dev/null 2>&1 &
  wine_keeper=$!
  make_wine_prefix >/dev/null 2>&1 </dev/null || true
}
stop_wine() {
  [ -n "$wine_keeper" ] || return 0
  if runs "$wine_keeper"; then
    pkill -P "$wine_keeper" sleep 2>/dev/null || kill "$wine_keeper" 2>/dev/null || true
  fi
  "$(wineserver_program)" -k >/dev/null 2>&1 || true
}
# Not empty where 32 bit programs can run.
wine32() { dpkg-query -Wf '${db:Status-Abbrev}' wine32 wine32:i386 2>/dev/null | grep '^ii' || true; }
wineserver_program() {
  if [ -x /usr/lib/wine/wineserver64 ]; then echo /usr/lib/wine/wineserver64; else command -v wineserver; fi
}
