#!/usr/bin/env bash
# The suites where threads meet under ThreadSanitizer: the engine core (effect swaps while audio
# runs), the engine (presets and states loaded from another thread, automation of effect types),
# and the host binding (parameter edits against processing).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset tsan
suites=(quorvex_core_tests quorvex_engine_tests quorvex_host_tests)
cmake --build --preset tsan --target "${suites[@]}"
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1"
for suite in "${suites[@]}"; do
  echo "tsan: $suite"
  "build/tsan/tests/$suite" --gtest_brief=1
done
