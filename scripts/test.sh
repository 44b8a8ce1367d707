#!/usr/bin/env bash
# Builds every lane and runs its GoogleTest suite; ends with the line "N passed, M failed".
# Lanes: QXRTL_LANES="linux asan windows" (the default). Parallel jobs: QXRTL_JOBS (default 2).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lanes.sh"
cd "$root"
read -r -a lanes <<<"${QXRTL_LANES:-linux asan windows}"

bash scripts/install-deps.sh "${lanes[@]}"

# Prints "passed failed" from a gtest XML report (disabled and skipped tests count as neither).
count_report() {
  local head tests failures disabled skipped
  head=$(grep -m1 '<testsuites ' "$1") || { echo "0 1"; return; }
  tests=$(sed -E 's/.* tests="([0-9]+)".*/\1/' <<<"$head")
  failures=$(sed -E 's/.* failures="([0-9]+)".*/\1/' <<<"$head")
  disabled=$(sed -E 's/.* disabled="([0-9]+)".*/\1/' <<<"$head")
  skipped=$(grep -c 'result="skipped"' "$1" || true)
  echo "$((tests - failures - disabled - skipped)) $failures"
}

# Installs build/linux into a staging prefix and builds the examples against it via find_package.
package_check() {
  rm -rf build/linux/stage
  cmake --install build/linux --prefix build/linux/stage >/dev/null &&
    cmake -G Ninja -S cmake/package-check -B build/linux/package-check -DQXRTL_SOURCE_DIR="$root" \
      -DCMAKE_PREFIX_PATH="$root/build/linux/stage" >/dev/null &&
    cmake --build build/linux/package-check -j "$jobs"
}

declare -A lane_pass lane_fail lane_note lane_time
total_pass=0 total_fail=0 bad=0 wine_started=0
trap '[[ $wine_started == 0 ]] || bash scripts/wine.sh stop' EXIT

for lane in "${lanes[@]}"; do
  start=$SECONDS dir=build/$lane report=build/$lane/test-results/qxrtl_tests.xml
  pass=0 fail=1 note=ok
  rm -f "$report"
  echo "=== lane $lane: configure + build"
  if [[ $lane == windows ]] && ! bash scripts/deps-mingw.sh; then
    note="dependency build failed"
  elif ! configure_lane "$lane"; then
    note="configure failed"
  elif ! cmake --build "$dir" -j "$jobs"; then
    note="build failed"
  elif [[ $lane == linux ]] && ls examples/*.cpp >/dev/null 2>&1 && ! package_check; then
    note="installed package check failed"
  elif ! grep -qs qxrtl_tests "$dir/CTestTestfile.cmake"; then
    fail=0 note="no tests (tests/*.cpp is empty)"
  else
    echo "=== lane $lane: test"
    if [[ $lane == windows ]]; then
      # One persistent wineserver for the run: each test process then starts in milliseconds.
      bash scripts/wine.sh start && wine_started=1
    fi
    ok=1
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
      ctest --test-dir "$dir" --output-on-failure || ok=0
    if [[ ! -f $report ]]; then
      note="no XML report (test binary crashed?)"
    else
      read -r pass fail < <(count_report "$report")
      # A failing exit with a clean report means a crash or sanitizer error after the last test.
      if [[ $ok == 0 && $fail == 0 ]]; then fail=1 note="test binary failed after its tests"; fi
      if [[ $fail != 0 && $note == ok ]]; then note="tests failed"; fi
    fi
  fi
  [[ $note == ok || $note == no\ tests* ]] || bad=1
  lane_pass[$lane]=$pass lane_fail[$lane]=$fail lane_note[$lane]=$note lane_time[$lane]=$((SECONDS - start))
  total_pass=$((total_pass + pass)) total_fail=$((total_fail + fail))
done

echo
echo "=== summary"
for lane in "${lanes[@]}"; do
  printf 'lane %-8s %5d passed, %3d failed %5ds  %s\n' "$lane" "${lane_pass[$lane]}" \
    "${lane_fail[$lane]}" "${lane_time[$lane]}" "${lane_note[$lane]}"
done
echo "$total_pass passed, $total_fail failed"
[[ $bad == 0 && $total_fail == 0 ]]
