#pragma once
// Streams audio through a plug-in instance the way a host plays a project: the settings go in as
// one parameter change before any audio, a quarter second of silence with the transport stopped
// lets ramps and start-up fades settle (its output is dropped), then the input plays from project
// time 0 with the transport running, followed by a tail of silence. The output is written
// unshifted, so it carries the plug-in's latency. Measures the peak and RMS of what it writes.

#include "AudioFile.h"
#include "ParameterSettings.h"
#include "PluginInstance.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace render
{
struct RenderConfig
{
    double rate = 48000.0;
    int block = 512;
    double tempo = 120.0;
    std::optional<double> tailSeconds; // none: until 100 ms stay below -90 dBFS, at most 60 s
    bool progress = false;             // a bar on stderr
};

class Renderer
{
  public:
    Renderer(vst3host::PluginInstance& plug, const RenderConfig& config);

    // Start, settings, pre-roll. The latency is known after this.
    bool Prepare(const std::vector<ParameterSetting>& settings, std::string& error);
    std::uint32_t Latency() const;
    bool Run(const StereoAudio& input, AudioWriter& writer, std::string& error);

    std::int64_t Frames() const { return mFrames; }
    double PeakDb() const;
    double RmsDb() const;

  private:
    bool Block(const double* left, const double* right, int n, bool playing, std::string& error);

    vst3host::PluginInstance& mPlug;
    RenderConfig mConfig;
    std::int64_t mPosition = 0; // project time in samples
    std::vector<double> mOutL;
    std::vector<double> mOutR;
    std::vector<double> mSilence;
    std::int64_t mFrames = 0;
    double mPeak = 0.0;
    double mSumSquares = 0.0;
};
} // namespace render
