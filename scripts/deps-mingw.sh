#!/usr/bin/env bash
# Builds third-party libraries for the Windows (MinGW) lane into build/deps-mingw/prefix.
# Each library is rebuilt only when its Debian package version or the toolchain changes.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
deps=$root/build/deps-mingw
prefix=$deps/prefix
toolchain=$root/cmake/toolchain-mingw64.cmake
jobs=${QXRTL_JOBS:-2}

# build_cmake_dep NAME VERSION SOURCE_DIR [CMAKE_ARGS...]
build_cmake_dep() {
  local name=$1 version=$2 src=$3
  shift 3
  local key stamp=$prefix/.stamp-$name
  key="$version $(sha1sum <"$toolchain" | cut -c1-12) $*"
  [[ -f $stamp && $(<"$stamp") == "$key" ]] && return 0
  echo "deps-mingw: building $name $version" >&2
  local bdir=$deps/build-$name log=$deps/build-$name.log
  rm -rf "$bdir"
  {
    cmake -G Ninja -S "$src" -B "$bdir" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@" &&
      cmake --build "$bdir" -j "$jobs" && cmake --install "$bdir"
  } >"$log" 2>&1 || { tail -n 40 "$log" >&2; return 1; }
  echo "$key" >"$stamp"
}

pkg_version() { dpkg-query -W -f='${Version}' "$1"; }

# debian_source PACKAGE: unpacks Debian's source package once under build/deps-mingw/src and
# sets src_version and src_dir. Turns on deb-src in apt's sources the first time it is needed.
debian_source() {
  local pkg=$1 dir=$deps/src/$1 sudo="" codename
  [[ $(id -u) -eq 0 ]] || sudo=sudo
  if [[ ! -f $dir/.unpacked ]]; then
    if ! grep -rqs '^Types:.*deb-src\|^deb-src ' /etc/apt/sources.list /etc/apt/sources.list.d/; then
      $sudo sed -i 's/^Types: deb$/Types: deb deb-src/' /etc/apt/sources.list.d/*.sources 2>/dev/null || true
      [[ ! -f /etc/apt/sources.list ]] || $sudo sed -i 's/^deb \(.*\)$/&\ndeb-src \1/' /etc/apt/sources.list
      $sudo apt-get update -qq
    fi
    command -v dpkg-source >/dev/null ||
      $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends dpkg-dev >/dev/null
    rm -rf "$dir" && mkdir -p "$dir"
    # The release's own version: security-update sources are not always on the mirror.
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    (cd "$dir" && apt-get source -qq "$pkg/$codename" >source.log 2>&1) || { cat "$dir/source.log" >&2; return 1; }
    touch "$dir/.unpacked"
  fi
  src_version=$(basename "$(ls "$dir"/*.dsc)" .dsc)
  src_dir=$(ls -d "$dir"/*/)
}

mkdir -p "$prefix"
# gtest's pthread mode changes class layouts under MinGW; use its Win32 threading.
build_cmake_dep googletest "$(pkg_version googletest)" /usr/src/googletest \
  -DINSTALL_GTEST=ON -DBUILD_GMOCK=ON -Dgtest_disable_pthreads=ON
# PCRE2 with 16-bit code units only (the library matches UTF-16 text), from Debian's source package.
debian_source pcre2
build_cmake_dep pcre2 "$src_version" "$src_dir" -DPCRE2_BUILD_PCRE2_8=OFF -DPCRE2_BUILD_PCRE2_16=ON \
  -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_BUILD_TESTS=OFF -DPCRE2_SUPPORT_JIT=OFF
# pugixml reads and writes the library's XML documents, from Debian's source package.
debian_source pugixml
build_cmake_dep pugixml "$src_version" "$src_dir" -DPUGIXML_BUILD_TESTS=OFF
