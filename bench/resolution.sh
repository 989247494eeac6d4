#!/usr/bin/env bash
# How long does it take to resolve the conflicts of large circuits, and with how many signals?
# Usage: bench/resolution.sh [LIMIT] [OPTION ...]      (seconds for one circuit, 60 by default)
# Builds the programs with optimisation, and prints a row for each circuit of bench/make_circuit.cpp
# with conflicts, of growing size until one takes longer than the limit: the conditions B and events
# E of its prefix; the cores at the start, the steps and the signals inserted by `vorel -R -f` with
# the options; variables and clauses of the formula of the last step; the seconds of the SAT solver
# and of all together, reading included. "checked" tells whether vorel finds no CSC conflict in what
# was written, unfolded afresh; "gave up" that it found no transformation.
# The machine should have nothing else to do.
set -euo pipefail

limit=${1-60}
[ "$limit" -gt 0 ] 2>/dev/null || { echo "usage: bench/resolution.sh [LIMIT] [OPTION ...]" >&2; exit 2; }
options=("${@:2}")

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold make_circuit -- --quiet >&2
programs=$PWD/build-bench

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Exit code 1 is that of warnings.
run() { "$@" 2>/dev/null || [ $? -eq 1 ]; }
figure() { sed -n "s/.*|$1|=\([0-9]*\).*/\1/p" out | head -n 1; }
count() { grep -c "$1" out || true; }

check() {
  if grep -q 'cannot make further progress' out; then echo 'gave up'; return; fi
  run "$programs/vorel-unfold" vorel.g again.pnml >/dev/null
  if run "$programs/vorel" -C again.pnml | grep -q 'there are no CSC conflicts'; then echo yes; else echo NO; fi
}

# The row of the circuit; false when it takes too long.
row() {
  local start seconds variables clauses code=0
  "$programs/bench/make_circuit" "$1" "$2" >stg.g
  run "$programs/vorel-unfold" stg.g stg.unf.pnml >/dev/null
  rm -f vorel.g vorel.mci
  start=$EPOCHREALTIME
  timeout "$limit" "$programs/vorel" -R -f "${options[@]}" stg.unf.pnml >out 2>err || code=$?
  seconds=$(awk -v a="$start" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.2f", b - a }')
  if [ "$code" -gt 1 ]; then
    printf '%-14s %3d %6s %6s   more than %s seconds, or an error\n' "$1" "$2" "$(figure B)" "$(figure E)" "$limit"
    return 1
  fi
  read -r variables clauses < <(sed -n 's,^Original Num Var/Cl/Lit[^0-9]*\([0-9]*\)/\([0-9]*\)/.*,\1 \2,p' out) || true
  printf '%-14s %3d %6s %6s %6s %6s %8s %9s %9s %8s %8s  %s\n' "$1" "$2" \
    "$(figure B)" "$(figure E)" \
    "$(sed -n 's/ Encoding conflicts detected: \([0-9]*\).*/\1/p' out | head -n 1)" \
    "$(count 'suggested a transformation')" \
    "$(sed -n 's/.*(\([0-9]*\) signal insertion(s).*/\1/p' out)" \
    "$variables" "$clauses" \
    "$(sed -n 's,.*SAT/Total time: \([0-9.]*\)/.*,\1,p' out)" "$seconds" \
    "$(check)"
}

printf '%s %s\n' "$(git rev-parse --short HEAD 2>/dev/null || echo 'no commit')" "${options[*]}"
printf '%-14s %3s %6s %6s %6s %6s %8s %9s %9s %8s %8s  %s\n' \
  circuit n B E cores steps signals variables clauses SAT seconds checked
cd "$scratch"
for circuit in controllers sequencer busy_ring busy_pipeline; do
  for n in 1 2 3 4 6 8 12 16; do
    [ "$circuit" != busy_ring ] || [ "$n" -ge 3 ] || continue
    row "$circuit" "$n" || break
  done
done
