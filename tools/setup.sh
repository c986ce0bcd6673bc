#!/usr/bin/env bash
# Installs what a fresh Debian 12 lacks to build, test and measure this project.
#   tools/setup.sh          what ./check and ./demo need
#   tools/setup.sh bench    the benchmarks' peers besides
#   tools/setup.sh package  what builds Debian packages besides
#   tools/setup.sh qt6      Qt 6 besides
#   tools/setup.sh mutate   what tools/dev/mutate needs besides
#   tools/setup.sh clang    the other compiler besides
#   tools/setup.sh ci       the format and static checks, packages and binary interface besides
# Does nothing, and says nothing, when all is there. Runs as root or through sudo.
set -euo pipefail

packages=(
  g++ cmake ninja-build make git pkg-config
  qtbase5-dev qttools5-dev qttools5-dev-tools
  libproj-dev
  libdw-dev
  rapidjson-dev
  libgtest-dev libgmock-dev
  python3-dev
)
for group in "$@"; do
  case $group in
    bench)
      packages+=(libbenchmark-dev geographiclib-tools libboost-dev libgeographiclib-dev libisal-dev
        libkf5threadweaver-dev libsqlite3-dev)
      ;;
    package) packages+=(doxygen dpkg-dev file graphviz gzip) ;;
    qt6) packages+=(qt6-base-dev qt6-5compat-dev qt6-l10n-tools libgl-dev) ;;
    clang) packages+=(clang) ;;
    ci)
      packages+=(clang-format clang-tidy doxygen graphviz)
      packages+=(abigail-tools dpkg-dev file gzip lintian man-db mandoc meson mmdebstrap zsh fish)
      ;;
    mutate) packages+=(python3-clang-14) ;;
    *) echo "tools/setup.sh: unknown group '$group' (bench, ci, clang, mutate, package, qt6)" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  # A password is asked for only where somebody can type it.
  if ! command -v sudo >/dev/null || ! { if [ -t 0 ]; then sudo -v; else sudo -n true; fi; } 2>/dev/null; then
    echo "tools/setup.sh: packages are missing, and there is no right to install them. As root:" >&2
    echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
quietly() { "$@" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }; }
quietly "${as_root[@]}" apt-get update -qq
quietly "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
