#!/usr/bin/env bash
# How long does it take to map large circuits onto gates, and what do they come to?
# Usage: bench/mapping.sh [LIMIT [INPUTS]]
#   LIMIT    seconds for one circuit, 60 by default
#   INPUTS   the most inputs of a gate, 2 by default; 0: any
# Builds the programs with optimisation, and prints a row for each circuit of bench/make_circuit.cpp,
# its conflicts resolved by `vorel -R -f`, of growing size up to 60 signals or until one takes too
# long; bench/mapping_phases.cpp tells what the columns are. "simulated" tells whether the circuit goes
# through 1000 edges as its STG has them, in a testbench with Icarus Verilog; "-" that this is not
# installed.
# The machine should have nothing else to do.
set -euo pipefail

limit=${1-60} inputs=${2-2}
[ "$limit" -gt 0 ] 2>/dev/null && [ "$inputs" -ge 0 ] 2>/dev/null ||
  { echo "usage: bench/mapping.sh [LIMIT [INPUTS]]" >&2; exit 2; }

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold vorel-gates make_circuit bench_mapping_phases -- --quiet >&2
programs=$PWD/build-bench

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Exit code 1 is that of warnings.
run() { "$@" >/dev/null 2>&1 || [ $? -eq 1 ]; }

simulate() {
  if ! command -v iverilog >/dev/null; then echo -; return; fi
  "$programs/vorel-gates" --testbench in.pnml.g in.pnml.v test.v
  iverilog -o test in.pnml.v test.v
  if vvp -n test | grep -q 'edges, all as the STG has them'; then echo yes; else echo NO; fi
}

# The row of the circuit; false when it takes too long.
row() {
  rm -f in.pnml in.pnml.v
  "$programs/bench/make_circuit" "$1" "$2" >stg.g
  run "$programs/vorel-unfold" stg.g in.pnml
  if ! "$programs/vorel" -C in.pnml 2>/dev/null | grep -q 'no CSC conflicts'; then
    run timeout "$limit" "$programs/vorel" -R -f in.pnml || return 1
    run "$programs/vorel-unfold" vorel.g in.pnml
  fi
  printf '%-14s %3d ' "$1" "$2"
  "$programs/bench/bench_mapping_phases" "$limit" "$inputs" in.pnml
  if [ ! -f in.pnml.v ]; then echo; return 1; fi
  printf '  %s\n' "$(simulate)"
}

printf '%s, gates of at most %s inputs\n' "$(git rev-parse --short HEAD 2>/dev/null || echo 'no commit')" "$inputs"
printf '%-14s %3s %5s %5s %4s %4s %5s %7s %7s %7s %6s %7s %8s %8s %8s %5s %7s  %s\n' circuit n events \
  sign. new rnd. tried candid. relat. queries quest. choices seconds equat. decomp. gates area simulated
cd "$scratch"
while read -r circuit sizes; do
  for n in $sizes; do row "$circuit" "$n" || break; done
done <<'END'
fork_join 2 4 8 16 29
pipeline 2 4 8 16 32 58
ring 3 4 8 16 32 60
controllers 1 2 4 8 10
sequencer 2 3 4 6 8 12
busy_ring 3 4 6 8 12 16
busy_pipeline 1 2 3 4 6 8 12 16
END
