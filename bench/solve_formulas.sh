#!/usr/bin/env bash
# How do the two SAT solvers compare on formulas of our own?
# Usage: bench/solve_formulas.sh [FOLDER]
# Builds with optimisation, unfolds the net files of the folder, stores the deadlock formula of each
# (`vorel -D -s`), and prints the table of bench_sat_solvers for them and for some hard formulas.
set -euo pipefail

[ $# -le 1 ] && { [ $# -eq 0 ] || [ -d "$1" ]; } ||
  { echo "usage: bench/solve_formulas.sh [FOLDER]" >&2; exit 2; }
shopt -s nullglob
nets=()
[ $# -eq 0 ] || nets=("$(cd "$1" && pwd)"/*.{g,ll_net,pnml}{,.gz})

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold bench_sat_solvers -- --quiet >&2
binaries=$PWD/build-bench

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
formulas=()
# Exit code 1 is that of warnings.
run() { "$@" >/dev/null 2>&1 || [ $? -eq 1 ]; }
for net in "${nets[@]}"; do
  name=$(basename "$net")
  run "$binaries/vorel-unfold" "$net" prefix.pnml
  run "$binaries/vorel" -D -s prefix.pnml
  mv formula.cnf "${name%%.*}.cnf"
  formulas+=("${name%%.*}.cnf")
done
"$binaries/bench/bench_sat_solvers" "${formulas[@]}"
