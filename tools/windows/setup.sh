#!/usr/bin/env bash
# Prepares, on Debian 12 amd64 and as root, what building for 32-bit Windows and running the result takes:
#   wine/        a private i386 system with Wine; nothing of i386 lands on the machine itself
#   qt/          Qt 5.15 (Core, Concurrent, Test) from Debian's source package, with moc for this machine
#   proj/        the geodesic routines of PROJ, in a package that find_package(PROJ) finds
#   googletest/  GoogleTest
# in ${VELTOR_WINDOWS_CACHE:-${XDG_CACHE_HOME:-~/.cache}/veltor-utils/windows}, where each of them stays until
# its recipe (below) or the compiler changes. A killed run goes on where it stopped.
#
#   tools/windows/setup.sh       prints the folder; exit status 75: a package could not be fetched (one line on stderr)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cache=$("$here/winerun" --cache)
work=$cache/work
log=$cache/setup.log
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
unset QTDIR QMAKESPEC XQMAKESPEC
. "$here/../cache.sh"

# --- the recipes: each fills $dest, may keep what a killed run can go on with in $scratch ---------------

# deb-src through a private state of apt, so that the machine's stays as it is. Without its security
# archive: only the main one always has every package for i386 and in source.
source_package() {
  local apt=$scratch/apt
  mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial"
  echo "deb-src $(archive)" >"$apt/sources.list"
  local options=(-q -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$apt/lists" -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root)
  fetched "the lists of source packages" apt-get "${options[@]}" update
  (cd "$scratch" && fetched "the sources of ${*: -1}" apt-get "${options[@]}" source "$@")
}

recipe_wine() {
  fetched "Wine for i386" mmdebstrap --mode=root --architectures=i386 --variant=apt --include=wine,wine32 \
    --aptopt='APT::Install-Recommends "false"' --aptopt='Acquire::Languages "none"' \
    --dpkgopt='path-exclude=/usr/share/man/*' --dpkgopt='path-exclude=/usr/share/locale/*' \
    --dpkgopt='path-exclude=/usr/share/doc/*' \
    "$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)" "$dest" "deb $(archive)"
}

recipe_qt() {
  local source
  if [ ! -e "$scratch/fetched" ]; then
    source_package qtbase-opensource-src
    touch "$scratch/fetched"
  fi
  source=$(echo "$scratch"/qtbase-opensource-src-*/)
  mkdir -p "$scratch/build"
  cd "$scratch/build"
  # The arithmetic of SSE2, as in the project itself and as in MSVC's Qt.
  [ -e configured ] || logged env MAKEFLAGS="-j$(nproc)" "$source/configure" -opensource -confirm-license \
    -platform linux-g++ -xplatform win32-g++ -device-option CROSS_COMPILE=i686-w64-mingw32- -prefix "$cache/qt" \
    -release -shared -c++std c++17 -no-pch -silent -no-gui -no-widgets -no-dbus -no-opengl -no-openssl -no-icu \
    -no-glib -no-feature-network -no-feature-sql -no-feature-xml -qt-pcre -qt-zlib -qt-doubleconversion \
    -no-compile-examples -nomake examples -nomake tests \
    "QMAKE_CFLAGS+=-msse2 -mfpmath=sse" "QMAKE_CXXFLAGS+=-msse2 -mfpmath=sse"
  touch configured
  logged make sub-src-qmake_all
  logged make -C src "-j$(nproc)" sub-corelib sub-concurrent sub-testlib
  logged make -s install_mkspecs INSTALL_ROOT="$scratch/installed"
  logged make -s -C src INSTALL_ROOT="$scratch/installed" sub-{moc,rcc,corelib,concurrent,testlib}-install_subtargets
  # Qt's own CMake files demand that qmake is there.
  logged install -s -m 755 bin/qmake "$scratch/installed$cache/qt/bin/qmake"
  mv "$scratch/installed$cache/qt" "$dest"
}

recipe_proj() {
  source_package --download-only --tar-only proj
  mkdir -p "$scratch/geodesic"
  tar -C "$scratch/geodesic" --strip-components=2 --wildcards -xf "$scratch"/proj_*.orig.tar.gz '*/src/geodesic.[ch]'
  cross_build "$here/proj" -DGEODESIC="$scratch/geodesic"
}

recipe_googletest() {
  cross_build /usr/src/googletest
}

cross_build() {
  local source=$1
  shift
  logged cmake -S "$source" -B "$scratch/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$here/toolchain.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$dest" "$@"
  logged cmake --build "$scratch/build" --target install
}

# --- stages -----------------------------------------------------------------------------------------------

# All that decides what a stage makes; the functions' texts are compared, not their comments.
stamp() {
  { declare -f "recipe_$1" cross_build source_package
    case $1 in
      wine) ;;
      qt) i686-w64-mingw32-g++-posix --version ;;
      *) i686-w64-mingw32-g++-posix --version; cat "$here/toolchain.cmake" "$here"/proj/* ;;
    esac; } | sha256sum | cut -d ' ' -f 1
}

main() {
  [ "$(id -u)" -eq 0 ] || fail "run it as root: it makes a private i386 system and enters it"
  begin
  install_tools g++-mingw-w64-i686-posix mmdebstrap arch-test cmake ninja-build googletest rapidjson-dev \
    make g++ perl python3 xz-utils dpkg-dev ca-certificates debian-archive-keyring
  stage wine
  stage qt
  stage proj
  stage googletest
  finish
}
main "$@"
