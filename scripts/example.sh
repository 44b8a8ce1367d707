#!/usr/bin/env bash
# Builds and runs the example program: scripts/example.sh [windows] [ARGS...]
# (default: native Linux build; "windows" cross-builds it and runs it under Wine).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lanes.sh"
lane=linux
if [[ ${1:-} == windows || ${1:-} == linux ]]; then lane=$1; shift; fi

bash "$root/scripts/install-deps.sh" "$lane"
[[ $lane == windows ]] && bash "$root/scripts/deps-mingw.sh"
configure_lane "$lane"
cmake --build "$root/build/$lane" -j "$jobs" --target qxrtl_example
if [[ $lane == windows ]]; then
  bash "$root/scripts/wine.sh" run "$root/build/windows/qxrtl_example.exe" "$@"
else
  "$root/build/linux/qxrtl_example" "$@"
fi
