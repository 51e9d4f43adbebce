#include "DemoPhrase.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace render
{
namespace
{
// xorshift64: fixed noise on every platform, unlike the standard distributions.
class Noise
{
  public:
    double Next()
    {
        mState ^= mState << 13;
        mState ^= mState >> 7;
        mState ^= mState << 17;
        return static_cast<double>(mState >> 11) * 0x1.0p-52 - 1.0; // [-1, 1)
    }

  private:
    std::uint64_t mState = 0x9E3779B97F4A7C15ull;
};

// A plucked string as a sum of harmonics whose upper partials die away faster, with a 2 ms attack.
void AddPluck(StereoAudio& audio, size_t start, double midiNote, double pan, double level, double seconds)
{
    const double rate = audio.rate;
    const double freq = 440.0 * std::pow(2.0, (midiNote - 69.0) / 12.0);
    const size_t length = std::min(static_cast<size_t>(seconds * rate), audio.left.size() - start);
    const double gainL = level * std::cos(pan * std::numbers::pi / 2.0);
    const double gainR = level * std::sin(pan * std::numbers::pi / 2.0);
    for (size_t i = 0; i < length; ++i)
    {
        const double t = static_cast<double>(i) / rate;
        double v = 0.0;
        for (int k = 1; k <= 6 && k * freq < 0.45 * rate; ++k)
            v += std::sin(2.0 * std::numbers::pi * k * freq * t) * std::exp(-t * (2.5 + 3.0 * k)) / k;
        v *= std::min(1.0, t / 0.002);
        audio.left[start + i] += gainL * v;
        audio.right[start + i] += gainR * v;
    }
}

// A snare-like burst: differenced white noise under a 25 ms exponential decay.
void AddBurst(StereoAudio& audio, size_t start, Noise& noise, double level)
{
    const double rate = audio.rate;
    const size_t length = std::min(static_cast<size_t>(0.15 * rate), audio.left.size() - start);
    double last = 0.0;
    for (size_t i = 0; i < length; ++i)
    {
        const double white = noise.Next();
        const double v = level * 0.5 * (white - last) * std::exp(-static_cast<double>(i) / (0.025 * rate));
        last = white;
        audio.left[start + i] += v;
        audio.right[start + i] += v;
    }
}
} // namespace

StereoAudio MakeDemoPhrase(double rate, double tempo)
{
    constexpr int kEighths = 16; // two bars of 4/4
    constexpr std::array<double, kEighths> kNotes = {57, 64, 69, 0,  72, 69, 67, 64,
                                                     60, 0,  67, 72, 76, 74, 0,  69};
    const double eighth = 30.0 / tempo;
    StereoAudio audio;
    audio.rate = rate;
    const size_t frames = static_cast<size_t>((kEighths + 8) * eighth * rate);
    audio.left.assign(frames, 0.0);
    audio.right.assign(frames, 0.0);

    Noise noise;
    for (int step = 0; step < kEighths; ++step)
    {
        const size_t at = static_cast<size_t>(step * eighth * rate);
        if (kNotes[step] > 0)
        {
            const bool last = step == kEighths - 1;
            AddPluck(audio, at, kNotes[step], step % 2 == 0 ? 0.3 : 0.7, 1.0, last ? 8 * eighth : 2.0);
        }
        if (step % 4 == 2) AddBurst(audio, at, noise, 0.8);
    }

    double peak = 0.0;
    for (size_t i = 0; i < frames; ++i)
        peak = std::max({peak, std::abs(audio.left[i]), std::abs(audio.right[i])});
    const double gain = peak > 0.0 ? 0.5 / peak : 0.0;
    for (size_t i = 0; i < frames; ++i)
    {
        audio.left[i] *= gain;
        audio.right[i] *= gain;
    }
    return audio;
}
} // namespace render
