#!/usr/bin/env bash
# The figures of docs/performance.md, as tables in Markdown.
# Usage: bench/performance.sh [--before REVISION] [FOLDER]
# Builds the programs with optimisation, makes circuits and nets of growing size, and prints a row
# for each command: its figure, and the ratio to the row that it is compared with. A revision is
# built too, and each row then has the figure before: the two programs in turn, in one run. With a
# folder its nets (*.ll_net) get rows of their own. Medians of three runs, or one run where that
# takes over half a second. A run ends after 5 seconds, or 10 for a million events, and is told as
# "> 5"; one of the revision before also when it has taken 5 times as long as now and 2 seconds more.
# Rows and pairs of rows in which nothing takes a hundredth of a second are left out. The machine
# should have nothing else to do: then it takes five minutes once all is built; building takes four
# for each of the two.
set -euo pipefail

usage() { echo "usage: bench/performance.sh [--before REVISION] [FOLDER]" >&2; exit 2; }
before='' folder=''
if [ "${1-}" = --before ]; then
  [ $# -ge 2 ] || usage
  before=$2
  shift 2
fi
if [ $# -gt 0 ]; then
  [ $# -eq 1 ] && [ -d "$1" ] || usage
  folder=$(cd "$1" && pwd)
fi
limit=5

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-dependencies.sh time >&2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# build SOURCES FOLDER TARGET...
build() {
  cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVOREL_TESTS=OFF -DVOREL_BENCH=ON >/dev/null
  cmake --build "$2" --target "${@:3}" -- --quiet >&2
}

build . build-bench vorel vorel-unfold make_circuit make_prefix bench_two_level bench_sat_solvers
now=$PWD/build-bench old=''
if [ -n "$before" ]; then
  mkdir "$scratch/sources"
  git archive "$before" | tar -x -C "$scratch/sources"
  old=$scratch/build
  build "$scratch/sources" "$old" vorel vorel-unfold
fi

# What the head of the tables says.
revision() { git rev-parse --short "$1" 2>/dev/null || echo 'no commit'; }
printf '%s' "$(revision HEAD)"
[ -z "$before" ] || printf ', before: %s' "$(revision "$before")"
printf '; %s threads of %s, %s, %s\n' "$(nproc)" \
  "$(sed -n 's/^model name\t: //p' /proc/cpuinfo | head -n 1)" "$(g++ --version | head -n 1)" "$(uname -sr)"

mkdir "$scratch/work"
cd "$scratch/work"

# What is told of a run: seconds of the processor, or those of the clock and the peak memory in MB.
cpu='%U %S' clock='%e %M'

# once FORMAT PROGRAMS COMMAND...: the figure of one run, or "> LIMIT". Exit code 1 is that of
# warnings; 2 that of a command which is meant to give up.
once() {
  local format=$1 programs=$2 code=0
  shift 2
  PATH=$programs:$programs/bench:$PATH timeout "$limit" /usr/bin/time -q -o "$scratch/figure" -f "$format" \
    "$@" >"$scratch/output" 2>&1 || code=$?
  if [ "$code" -eq 124 ]; then echo "> $limit"; return; fi
  case "$code $*" in
    [01]\ * | 2\ *--timeout*) ;;
    *) printf 'exit code %d: %s\n' "$code" "$*" >&2; cat "$scratch/output" >&2; return 1 ;;
  esac
  awk -v is_clock="$([ "$format" = "$clock" ] && echo 1)" \
    '{ if (is_clock) printf "%.2f, %d MB\n", $1, $2 / 1024; else printf "%.2f\n", $1 + $2 }' \
    "$scratch/figure"
}

# figure FORMAT PROGRAMS COMMAND...
figure() {
  local first
  first=$(once "$@")
  case $first in
    0.[0-4][0-9]) { echo "$first"; once "$@"; once "$@"; } | sort -g | sed -n 2p ;;
    *) echo "$first" ;;
  esac
}

