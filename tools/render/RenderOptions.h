#pragma once
// The command line of quorvex-render, parsed into plain values. Parsing checks only what can be
// checked without the plug-in or the files (numbers, ranges, argument counts).

#include <optional>
#include <string>
#include <vector>

namespace render
{
struct RenderOptions
{
    std::string input; // empty with --demo
    std::string output;
    std::vector<std::string> settings; // NAME=VALUE, in command-line order
    std::string preset;                // a preset file applied before the settings
    std::string writePreset;           // where to write the settings as a preset file
    double tempo = 120.0;
    int block = 512;
    double demoRate = 48000.0;
    std::string bundle; // empty: QUORVEX_BUNDLE, then the bundle of the build tree
    std::optional<double> tailSeconds;
    bool demo = false;
    bool help = false;
    bool list = false; // print the parameters and stop
};

// Fills options from argv; on a usage error returns false with error set.
bool ParseOptions(int argc, const char* const* argv, RenderOptions& options, std::string& error);
const char* UsageText();
} // namespace render
