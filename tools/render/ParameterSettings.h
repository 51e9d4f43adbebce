#pragma once
// Turns "NAME=VALUE" settings into normalised values the plug-in understands. VALUE is in the
// parameter's display unit; a stepped parameter also takes one of its display texts. Values out of
// the parameter's range are clamped with a warning; unknown names and unreadable values fail.

#include "PluginInstance.h"

#include <string>
#include <vector>

namespace render
{
struct ParameterSetting
{
    const vst3host::ParamEntry* param = nullptr;
    double normalized = 0.0;
};

// On failure returns false with error set; warnings collects the clamped values.
bool ResolveSetting(vst3host::PluginInstance& plug, const std::string& text, ParameterSetting& setting,
                    std::string& error, std::vector<std::string>& warnings);
} // namespace render
