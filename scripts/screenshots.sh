#!/usr/bin/env bash
# Pictures of every editor page at 100 % (and the delay overview at 200 %), drawn offscreen from
# the built bundle's art with a showcase patch, into out/screenshots/, named by page.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/release}"
art="$build/Quorvex.vst3/Contents/Resources/img"
shot="$build/tools/editorshot/quorvex-editor-shot"
mkdir -p out/screenshots
names=(routing pre-fx delay fb-fx post-fx lfo gates envelope logic options)
for page in "${!names[@]}"; do
  "$shot" "$art" 1 0 "out/screenshots/page-$page-${names[$page]}.png" "page:$page"
done
for slot in 1 2 3 4; do
  "$shot" "$art" 1 0 "out/screenshots/page-$((9 + slot))-slot$slot-taps.png" "page:$((9 + slot))"
  "$shot" "$art" 1 0 "out/screenshots/page-$((13 + slot))-slot$slot-steps.png" "page:$((13 + slot))"
done
"$shot" "$art" 2 0 out/screenshots/page-2-delay-200.png page:2
"$shot" "$art" 1 0 out/screenshots/alert.png message
echo "screenshots: $(ls out/screenshots | wc -l) pictures in out/screenshots"
