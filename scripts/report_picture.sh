#!/usr/bin/env bash
# Makes the pictures of a report that README shows, docs/report.png and docs/report_conflict.png, in
# a browser without a screen.
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

# picture NAME LEFT-OUT HEIGHT     without what the selector says
picture() {
  sed "s|</head>|<style>$2 { display: none; }</style></head>|" "$folder/report/report.html" \
    >"$folder/page.html"
  chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size="1080,$3" \
    --user-data-dir="$folder/profile" --screenshot="$folder/picture.png" \
    "file://$folder/page.html" 2>"$folder/messages" || {
    cat "$folder/messages" >&2
    exit 1
  }
  mv "$folder/picture.png" "docs/$1.png"
}

picture report '#prefix' 1420
picture report_conflict 'header, nav, section:not(#conflicts), footer' 1130
