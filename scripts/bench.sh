#!/usr/bin/env bash
# Builds everything with optimisation and runs the benchmarks on prefixes of 10,000, 100,000 and
# 1,000,000 events. Prints ratios of this run: the machine should have nothing else to do.
# Usage: scripts/bench.sh [EVENTS...]
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

sizes=("$@")
[ $# -gt 0 ] || sizes=(10000 100000 1000000)

scripts/install-dependencies.sh
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench -- --quiet

data=build-bench/data
mkdir -p "$data"
stems=() files=()
for events in "${sizes[@]}"; do
  for kind in net stg; do
    stem=$data/$kind-$events
    [ -f "$stem.pnml" ] || build-bench/bench/make_prefix "$events" "$kind" "$stem.pnml"
    files+=("$stem.pnml")
  done
  [ -f "$data/net-$events.mci" ] || build-bench/bench/make_prefix "$events" net "$data/net-$events.mci"
  stems+=("$data/net-$events")
  [ -f "$data/deadlock-$events.pnml" ] ||
    build-bench/bench/make_prefix "$events" net "$data/deadlock-$events.pnml" deadlock
  files+=("$data/deadlock-$events.pnml")
done

echo "== Reading, next to the bare XML parser"
build-bench/bench/bench_reading "${stems[@]}"
echo
echo "== Phases of -D"
build-bench/bench/bench_deadlock_phases "${files[@]}"
echo
echo "== Phases of -D -f"
build-bench/bench/bench_deadlock_phases -f "$data"/deadlock-*.pnml
echo
echo "== Phases of -C"
# Makes the prefixes of circuits, each a family and a size, and lists them in `circuits`.
make_circuits() {
  circuits=()
  for circuit in "$@"; do
    stem=$data/${circuit/ /-}
    if [ ! -f "$stem.unf.pnml" ]; then
      # shellcheck disable=SC2086 # family and size
      build-bench/bench/make_circuit $circuit >"$stem.g"
      build-bench/vorel-unfold "$stem.g" "$stem.unf.pnml" >/dev/null
    fi
    circuits+=("$stem.unf.pnml")
  done
}
make_circuits "fork_join 1000" "handshakes 1000" "handshakes 5000" "ring 200"
build-bench/bench/bench_conflict_phases "${circuits[@]}"
echo
echo "== Equations, by signal, with both solvers"
make_circuits "pipeline 10" "pipeline 20" "pipeline 40" "fork_join 10" "fork_join 20" \
  "fork_join 49" "ring 10" "ring 20" "ring 40"
build-bench/bench/bench_synthesis_phases "${circuits[@]}"
echo
echo "== Properties of -F and -Fs, before the search"
build-bench/bench/bench_property_language
echo
echo "== Search inside Boolean relations"
build-bench/bench/bench_boolean_relations
echo
echo "== BDDs and covers of 20 variables"
build-bench/bench/bench_bdd_covers
echo
echo "== Two-level minimisation and factoring, next to exact minima"
build-bench/bench/bench_two_level
echo
echo "== All gates of the built-in library against one function"
build-bench/bench/bench_gate_matching
