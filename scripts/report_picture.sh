#!/usr/bin/env bash
# Makes the picture of a report that README shows, docs/report.png, in a browser without a screen.
# Usage: scripts/report_picture.sh [BUILD-FOLDER]     where vorel-flow has been built
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

program=${1-build}/vorel-flow
if [ ! -x "$program" ]; then
  printf 'report_picture.sh: there is no %s; build it first\n' "$program" >&2
  exit 1
fi
command -v chromium >/dev/null || scripts/install-dependencies.sh chromium

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$program" -q examples/vme_read.g -o "$folder/report"
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=1080,1560 \
  --user-data-dir="$folder/profile" --screenshot="$folder/report.png" \
  "file://$folder/report/report.html" 2>"$folder/messages" || {
  cat "$folder/messages" >&2
  exit 1
}
mv "$folder/report.png" docs/report.png
