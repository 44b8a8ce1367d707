# Sourced by the scripts: build settings of each lane, kept in one place so that
# test.sh, example.sh and bench.sh reuse the same build trees without reconfiguring.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${QXRTL_JOBS:-2}

# configure_lane LANE [EXTRA_CMAKE_ARGS...]: configures build/LANE with Ninja. The -shared lanes
# build the shared library as Release, so that a Release build with -Werror is checked as well.
configure_lane() {
  local lane=$1
  shift
  local mingw=-DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw64.cmake"
  local cfg=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXRTL_WERROR=ON -DQXRTL_BUILD_TESTS=ON -DQXRTL_BUILD_EXAMPLES=ON)
  case $lane in
    # Release-style optimisation, but assert() stays on (no -DNDEBUG).
    linux) cfg+=(-DQXRTL_BUILD_BENCH=ON "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -g") ;;
    asan) cfg+=(-DQXRTL_SANITIZE=ON "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g") ;;
    tsan) cfg+=(-DQXRTL_SANITIZE_THREAD=ON "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g") ;;
    windows) cfg+=("$mingw" "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2") ;;
    linux-shared) cfg+=(-DCMAKE_BUILD_TYPE=Release -DQXRTL_SHARED=ON) ;;
    windows-shared) cfg+=("$mingw" -DCMAKE_BUILD_TYPE=Release -DQXRTL_SHARED=ON) ;;
    bench) cfg=(-DCMAKE_BUILD_TYPE=Release -DQXRTL_WERROR=ON -DQXRTL_BUILD_BENCH=ON -DQXRTL_BUILD_EXAMPLES=OFF) ;;
    *) echo "unknown lane '$lane' (linux, asan, tsan, windows, linux-shared, windows-shared, bench)" >&2; return 2 ;;
  esac
  mkdir -p "$root/build"
  cmake -G Ninja -S "$root" -B "$root/build/$lane" "${cfg[@]}" "$@" >"$root/build/$lane.configure.log" 2>&1 ||
    { cat "$root/build/$lane.configure.log" >&2; return 1; }
}
