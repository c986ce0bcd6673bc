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

say() { echo "tools/windows/setup.sh: $*" >&2; }
fail() { say "$*"; exit 1; }

# logged COMMAND...: its output goes to the log, whose end is shown when it fails.
logged() { "$@" >>"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "failed: $* (all of it: $log)"; }; }

unfetched='Failed to fetch|Unable to fetch|Could not resolve|Could not connect|Connection (failed|timed out|refused)'
unfetched+='|Temporary failure|Unable to locate package|Unable to find a source package|has no installation candidate'
unfetched+='|Hash Sum mismatch|unexpected size|is not valid yet|404  Not Found'

# fetched WHAT COMMAND...: a command that gets packages. That these cannot be had today is told apart
# from every other failure of it by what apt says.
fetched() {
  local what=$1 out=$work/fetch.log
  shift
  "$@" >"$out" 2>&1 && { cat "$out" >>"$log"; return; }
  cat "$out" >>"$log"
  local reason
  reason=$(grep -m 1 -E "$unfetched" "$out" | sed 's/^ *//') || true
  if [ -n "$reason" ]; then
    say "cannot be fetched today: $what ($reason)"
    exit 75
  fi
  tail -n 40 "$out" >&2
  fail "failed: $*"
}

# --- the recipes: each fills $dest, may keep what a killed run can go on with in $scratch ---------------

tools() {
  local package missing=()
  for package in g++-mingw-w64-i686-posix mmdebstrap arch-test cmake ninja-build googletest rapidjson-dev \
    make g++ perl python3 xz-utils dpkg-dev ca-certificates debian-archive-keyring; do
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "installing ${missing[*]}"
  fetched "the lists of packages" apt-get update -q
  fetched "${missing[*]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# The machine's own entry for the main archive of its release.
archive() {
  local codename site
  codename=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
  # shellcheck disable=SC2016
  site=$(apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Release: $codename" "Component: main" |
    head -n 1)
  [ -n "$site" ] || fail "apt knows no source for $codename main"
  echo "[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $site $codename main"
}

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

# The sums of all files, so that a damaged cache is noticed. What Wine itself changes at run time lies elsewhere.
manifest() { (cd "$1" && find . -xdev -type f -print0 | sort -z | xargs -0 -r sha256sum); }

whole() {
  [ "$(cat "$cache/$1.stamp" 2>/dev/null)" = "$(stamp "$1")" ] &&
    (cd "$cache/$1" && sha256sum --quiet --check "$cache/$1.manifest") >>"$log" 2>&1
}

stage() {
  local name=$1 begin=$SECONDS stamp dest scratch
  whole "$name" && return
  stamp=$(stamp "$name")
  scratch=$work/$name-$stamp
  dest=$work/$name.new
  say "$name ..."
  # What another recipe or a killed run left half done.
  for old in "$work/$name"-*; do [ "$old" = "$scratch" ] || rm -rf --one-file-system "$old"; done
  rm -rf --one-file-system "$dest"
  mkdir -p "$scratch"
  ("recipe_$name")
  rm -rf --one-file-system "$cache/$name" "$cache/$name".{stamp,manifest}
  manifest "$dest" >"$cache/$name.manifest"
  mv -T "$dest" "$cache/$name"
  echo "$stamp" >"$work/stamp" && mv "$work/stamp" "$cache/$name.stamp"
  rm -rf --one-file-system "$scratch"
  say "$name: $((SECONDS - begin)) s"
}

main() {
  [ "$(id -u)" -eq 0 ] || fail "run it as root: it makes a private i386 system and enters it"
  mkdir -p "$work"
  exec 9>"$cache/lock"
  flock 9
  : >"$log"
  tools
  stage wine
  stage qt
  stage proj
  stage googletest
  rm -rf --one-file-system "$work"
  echo "$cache"
}
main "$@"
