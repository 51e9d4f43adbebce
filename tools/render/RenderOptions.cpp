#include "RenderOptions.h"

#include "ParseNumber.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace render
{

const char* UsageText()
{
    return "usage: quorvex-render [options] INPUT OUTPUT\n"
           "       quorvex-render [options] --demo OUTPUT\n"
           "       quorvex-render [options] --write-preset FILE\n"
           "       quorvex-render [--bundle PATH] --list\n"
           "Renders INPUT (WAV, FLAC or AIFF; mono or stereo) through the Quorvex plug-in into OUTPUT,\n"
           "whose extension (.wav, .flac, .aif/.aiff) names the format; 24-bit PCM.\n"
           "\n"
           "  --set NAME=VALUE  set a parameter by name (\"Feedback 1\") or key (\"Feedback1\") in its\n"
           "                    display unit; list parameters also take their display text (repeatable)\n"
           "  --preset FILE     apply a preset file first, as the plug-in loads it (same parsing,\n"
           "                    migration of old versions and masks); --set options after it override\n"
           "                    single values\n"
           "  --write-preset FILE  write the settings (after --preset and --set) as a preset file; with\n"
           "                    no OUTPUT nothing is rendered\n"
           "  --tempo BPM       host tempo, transport playing in 4/4 (default 120)\n"
           "  --block N         host block size, 1..8192 (default 512)\n"
           "  --tail SECONDS    silence processed after the input (default: until the output stays\n"
           "                    below -90 dBFS for 100 ms, at most 60 s)\n"
           "  --demo            render a built-in demo phrase instead of INPUT\n"
           "  --rate HZ         sample rate of the demo phrase (default 48000)\n"
           "  --bundle PATH     the Quorvex.vst3 bundle to load (default: $QUORVEX_BUNDLE, else the\n"
           "                    bundle of the build tree this tool was built in)\n"
           "  --list            list the parameters (key, name, unit, range) and stop\n"
           "  --help            show this text\n";
}

bool ParseOptions(int argc, const char* const* argv, RenderOptions& options, std::string& error)
{
    std::vector<std::string> positional;
    bool rateGiven = false;
    for (int i = 1; i < argc; ++i)
    {
        std::string arg = argv[i];
        if (arg == "--help" || arg == "-h")
        {
            options.help = true;
            return true;
        }
        if (arg == "--list")
        {
            options.list = true;
            continue;
        }
        if (arg == "--demo")
        {
            options.demo = true;
            continue;
        }
        if (arg.size() < 2 || arg.compare(0, 2, "--") != 0 || arg == "--")
        {
            positional.push_back(arg);
            continue;
        }
        // --name VALUE or --name=VALUE
        std::string name = arg;
        std::string value;
        if (const auto eq = arg.find('='); eq != std::string::npos)
        {
            name = arg.substr(0, eq);
            value = arg.substr(eq + 1);
        }
        else
        {
            if (name != "--set" && name != "--tempo" && name != "--block" && name != "--rate" &&
                name != "--bundle" && name != "--tail" && name != "--preset" && name != "--write-preset")
            {
                error = "unknown option " + name;
                return false;
            }
            if (i + 1 >= argc)
            {
                error = name + " needs a value";
                return false;
            }
            value = argv[++i];
        }

        double number = 0.0;
        if (name == "--set")
        {
            if (value.find('=') == std::string::npos)
            {
                error = "--set takes NAME=VALUE, not \"" + value + "\"";
                return false;
            }
            options.settings.push_back(value);
        }
        else if (name == "--preset")
        {
            // A preset sets every parameter: a value set before it would be lost without a word.
            if (!options.settings.empty())
            {
                error = "--set before --preset would be overridden by the preset; give --preset first";
                return false;
            }
            if (!options.preset.empty())
            {
                error = "only one --preset can be given";
                return false;
            }
            options.preset = value;
        }
        else if (name == "--write-preset")
            options.writePreset = value;
        else if (name == "--bundle")
            options.bundle = value;
        else if (name == "--tempo")
        {
            if (!ToNumber(value, number) || number < 1.0 || number > 999.0)
            {
                error = "--tempo takes a tempo in BPM from 1 to 999, not \"" + value + "\"";
                return false;
            }
            options.tempo = number;
        }
        else if (name == "--block")
        {
            if (!ToNumber(value, number) || number != std::floor(number) || number < 1.0 || number > 8192.0)
            {
                error = "--block takes a whole number from 1 to 8192, not \"" + value + "\"";
                return false;
            }
            options.block = static_cast<int>(number);
        }
        else if (name == "--rate")
        {
            if (!ToNumber(value, number) || number < 8000.0 || number > 384000.0)
            {
                error = "--rate takes a sample rate from 8000 to 384000 Hz, not \"" + value + "\"";
                return false;
            }
            options.demoRate = number;
            rateGiven = true;
        }
        else if (name == "--tail")
        {
            if (!ToNumber(value, number) || number < 0.0 || number > 3600.0)
            {
                error = "--tail takes seconds from 0 to 3600, not \"" + value + "\"";
                return false;
            }
            options.tailSeconds = number;
        }
        else
        {
            error = "unknown option " + name;
            return false;
        }
    }

    if (options.list && positional.empty() && !options.demo) return true;
    if (!options.writePreset.empty() && positional.empty() && !options.demo) return true;
    const size_t wanted = options.demo ? 1 : 2;
    if (positional.size() != wanted)
    {
        error = options.demo ? "--demo takes one file, OUTPUT" : "INPUT and OUTPUT files are needed";
        return false;
    }
    if (rateGiven && !options.demo)
    {
        error = "--rate applies only to --demo; a file is rendered at its own rate";
        return false;
    }
    options.input = options.demo ? std::string() : positional[0];
    options.output = positional.back();
    return true;
}
} // namespace render
