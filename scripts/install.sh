#!/usr/bin/env bash
# Copies the built Quorvex.vst3 bundle into ~/.vst3, where Linux hosts look for VST 3 plug-ins, and
# the factory presets into the plug-in's preset folder (scripts/install-presets.sh).
# Usage: scripts/install.sh [build-dir]   (default: build/release, relative to the project root)
# An older copy of the bundle is replaced as a whole, so no stale file survives an update.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-build/release}"
case "$build" in
  /*) ;;
  *) build="$root/$build" ;;
esac

bundle="$build/Quorvex.vst3"
binary="$bundle/Contents/x86_64-linux/Quorvex.so"
if [ ! -f "$binary" ]; then
  echo "install: no bundle at $bundle; build the Quorvex target first" >&2
  exit 1
fi

target_dir="${HOME}/.vst3"
mkdir -p "$target_dir"
staging="$(mktemp -d "$target_dir/.Quorvex.vst3.XXXXXX")"
chmod 755 "$staging"
trap 'rm -rf "$staging"' EXIT
cp -R "$bundle/." "$staging/"
rm -rf "$target_dir/Quorvex.vst3"
mv "$staging" "$target_dir/Quorvex.vst3"
trap - EXIT
echo "install: $target_dir/Quorvex.vst3"
bash "$root/scripts/install-presets.sh"
