#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz", clang-22) and runs each for a bounded time on a copy
# of its seed corpus in tests/fuzz/corpus. Fails on a crash, a leak, a hang (one input taking over
# 10 s) or running out of memory (2 GB); the last line of each run gives its number of executions.
# Usage: scripts/fuzz.sh [seconds per target]   (default 60)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
bash scripts/setup.sh
cmake --preset fuzz
cmake --build --preset fuzz --target quorvex_fuzz_preset quorvex_fuzz_state
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
for name in preset state; do
  mkdir -p "$work/$name"
  cp tests/fuzz/corpus/"$name"/* "$work/$name/"
  echo "fuzz: $name reader for ${seconds} s"
  ./build/fuzz/tests/fuzz/quorvex_fuzz_"$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$work/" "$work/$name" 2>"$work/$name.log" || {
    tail -n 60 "$work/$name.log" >&2
    for crash in "$work"/crash-* "$work"/leak-* "$work"/timeout-* "$work"/oom-*; do
      [ -e "$crash" ] && { echo "fuzz: failing input $(basename "$crash") (base64):" >&2; base64 "$crash" >&2; }
    done
    exit 1
  }
  grep -E "^(Done|stat::number_of_executed_units)" "$work/$name.log" | sed "s/^/fuzz: $name: /"
done
