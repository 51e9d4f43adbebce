#!/usr/bin/env bash
# scripts/install-presets.sh against a scratch preset folder: the factory tree ends up equal to
# presets/Factory Presets, a stale file of an older install is gone, and the user's files are
# untouched. Also checks the XDG_DATA_HOME fallback.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
fail() { echo "install-presets test: $*" >&2; exit 1; }

base="$scratch/Presets"
mkdir -p "$base/Factory Presets/Old Folder" "$base/Factory Presets/Basics" "$base/User Presets/Mine"
echo stale >"$base/Factory Presets/Old Folder/Stale.txt"
echo stale >"$base/Factory Presets/Basics/Quarter Note Echo.txt"
echo mine >"$base/User Presets/Mine/Keep.txt"
touch -d '2001-01-01' "$base/User Presets/Mine/Keep.txt"
before="$(stat -c '%Y %s' "$base/User Presets/Mine/Keep.txt")"

QUORVEX_PRESET_DIR="$base" bash "$root/scripts/install-presets.sh" >/dev/null
diff -r "$root/presets/Factory Presets" "$base/Factory Presets" || fail "factory tree differs from the repository"
[ ! -e "$base/Factory Presets/Old Folder" ] || fail "a stale factory folder survived"
[ "$(cat "$base/User Presets/Mine/Keep.txt")" = mine ] || fail "a user preset changed"
[ "$(stat -c '%Y %s' "$base/User Presets/Mine/Keep.txt")" = "$before" ] || fail "a user preset was touched"
[ -z "$(find "$base" -maxdepth 1 -name '.Factory*')" ] || fail "staging folder left behind"

# Without QUORVEX_PRESET_DIR the XDG data folder decides.
env -u QUORVEX_PRESET_DIR XDG_DATA_HOME="$scratch/xdg" bash "$root/scripts/install-presets.sh" >/dev/null
[ -d "$scratch/xdg/qelmar-audio/Quorvex/Presets/User Presets" ] || fail "no user tree below XDG_DATA_HOME"
diff -r "$root/presets/Factory Presets" "$scratch/xdg/qelmar-audio/Quorvex/Presets/Factory Presets" ||
  fail "factory tree below XDG_DATA_HOME differs"
echo "install-presets test: passed"
