#!/usr/bin/env bash
# The main job: set up, build the release configuration, install the plug-in to ~/.vst3 and the
# factory presets to the preset folder, load the installed bundle as a host does, render the demo
# phrase through it (also through three factory presets), and show the DSP core at work through
# its benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset release
cmake --build --preset release
bash scripts/install.sh build/release
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tests/host/load/quorvex_host_load_tests --gtest_brief=1
mkdir -p out
# The installed editor opened in a host's window on Xvfb and driven with XTest; its pictures at
# 100 % and 200 % land in out/ (editor-100.png, editor-200.png, editor-popup-100.png).
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" QUORVEX_SCREENSHOT_DIR=out \
  ./build/release/tests/editor/host/quorvex_editor_host_tests --gtest_brief=1
# Every page of the editor as a picture, in out/screenshots/.
bash scripts/screenshots.sh build/release
# Slot 1 at full delay send with feedback, so the echoes are heard (the defaults pass only the direct sound).
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tools/render/quorvex-render \
  --set "Direct In 1=50" --set "Feedback 1=45" --demo out/demo.wav
# The same echoes through a frequency shifter in the feedback path, swung across the stereo field by
# LFO 1, into the hall reverb of the master effect.
QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tools/render/quorvex-render \
  --set "Direct In 1=50" --set "Feedback 1=45" \
  --set "FX1 FB=FREQ SHIFT" --set "FXOn FB 1=ON" --set "FXParam1 1 FB=70" --set "FXParam2 1 FB=50" \
  --set "LFO On 1=ON" --set "LFO Rate 1=0.5" --set "LFO Depth 1=100" \
  --set "Panning ModSource1=LFO1" --set "Panning ModDepth 1=80" \
  --set "MasterFX=REVERB" --set "MasterFX P1=30" --set "MasterFX P4=20" --set "MasterFX Level=80" \
  --demo out/demo-fx.wav
# The demo through three factory presets of different character, read from where install.sh put them.
presets="${QUORVEX_PRESET_DIR:-${XDG_DATA_HOME:-$HOME/.local/share}/qelmar-audio/Quorvex/Presets}/Factory Presets"
for preset in "Ping-Pong/Ping-Pong Eighths" "Rhythmic Taps/Swung Sixteenths" "Spaces/Reverse Cathedral"; do
  QUORVEX_BUNDLE="$HOME/.vst3/Quorvex.vst3" ./build/release/tools/render/quorvex-render \
    --preset "$presets/$preset.txt" --demo "out/demo-$(basename "$preset" | tr ' ' '-' | tr 'A-Z' 'a-z').wav"
done
./build/release/bench/quorvex_bench --benchmark_min_time=0.05
