# Sourced by run.sh and test.sh: what both need of a bare Debian 12. Functions only; every one is quick and needs no
# network when there is nothing left to do.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
# Debian's own Python: the packages below give it the imaging library.
python=/usr/bin/python3

build_packages=(ca-certificates cmake dpkg-dev g++-mingw-w64-x86-64-posix googletest procps libcli11-dev libz-mingw-w64-dev
  libxml2-utils libgxps-utils mupdf-tools ninja-build nlohmann-json3-dev python3 python3-pil wine64)

step() { printf '== %s\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# install PACKAGE...: installs with apt-get those that are missing, as root or through sudo.
install() {
  local missing=() package
  for package in "$@"; do
    [ "$(dpkg-query -Wf '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "needs root or sudo to install: ${missing[*]}"
    as_root=(sudo)
  fi
  step "installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq || fail "apt-get update failed"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null || fail "apt-get could not install ${missing[*]}"
}

# configure_and_build PRESET [TARGET...]: all targets when none is named.
configure_and_build() {
  local preset=$1 folder=$root/build/$1 targets=()
  shift
  [ $# -gt 0 ] && targets=(--target "$@")
  if [ ! -e "$folder/build.ninja" ]; then
    step "configuring $preset"
    (cd "$root" && cmake --preset "$preset" >"$root/build/configure-$preset.log" 2>&1) ||
      { tail -n 30 "$root/build/configure-$preset.log" >&2; fail "configuring $preset failed"; }
  fi
  step "building $preset"
  cmake --build "$folder" "${targets[@]}" || fail "building $preset failed"
}

# The path as a Windows program sees it: Wine maps the root folder to Z:.
windows_path() { printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"; }

# One Wine session for the whole script: a program then starts in a tenth of the time. A shell that waits for input
# keeps Wine's service processes alive. Without it the next program would start them, and they would hold its output
# open, so that whoever waits for the end of that output hangs.
start_wine() {
  mkdir -p "$WINEPREFIX"
  trap stop_wine EXIT
  [ -e "$WINEPREFIX/.made" ] || step "making the Wine prefix"
  "$root/cmake/wine-run.sh" cmd /c exit >/dev/null 2>&1 </dev/null || fail "Wine does not start"
  (sleep 100000 | "$root/cmake/wine-run.sh" cmd /q >/dev/null 2>&1) >/dev/null 2>&1 &
  wine_keeper=$!
  "$root/cmake/wine-run.sh" cmd /c exit >/dev/null 2>&1 </dev/null || true
}
stop_wine() {
  pkill -P "$wine_keeper" sleep 2>/dev/null || kill "$wine_keeper" 2>/dev/null || true
  "$(wineserver_program)" -k >/dev/null 2>&1 || true
}
# Not empty where 32 bit programs can run.
wine32() { dpkg-query -Wf '${db:Status-Abbrev}' wine32 wine32:i386 2>/dev/null | grep '^ii' || true; }
wineserver_program() {
  if [ -x /usr/lib/wine/wineserver64 ]; then echo /usr/lib/wine/wineserver64; else command -v wineserver; fi
}
