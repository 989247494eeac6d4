#!/usr/bin/env bash
# Makes a manual page of the help of a program.
# Usage: scripts/man_page.sh PROGRAM VERSION PAGE
# Text at the margin is filled, what is indented stays as it is; the options of the companions, whose
# descriptions stand in a column of their own, become a list.
set -euo pipefail

[ $# -eq 3 ] || { echo "usage: scripts/man_page.sh PROGRAM VERSION PAGE" >&2; exit 2; }
program=$1 version=$2 page=$3
name=$(basename "$program")

help=$("$program" -h)
mkdir -p "$(dirname "$page")"
trap 'rm -f "$page.new"' EXIT
printf '%s\n' "$help" | LC_ALL=C awk -v name="$name" -v version="$version" '
  function escaped(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    return text
  }
  # A line of text must not look like a request.
  function put(text) {
    text = escaped(text)
    if (text ~ /^[.'\'']/) text = "\\&" text
    print text
  }
  function end_verbatim() { if (is_verbatim) print ".fi"; is_verbatim = 0 }
  function section(title) {
    end_verbatim()
    print ".SH " title
    is_listed = (title == "OPTIONS" || title == "ARGUMENTS") && name != "vorel"
    is_first = 1
    blank = 0
  }

  # "  --name VALUE       text", or the text on the next lines.
  function put_option(form,    text) {
    sub(/^  /, "", form)
    if (match(form, /  +/)) {
      text = substr(form, RSTART + RLENGTH)
      form = substr(form, 1, RSTART - 1)
    }
    print ".TP\n.B " escaped(form)
    if (text != "") put(text)
  }

  function put_line(line) {
    if (line == "") { blank = 1; return }
    # Behind a list of options comes text without a heading.
    if (is_listed && blank && line ~ /^[^ ]/) section("NOTES")
    if (blank && !is_first) print is_verbatim ? "" : ".PP"
    blank = is_first = 0
    if (is_listed && line ~ /^  [^ ]/) { put_option(line); return }
    if (is_listed) { sub(/^ +/, "", line); put(line); return }
    if (line !~ /^[ \t]/) end_verbatim()
    else if (!is_verbatim) { print ".nf"; is_verbatim = 1 }
    put(line)
  }

  # The first sentence of the help, as far as its first comma.
  function summary(    text, i) {
    for (i = 1; i <= introduced; ++i) text = text (text == "" ? "" : " ") introduction[i]
    sub(/^ +/, "", text)
    sub(/[,.].*/, "", text)
    if (text ~ /^[A-Z][a-z]/) text = tolower(substr(text, 1, 1)) substr(text, 2)
    return escaped(text)
  }
  function begin_page() {
    print ".TH " toupper(escaped(name)) " 1 \"\" \"vorel " version "\""
    print ".SH NAME\n" escaped(name) " \\- " summary()
    section("SYNOPSIS")
  }
  function describe(    i) {
    section("DESCRIPTION")
    for (i = 1; i <= introduced; ++i) put_line(introduction[i])
    is_usage = 0
    blank = 1
  }

  BEGIN {
    titles["Positionals:"] = "ARGUMENTS"; titles["Options:"] = "OPTIONS"
    titles["Modes:"] = "MODES"; titles["Examples:"] = "EXAMPLES"
    titles["Exit codes:"] = "EXIT STATUS"
  }

  /^Usage:/ {
    begin_page()
    has_page = is_usage = 1
    sub(/^Usage: */, "")
    if ($0 != "") put_line($0)
    next
  }
  !has_page { introduction[++introduced] = $0; next }
  is_usage && /^(\t|or$)/ { put_line($0); next }
  is_usage { describe() }
  $0 in titles { section(titles[$0]); next }
  /^Exit code: / { section("EXIT STATUS"); put(substr($0, 12)); next }
  { put_line($0) }
  END { end_verbatim(); if (!has_page) exit 1 }
' >"$page.new"
mv "$page.new" "$page"
