#pragma once
// Preset files for the render tool, through the plug-in's own code: a file is parsed, migrated and
// masked by the same functions the plug-in's loader runs, onto a parameter table of the same
// catalogue, and reaches the plug-in as the state a host would restore; the plug-in's state read
// back is written by the plug-in's own preset writer. Unlike the plug-in, the tool never rewrites
// an old file it was given.

#include "PluginInstance.h"

#include <string>
#include <vector>

namespace render
{
// Applies the preset file at path to plug. Warnings name keys that no parameter took.
bool ApplyPresetFile(vst3host::PluginInstance& plug, const std::string& path, std::string& error,
                     std::vector<std::string>& warnings);
// Writes the plug-in's present settings (parameters and masks) as a preset file.
bool WritePresetFile(vst3host::PluginInstance& plug, const std::string& path, std::string& error);
} // namespace render
