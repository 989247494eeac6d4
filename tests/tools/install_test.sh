#!/usr/bin/env bash
# Installs a build into a folder of its own and looks at what is there: programs that run, manual
# pages without faults, completion of options.
# Usage: install_test.sh BUILD-FOLDER
set -euo pipefail

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" >/dev/null

fail() { echo "install_test.sh: $1" >&2; exit 1; }

# completions_of WORD...: of the last of the words.
completions_of() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _vorel
  printf "%s\n" "${COMPREPLY[@]}" | sort | xargs
}

export PATH=$prefix/bin:$PATH
programs=(vorel vorel-unfold vorel-gates vorel-verify vorel-flow)
for program in "${programs[@]}"; do
  [ "$(command -v "$program")" = "$prefix/bin/$program" ] || fail "no program $program"
  page=$prefix/share/man/man1/$program.1
  for section in NAME SYNOPSIS DESCRIPTION OPTIONS 'EXIT STATUS'; do
    grep -qx ".SH $section" "$page" || fail "$page has no section $section"
  done
  if command -v groff >/dev/null; then
    faults=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
    [ -z "$faults" ] || fail "$faults"
  fi
  cmp -s "$prefix/share/bash-completion/completions/"{vorel,"$program"} ||
    fail "no completion for $program"
done
[ -s "$prefix/share/vorel/vorel_gates.v" ] || fail "no models of gates"
[ -s "$prefix/share/doc/vorel/docs/reach.md" ] || fail "no documents"

# shellcheck source=../../share/completions/vorel
source "$prefix/share/bash-completion/completions/vorel"
cd "$prefix/share/doc/vorel/examples"
[ "$(completions_of vorel-verify x.g --h)" = "--help --hide-internal" ] || fail "options of vorel-verify"
[ "$(completions_of vorel -F)" = "-F -Fs" ] || fail "modes of vorel"
[ "$(completions_of vorel-unfold --format p)" = "pnml" ] || fail "formats of vorel-unfold"
[ "$(completions_of vorel-unfold mut)" = "mutex2.g mutex2.unf.pnml" ] || fail "names of files"
