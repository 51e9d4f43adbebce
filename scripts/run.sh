#!/usr/bin/env bash
# The main job: set up, build the release configuration, install the plug-in to ~/.vst3, load the
# installed bundle as a host does, render the demo phrase through it, and show the DSP core at
# work through its benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset release
cmake --build --preset release
bash scripts/install.sh build/release
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tests/host/load/quorvex_host_load_tests --gtest_brief=1
mkdir -p out
# Slot 1 at full delay send with feedback, so the echoes are heard (the defaults pass only the direct sound).
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tools/render/quorvex-render \
  --set "Direct In 1=50" --set "Feedback 1=45" --demo out/demo.wav
./build/release/bench/quorvex_bench --benchmark_min_time=0.05