# ratio A B: the seconds of A divided by those of B, down to what the clock can tell.
ratio() {
  awk -v a="$1" -v b="$2" '
    function seconds(s) { sub("> ", "", s); return s + 0 > 0.01 ? s + 0 : 0.01 }
    BEGIN {
      is_late = a ~ ">"
      if (is_late && b ~ ">") print "-"
      else if (is_late) printf "> %.0f\n", seconds(a) / seconds(b)
      else if (b ~ ">") printf "< %.2f\n", seconds(a) / seconds(b)
      else printf "%.2f\n", seconds(a) / seconds(b)
    }'
}

# cells COMMAND BEFORE NOW GAIN RATIO: a line of a table, which has no past without a revision.
cells() {
  if [ -n "$old" ]; then printf '| %s | %s | %s | %s | %s |\n' "$@"; else printf '| %s | %s | %s |\n' "$1" "$3" "$5"; fi
}

# title TEXT RATIO: RATIO says what is divided in the last column.
title() {
  printf '\n### %s\n\n' "$1"
  cells command before now 'before / now' "$2"
  cells --- ---: ---: ---: ---:
}

# measure FORMAT COMPARED COMMAND...: COMPARED is a figure, or empty. Leaves that of now in `last`,
# the line of the table in `lines`.
last='' lines='' figures=''
measure() {
  local format=$1 compared=$2 first=''
  shift 2
  last=$(figure "$format" "$now" "$@")
  [ -z "$old" ] || first=$(limit=$(limit_before "$last") figure "$format" "$old" "$@")
  figures+="$first $last "
  lines+=$(cells "\`$*\`" "$first" "$last" "${first:+$(ratio "$first" "$last")}" \
    "${compared:+$(ratio "$compared" "$last")}")$'\n'
}

# limit_before FIGURE: of now.
limit_before() {
  awk -v now="$1" -v limit="$limit" \
    'BEGIN { if (now !~ ">" && 5 * now + 2 < limit) limit = 5 * now + 2; print limit }'
}

flush_lines() {
  case $figures in *[1-9]*) printf '%s' "$lines" ;; esac
  lines='' figures=''
}

# row FORMAT COMMAND...
row() {
  measure "$1" '' "${@:2}"
  flush_lines
}

# pair FORMAT "COMMAND" "COMMAND": the ratio of the first to the second stands behind the second.
pair() {
  # shellcheck disable=SC2086 # commands are words without blanks
  { measure "$1" '' $2; measure "$1" "$last" $3; }
  flush_lines
}

# Exit code 1 is that of warnings: the legacy formats are used because they are small.
unfold() { "$now/vorel-unfold" -q "$@" >/dev/null 2>&1 || [ $? -eq 1 ]; }

# stg NAME...: each a family and a size, as in ring-10; their files are NAME.g.
stg() {
  local name
  for name in "$@"; do
    [ -f "$name.g" ] || "$now/bench/make_circuit" "${name%-*}" "${name##*-}" >"$name.g"
  done
}

# prefix NAME: NAME.pnml of the STG.
prefix() {
  stg "$1"
  [ -f "$1.pnml" ] || unfold "$1.g" "$1.pnml"
}

# net_prefix NAME: NAME.pnml, of a net with a deadlock whose prefix has so many events as the name says.
net_prefix() { "$now/bench/make_prefix" "${1##*-}" net "$1.pnml" deadlock >/dev/null; }

