#!/usr/bin/env bash
# Runs a Windows program under Wine with a prefix of the build's own: cmake/wine-run.sh PROGRAM [ARGUMENT...]
# The prefix is WINEPREFIX when set, else build/wine; it is made on first use.
set -u
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
# Without the debugger, because a program that crashes under it ends with 0.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=};winedbg.exe="
# In the locale of a bare container names outside ASCII cannot be opened.
export LC_ALL=C.UTF-8 LANG=C.UTF-8
export WINEDEBUG=${WINEDEBUG:--all}
unset DISPLAY WAYLAND_DISPLAY
mkdir -p "$WINEPREFIX"
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=$(command -v wine64 || command -v wine)
if [ ! -e "$WINEPREFIX/.made" ]; then
  # Two first calls at once must not both make it.
  exec 9>"$WINEPREFIX/.lock"
  flock 9
  if [ ! -e "$WINEPREFIX/.made" ]; then
    "$wine" wineboot --init >/dev/null 2>&1 9>&-
    touch "$WINEPREFIX/.made"
  fi
  flock -u 9
  exec 9>&-
fi
exec "$wine" "$@"
