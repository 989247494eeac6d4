#!/usr/bin/env bash
# Checks the floors of src, builds everything with assertions and warnings as errors, and runs all
# tests; then the same under the address and undefined behaviour sanitizers. In between all folders
# are compiled without precompiled headers and linked into one, to see that each file includes what
# it needs and that no two classes share a name.
# Usage: scripts/test.sh [--quick]     --quick stops after the first run of the tests
# The last line tells how many tests passed and failed in both runs together.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

quick=no
case "${1-}" in
  "") ;;
  --quick) quick=yes ;;
  *) echo "usage: scripts/test.sh [--quick]" >&2; exit 2 ;;
esac

jobs=$(nproc)
passed=0 failed=0 skipped=0

# The number in an attribute of the root element of a test report.
count() { grep -o -m 1 "\\b$2=\"[0-9]*\"" "$1" | tr -dc '0-9'; }

# What is left of the output of ctest are failures and the summary.
hide_passed() { grep -vE '^ +Start +[0-9]+: | Passed +[0-9.]+ sec$'; }

# build_and_run TITLE FOLDER CMAKE-ARGUMENT...
# Level 1 of optimisation and of debug information: compiling, not testing, takes the time.
build_and_run() {
  local title=$1 folder=$2 report=$2/test-report.xml all bad left_out
  shift 2
  printf '\n== Tests %s (%s)\n' "$title" "$folder"
  cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" \
    -DVOREL_WERROR=ON -DVOREL_BENCH=OFF "$@" >/dev/null
  cmake --build "$folder" -j "$jobs" -- --quiet
  rm -f "$report"
  ctest --test-dir "$folder" -j "$jobs" --output-on-failure --no-tests=error --timeout 120 \
    --output-junit test-report.xml | hide_passed || true
  all=$(count "$report" tests) bad=$(count "$report" failures) left_out=$(count "$report" skipped)
  passed=$((passed + all - bad - left_out)) failed=$((failed + bad))
  skipped=$((skipped + left_out))
}

# Two classes of one name in two folders link without a word and corrupt memory. The optimiser for
# whole programs compares them when it reads the libraries; it is not asked for machine code.
check_one_definition() {
  local folder=build-odr name libraries=() archives=()
  for name in src/*/; do
    name=$(basename "$name")
    libraries+=("$name") archives+=("$folder/src/$name/lib$name.a")
  done
  printf '\n== No name stands for two classes (%s)\n' "$folder"
  cmake -S . -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG="-O0 -g0 -flto" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DVOREL_TESTS=OFF -DVOREL_BENCH=OFF >/dev/null
  cmake --build "$folder" -j "$jobs" --target "${libraries[@]}" -- --quiet
  g++ -O0 -flto="$jobs" -Werror=odr -r -flinker-output=rel -o "$folder/all-folders.o" \
    -Wl,--whole-archive "${archives[@]}"
}

trap 'echo "The tests were not run to the end." >&2' EXIT

scripts/install-dependencies.sh
# Tests look at reports in a browser, and do without where there is none.
scripts/install-dependencies.sh chromium || echo "Reports are not looked at in a browser." >&2
scripts/architecture.sh --check
build_and_run "with assertions" build-test
if [ "$quick" = no ]; then
  check_one_definition
  build_and_run "under sanitizers" build-sanitize -DVOREL_SANITIZE=address,undefined
fi

if [ "$skipped" -gt 0 ]; then printf '\n%d skipped\n' "$skipped"; fi
printf '\n%d passed, %d failed\n' "$passed" "$failed"
trap - EXIT
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
