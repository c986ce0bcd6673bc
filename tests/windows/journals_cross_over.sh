#!/usr/bin/env bash
# A change is killed half-way on each system; the journals are the same byte for byte, and each is rolled
# back by the other system's tool: every file is what it was.
#   journals_cross_over.sh LINUX_BUILD WINDOWS_BIN EMULATOR WORK_FOLDER
set -euo pipefail
linux=$1 windows=$2 emulator=$3 work=$4
fail() { echo "journals_cross_over: $*" >&2; exit 1; }
for program in "$linux/examples/protected_update" "$linux/tools/veltor/veltor"; do
  [ -x "$program" ] || fail "$program is missing: build the preset dev first"
done
victim=
cleanup() { [ -z "$victim" ] || kill -9 "$victim" 2>/dev/null || true; exec 3>&-; }
trap cleanup EXIT

rm -rf "$work"
mkdir -p "$work/linux/карты"
cd "$work"
for ((i = 0; i < 4000; i++)); do printf 'строка %d\r\n' $i; done >linux/карты/план.txt
head -c 700000 "$windows/libstdc++-6.dll" >linux/data.bin
: >linux/empty
cp -r linux windows
files=(карты/план.txt data.bin empty)
(cd linux && sha256sum "${files[@]}") >original.sha256

# change FOLDER PROGRAM...: starts a change in the folder, and kills it after its tenth block.
change() {
  local folder=$1
  shift
  mkfifo "$folder.hold"
  cd "$folder"
  "$@" --pause-after 10 journal "${files[@]}" <"../$folder.hold" >"../$folder.out" 2>&1 &
  victim=$!
  exec 3>"../$folder.hold"
  cd ..
  for ((i = 0; i < 3000; i++)); do
    grep -q half-way "$folder.out" && break
    kill -0 "$victim" 2>/dev/null || fail "the change on $folder ended by itself"
    sleep 0.01
  done
  grep -q half-way "$folder.out" || fail "the change on $folder did not get half-way"
  kill -9 "$victim"
  wait "$victim" 2>/dev/null || true
  victim=
  exec 3>&-
  [ -s "$folder/journal" ] || fail "the change on $folder left no journal"
}
change linux "$linux/examples/protected_update"
change windows "$emulator" "$windows/protected_update.exe"

cmp linux/journal windows/journal || fail "the journals differ"
for name in "${files[@]}"; do cmp "linux/$name" "windows/$name" || fail "$name differs"; done
(cd linux && sha256sum --quiet -c ../original.sha256 >/dev/null 2>&1) && fail "nothing was changed"

(cd linux && "$emulator" "$windows/veltor.exe" journal rollback journal) || fail "Windows refuses Linux's journal"
(cd windows && "$linux/tools/veltor/veltor" journal rollback journal) || fail "Linux refuses Windows's journal"
for folder in linux windows; do
  (cd "$folder" && sha256sum --quiet -c ../original.sha256) || fail "$folder is not what it was"
  [ ! -e "$folder/journal" ] || fail "the journal of $folder is still there"
done
echo "journals of both systems are the same, and rolled back by the other"
