#!/usr/bin/env bash
# `veltor distance` beside GeographicLib's `GeodSolve -i` on a million random pairs: seconds of processor
# time, the best of three turns each, and their ratio. We print six values a line, the peer three.
#   benchmarks/distance_tool.sh path/to/veltor
set -euo pipefail
tool=${1:?path to veltor}
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
awk -v file="$directory/peer" 'BEGIN {
  srand(1)
  for (i = 0; i < 1000000; ++i) {
    lon1 = 360 * rand() - 180; lat1 = 178 * rand() - 89; lon2 = 360 * rand() - 180; lat2 = 178 * rand() - 89
    printf "%.8f %.8f %.8f %.8f\n", lon1, lat1, lon2, lat2
    printf "%.8f %.8f %.8f %.8f\n", lat1, lon1, lat2, lon2 > file
  }
}' >"$directory/ours"

TIMEFORMAT='%U %S'
seconds() { { time "$@" >/dev/null; } 2>&1 | awk '{ print $1 + $2 }'; }
best() { sort -n | head -1; }
for _ in 1 2 3; do
  seconds "$tool" distance <"$directory/ours" >>"$directory/text"
  seconds "$tool" distance --json <"$directory/ours" >>"$directory/json"
  seconds GeodSolve -i --input-file "$directory/peer" >>"$directory/geodsolve"
done
text=$(best <"$directory/text") json=$(best <"$directory/json") peer=$(best <"$directory/geodsolve")
awk -v text="$text" -v json="$json" -v peer="$peer" 'BEGIN {
  printf "veltor distance         %6.2f s   %.2f times as fast as the peer\n", text, peer / text
  printf "veltor distance --json  %6.2f s   %.2f times\n", json, peer / json
  printf "GeodSolve -i            %6.2f s\n", peer
}'
