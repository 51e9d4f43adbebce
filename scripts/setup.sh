#!/usr/bin/env bash
# Installs every Debian 12 package the project builds, tests and runs with.
# Idempotent: installs nothing when everything is already there. Works as root
# on a fresh machine and through sudo otherwise.
# Usage: scripts/setup.sh [tests]
#   tests  also installs what only the test run needs: Debian's Ardour 7, which the DAW test
#          (tests/daw) drives headless; like every package here, without what it only recommends.
set -euo pipefail

packages=(
  build-essential g++ cmake ninja-build pkg-config git
  libgtest-dev libgmock-dev libbenchmark-dev
  juce-modules-source-data
  libcairo2-dev libpng-dev libx11-dev libxtst-dev libxext-dev
  libfontconfig-dev libfreetype-dev fonts-beteckna fonts-liberation2
  libsndfile1-dev
  xvfb x11-apps imagemagick
  clang-format clang-22 libclang-rt-22-dev
)

test_packages=()
case "${1:-}" in
  "") ;;
  tests) test_packages=(ardour) ;;
  *) echo "usage: scripts/setup.sh [tests]" >&2; exit 2 ;;
esac
packages+=("${test_packages[@]}")

if [ "$(id -u)" -eq 0 ]; then sudo=(); else sudo=(sudo); fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all ${#packages[@]} packages present"
  exit 0
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
# A third-party source that cannot be reached must not stop Debian's own lists from updating.
"${sudo[@]}" apt-get update -q || echo "setup: apt-get update reported errors; going on with the lists it fetched"
# clang-22 comes from Debian 12's security archive.
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
