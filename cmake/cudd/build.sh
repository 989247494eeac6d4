#!/usr/bin/env bash
# Builds CUDD out of Debian's source package of a program that carries a copy of it; there is no
# package of CUDD itself. Needs no rights, and leaves the lists and caches of apt as they are.
# Usage: build.sh FOLDER     leaves FOLDER/libcudd.a and FOLDER/include
# A file berkeley-abc_*.orig.tar.xz beside FOLDER is used instead of the network.
set -euo pipefail

package=berkeley-abc
checksum=e4053ba7aee484d43a54a2bc72bb16ce8de11786bd8a6b37ab4e743953346195
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
result=$1
mkdir -p "$result"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The sources of packages that this machine has, turned into sources of source packages.
list_sources() {
  local file
  mkdir "$scratch/sources.d"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] || continue
    sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$file" > "$scratch/sources.d/$(basename "$file" .list).list"
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] || continue
    sed 's/^Types:.*/Types: deb-src/' "$file" > "$scratch/sources.d/$(basename "$file")"
  done
}

fetch_archive() {
  local folders=("$scratch/lists/partial" "$scratch/cache/archives/partial")
  mkdir -p "${folders[@]}"
  list_sources
  local apt=(apt-get -qq -o APT::Sandbox::User=root
    -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$scratch/sources.d"
    -o Dir::State::Lists="$scratch/lists" -o Dir::Cache="$scratch/cache")
  # A source of something else may have no source packages.
  "${apt[@]}" update || true
  (cd "$scratch" && "${apt[@]}" source --download-only "$package")
}

take_archive() {
  local own
  for own in "$result"/../"$package"_*.orig.tar.xz; do
    if [ -f "$own" ]; then
      cp "$own" "$scratch"
      return
    fi
  done
  fetch_archive
}

take_archive
archive=$(ls "$scratch/$package"_*.orig.tar.xz)
echo "$checksum  $archive" | sha256sum --check --quiet
cd "$scratch"
tar xf "$archive" --strip-components=1 --wildcards '*/src/bdd/cudd/*' '*/src/bdd/mtr/*' \
  '*/src/bdd/epd/*' '*/src/misc/st/st.[ch]' '*/src/misc/util/util_hack.h' '*/src/misc/util/abc_*.h'

cp "$here/support.c" .
mkdir objects
find src/bdd src/misc/st support.c -name '*.c' ! -name testcudd.c -print0 |
  xargs -0 -P "$(nproc)" -I{} sh -c "${CC:-cc} -std=gnu11 -O2 -fPIC -w -DNDEBUG \
    -DABC_USE_STDINT_H=1 -Isrc -c {} -o objects/\$(basename {} .c).o"
ar rcs libcudd.a objects/*.o

for header in bdd/cudd/cudd.h bdd/mtr/mtr.h bdd/epd/epd.h; do
  install -D -m 644 "src/$header" "$result/include/$header"
done
install -m 644 src/bdd/cudd/license "$result/license"
install -m 644 libcudd.a "$result/libcudd.a"
