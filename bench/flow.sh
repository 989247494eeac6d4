#!/usr/bin/env bash
# How long does each step of vorel-flow take?
# Usage: bench/flow.sh [LIMIT] [OPTION ...]      (seconds for one circuit, 60 by default)
# Builds the programs with optimisation, and prints a row for each example, and for circuits of
# bench/make_circuit.cpp of growing size until one takes longer than the limit: the exit code of
# vorel-flow with the options; events of the prefix; gates of the circuit; the seconds of unfolding,
# checking, coding, resolution, synthesis and verification, of all steps together, and of a run that
# writes the folder, drawings included. Needs jq. The machine should have nothing else to do.
set -euo pipefail

limit=${1-60}
[ "$limit" -gt 0 ] 2>/dev/null || { echo "usage: bench/flow.sh [LIMIT] [OPTION ...]" >&2; exit 2; }
options=("${@:2}")

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh jq
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel-flow make_circuit -- --quiet >&2
flow=$PWD/build-bench/vorel-flow make_circuit=$PWD/build-bench/bench/make_circuit examples=$PWD/examples

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

seconds_of_steps='
  def of($step): [.steps[] | select(.step == $step) | .seconds] | add;
  [.prefixes.given.events, (.circuit.instances // [] | length)] +
  [of("unfold", "check", "coding", "resolve", "synthesise", "verify")] + [.seconds] | @tsv'

# The row of an STG; false when it takes too long.
row() {
  local name=$1 stg=$2 code=0 start whole
  timeout "$limit" "$flow" "$stg" --json - "${options[@]}" >document.json 2>/dev/null || code=$?
  if [ "$code" -eq 124 ]; then
    printf '%-18s late\n' "$name"
    return 1
  fi
  start=$(date +%s%N)
  timeout "$limit" "$flow" "$stg" -q -o folder "${options[@]}" >/dev/null 2>&1 || true
  whole=$(($(date +%s%N) - start))
  jq -r "$seconds_of_steps" document.json |
    awk -v name="$name" -v code="$code" -v whole="$whole" -F'\t' '
      function shown(s) { return s == "" ? "-" : sprintf("%.2f", s) }
      { printf "%-18s %4d %6d %5d", name, code, $1, $2
        for (i = 3; i <= 9; ++i) printf " %10s", shown($i)
        printf " %10.2f\n", whole / 1e9 }'
}

git -C "$examples" rev-parse --short HEAD 2>/dev/null || echo 'no commit'
printf '%-18s %4s %6s %5s' circuit code events gates
printf ' %10s' unfold check coding resolve synthesise verify all folder
echo
for stg in "$examples"/*.g; do row "$(basename "$stg" .g)" "$stg" || true; done
for family in pipeline ring tree controllers sequencer busy_pipeline; do
  for n in 4 8 16 24 32; do
    "$make_circuit" "$family" "$n" >"$family.g"
    row "$family $n" "$family.g" || break
  done
done
