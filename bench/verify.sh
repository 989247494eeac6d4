#!/usr/bin/env bash
# How long does it take to verify large circuits, and how large do prefixes get?
# Usage: bench/verify.sh [LIMIT] [OPTION ...]      (seconds for one circuit, 60 by default)
# Builds the programs with optimisation, and prints a row for each netlist that vorel -E, -G, -S and
# -T make of circuits of bench/make_circuit.cpp, of growing size until one takes longer than the
# limit: the number of states of the STG; gates and wires of the netlist; conditions B, events E and
# cut-offs C of the prefix of both together, and the events of that of the STG alone; the seconds of
# reading and verifying; the verdict of vorel-verify with the options. "changed" is the verdict on
# the netlist with one more inverter, at an input of its first gate: it has to be "not correct".
# The machine should have nothing else to do.
set -euo pipefail

limit=${1-60}
[ "$limit" -gt 0 ] 2>/dev/null || { echo "usage: bench/verify.sh [LIMIT] [OPTION ...]" >&2; exit 2; }
options=("${@:2}")

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold vorel-verify make_circuit -- --quiet >&2
programs=$PWD/build-bench

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Exit code 1 is that of warnings.
run() { "$@" 2>/dev/null || [ $? -eq 1 ]; }

# Of a tree with n leaves each node has risen, or its parts are in some states of theirs.
states() {
  awk -v family="$1" -v n="$2" '
    function below(k) { return k < n ? below(2 * k) * below(2 * k + 1) + 1 : 2 }
    function choose(n, k) { return k == 0 ? 1 : choose(n, k - 1) * (n - k + 1) / k }
    BEGIN {
      if (family == "pipeline") count = 2 ^ (n + 2)
      if (family == "tokens") count = 2 * choose(n, 2 * int((n + 1) / 4))
      if (family == "tree") count = 2 * (below(1) - 1)
      if (family == "fork_join") count = 2 * (3 ^ n + 1)
      printf "%.1e", count
    }'
}

# The verdict, "late" or "error".
verify() {
  local code=0
  timeout "$limit" "$programs/vorel-verify" stg.g "$1" "${options[@]}" >out 2>err || code=$?
  case $code in
    0) echo correct ;;
    3) echo 'not correct' ;;
    4 | 124) echo late ;;
    *) echo error ;;
  esac
}

# One more inverter, at the first gate: in an expression, or before an instance.
change() {
  awk '!done && sub(/assign [^=]* = /, "&~ ") { done = 1 }
       !done && match($0, /\.O\([^)]*\)|\.Q\([^)]*\)|\.C\([^)]*\)/) && /U[0-9]/ {
         out = substr($0, RSTART, RLENGTH)
         sub(/\(.*/, "(changed)", out)
         wire = substr($0, RSTART + 3, RLENGTH - 4)
         $0 = substr($0, 1, RSTART - 1) out substr($0, RSTART + RLENGTH)
         print "    not (" wire ", changed);"
         done = 1
       }
       { print }' netlist.v >changed.v
}

# The row of a netlist; false when it takes too long.
row() {
  local family=$1 n=$2 mode=$3 verdict figures
  rm -f netlist.v
  timeout "$limit" "$programs/vorel" "$mode" stg.unf.pnml netlist.v >/dev/null 2>&1 || [ $? -eq 1 ] || true
  if [ ! -f netlist.v ]; then
    printf '%-10s %3d  %s  no netlist in %s seconds\n' "$family" "$n" "$mode" "$limit"
    return 1
  fi
  verdict=$(verify netlist.v)
  figures=$(sed -n -e 's/^circuit: \([0-9]*\) gate(s), \([0-9]*\) wire(s)/\1 \2/p' \
    -e 's/^ |B|=\([0-9]*\) |E|=\([0-9]*\) |C|=\([0-9]*\)/\1 \2 \3/p' \
    -e 's,^ Reading/Verifying time: \([0-9.]*\)/\([0-9.]*\),\1 \2,p' out | tr '\n' ' ')
  read -r gates wires conditions events cutoffs reading verifying <<<"$figures" || true
  change
  printf '%-10s %3d %8s  %s %5s %5s %8s %8s %6s %6s %8s %9s  %-11s %s\n' "$family" "$n" \
    "$(states "$family" "$n")" "$mode" "$gates" "$wires" "$conditions" "$events" "$cutoffs" \
    "$stg_events" "$reading" "$verifying" "$verdict" "$(verify changed.v)"
  [ "$verdict" != late ]
}

printf '%s %s\n' "$(git rev-parse --short HEAD 2>/dev/null || echo 'no commit')" "${options[*]}"
printf '%-10s %3s %8s  %s %5s %5s %8s %8s %6s %6s %8s %9s  %-11s %s\n' \
  circuit n states of gates wires B E C STG reading verifying verdict changed
cd "$scratch"
for family in pipeline tokens tree fork_join; do
  for mode in -E -G -S -T; do
    for n in 4 8 12 16 20 24 28 32 36 40; do
      "$programs/bench/make_circuit" "$family" "$n" >stg.g
      run "$programs/vorel-unfold" stg.g stg.unf.pnml >unfolded
      stg_events=$(sed -n 's/.*|E|=\([0-9]*\).*/\1/p' unfolded)
      row "$family" "$n" "$mode" || break
    done
  done
done
