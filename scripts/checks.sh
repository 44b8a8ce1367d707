# Sourced by scripts/test.sh: checks of the set-up a new user goes through (scripts, example,
# installed package), each a function that prints why it failed and returns non-zero.
# They run from the repository root with $root, $jobs, $lane and $dir (the lane's build tree) set.

# fail MESSAGE...: prints the reason a check failed and returns 1.
fail() {
  echo "  $*" >&2
  return 1
}

# scratch: a fresh empty folder under the lane's tree for one check, printed.
scratch() {
  local folder=$root/$dir/checks/$1
  rm -rf "$folder" && mkdir -p "$folder" && echo "$folder"
}

# wine.sh works in its own prefix under build/, whatever WINEPREFIX says, and removes no folder
# it did not make. Runs a copy of the script with stand-ins for the Wine programs.
check_wine_prefix() {
  local tmp tool
  tmp=$(scratch wine-prefix) || return 1
  mkdir -p "$tmp/bin" "$tmp/user-prefix" "$tmp/tree/scripts" "$tmp/foreign/scripts" "$tmp/foreign/build/wineprefix"
  for tool in wine wineboot wineserver; do printf '#!/bin/sh\nexit 0\n' >"$tmp/bin/$tool" && chmod +x "$tmp/bin/$tool"; done
  cp scripts/wine.sh "$tmp/tree/scripts/" && cp scripts/wine.sh "$tmp/foreign/scripts/"
  touch "$tmp/user-prefix/system.reg" "$tmp/foreign/build/wineprefix/keep"

  local rc=0
  PATH=$tmp/bin:$PATH WINEPREFIX=$tmp/user-prefix bash "$tmp/tree/scripts/wine.sh" init 2>/dev/null || rc=$?
  [[ -f $tmp/user-prefix/system.reg ]] || fail "the caller's WINEPREFIX was removed" || return 1
  [[ $rc == 0 ]] || fail "init failed in a fresh tree" || return 1
  [[ -f $tmp/tree/build/wineprefix/.qxrtl-ready ]] || fail "no prefix made under build/" || return 1

  if PATH=$tmp/bin:$PATH bash "$tmp/foreign/scripts/wine.sh" init 2>/dev/null; then
    fail "init took over a folder it did not make"
  fi
  [[ -f $tmp/foreign/build/wineprefix/keep ]] || fail "a folder the script did not make was emptied"
}

# Configuring the library alone needs neither GoogleTest nor Google Benchmark; asking for the
# tests without GoogleTest fails at configure time and says what is missing.
check_configure_without_test_packages() {
  local tmp hide=(-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON
    -DQXRTL_GOOGLETEST_SRC=/nonexistent)
  tmp=$(scratch configure) || return 1
  cmake -G Ninja -S "$root" -B "$tmp/library" "${hide[@]}" >"$tmp/library.log" 2>&1 ||
    fail "configuring the library alone failed: $(tail -n 5 "$tmp/library.log")" || return 1
  if cmake -G Ninja -S "$root" -B "$tmp/tests" "${hide[@]}" -DQXRTL_BUILD_TESTS=ON >"$tmp/tests.log" 2>&1; then
    fail "configuring the tests without GoogleTest succeeded"
  fi
  grep -q 'GoogleTest not found' "$tmp/tests.log" || fail "no message naming the missing GoogleTest"
}

# Every folder and script the README names exists.
check_readme() {
  local path missing=0
  for path in $(grep -o '`\(src\|scripts\|cmake\|tests\|bench\|examples\)/[A-Za-z0-9_./-]*`' README.md | tr -d '`' | sort -u); do
    [[ -e $path ]] || { echo "  README names $path, which does not exist" >&2; missing=1; }
  done
  for path in $(grep -o 'src/{[a-z,]*}' README.md | sed 's/src\/{\(.*\)}/\1/' | tr ',' ' '); do
    [[ -d src/$path ]] || { echo "  README names src/$path, which does not exist" >&2; missing=1; }
  done
  return "$missing"
}

