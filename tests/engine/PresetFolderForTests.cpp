// Every instance these tests build looks for presets in a temporary folder, never in the home
// folder of whoever runs them. Tests that need files of their own set QUORVEX_PRESET_DIR again.

#include "PresetRig.h"

namespace
{
const engine_rig::PresetRig gPresetFolderForTests;
} // namespace
