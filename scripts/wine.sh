#!/usr/bin/env bash
# Headless Wine for the Windows test lane.
#   scripts/wine.sh init        create the prefix (once; always build/wineprefix)
#   scripts/wine.sh start|stop  persistent wineserver for a whole test run
#   scripts/wine.sh run EXE...  run a Windows program (CMake's cross-compiling emulator)
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Always the project's own prefix: a WINEPREFIX in the caller's environment names their own
# Wine installation, which these scripts must neither change nor remove.
export WINEPREFIX=$root/build/wineprefix
export WINEDEBUG=${WINEDEBUG:--all}
export WINEARCH=win64
# No Mono/Gecko: their install prompts would hang a headless wineboot.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
# Graphics=null in the prefix makes windows work without X; keep Wine away from any display.
unset DISPLAY WAYLAND_DISPLAY

# .qxrtl-created marks a folder these scripts made, .qxrtl-ready a prefix they finished. Only a
# half-made prefix of their own is removed and made again; any other folder there is left alone.
init() {
  [[ -f $WINEPREFIX/.qxrtl-ready ]] && return 0
  if [[ -e $WINEPREFIX && ! -f $WINEPREFIX/.qxrtl-created ]]; then
    echo "wine: $WINEPREFIX was not made by this script; move it away to let it create a prefix there" >&2
    return 1
  fi
  echo "wine: creating prefix $WINEPREFIX" >&2
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  touch "$WINEPREFIX/.qxrtl-created"
  wineboot -i >/dev/null 2>&1
  wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
  # Let the server exit on its own so the registry is written to disk before we mark it ready.
  wineserver -w
  touch "$WINEPREFIX/.qxrtl-ready"
}

# Wine's background services inherit the stdio of the process that started them and live as
# long as the server: with a persistent server they would hold ctest's output pipe open forever.
# So services are started here with /dev/null, and a program's output goes through a file.
start() {
  init
  # Foreground server in the background: its pid lets stop() wait until it is really gone.
  wineserver -f -p </dev/null >/dev/null 2>&1 &
  echo $! >"$WINEPREFIX/.wineserver.pid"
  wineboot </dev/null >/dev/null 2>&1
}

stop() {
  local pid i
  pid=$(cat "$WINEPREFIX/.wineserver.pid" 2>/dev/null) || pid=""
  wineserver -k 2>/dev/null || true
  for ((i = 0; i < 100; i++)); do
    [[ -n $pid ]] && kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  rm -f "$WINEPREFIX/.wineserver.pid"
}

run() {
  local out rc=0
  out=$(mktemp)
  wine "$@" </dev/null >"$out" 2>&1 || rc=$?
  cat "$out"
  rm -f "$out"
  return "$rc"
}

case ${1:-} in
  init) init ;;
  start) start ;;
  stop) stop ;;
  run) shift; init; run "$@" ;;
  *) echo "usage: $0 init|start|stop|run EXE [ARGS...]" >&2; exit 2 ;;
esac
