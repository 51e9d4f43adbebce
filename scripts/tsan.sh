#!/usr/bin/env bash
# The suites where threads meet (engine core, engine, host binding, and the bundle loaded as a host
# does) under ThreadSanitizer: effect swaps while audio runs, presets and states loaded from another
# thread, parameter edits against processing.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset tsan
suites=(quorvex_core_tests quorvex_engine_tests quorvex_host_tests quorvex_host_load_tests)
cmake --build --preset tsan --target "${suites[@]}" Quorvex
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1"
for suite in "${suites[@]}"; do
  path=$(find build/tsan/tests -name "$suite" -type f -executable | head -n 1)
  echo "tsan: $suite"
  "$path" --gtest_brief=1
done
