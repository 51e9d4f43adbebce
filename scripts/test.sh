#!/usr/bin/env bash
# Sets up, builds and runs every test of a configuration (default: release).
# Usage: scripts/test.sh [preset]   presets: release, debug, asan, tsan, rtsan
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-release}"
bash scripts/setup.sh tests
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
