#!/usr/bin/env bash
# The main job: set up, build the release configuration and show the DSP core at work
# through its benchmarks (nanoseconds per sample of the building blocks).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset release
cmake --build --preset release
if [ -x scripts/install.sh ] && [ -d build/release/Quorvex.vst3 ]; then
  bash scripts/install.sh build/release
fi
./build/release/bench/quorvex_bench --benchmark_min_time=0.05
