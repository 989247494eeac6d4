#!/usr/bin/env bash
# What does merging save? A chain of n choices whose outcomes are remembered: 2^n markings, a prefix
# that doubles with each choice, a merged process that grows by a constant.
# Usage: bench/merged_processes.sh [LIMIT]      (seconds, 10 by default)
# Builds the programs with optimisation. A row for each n: the events and the arcs from conditions to
# events of both processes, cut-offs included, and the seconds of `vorel -D` on each, reading
# included; up to the first n at which the prefix takes longer than the limit. "checked" tells that
# both find the same verdict, the known one: a chain deadlocks at its end, unless the end is a loop,
# which it is for odd n. The machine should have nothing else to do.
set -euo pipefail

[ $# -le 1 ] || { echo "usage: bench/merged_processes.sh [LIMIT]" >&2; exit 2; }
limit=${1-10}

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel vorel-unfold -- --quiet >&2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# chain N: choice i leads from at_i to at_(i+1) and leaves left_i or right_i behind.
chain() {
  awk -v n="$1" 'BEGIN {
    print "PEP\nPTNet\nFORMAT_N\nPL"
    for (i = 0; i <= n; ++i) printf "%d\"at%d\"%s\n", ++places, i, i == 0 ? "M1" : ""
    for (i = 0; i < n; ++i) printf "%d\"left%d\"\n%d\"right%d\"\n", ++places, i, ++places, i
    print "TR"
    for (i = 0; i < n; ++i) printf "%d\"go_left%d\"\n%d\"go_right%d\"\n", ++t, i, ++t, i
    if (n % 2) printf "%d\"stay\"\n", ++t
    print "TP"
    for (i = 0; i < n; ++i) for (s = 1; s <= 2; ++s) {
      printf "%d<%d\n%d<%d\n", 2 * i + s, i + 2, 2 * i + s, n + 1 + 2 * i + s
    }
    if (n % 2) printf "%d<%d\n", 2 * n + 1, n + 1
    print "PT"
    for (i = 0; i < n; ++i) printf "%d>%d\n%d>%d\n", i + 1, 2 * i + 1, i + 1, 2 * i + 2
    if (n % 2) printf "%d>%d\n", n + 1, 2 * n + 1
  }'
}

# Exit code 1 is that of warnings: the legacy formats are used because they are small.
run() { "$@" 2>/dev/null || [ $? -eq 1 ]; }
figure() { sed -n "s/.*|$1|=\([0-9]*\).*/\1/p" "$2"; }

# measure FILE: seconds; what the program said is left in FILE.out.
measure() {
  local start=$EPOCHREALTIME
  run build-bench/vorel -D "$1" >"$1.out"
  awk -v a="$start" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.2f", b - a }'
}

check() {
  local verdict='the system has a deadlock'
  [ $(($1 % 2)) -eq 0 ] || verdict='the system is deadlock-free'
  if grep -q "$verdict" "$2" && grep -q "$verdict" "$3"; then echo yes; else echo NO; fi
}

printf '%s\n' "$(git rev-parse --short HEAD 2>/dev/null || echo 'no commit')"
printf '%4s %10s %10s %9s %8s %8s %9s  %s\n' \
  n 'prefix E' arcs seconds 'merged E' arcs seconds checked
for ((n = 2; n <= 24; ++n)); do
  chain "$n" >"$scratch/net.ll_net"
  run build-bench/vorel-unfold "$scratch/net.ll_net" "$scratch/net.mci" >/dev/null
  run build-bench/vorel-unfold --merge "$scratch/net.ll_net" "$scratch/net.mp" >/dev/null
  prefix_seconds=$(measure "$scratch/net.mci")
  merged_seconds=$(measure "$scratch/net.mp")
  printf '%4d %10s %10s %9s %8s %8s %9s  %s\n' "$n" \
    "$(figure E "$scratch/net.mci.out")" "$(figure BE "$scratch/net.mci.out")" "$prefix_seconds" \
    "$(figure E "$scratch/net.mp.out")" "$(figure BE "$scratch/net.mp.out")" "$merged_seconds" \
    "$(check "$n" "$scratch/net.mci.out" "$scratch/net.mp.out")"
  awk -v s="$prefix_seconds" -v l="$limit" 'BEGIN { exit s > l ? 0 : 1 }' && break
done
