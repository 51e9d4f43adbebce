#!/usr/bin/env bash
# Times Quorvex's patches beside free LV2 plug-ins from Debian doing comparable work, and prints a
# table of ns per stereo frame and the per-round ratios Quorvex / peer. Run by hand, not in CI:
#   bash bench/side-by-side.sh [--rounds N] [--blocks N] [--cpu N]
# Installs the peers and lilv with apt-get when they are missing (sudo when not root), builds the
# timing host (bench/sidebyside/, only built on request) and the bundle, and runs the host pinned
# to one CPU (the last one unless --cpu says otherwise). See bench/sidebyside/SideBySide.cpp for
# the pairs and the peers' settings.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(calf-plugins lsp-plugins-lv2 x42-plugins guitarix-lv2 liblilv-dev lilv-utils)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  as_root=()
  [ "$(id -u)" -ne 0 ] && as_root=(sudo)
  "${as_root[@]}" apt-get update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
fi

# Configured again so that CMake finds lilv if it was installed just now.
cmake --preset release >/dev/null
cmake --build build/release --target quorvex_sidebyside -j2

cpu=$(($(nproc) - 1))
args=("$@")
for ((i = 0; i < ${#args[@]}; i++)); do
  [ "${args[$i]}" = "--cpu" ] && cpu=${args[$((i + 1))]}
done
exec taskset -c "$cpu" build/release/bench/sidebyside/quorvex_sidebyside --cpu "$cpu" "$@"
