#pragma once
// A whole plug-in at 48 kHz driven in host calls of one internal block each, so a test can look
// at a slot's stages or at a modulator's buffer between blocks; with slot 1 alone sounding, its
// delay off and unity gains, the wet sum is slot 1's output stage. Shared by the engine tests.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "QuorvexProbe.h"
#include "common/Noise.h"
#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

namespace engine_rig
{
constexpr int kBlock = 32;
constexpr double kRate = 48000.0;
constexpr int kMs = 48; // 1 ms at 48 kHz

struct Releaser
{
    void operator()(Quorvex* plug) const { plug->release(); }
};

struct Stereo
{
    std::vector<double> l, r;
    explicit Stereo(std::size_t n = 0) : l(n, 0.0), r(n, 0.0) {}
    int Size() const { return static_cast<int>(l.size()); }
};

inline Stereo Noise(int n, double amplitude, std::uint32_t seed)
{
    Stereo s(static_cast<std::size_t>(n));
    testnoise::NoiseSource noise{seed};
    for (int i = 0; i < n; ++i)
    {
        s.l[i] = noise.Next(amplitude);
        s.r[i] = noise.Next(amplitude);
    }
    return s;
}

inline double Peak(const Stereo& s, int from)
{
    double peak = 0.0;
    for (int i = from; i < s.Size(); ++i)
        peak = std::max({peak, std::abs(s.l[i]), std::abs(s.r[i])});
    return peak;
}

inline int PeakIndex(const std::vector<double>& x, int from, int to)
{
    int best = from;
    for (int i = from; i < to; ++i)
        if (std::abs(x[i]) > std::abs(x[best])) best = i;
    return best;
}

// Slot 1 alone, its delay off (the stage passes straight through), unity gains, no dry.
class Rig
{
  public:
    Rig() : mPlug(new Quorvex())
    {
        mPlug->SetSampleRate(kRate);
        for (int s = 1; s < 4; ++s)
            Set(kSlotOn1 + s, 0.0);
        Set(kDelayOn1, 0.0);
        Set(kInput1, 3.0); // stereo
        Set(kInputGain1, 0.0);
        Set(kLevel1, 0.0);
        Set(kDryLevel, 0.0);
        Set(kWetLevel, 100.0);
    }

    void Set(int id, double value)
    {
        mPlug->GetParam(id)->value = value;
        mPlug->OnParamChange(id);
    }

    // Runs `in` in calls of one block; `stage` (when given) collects slot 1's output stage.
    Stereo Run(const Stereo& in, Stereo* stage = nullptr)
    {
        Stereo out(static_cast<std::size_t>(in.Size()));
        if (stage != nullptr) *stage = Stereo(static_cast<std::size_t>(in.Size()));
        double silence[kBlock] = {};
        for (int done = 0; done + kBlock <= in.Size(); done += kBlock)
        {
            double* inputs[4] = {const_cast<double*>(in.l.data()) + done,
                                 const_cast<double*>(in.r.data()) + done, silence, silence};
            double* outputs[2] = {out.l.data() + done, out.r.data() + done};
            mPlug->ProcessDoubleReplacing(inputs, outputs, kBlock);
            if (stage == nullptr) continue;
            Slot& slot = QuorvexProbe::SlotAt(*mPlug, 0);
            std::copy_n(slot.StageL(Slot::kStageOut), kBlock, stage->l.begin() + done);
            std::copy_n(slot.StageR(Slot::kStageOut), kBlock, stage->r.begin() + done);
        }
        return out;
    }

    double* Source(int index) { return QuorvexProbe::SourceBuffer(*mPlug, index); }
    Quorvex& Plug() { return *mPlug; }

  private:
    std::unique_ptr<Quorvex, Releaser> mPlug;
};
// LFO `lfo` (0..3) held at depth x +1: the first half of a square (HALFPULSE, bipolar) at the
// slowest rate, which moves a couple of table points in a test's length. Any rig with Set(id, v).
template <typename AnyRig> void HoldLfo(AnyRig& rig, int lfo, double depthPercent)
{
    rig.Set(kLFOOn1 + lfo, 1.0);
    rig.Set(kLFOWave1 + lfo, 18.0); // HALFPULSE
    rig.Set(kLFOPol1 + lfo, 2.0);   // BI
    rig.Set(kLFORate1 + lfo, 0.001);
    rig.Set(kLFOGlide1 + lfo, 1.0);
    rig.Set(kLFODepth1 + lfo, depthPercent);
}
} // namespace engine_rig
