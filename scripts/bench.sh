#!/usr/bin/env bash
# Builds the benchmarks (Release, separate tree build/bench) and runs them:
#   scripts/bench.sh [Google Benchmark flags, e.g. --benchmark_filter=Utf]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lanes.sh"

bash "$root/scripts/install-deps.sh" linux
configure_lane bench
cmake --build "$root/build/bench" -j "$jobs"
if [[ ! -x $root/build/bench/qxrtl_bench ]]; then
  echo "bench: no qxrtl_bench was built (bench/*.cpp empty or Google Benchmark missing)" >&2
  exit 1
fi
"$root/build/bench/qxrtl_bench" "$@"