nets=()
shopt -s nullglob
for net in ${folder:+"$folder"/*.ll_net}; do
  cp "$net" .
  nets+=("$(basename "$net" .ll_net)")
done

title 'Unfolding by one thread, with the concurrency relation and without: seconds' 'with / without'
files=()
for name in fork_join-2500 handshakes-2500 tree-2500 ring-10000 tokens-200 pipeline-150; do
  stg "$name"
  files+=("$name.g")
done
for file in "${files[@]}" "${nets[@]/%/.ll_net}"; do
  pair "$cpu" "vorel-unfold -q --threads 1 $file out.mci" \
    "vorel-unfold -q --threads 1 --conc-rel-size 0 $file out.mci"
done

# Controllers are many small parts of 960,000 events, all signals of a tree hang together.
limit=10
title 'A million events: seconds of the clock, peak memory' 'with / without'
for name in controllers-80000 tree-250000; do
  stg "$name"
  pair "$clock" "vorel-unfold -q $name.g out.pnml" "vorel-unfold -q --conc-rel-size 0 $name.g out.pnml"
done
limit=5
title 'Limits of time: seconds of the clock, peak memory' ''
for name in controllers-80000 tree-250000; do row "$clock" vorel-unfold -q --timeout 3 "$name.g" out.pnml; done

title 'Deadlocks of merged processes: seconds' 'prefix / merged'
for name in "${nets[@]}"; do
  unfold "$name.ll_net" "$name.pnml"
  unfold --merge "$name.ll_net" "$name.merged.pnml"
  for solver in 0 1; do pair "$cpu" "vorel -D -\$$solver $name.pnml" "vorel -D -\$$solver $name.merged.pnml"; done
done

# answers MODE NAME...: of both solvers.
answers() {
  local name
  for name in "${@:2}"; do
    prefix "$name"
    pair "$cpu" "vorel $1 -\$1 $name.pnml" "vorel $1 -\$0 $name.pnml"
  done
}
title 'Coding conflicts: seconds' 'solver 1 / solver 0'
answers -C fork_join-1000 fork_join-5000 tree-2048 tokens-100 ring-400 handshakes-5000
answers -U fork_join-1000
answers -N fork_join-1000 fork_join-5000
answers '-C -m1 -a' lone_conflict-1000
title 'Equations: seconds' 'solver 1 / solver 0'
answers -E fork_join-20 pipeline-40 ring-40
answers -S pipeline-40

title 'Shortest traces to a deadlock: seconds' 'solver 1 / solver 0'
for name in net-1000 net-10000 net-100000; do
  net_prefix "$name"
  pair "$cpu" "vorel -D -\$1 $name.pnml" "vorel -D -\$0 $name.pnml"
  pair "$cpu" "vorel -D -f -\$1 $name.pnml" "vorel -D -f -\$0 $name.pnml"
done

title 'Properties: seconds' 'solver 1 / solver 0'
echo 'threshold[20] s in SIGNALS { $s }' >twenty.reach
answers '-F -f -d @twenty.reach' controllers-8
"$now/bench/make_prefix" 25000 net live.pnml >/dev/null
echo 'exists x in EVENTS { $x & @x }' >some.reach
echo 'threshold[6] t in TRANSITIONS { @t }' >six.reach
echo 'exists p in PLACES { threshold[2] c in cond p { $c } }' >two.reach
pair "$cpu" 'vorel -F -$1 -d @some.reach live.pnml' 'vorel -F -$0 -d @some.reach live.pnml'
for name in "${nets[@]}"; do
  pair "$cpu" "vorel -F -\$1 -d @six.reach $name.pnml" "vorel -F -\$0 -d @six.reach $name.pnml"
  pair "$cpu" "vorel -F -\$1 -d @two.reach $name.pnml" "vorel -F -\$0 -d @two.reach $name.pnml"
done

# What other scripts and programs tell, as it is.
table() { printf '\n### %s\n\n```\n' "$1"; "${@:2}"; echo '```'; }
table 'Two threads' "$now/../bench/unfold_threads.sh" 5
table 'Merged processes and prefixes that double' "$now/../bench/merged_processes.sh" 0.5
table 'Solver 0 (core) next to MiniSat' "$now/bench/bench_sat_solvers"
dense() { "$now/bench/bench_two_level" 8 | grep -E '^ n|^12 +30%'; }
table 'Dense functions of 12 variables' dense
