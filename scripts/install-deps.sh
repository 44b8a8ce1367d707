#!/usr/bin/env bash
# Installs (once) the Debian packages the given lanes need: scripts/install-deps.sh [LANE...] (default linux)
set -euo pipefail

pkgs=(cmake ninja-build g++ make pkg-config)
for lane in "${@:-linux}"; do
  case $lane in
    linux|asan|tsan|linux-shared) pkgs+=(libgtest-dev libgmock-dev libbenchmark-dev libpcre2-dev libicu-dev libpugixml-dev) ;;
    windows|windows-shared) pkgs+=(g++-mingw-w64-x86-64-posix googletest wine wine64) ;;
    *) echo "install-deps: unknown lane '$lane'" >&2; exit 2 ;;
  esac
done

missing=()
for p in $(printf '%s\n' "${pkgs[@]}" | sort -u); do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=""
[[ $(id -u) -eq 0 ]] || sudo="sudo"
echo "install-deps: installing ${missing[*]}" >&2
$sudo apt-get update -qq
# Recommends are skipped: wine alone would pull in hundreds of desktop packages.
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
