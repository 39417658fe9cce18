#!/usr/bin/env bash
# Builds libraries for one mingw-w64 target, from Debian's own source packages, into build/dependencies/TARGET:
#
#   cmake/dependencies.sh x64|x86 [NAME...]
#
# The dev kit needs libxml2 and libzip, the tests googletest and benchmark; without a name all four are built, at the same
# time. What is already there is kept, so a second call costs nothing and needs no network.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:?usage: cmake/dependencies.sh x64|x86 [NAME...]}
shift
case $target in
  x64) triplet=x86_64-w64-mingw32 ;;
  x86) triplet=i686-w64-mingw32 ;;
  *) echo "cmake/dependencies.sh: unknown target '$target'" >&2; exit 2 ;;
esac
work=$root/build/dependencies
prefix=$work/$target
stamps=$prefix/.stamps
mkdir -p "$work/sources" "$stamps" "$prefix/include"

say() { printf '   %s\n' "$*"; }

# A source list of its own, derived from the machine's Debian entries, so that the machine's set-up is not touched.
prepare_source_list() {
  [ -e "$work/apt/ready" ] && return
  mkdir -p "$work/apt/lists/partial" "$work/apt/archives/partial"
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Identifier: Packages' 'Origin: Debian' |
    sort -u | sed 's/^/deb-src /' > "$work/apt/sources.list"
  apt_private update -qq
  touch "$work/apt/ready"
}

apt_private() {
  apt-get -o Dir::Etc::SourceList="$work/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o Dir::State::Lists="$work/apt/lists" -o Dir::Cache::archives="$work/apt/archives" \
    -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= -o APT::Sandbox::User="$(id -un)" "$@"
}

fetch() { # PACKAGE -> unpacked at sources/PACKAGE
  [ -d "$work/sources/$1" ] && return
  say "fetching the source of $1"
  prepare_source_list
  mkdir -p "$work/sources/.$1"
  (cd "$work/sources/.$1" && apt_private source -qq --download-only "$1" >/dev/null &&
    dpkg-source --no-check -x ./*.dsc tree >/dev/null 2>&1)
  mv "$work/sources/.$1/tree" "$work/sources/$1"
  rm -rf "$work/sources/.$1"
}

build() { # NAME SOURCE-FOLDER CMAKE-OPTION...
  local name=$1 source=$2 log=$prefix/$1.log
  shift 2
  [ -e "$stamps/$name" ] && return
  say "building $name for $target"
  if ! { cmake -G Ninja -S "$source" -B "$prefix/.build/$name" \
      -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/mingw-$target.cmake" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF \
      -DCMAKE_C_FLAGS_RELEASE="-O3 -DNDEBUG -ffile-prefix-map=$root/=" "$@" &&
      cmake --build "$prefix/.build/$name" && cmake --install "$prefix/.build/$name"; } >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    echo "cmake/dependencies.sh: building $name failed, the whole log is $log" >&2
    exit 1
  fi
  rm -rf "$prefix/.build/$name"
  touch "$stamps/$name"
}

# Header-only packages and the target's own zlib come from Debian's binary packages.
ln -sfn /usr/include/nlohmann "$prefix/include/nlohmann"
ln -sfn /usr/include/CLI "$prefix/include/CLI"

build_googletest() {
  build googletest /usr/src/googletest -DINSTALL_GTEST=ON -DBUILD_GMOCK=ON
}

build_benchmark() {
  build benchmark "$work/sources/benchmark" -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_WERROR=OFF \
    -DBENCHMARK_ENABLE_LTO=OFF -DGIT_VERSION=0.0.0 -DCMAKE_CXX_FLAGS=-D_WIN32_WINNT=0x0601
}

# The tree, the parsers, the writer and XPath. Its own build marks every symbol for export also in the static library,
# and a DLL that links it would export them.
build_libxml2() {
  local off=() part
  for part in C14N CATALOG DEBUG FTP HTML HTTP ICONV LEGACY LZMA MODULES PROGRAMS PYTHON SCHEMAS SCHEMATRON TESTS \
      XINCLUDE XPTR ZLIB; do
    off+=(-DLIBXML2_WITH_$part=OFF)
  done
  build libxml2 "$work/sources/libxml2" -DCMAKE_C_FLAGS=-DLIBXML_STATIC -DLIBXML2_WITH_THREADS=ON "${off[@]}"
}

build_libzip() {
  local off=() part
  for part in BUILD_TOOLS BUILD_REGRESS BUILD_EXAMPLES BUILD_DOC ENABLE_BZIP2 ENABLE_COMMONCRYPTO ENABLE_GNUTLS \
      ENABLE_LZMA ENABLE_MBEDTLS ENABLE_OPENSSL ENABLE_WINDOWS_CRYPTO ENABLE_ZSTD; do
    off+=(-D$part=OFF)
  done
  build libzip "$work/sources/libzip" "${off[@]}" \
    -DZLIB_LIBRARY="/usr/$triplet/lib/libz.a" -DZLIB_INCLUDE_DIR="/usr/$triplet/include"
}

names=("$@")
[ ${#names[@]} -gt 0 ] || names=(libxml2 libzip googletest benchmark)
# googletest's source is a package that is installed.
for name in "${names[@]}"; do
  [ "$name" = googletest ] || [ -e "$stamps/$name" ] || fetch "$name"
done
jobs=()
for name in "${names[@]}"; do
  "build_$name" &
  jobs+=($!)
done
for job in "${jobs[@]}"; do wait "$job"; done
