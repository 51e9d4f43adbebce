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
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tools/render/quorvex-render --demo out/demo.wav
./build/release/bench/quorvex_bench --benchmark_min_time=0.05
