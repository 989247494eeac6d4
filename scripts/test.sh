#!/usr/bin/env bash
# Builds everything with assertions and warnings as errors, and runs all tests; then the same under
# the address and undefined behaviour sanitizers.
# Usage: scripts/test.sh [--quick]     --quick leaves the sanitizers out
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

trap 'echo "The tests were not run to the end." >&2' EXIT

scripts/install-dependencies.sh
scripts/architecture.sh --check
build_and_run "with assertions" build-test
if [ "$quick" = no ]; then
  build_and_run "under sanitizers" build-sanitize -DVOREL_SANITIZE=address,undefined
fi

if [ "$skipped" -gt 0 ]; then printf '\n%d skipped\n' "$skipped"; fi
printf '\n%d passed, %d failed\n' "$passed" "$failed"
trap - EXIT
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
