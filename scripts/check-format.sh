#!/usr/bin/env bash
# Fails when a C++ file of ours differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
files=$(git ls-files 'src/*.h' 'src/*.cpp' 'tests/*.h' 'tests/*.cpp' 'bench/*.cpp' 'tools/*.cpp' 'tools/*.h')
[ -z "$files" ] && exit 0
clang-format --dry-run --Werror $files
echo "format: $(echo "$files" | wc -w) files clean"
