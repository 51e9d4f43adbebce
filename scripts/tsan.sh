#!/usr/bin/env bash
# The suites where threads meet under ThreadSanitizer: the engine core (effect swaps while audio
# runs), the engine (presets and states loaded from another thread),
# the host binding (parameter edits against processing), and the loaded bundle (states loaded
# while another thread processes).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset tsan
suites=(quorvex_core_tests quorvex_engine_tests quorvex_host_tests quorvex_host_load_tests)
cmake --build --preset tsan --target "${suites[@]}"
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1"
# The engine suite's long single-threaded renders (input hygiene over every patch, automation at
# every block size and rate, end-to-end effect renders, the slot paths, the engine frame, the
# editor readouts) meet no second thread but the idle effect worker and take most of the time under
# TSan; they run in the release, asan and rtsan stages, and so do the loaded bundle's long renders
# on one thread (tails, offline type changes, tap masks). Every test that loads, saves or switches
# while audio runs stays here.
declare -A filters=([quorvex_engine_tests]="-*InputHygiene*:*RealtimeProcess*:EffectsEndToEnd.*:SlotPath.*:Editor*:EngineFrame.*"
  [quorvex_host_load_tests]="-HostLoad.TheReportedTailHoldsTheEchoesAndTheHall:HostLoad.OfflineEffectTypeChangesTakeEffectWhereTheyArrive:HostLoad.TapMasksSwitchEachTapPerSide")
for suite in "${suites[@]}"; do
  echo "tsan: $suite"
  binary="build/tsan/tests/$suite"
  [ -x "$binary" ] || binary="build/tsan/tests/host/load/$suite"
  "$binary" --gtest_brief=1 --gtest_filter="${filters[$suite]:-*}"
done
