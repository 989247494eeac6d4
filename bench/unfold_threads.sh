#!/usr/bin/env bash
# What do two threads gain over one in unfolding?
# Usage: bench/unfold_threads.sh [RUNS]      (5 by default)
# Makes nets whose prefixes have from 1,000 to 100,000 events, unfolds each with one thread and with
# two in turn, and prints the medians of the seconds from start to end, writing included, and their
# ratio: above 1, two threads are faster. "same" tells whether both wrote the same bytes. The
# machine should have nothing else to do, and two processors at least.
#   automata K N S SEED  K automata of N states, most of which go round by themselves; S transitions
#                        take any two of them from a state to another: large batches
#   counter N            a counter of N bits that carries bit by bit: each batch is one event
set -euo pipefail

runs=${1-5}
cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
cmake --build build-bench --target vorel-unfold -- --quiet >&2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Transitions are lines "A: place ... > place ..."; places that occur first in "M: place ..." are
# marked.
to_ll_net() {
  awk '
    function place(name) { if (!(name in number)) { number[name] = ++places; } return number[name] }
    $1 == "M:" { for (i = 2; i <= NF; ++i) marked[place($i)] = 1 }
    $1 == "A:" {
      ++transitions
      arc = "P"
      for (i = 2; i <= NF; ++i) {
        if ($i == ">") { arc = "T"; continue }
        if (arc == "P") consumed = consumed place($i) ">" transitions "\n"
        else produced = produced transitions "<" place($i) "\n"
      }
    }
    END {
      print "PEP\nPTNet\nFORMAT_N\nPL"
      for (p = 1; p <= places; ++p) print p "\"p" p "\"0@0" ((p in marked) ? "M1" : "")
      print "TR"
      for (t = 1; t <= transitions; ++t) print t "\"t" t "\"0@0"
      printf "TP\n%sPT\n%s", produced, consumed
    }'
}

# A generator of our own: the nets are the same wherever this runs.
automata() {
  awk -v k="$1" -v n="$2" -v s="$3" -v seed="$4" '
    function random(bound) {
      seed = (seed * 16807) % 2147483647
      return int(seed / 2147483647 * bound)
    }
    BEGIN {
      for (i = 0; i < 10; ++i) random(2)
      for (a = 0; a < k; ++a) print "M: " a "." 0
      for (a = 0; a < k; ++a)
        for (q = 0; q < n; ++q)
          if (random(10) > 0) print "A: " a "." q " > " a "." (q + 1) % n
      for (i = 0; i < s; ++i) {
        a = random(k)
        b = (a + 1 + random(k - 1)) % k
        print "A: " a "." random(n) " " b "." random(n) " > " a "." random(n) " " b "." random(n)
      }
    }' | to_ll_net
}

counter() {
  awk -v n="$1" '
    BEGIN {
      print "M: idle"
      print "A: idle > carry0"
      for (i = 0; i < n; ++i) {
        print "M: zero" i
        print "A: zero" i " carry" i " > one" i " idle"
        print "A: one" i " carry" i " > zero" i " " (i + 1 < n ? "carry" i + 1 : "idle")
      }
    }' | to_ll_net
}

# Seconds of a run with so many threads. Exit code 1 is that of warnings. Into a new file: some file
# systems bring one that replaces another to the disk at once, which has nothing to do with threads.
# The clock is read without another process, which would take some milliseconds itself.
time_run() {
  local before after
  rm -f "$scratch/$1.pnml"
  before=${EPOCHREALTIME/[.,]/}
  build-bench/vorel-unfold --threads "$1" --quiet "$scratch/net.ll_net" "$scratch/$1.pnml" || [ $? -eq 1 ]
  after=${EPOCHREALTIME/[.,]/}
  echo $((after - before)) >>"$scratch/times$1"
}

median() { sort -g "$1" | sed -n "$(((runs + 1) / 2))p"; }

row() {
  local i
  rm -f "$scratch"/times*
  "$@" >"$scratch/net.ll_net"
  for ((i = 0; i < runs; ++i)); do
    time_run 1
    time_run 2
  done
  local events same=NO
  events=$(grep -c '<transition id="e' "$scratch/1.pnml")
  if cmp -s "$scratch/1.pnml" "$scratch/2.pnml"; then same=yes; fi
  paste <(median "$scratch/times1") <(median "$scratch/times2") |
    awk -v name="$*" -v events="$events" -v same="$same" \
      '{ printf "%-24s %8d %8.3f %8.3f %6.2f  %s\n", name, events, $1 / 1e6, $2 / 1e6, $1 / $2, same }'
}

printf '%-24s %8s %8s %8s %6s  %s\n' net events 1 2 ratio same
row automata 8 6 28 8
row automata 5 20 40 1
row automata 5 20 40 5
row automata 8 6 28 7
row automata 6 8 26 9
row counter 8
row counter 15
