// quorvex-render: renders an audio file, or a built-in demo phrase, through the Quorvex bundle as a
// VST 3 host would, and writes the result as 24-bit PCM. Exit codes: 0 success, 2 usage error
// (options, parameter names and values, output format), 1 processing error (files, plug-in).

#include "AudioFile.h"
#include "DemoPhrase.h"
#include "ParameterSettings.h"
#include "PluginInstance.h"
#include "PluginModule.h"
#include "PresetBridge.h"
#include "RenderOptions.h"
#include "Renderer.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
constexpr int kUsageError = 2;
constexpr int kProcessingError = 1;
constexpr double kProgressMinSeconds = 5.0;

int Fail(int code, const std::string& message)
{
    std::fprintf(stderr, "quorvex-render: %s\n", message.c_str());
    if (code == kUsageError) std::fprintf(stderr, "quorvex-render: try --help\n");
    return code;
}

std::string Db(double db)
{
    if (!std::isfinite(db)) return "-inf dBFS";
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f dBFS", db);
    return text;
}

// One line per parameter: key, name, unit and range (or the texts of a short list).
void ListParameters(vst3host::PluginInstance& plug)
{
    for (const auto& p : plug.Params())
    {
        std::string range;
        if (p.stepCount > 0 && p.stepCount < 16)
            for (int k = 0; k <= p.stepCount; ++k)
            {
                if (k > 0) range += '|';
                range += plug.ValueText(p, static_cast<double>(k) / p.stepCount);
            }
        else
            range = plug.ValueText(p, 0.0) + " .. " + plug.ValueText(p, 1.0);
        std::printf("%s\t%s\t%s\n", p.key.c_str(), p.title.c_str(), range.c_str());
    }
}

std::string BundlePath(const render::RenderOptions& options)
{
    if (!options.bundle.empty()) return options.bundle;
    const char* env = std::getenv("QUORVEX_BUNDLE");
    return env != nullptr && *env != '\0' ? env : QUORVEX_BUNDLE_DIR;
}
} // namespace

int main(int argc, char** argv)
{
    render::RenderOptions options;
    std::string error;
    if (!render::ParseOptions(argc, argv, options, error)) return Fail(kUsageError, error);
    if (options.help)
    {
        std::fputs(render::UsageText(), stdout);
        return 0;
    }
    const bool rendering = !options.list && !options.output.empty();
    if (rendering && render::FormatForPath(options.output) == 0)
        return Fail(kUsageError, "cannot tell the format of " + options.output +
                                     " from its extension; use .wav, "
                                     ".flac, .aif or .aiff");

    render::StereoAudio input;
    if (options.demo)
        input = render::MakeDemoPhrase(options.demoRate, options.tempo);
    else if (rendering && !render::ReadAudio(options.input, input, error))
        return Fail(kProcessingError, error);
    else if (!rendering)
        input.rate = options.demoRate;

    // The plug-in goes before the module it came from.
    auto module = vst3host::PluginModule::Load(BundlePath(options), error);
    if (!module) return Fail(kProcessingError, error);
    int code = 0;
    {
        auto plug = vst3host::PluginInstance::Create(*module, error);
        if (!plug) return Fail(kProcessingError, error);
        if (options.list)
        {
            ListParameters(*plug);
            return 0;
        }

        std::vector<render::ParameterSetting> settings;
        std::vector<std::string> warnings;
        if (!options.preset.empty() && !render::ApplyPresetFile(*plug, options.preset, error, warnings))
            return Fail(kUsageError, error);
        for (const auto& text : options.settings)
        {
            render::ParameterSetting setting;
            if (!render::ResolveSetting(*plug, text, setting, error, warnings))
                return Fail(kUsageError, error);
            settings.push_back(setting);
        }
        for (const auto& w : warnings)
            std::fprintf(stderr, "quorvex-render: warning: %s\n", w.c_str());

        render::RenderConfig config;
        config.rate = input.rate;
        config.block = options.block;
        config.tempo = options.tempo;
        config.tailSeconds = options.tailSeconds;
        config.progress = isatty(STDERR_FILENO) != 0 &&
                          static_cast<double>(input.left.size()) > kProgressMinSeconds * input.rate;
        render::Renderer renderer(*plug, config);
        if (!renderer.Prepare(settings, error)) return Fail(kProcessingError, error);
        // What the plug-in now holds, in its own words: proof that each setting arrived.
        for (const auto& s : settings)
            std::printf(
                "quorvex-render: %s = %s\n", s.param->title.c_str(),
                plug->ValueText(*s.param, plug->Controller().getParamNormalized(s.param->id)).c_str());
        if (!options.preset.empty()) std::printf("quorvex-render: preset %s\n", options.preset.c_str());
        if (!options.writePreset.empty())
        {
            if (!render::WritePresetFile(*plug, options.writePreset, error))
                return Fail(kProcessingError, error);
            std::printf("quorvex-render: wrote preset %s\n", options.writePreset.c_str());
        }
        if (!rendering) return 0;
        std::printf("quorvex-render: latency %u samples\n", renderer.Latency());

        render::AudioWriter writer;
        if (!writer.Open(options.output, input.rate, error) || !renderer.Run(input, writer, error) ||
            !writer.Close(error))
        {
            // No half-written file left to be mistaken for a render.
            std::error_code ignored;
            std::filesystem::remove(options.output, ignored);
            code = Fail(kProcessingError, error);
        }
        else
        {
            std::printf("quorvex-render: wrote %s\n", options.output.c_str());
            std::printf("quorvex-render: peak %s\n", Db(renderer.PeakDb()).c_str());
            std::printf("quorvex-render: RMS %s\n", Db(renderer.RmsDb()).c_str());
        }
    }
    return code;
}
