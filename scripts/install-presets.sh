#!/usr/bin/env bash
# Installs the factory presets of presets/ into the preset folder the plug-in reads:
# $QUORVEX_PRESET_DIR, else $XDG_DATA_HOME/qelmar-audio/Quorvex/Presets, else
# ~/.local/share/qelmar-audio/Quorvex/Presets. The "Factory Presets" tree is replaced as a whole, so
# presets of an older install that were renamed or dropped don't linger; "User Presets" is created
# when missing and otherwise never touched.
# Usage: scripts/install-presets.sh
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source_tree="$root/presets/Factory Presets"
if [ -n "${QUORVEX_PRESET_DIR:-}" ]; then
  base="$QUORVEX_PRESET_DIR"
else
  data="${XDG_DATA_HOME:-}"
  [ -n "$data" ] || data="$HOME/.local/share"
  base="$data/qelmar-audio/Quorvex/Presets"
fi
if [ ! -d "$source_tree" ]; then
  echo "install-presets: no factory presets at $source_tree" >&2
  exit 1
fi

mkdir -p "$base/User Presets"
staging="$(mktemp -d "$base/.Factory Presets.XXXXXX")"
trap 'rm -rf "$staging"' EXIT
cp -R "$source_tree/." "$staging/"
find "$staging" -type d -exec chmod 755 {} +
find "$staging" -type f -exec chmod 644 {} +
rm -rf "$base/Factory Presets"
mv "$staging" "$base/Factory Presets"
trap - EXIT
echo "install-presets: $(find "$base/Factory Presets" -type f -name '*.txt' | wc -l) factory presets in $base/Factory Presets"
