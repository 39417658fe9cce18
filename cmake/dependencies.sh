#!/usr/bin/env bash
# Builds the libraries that the dev kit and the tests use for one mingw-w64 target, from Debian's own source packages,
# into build/dependencies/TARGET. What is already there is kept, so a second call costs nothing and needs no network.
#
#   cmake/dependencies.sh x64|x86
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:?usage: cmake/dependencies.sh x64|x86}
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
      -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@" &&
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

build googletest /usr/src/googletest -DINSTALL_GTEST=ON -DBUILD_GMOCK=ON

[ -e "$stamps/benchmark" ] || fetch benchmark
build benchmark "$work/sources/benchmark" -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_WERROR=OFF \
  -DBENCHMARK_ENABLE_LTO=OFF -DGIT_VERSION=0.0.0 -DCMAKE_CXX_FLAGS=-D_WIN32_WINNT=0x0601

# Its own build marks every symbol for export also in the static library, and a DLL that links it would export them.
[ -e "$stamps/libxml2" ] || fetch libxml2
build libxml2 "$work/sources/libxml2" -DCMAKE_C_FLAGS=-DLIBXML_STATIC -DLIBXML2_WITH_ICONV=OFF \
  -DLIBXML2_WITH_LZMA=OFF -DLIBXML2_WITH_ZLIB=OFF -DLIBXML2_WITH_PYTHON=OFF -DLIBXML2_WITH_TESTS=OFF -DLIBXML2_WITH_PROGRAMS=OFF -DLIBXML2_WITH_HTTP=OFF \
  -DLIBXML2_WITH_FTP=OFF -DLIBXML2_WITH_MODULES=OFF -DLIBXML2_WITH_THREADS=ON -DLIBXML2_WITH_DEBUG=OFF

[ -e "$stamps/libzip" ] || fetch libzip
build libzip "$work/sources/libzip" -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF \
  -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF -DENABLE_OPENSSL=OFF -DENABLE_WINDOWS_CRYPTO=OFF \
  -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF \
  -DZLIB_LIBRARY="/usr/$triplet/lib/libz.a" -DZLIB_INCLUDE_DIR="/usr/$triplet/include"
