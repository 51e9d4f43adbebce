#!/usr/bin/env bash
# scripts/install-presets.sh against a scratch preset folder: the factory tree ends up equal to
# presets/Factory Presets, a stale file of an older install is gone, the user's files are untouched,
# and without QUORVEX_PRESET_DIR the XDG data folder decides.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
fail() { echo "install-presets test: $*" >&2; exit 1; }
base="$scratch/Presets" keep="$scratch/Presets/User Presets/Mine/Keep.txt"
mkdir -p "$base/Factory Presets/Old Folder" "$base/Factory Presets/Basics" "$base/User Presets/Mine"
echo stale >"$base/Factory Presets/Old Folder/Stale.txt"
echo stale >"$base/Factory Presets/Basics/Quarter Note Echo.txt"
echo mine >"$keep" && touch -d '2001-01-01' "$keep" && before="$(stat -c '%Y %s' "$keep")"
QUORVEX_PRESET_DIR="$base" bash "$root/scripts/install-presets.sh" >/dev/null
diff -r "$root/presets/Factory Presets" "$base/Factory Presets" || fail "factory tree differs from the repository"
[ ! -e "$base/Factory Presets/Old Folder" ] || fail "a stale factory folder survived"
[ "$(cat "$keep")" = mine ] && [ "$(stat -c '%Y %s' "$keep")" = "$before" ] || fail "a user preset was touched"
[ -z "$(find "$base" -maxdepth 1 -name '.Factory*')" ] || fail "staging folder left behind"
env -u QUORVEX_PRESET_DIR XDG_DATA_HOME="$scratch/xdg" bash "$root/scripts/install-presets.sh" >/dev/null
[ -d "$scratch/xdg/qelmar-audio/Quorvex/Presets/User Presets" ] || fail "no user tree below XDG_DATA_HOME"
diff -r "$root/presets/Factory Presets" "$scratch/xdg/qelmar-audio/Quorvex/Presets/Factory Presets" ||
  fail "factory tree below XDG_DATA_HOME differs"
echo "install-presets test: passed"
