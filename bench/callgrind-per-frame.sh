#!/usr/bin/env bash
# Instructions per stereo frame of each benchmark patch (bench/BenchPatches.h), counted by callgrind:
# the engine plays the patch for two seconds uncounted, then CALLS host calls of 512 frames are
# counted (bench/callgrind/PatchRun.cpp toggles collection around them). Unlike a timing, the
# count does not move when the machine is busy, so it shows small changes of the code. Run by hand:
#   bash bench/callgrind-per-frame.sh            # CALLS=94 calls, about one second of audio
set -euo pipefail
cd "$(dirname "$0")/.."
calls=${CALLS:-94}
frames=$((calls * 512))
cmake --preset release >/dev/null
cmake --build build/release --target quorvex_patch_run -j2 >/dev/null
run=build/release/bench/callgrind/quorvex_patch_run
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

patches=(Default FourForward Tapped16Swell Grain Backward AllOff LimiterSlowI Heavy MasterHall DefaultHall Modulators)
declare -A count
for p in "${patches[@]}"; do
  valgrind --tool=callgrind --instr-atstart=no --collect-atstart=no \
    --callgrind-out-file="$work/$p.out" "$run" "$p" "$calls" >"$work/$p.txt" 2>"$work/$p.log" || {
    echo "callgrind failed for $p:" >&2
    cat "$work/$p.log" >&2
    exit 1
  }
  # "totals:" holds the collected events: the counted calls only.
  count[$p]=$(awk '/^totals:/ { print $2 }' "$work/$p.out")
done

per_frame() { awk -v n="$1" -v f="$frames" 'BEGIN { printf "%.1f", n / f }'; }
echo "callgrind instructions (Ir) per stereo frame, $calls calls of 512 frames after 2 s of warm-up"
echo
echo "| Patch | Ir per frame |"
echo "|---|---|"
for p in "${patches[@]}"; do
  echo "| $p | $(per_frame "${count[$p]}") |"
done
echo "| master hall added to the defaults (DefaultHall - Default) | $(per_frame $((count[DefaultHall] - count[Default]))) |"
echo "| limiter SLOW I (LimiterSlowI - AllOff) | $(per_frame $((count[LimiterSlowI] - count[AllOff]))) |"
echo "| the fourteen modulators (Modulators - Default) | $(per_frame $((count[Modulators] - count[Default]))) |"
