#!/usr/bin/env bash
# Builds every lane, runs its set-up checks (scripts/checks.sh) and its GoogleTest suite; ends
# with the line "N passed, M failed", where each check counts as one test case.
# Lanes: QXRTL_LANES="linux asan tsan windows linux-shared windows-shared" (the default).
# Parallel jobs: QXRTL_JOBS (default 2).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lanes.sh"
source "$root/scripts/checks.sh"
cd "$root"
read -r -a lanes <<<"${QXRTL_LANES:-linux asan tsan windows linux-shared windows-shared}"

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

# The checks of each lane, by name (check_NAME in scripts/checks.sh).
lane_checks() {
  case $1 in
    linux) echo wine_prefix configure_without_test_packages readme example package pkg_config ;;
    windows) echo example package ;;
    linux-shared) echo exports package pkg_config ;;
    windows-shared) echo exports package ;;
  esac
}

# run_checks LANE: runs the lane's checks, adding one to `pass` or `failed_checks` for each.
run_checks() {
  local name
  for name in $(lane_checks "$1"); do
    if "check_$name"; then
      echo "check $name: ok" && pass=$((pass + 1))
    else
      echo "check $name: FAILED" && failed_checks=$((failed_checks + 1))
    fi
  done
}

# run_tests: runs the lane's test binary through ctest and adds its counts to `pass` and `fail`.
run_tests() {
  local ok=1 tests_passed
  if ! grep -qs qxrtl_tests "$dir/CTestTestfile.cmake"; then
    fail=0 note="no tests (tests/*.cpp is empty)"
    return
  fi
  echo "=== lane $lane: test"
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 TSAN_OPTIONS=second_deadlock_stack=1 \
    ctest --test-dir "$dir" --output-on-failure || ok=0
  if [[ ! -f $report ]]; then
    note="no XML report (test binary crashed?)"
    return
  fi
  read -r tests_passed fail < <(count_report "$report")
  pass=$((pass + tests_passed))
  # A failing exit with a clean report means a crash or sanitizer error after the last test.
  if [[ $ok == 0 && $fail == 0 ]]; then fail=1 note="test binary failed after its tests"; fi
  if [[ $fail != 0 && $note == ok ]]; then note="tests failed"; fi
}

declare -A lane_pass lane_fail lane_note lane_time
total_pass=0 total_fail=0 bad=0 wine_started=0
trap '[[ $wine_started == 0 ]] || bash scripts/wine.sh stop' EXIT

for lane in "${lanes[@]}"; do
  start=$SECONDS dir=build/$lane report=build/$lane/test-results/qxrtl_tests.xml
  pass=0 fail=1 note=ok failed_checks=0
  rm -f "$report"
  echo "=== lane $lane: configure + build"
  if [[ $lane == windows* ]] && ! bash scripts/deps-mingw.sh; then
    note="dependency build failed"
  elif ! configure_lane "$lane"; then
    note="configure failed"
  elif ! cmake --build "$dir" -j "$jobs"; then
    note="build failed"
  else
    if [[ $lane == windows* && $wine_started == 0 ]]; then
      # One persistent wineserver for the run: each test process then starts in milliseconds.
      bash scripts/wine.sh start && wine_started=1
    fi
    echo "=== lane $lane: checks"
    run_checks "$lane"
  fi
  [[ $note != ok ]] || run_tests
  if [[ $failed_checks != 0 ]]; then
    fail=$((fail + failed_checks))
    [[ $note == ok || $note == no\ tests* ]] && note="$failed_checks checks failed"
  fi
  [[ $note == ok || $note == no\ tests* ]] || bad=1
  lane_pass[$lane]=$pass lane_fail[$lane]=$fail lane_note[$lane]=$note lane_time[$lane]=$((SECONDS - start))
  total_pass=$((total_pass + pass)) total_fail=$((total_fail + fail))
done

echo
echo "=== summary"
for lane in "${lanes[@]}"; do
  printf 'lane %-14s %5d passed, %3d failed %5ds  %s\n' "$lane" "${lane_pass[$lane]}" \
    "${lane_fail[$lane]}" "${lane_time[$lane]}" "${lane_note[$lane]}"
done
echo "$total_pass passed, $total_fail failed"
[[ $bad == 0 && $total_fail == 0 ]]
