#!/usr/bin/env bash
# How fast are nets unfolded, and in how much memory?
# Usage: bench/unfold_nets.sh FOLDER [THREADS]      (one thread by default)
# Builds the programs with optimisation, and prints a row for each net file of the folder: the
# conditions B and events E of its prefix, cut-offs C included; the seconds of reading and
# unfolding, of writing PNML, and of all together; the peak memory in MB. Seconds and MB are medians
# of five runs. "checked" tells whether vorel accepts what was written and finds the same sizes in
# it. The machine should have nothing else to do.
set -euo pipefail

[ $# -ge 1 ] && [ $# -le 2 ] && [ -d "$1" ] ||
  { echo "usage: bench/unfold_nets.sh FOLDER [THREADS]" >&2; exit 2; }
folder=$(cd "$1" && pwd)
threads=${2-1}
runs=5

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold -- --quiet >&2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
output=$scratch/prefix.pnml

# The values of a figure of all runs, one a line.
values() { sed -n "s/^ $1: //p" "$scratch/figures"; }
median() { sort -g | sed -n "$(((runs + 1) / 2))p"; }
# Exit code 1 is that of warnings.
run() { "$@" || [ $? -eq 1 ]; }

# The sums of each run's seconds of the given phases.
seconds() {
  local phase columns=()
  for phase in "$@"; do
    values "seconds $phase" >"$scratch/$phase"
    columns+=("$scratch/$phase")
  done
  paste "${columns[@]}" | awk '{ sum = 0; for (i = 1; i <= NF; ++i) sum += $i; printf "%.4f\n", sum }' | median
}

check() {
  local told found
  told=$(grep -m 1 '|B|=' "$scratch/figures")
  found=$(run build-bench/vorel -D "$output" 2>/dev/null | grep -m 1 '|B|=')
  if [ "$told" = "$found" ] && [ "$(values events | sort -u | wc -l)" -eq 1 ]; then echo yes; else echo NO; fi
}

row() {
  local i
  : >"$scratch/figures"
  for ((i = 0; i < runs; ++i)); do
    run build-bench/vorel-unfold --threads "$threads" --stats "$1" "$output" >>"$scratch/figures"
  done
  printf '%-24s %9s %9s %9s %10s %8s %8s %8s  %s\n' "$(basename "$1")" \
    "$(values conditions | head -n 1)" "$(values events | head -n 1)" \
    "$(values cut-offs | head -n 1)" "$(seconds reading unfolding)" "$(seconds writing)" \
    "$(seconds reading unfolding writing)" "$(values 'peak megabytes' | median)" "$(check)"
}

printf '%s threads, %s\n' "$threads" "$(git rev-parse --short HEAD 2>/dev/null || echo 'no commit')"
printf '%-24s %9s %9s %9s %10s %8s %8s %8s  %s\n' \
  net B E C read+unf write total MB checked
shopt -s nullglob
for net in "$folder"/*.{g,ll_net,pnml}{,.gz}; do
  row "$net"
done
