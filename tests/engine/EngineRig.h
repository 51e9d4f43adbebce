#pragma once
// A whole plug-in driven through ProcessDoubleReplacing in host calls of any size, the few
// measurements the engine tests make on its output, and the engine's private state that no host
// call shows. Shared by the engine tests.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <numbers>
#include <vector>

#include "common/Measure.h"
#include "common/Noise.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

class QuorvexProbe
{
  public:
    static void SetConstructing(Quorvex& plug, bool on) { plug.mConstructing = on; }
    static Slot& SlotAt(Quorvex& plug, int index) { return plug.mSlots[index]; }
    // A modulator's buffer in the source bank, for tests that stand in for the modulator.
    static double* SourceBuffer(Quorvex& plug, int index) { return plug.mModBank.Buffer(index); }
    static EffectRack& Effects(Quorvex& plug) { return plug.mEffects; }
};

namespace engine_rig
{
constexpr int kBlock = 32; // the engine's internal block
constexpr double kRate = 48000.0;
constexpr int kMs = 48; // 1 ms at 48 kHz

struct Stereo
{
    std::vector<double> l, r;
    // n samples of `value` on both sides.
    explicit Stereo(std::size_t n = 0, double value = 0.0) : l(n, value), r(n, value) {}
    int Size() const { return static_cast<int>(l.size()); }
    const std::vector<double>& Side(int side) const { return side == 0 ? l : r; }
    bool operator==(const Stereo&) const = default;
};

// n samples of noise, then silence up to `length` samples when that is longer.
inline Stereo Noise(int n, double amplitude, std::uint32_t seed, int length = 0)
{
    Stereo s(static_cast<std::size_t>(std::max(n, length)));
    testnoise::NoiseSource noise{seed};
    for (int i = 0; i < n; ++i)
    {
        s.l[i] = noise.Next(amplitude);
        s.r[i] = noise.Next(amplitude);
    }
    return s;
}

// n samples of a sine of `hz` at 48 kHz on both sides.
inline Stereo Sine(int n, double hz, double amplitude)
{
    Stereo s(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        s.l[i] = s.r[i] = amplitude * std::sin(2.0 * std::numbers::pi * hz * i / kRate);
    return s;
}

// Index of the largest magnitude in x[from, to), both cut to the signal.
inline int PeakIndex(const std::vector<double>& x, int from, int to)
{
    from = std::clamp(from, 0, static_cast<int>(x.size()) - 1);
    int best = from;
    for (int i = from; i < std::min(to, static_cast<int>(x.size())); ++i)
        if (std::abs(x[i]) > std::abs(x[best])) best = i;
    return best;
}

// Largest magnitude of either side in [from, to).
inline double Peak(const Stereo& s, int from = 0, int to = 1 << 30)
{
    const auto begin = static_cast<std::size_t>(from), end = static_cast<std::size_t>(std::min(to, s.Size()));
    return begin < end ? std::max(testmeasure::Peak(s.l, begin, end), testmeasure::Peak(s.r, begin, end))
                       : 0.0;
}

struct Releaser
{
    void operator()(Quorvex* plug) const { plug->release(); }
};
using QuorvexPtr = std::unique_ptr<Quorvex, Releaser>;

// Runs `in` through the plug in host calls of `chunk` frames (the last may be shorter), with
// `sidechain` (mono, on both sidechain inputs) when given. With `zeroCalls` a call of zero frames
// goes before every call; `after` (when given) is called after each call with its first frame.
inline Stereo Stream(Quorvex& plug, const Stereo& in, int chunk, bool zeroCalls = false,
                     const std::vector<double>* sidechain = nullptr,
                     const std::function<void(int)>& after = {})
{
    Stereo out(static_cast<std::size_t>(in.Size()));
    std::vector<double> silence(static_cast<std::size_t>(chunk), 0.0);
    for (int done = 0; done < in.Size(); done += chunk)
    {
        const int n = std::min(chunk, in.Size() - done);
        double* side = sidechain != nullptr ? const_cast<double*>(sidechain->data()) + done : silence.data();
        double* inputs[4] = {const_cast<double*>(in.l.data()) + done, const_cast<double*>(in.r.data()) + done,
                             side, side};
        double* outputs[2] = {out.l.data() + done, out.r.data() + done};
        if (zeroCalls) plug.ProcessDoubleReplacing(inputs, outputs, 0);
        plug.ProcessDoubleReplacing(inputs, outputs, n);
        if (after) after(done);
    }
    return out;
}

// One plug-in at a host rate, its parameters set as the host sets them.
class Engine
{
  public:
    explicit Engine(double rate = kRate) : mPlug(new Quorvex()) { mPlug->SetSampleRate(rate); }
    void Set(int id, double value)
    {
        mPlug->GetParam(id)->value = value;
        mPlug->OnParamChange(id);
    }
    // A table of settings, applied in order.
    void Set(std::initializer_list<std::pair<int, double>> settings)
    {
        for (const auto& [id, value] : settings)
            Set(id, value);
    }
    double Get(int id) { return mPlug->GetParam(id)->value; }
    Stereo Run(const Stereo& in, int chunk = kBlock) { return Stream(*mPlug, in, chunk); }
    double* Source(int index) { return QuorvexProbe::SourceBuffer(*mPlug, index); }
    Quorvex& Plug() { return *mPlug; }

  private:
    QuorvexPtr mPlug;
};

// Slot 1 alone, its delay off (the stage passes straight through), unity gains, no dry, at 48 kHz
// (stereo input): the wet sum is slot 1's output stage, and it leaves the plug-in 32 samples (the
// output ring) plus 1 ms later.
class Rig : public Engine
{
  public:
    Rig()
    {
        Set({{kSlotOn2, 0.0}, {kSlotOn3, 0.0}, {kSlotOn4, 0.0}, {kDelayOn1, 0.0}, {kInput1, 3.0}});
        Set({{kInputGain1, 0.0}, {kLevel1, 0.0}, {kDryLevel, 0.0}, {kWetLevel, 100.0}});
    }
};

// LFO `lfo` (0..3) held at depth x +1: the first half of a square (HALFPULSE, bipolar) at the
// slowest rate, which moves a couple of table points in a test's length.
inline void HoldLfo(Engine& rig, int lfo, double depthPercent)
{
    rig.Set({{kLFOOn1 + lfo, 1.0}, {kLFOWave1 + lfo, 18.0}, {kLFOPol1 + lfo, 2.0}});
    rig.Set({{kLFORate1 + lfo, 0.001}, {kLFOGlide1 + lfo, 1.0}, {kLFODepth1 + lfo, depthPercent}});
}
} // namespace engine_rig
