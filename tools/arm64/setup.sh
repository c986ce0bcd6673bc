#!/usr/bin/env bash
# Prepares, on Debian 12 amd64 and as root, what building for 64-bit ARM and running the result takes: Debian's cross
# compiler and QEMU on the machine, and in ${VELTOR_ARM64_CACHE:-${XDG_CACHE_HOME:-~/.cache}/veltor-utils/arm64}
#   system/      the libraries and headers of Debian's arm64, in a folder of their own: apt's state on the machine stays
#   forks/       what lets programs under QEMU start others: PlainForks.cpp
#
#   tools/arm64/setup.sh       prints the folder; exit status 75: a package could not be fetched (one line on stderr)
#   tools/arm64/setup.sh --cache   prints the folder, and does nothing
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cache=${VELTOR_ARM64_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/veltor-utils/arm64}
[ "${1-}" != --cache ] || { echo "$cache"; exit; }
work=$cache/work
log=$cache/setup.log
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
. "$here/../cache.sh"

# Unpacked, not installed: of it only libraries run.
recipe_system() {
  fetched "Qt and PROJ for arm64" mmdebstrap --mode=root --architectures=arm64 --variant=extract \
    --include=qtbase5-dev,libproj-dev,libdw-dev,libgtest-dev,libgmock-dev \
    --aptopt='APT::Install-Recommends "false"' --aptopt='Acquire::Languages "none"' \
    --dpkgopt='path-exclude=/usr/share/man/*' --dpkgopt='path-exclude=/usr/share/locale/*' \
    --dpkgopt='path-exclude=/usr/share/doc/*' \
    "$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)" "$dest" "deb $(archive)"
  # A program under QEMU sees what is there in place of the machine's own: /dev/shm, /tmp, /etc are to be that.
  find "$dest" -mindepth 1 -maxdepth 1 -type d ! -name usr ! -name lib -exec rm -rf --one-file-system {} +
  # Qt's description names its compilers of code below its own root: this machine's, of the same version.
  local tool
  for tool in moc rcc uic qmake; do
    ln -sf "/usr/lib/qt5/bin/$tool" "$dest/usr/lib/qt5/bin/$tool"
  done
}

recipe_forks() {
  mkdir -p "$dest"
  logged aarch64-linux-gnu-g++ "--sysroot=$cache/system" "-L$cache/system/usr/lib/aarch64-linux-gnu" -std=c++17 -O1 -Wall \
    -shared -fPIC -Wl,--as-needed -o "$dest/plainforks.so" "$here/PlainForks.cpp"
}

stamp() {
  { declare -f "recipe_$1"; [ "$1" = system ] || cat "$here/PlainForks.cpp"; } | sha256sum | cut -d ' ' -f 1
}

main() {
  [ "$(id -u)" -eq 0 ] || fail "run it as root: it unpacks a system"
  begin
  install_tools g++-aarch64-linux-gnu qemu-user mmdebstrap cmake ninja-build ca-certificates debian-archive-keyring
  stage system
  stage forks
  finish
}
main "$@"
