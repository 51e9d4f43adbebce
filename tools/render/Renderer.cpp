#include "Renderer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace render
{
using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
constexpr double kPreRollSeconds = 0.25;
constexpr double kQuietLevel = 3.1622776601683795e-5; // -90 dBFS
constexpr double kQuietWindowSeconds = 0.1;
constexpr double kMaxTailSeconds = 60.0;

double ToDb(double level)
{
    return level > 0.0 ? 20.0 * std::log10(level) : -std::numeric_limits<double>::infinity();
}

void ShowProgress(double fraction)
{
    constexpr int kWidth = 40;
    const int filled = static_cast<int>(fraction * kWidth);
    std::fprintf(
        stderr, "\rquorvex-render: [%s%s] %3d%%", std::string(static_cast<size_t>(filled), '#').c_str(),
        std::string(static_cast<size_t>(kWidth - filled), ' ').c_str(), static_cast<int>(fraction * 100.0));
    std::fflush(stderr);
}
} // namespace

Renderer::Renderer(vst3host::PluginInstance& plug, const RenderConfig& config)
    : mPlug(plug), mConfig(config), mOutL(static_cast<size_t>(config.block)),
      mOutR(static_cast<size_t>(config.block)), mSilence(static_cast<size_t>(config.block), 0.0)
{
}

bool Renderer::Prepare(const std::vector<ParameterSetting>& settings, std::string& error)
{
    if (!mPlug.Start(mConfig.rate, mConfig.block, error)) return false;
    vst3host::ChangeList changes;
    for (const auto& s : settings)
        changes.Add(s.param->id, 0, s.normalized);
    if (!changes.Empty() && !mPlug.Flush(&changes))
    {
        error = "the plug-in refused the parameter changes";
        return false;
    }
    for (auto left = static_cast<std::int64_t>(kPreRollSeconds * mConfig.rate); left > 0;
         left -= mConfig.block)
    {
        const int n = static_cast<int>(std::min<std::int64_t>(left, mConfig.block));
        if (!Block(mSilence.data(), mSilence.data(), n, false, error)) return false;
    }
    return true;
}

std::uint32_t Renderer::Latency() const
{
    return mPlug.Latency();
}

bool Renderer::Block(const double* left, const double* right, int n, bool playing, std::string& error)
{
    ProcessContext context{};
    context.state = ProcessContext::kTempoValid | ProcessContext::kTimeSigValid |
                    ProcessContext::kProjectTimeMusicValid | ProcessContext::kBarPositionValid |
                    (playing ? static_cast<uint32>(ProcessContext::kPlaying) : 0u);
    context.sampleRate = mConfig.rate;
    context.projectTimeSamples = mPosition;
    context.tempo = mConfig.tempo;
    context.timeSigNumerator = 4;
    context.timeSigDenominator = 4;
    context.projectTimeMusic = static_cast<double>(mPosition) / mConfig.rate * mConfig.tempo / 60.0;
    context.barPositionMusic = std::floor(context.projectTimeMusic / 4.0) * 4.0;

    const double* in[2] = {left, right};
    double* out[2] = {mOutL.data(), mOutR.data()};
    if (!mPlug.Process(in, out, n, nullptr, &context))
    {
        error = "the plug-in failed to process a block";
        return false;
    }
    if (playing) mPosition += n;
    return true;
}

bool Renderer::Run(const StereoAudio& input, AudioWriter& writer, std::string& error)
{
    const auto total = static_cast<std::int64_t>(input.left.size());
    const auto window = static_cast<std::int64_t>(std::ceil(kQuietWindowSeconds * mConfig.rate));
    const auto maxTail =
        static_cast<std::int64_t>(std::llround(mConfig.tailSeconds.value_or(kMaxTailSeconds) * mConfig.rate));
    const std::int64_t afterLatency = total + static_cast<std::int64_t>(Latency());
    std::int64_t done = 0;
    std::int64_t quietRun = 0; // samples since the last one at or above -90 dBFS
    int shownPercent = -1;

    while (true)
    {
        const bool inInput = done < total;
        if (!inInput)
        {
            const std::int64_t tail = done - total;
            if (tail >= maxTail) break;
            if (!mConfig.tailSeconds && done >= afterLatency && quietRun >= window) break;
        }
        const int n =
            static_cast<int>(inInput ? std::min<std::int64_t>(total - done, mConfig.block)
                                     : std::min<std::int64_t>(total + maxTail - done, mConfig.block));
        const double* left = inInput ? input.left.data() + done : mSilence.data();
        const double* right = inInput ? input.right.data() + done : mSilence.data();
        if (!Block(left, right, n, true, error)) return false;

        for (int i = 0; i < n; ++i)
        {
            // A broken sound must not pass as a render: clamping would hide it in the file.
            if (!std::isfinite(mOutL[static_cast<size_t>(i)]) ||
                !std::isfinite(mOutR[static_cast<size_t>(i)]))
            {
                error = "the plug-in gave a non-finite sample at frame " + std::to_string(done + i);
                mPlug.Stop();
                return false;
            }
            const double l = std::clamp(mOutL[static_cast<size_t>(i)], -1.0, 1.0);
            const double r = std::clamp(mOutR[static_cast<size_t>(i)], -1.0, 1.0);
            const double m = std::max(std::abs(l), std::abs(r));
            mPeak = std::max(mPeak, m);
            mSumSquares += l * l + r * r;
            quietRun = m < kQuietLevel ? quietRun + 1 : 0;
        }
        if (!writer.Write(mOutL.data(), mOutR.data(), static_cast<size_t>(n), error)) return false;
        done += n;
        mFrames = done;

        if (mConfig.progress && total > 0)
        {
            const int percent = static_cast<int>(100 * std::min(done, total) / total);
            if (percent != shownPercent)
            {
                ShowProgress(percent / 100.0);
                shownPercent = percent;
            }
        }
    }
    if (mConfig.progress && total > 0) std::fputc('\n', stderr);
    mPlug.Stop();
    return true;
}

double Renderer::PeakDb() const
{
    return ToDb(mPeak);
}

double Renderer::RmsDb() const
{
    return mFrames > 0 ? ToDb(std::sqrt(mSumSquares / (2.0 * static_cast<double>(mFrames))))
                       : -std::numeric_limits<double>::infinity();
}
} // namespace render
