#!/usr/bin/env bash
# Draws which folders of src include which: docs/architecture.dot and, with Graphviz, .svg.
# Usage: scripts/architecture.sh [--check]
# Both refuse includes that go up; --check draws nothing, but also compares architecture.dot with src.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# The floors from the ground. An include leads to a folder that stands before its own here: to a floor
# below, or to the left on the same one.
floors=(
  "base"
  "net zchaff sat toolkit bdd results"
  "formats unfolder configuration"
  "reachlang conflicts synthesis"
  "reach resolution"
  "decomposition"
  "verify"
  "flow"
  "report"
  "driver tools"
)

fail() {
  printf 'architecture.sh: %s\n' "$1" >&2
  exit 1
}

# shellcheck disable=SC2206 # words
folders=(${floors[*]})
declare -A position arrow
for i in "${!folders[@]}"; do position[${folders[i]}]=$i; done

for path in src/*/; do
  folder=$(basename "$path")
  [ -n "${position[$folder]-}" ] || fail "src/$folder stands on no floor"
done

# A line such as: src/net/net.h:#include "base/id.h" becomes: net base
while read -r from to; do
  [ -n "${position[$to]-}" ] || fail "src/$from includes $to/, which stands on no floor"
  [ "${position[$to]}" -lt "${position[$from]}" ] ||
    fail "src/$from includes src/$to, which does not stand below it"
  arrow[$from $to]=1
done < <(grep -rE '^#include "[a-z]+/' src --include=*.h --include=*.cpp |
  sed -E 's|^src/([a-z]+)/[^"]*"([a-z]+)/.*|\1 \2|' | awk '$1 != $2' | sort -u)

# An arrow that follows from others is left out. Going up from the ground, each folder knows all that
# lies under those before it.
declare -A under
for from in "${folders[@]}"; do
  for ((i = position[$from] - 1; i >= 0; i--)); do
    to=${folders[i]}
    [ -n "${arrow[$from $to]-}" ] || continue
    if [[ " ${under[$from]-} " == *" $to "* ]]; then unset "arrow[$from $to]"; fi
    under[$from]="${under[$from]-} $to ${under[$to]-}"
  done
done

draw() {
  echo '// Made by scripts/architecture.sh from the includes of src.'
  echo 'digraph architecture {'
  echo '  node [shape=box, style=filled, fillcolor="#eef3fa", fontname="Helvetica"];'
  local i previous=""
  for ((i = ${#floors[@]} - 1; i >= 0; i--)); do
    echo "  floor$i [label=\"$i\", shape=plaintext, style=\"\"];"
    [ -z "$previous" ] || echo "  $previous -> floor$i [style=invis];"
    previous=floor$i
    echo "  { rank=same; floor$i; ${floors[i]// /; }; }"
  done
  printf '%s\n' "${!arrow[@]}" | LC_ALL=C sort | sed 's/\(.*\) \(.*\)/  \1 -> \2;/'
  echo '}'
}

case "${1-}" in
  --check)
    draw | diff docs/architecture.dot - >&2 ||
      fail "docs/architecture.dot is out of date; run scripts/architecture.sh"
    ;;
  "")
    command -v dot >/dev/null || scripts/install-dependencies.sh graphviz
    draw >docs/architecture.dot
    dot -Tsvg docs/architecture.dot -o docs/architecture.svg
    ;;
  *)
    echo "usage: scripts/architecture.sh [--check]" >&2
    exit 2
    ;;
esac