# run_program EXE [DLL_FOLDER]: runs a program the lane built, under Wine for Windows lanes
# (with the DLLs of DLL_FOLDER copied beside it).
run_program() {
  if [[ $lane != windows* ]]; then
    "$1"
    return
  fi
  [[ -z ${2:-} ]] || ! compgen -G "$2/*.dll" >/dev/null || cp "$2"/*.dll "$(dirname "$1")/"
  bash scripts/wine.sh run "$1.exe"
}

# The example's XML date-time reads back the local time it wrote (on Linux east and west of
# UTC), and an exception ends it with "Error: ..." and exit code 1.
check_example() {
  local out tz rc=0 zones=(EST5 IST-5:30)
  [[ $lane == linux ]] || zones=("")
  for tz in "${zones[@]}"; do
    out=$([[ -z $tz ]] || export TZ=$tz; run_program "$dir/qxrtl_example") || fail "example failed (TZ=$tz)" || return 1
    [[ $(grep -m1 '^  local time ' <<<"$out" | cut -d= -f2) == $(grep -m1 '^  read back ' <<<"$out" | cut -d= -f2) ]] ||
      fail "with TZ=$tz the XML date-time did not read back as written" || return 1
  done
  [[ $lane == linux ]] || return 0
  out=$(TMPDIR=/nonexistent "$dir/qxrtl_example" 2>&1) || rc=$?
  [[ $rc == 1 && $(tail -n 1 <<<"$out") == "Error: "* ]] ||
    fail "without a temporary folder the example ended with code $rc: $(tail -n 1 <<<"$out")"
}

# install_moved FOLDER: installs the lane's tree into FOLDER/installed, then moves it to
# FOLDER/moved, so that any path into the first place breaks.
install_moved() {
  cmake --install "$dir" --prefix "$1/installed" >"$1/install.log" 2>&1 || fail "install failed" || return 1
  mv "$1/installed" "$1/moved"
}

# The installed package works wherever its tree is moved: the example builds against it with
# find_package(QxRtl) and runs. Its CMake and pkg-config files hold no absolute path.
check_package() {
  local tmp cfg=()
  tmp=$(scratch package) && install_moved "$tmp" || return 1
  if grep -rnE '(^|[ ";=(])/[A-Za-z]' "$tmp/moved/lib" --include='*.cmake' --include='*.pc' >&2; then
    fail "the installed package files above hold absolute paths"
    return 1
  fi
  # A cross build re-roots CMAKE_PREFIX_PATH under the toolchain's roots, so name the folder.
  cfg=(-DCMAKE_PREFIX_PATH="$tmp/moved" -DQxRtl_DIR="$(dirname "$(find "$tmp/moved" -name QxRtlConfig.cmake)")")
  [[ $lane != windows* ]] || cfg+=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw64.cmake")
  cmake -G Ninja -S cmake/package-check -B "$tmp/build" -DQXRTL_SOURCE_DIR="$root" "${cfg[@]}" >"$tmp/build.log" 2>&1 &&
    cmake --build "$tmp/build" -j "$jobs" >>"$tmp/build.log" 2>&1 || fail "$(tail -n 20 "$tmp/build.log")" || return 1
  run_program "$tmp/build/package_check" "$tmp/moved/bin" >"$tmp/run.log" 2>&1 ||
    fail "the example built against the installed package failed: $(tail -n 5 "$tmp/run.log")"
}

# A program built with nothing but the flags of the installed (and moved) qxrtl.pc runs.
check_pkg_config() {
  local tmp flags
  tmp=$(scratch pkg-config) && install_moved "$tmp" || return 1
  printf '%s\n' '#include <Quorvex.Utils.Strings.hpp>' \
    'int main() { return Quorvex::Utils::Strings::gString::FormatBytes(1536) == u"1.5 KB" ? 0 : 1; }' >"$tmp/app.cpp"
  flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$tmp/moved" -name qxrtl.pc)") pkg-config --cflags --libs qxrtl) ||
    fail "pkg-config does not find qxrtl" || return 1
  # shellcheck disable=SC2086 # the flags are words
  c++ -std=c++20 "$tmp/app.cpp" -o "$tmp/app" $flags -Wl,-rpath,"$tmp/moved/lib" >"$tmp/build.log" 2>&1 ||
    fail "$(tail -n 20 "$tmp/build.log")" || return 1
  "$tmp/app" || fail "the program built with pkg-config's flags failed"
}

# The shared library exports the public API and nothing of the platform layer, of the helpers
# that only tests use or of GoogleTest.
check_exports() {
  local symbols internal
  if [[ $lane == windows* ]]; then
    symbols=$(x86_64-w64-mingw32-objdump -p "$dir"/*qxrtl*.dll | sed -n '/Ordinal\/Name Pointer/,/^$/p' | c++filt)
  else
    symbols=$(nm -D --defined-only "$dir"/libqxrtl.so | c++filt)
  fi
  grep -q 'gString::FormatBytes' <<<"$symbols" || fail "gString::FormatBytes is not exported" || return 1
  internal=$(grep -E 'Quorvex::Platform::|ForTesting|OSDescriptionOf|WindowsVersionOf|testing::' <<<"$symbols") || return 0
  head -n 20 <<<"$internal" >&2
  fail "the library exports internal symbols, such as those above"
}
