#!/usr/bin/env bash
# Installs the Debian packages that the build and the tests need, as far as they are missing.
# Does nothing, needs no network and no rights when all are there.
# Usage: scripts/install-dependencies.sh [PACKAGE...]     with packages: these instead
set -euo pipefail

packages=(
  g++ cmake ninja-build xz-utils     # to build
  minisat librapidxml-dev libgzstream-dev zlib1g-dev libcli11-dev nlohmann-json3-dev
  libgraphviz-dev                    # lays out the drawings of reports
  libgtest-dev libbenchmark-dev      # for tests and benchmarks
  libxml2-utils                      # xmllint, with which tests check the XML that is written
  iverilog yosys                     # the same for Verilog: compiled, simulated, synthesised
)
if [ $# -gt 0 ]; then packages=("$@"); fi

fail() {
  printf 'install-dependencies.sh: %s\nThe project needs these Debian packages: %s\n' \
    "$1" "${packages[*]}" >&2
  exit 1
}

is_installed() {
  # A package may be there for several architectures.
  case " $(dpkg-query -W -f '${db:Status-Status} ' "$1" 2>/dev/null || true)" in
    *" installed "*) return 0 ;;
    *) return 1 ;;
  esac
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

apt() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=120 "$@"
}

for tool in dpkg-query apt-get; do
  command -v "$tool" >/dev/null || fail "there is no $tool here; install the packages by hand."
done

missing=()
for package in "${packages[@]}"; do
  is_installed "$package" || missing+=("$package")
done
if [ "${#missing[@]}" -eq 0 ]; then exit 0; fi

echo "Installing ${missing[*]}"
[ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
  fail "missing are: ${missing[*]}. Run this script as root, or install sudo."
apt update || echo "The package lists could not be updated; trying with those that are here." >&2
apt install -y --no-install-recommends "${missing[@]}" >/dev/null ||
  fail "could not install: ${missing[*]}"
