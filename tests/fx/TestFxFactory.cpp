#include "common/FilterMeasure.h"
#include "common/Measure.h"
#include "common/Noise.h"
#include "dsp/TimeBase.h"
#include "fx/EffectTable.h"
#include "fx/FxFactory.h"
#include "fx/FxParamLaw.h"
#include "fx/MasterFxLaws.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

// Every effect the factory builds, driven through its knob laws: at every corner of its knobs (with
// and without full-depth modulation), at the lowest and highest rates, loud noise and the silence
// after it give a finite, bounded output. That each type passes signal at its knobs' usual places
// the golden renders, which run every type in every position, show.
namespace
{
using testnoise::NoiseSource;

using filtertest::RateGuard;

// Runs `blocks` blocks of noise of the given amplitude (then as many of silence when `tail`)
// through a slot module in place; returns the output.
std::vector<double> RunNoise(DSPShell& m, int blocks, double amplitude, std::uint32_t seed, bool tail)
{
    NoiseSource noise{seed};
    std::vector<double> out;
    double block[gBlockLen];
    m.mIn1 = block;
    m.mOut1 = block;
    for (int b = 0; b < (tail ? 2 : 1) * blocks; ++b)
    {
        for (double& x : block)
            x = b < blocks ? noise.Next(amplitude) : 0.0;
        m.Process();
        out.insert(out.end(), block, block + gBlockLen);
    }
    return out;
}

bool AllFinite(const std::vector<double>& y)
{
    return std::all_of(y.begin(), y.end(), [](double v) { return std::isfinite(v); });
}
} // namespace

TEST(FxFactory, SlotTypesStayFiniteAtKnobCornersAndRateLimits)
{
    RateGuard guard;
    const double plus = 1.0, minus = -1.0, depth = 1.0;
    for (double rate : {32000.0, 96000.0})
    {
        SetTimeBase(rate);
        for (const FxTypeInfo& info : FxTypeTable())
            for (int corner = 0; info.id != 0 && corner < 64; ++corner)
            {
                // Bits 0..4 pick each knob's bottom or top, bit 5 adds modulation pulling away from it.
                std::unique_ptr<DSPShell> m = CreateFxModule(info.id, (corner * 37) % 3 == 0);
                for (int p = 0; p < kFxParams; ++p)
                {
                    const bool top = (corner >> p) & 1;
                    m->SetParam(p, FxModuleValue(info.id, p, top ? 100.0 : 0.0));
                    if (corner & 32)
                    {
                        m->SetModSource(p, top ? &minus : &plus);
                        m->SetModDepth(p, &depth);
                    }
                }
                m->Reset();
                const std::vector<double> y =
                    RunNoise(*m, int(0.05 * rate) / gBlockLen, 4.0, 7u + corner, true);
                ASSERT_TRUE(AllFinite(y)) << "type " << info.id << " corner " << corner << " rate " << rate;
                EXPECT_LT(testmeasure::Peak(y), 1000.0) << "type " << info.id << " corner " << corner;
            }
    }
}

namespace
{
// A master module of `type` with its four knobs at `percent`, run in place for `seconds` on the
// stereo input in(n); returns the left then right output of each block, one after the other.
template <typename Input>
std::vector<double> RunMaster(int type, const double (&percent)[kMasterFxKnobs], double seconds, Input in)
{
    std::unique_ptr<DSPShell> m = CreateMasterFxModule(type);
    m->Init();
    for (int p = 0; p < kMasterFxKnobs; ++p)
    {
        const MasterFxSetting s = MasterFxParam(type, p, percent[p]);
        m->SetParam(s.id, s.value);
    }
    double left[gBlockLen], right[gBlockLen];
    m->mIn1 = m->mOut1 = left;
    m->mIn2 = m->mOut2 = right;
    std::vector<double> y;
    for (int b = 0, n = 0; b < int(seconds * gSampleRate) / gBlockLen; ++b)
    {
        for (int i = 0; i < gBlockLen; ++i, ++n)
            in(n, left[i], right[i]);
        m->Process();
        y.insert(y.end(), left, left + gBlockLen);
        y.insert(y.end(), right, right + gBlockLen);
    }
    return y;
}
} // namespace

TEST(FxFactory, MasterTypesStayFiniteAtKnobCorners)
{
    RateGuard guard;
    for (double rate : {32000.0, 96000.0})
    {
        SetTimeBase(rate);
        for (int type = 39; type <= 45; ++type)
            for (int corner = 0; corner < 1 << kMasterFxKnobs; ++corner)
            {
                double knobs[kMasterFxKnobs];
                for (int p = 0; p < kMasterFxKnobs; ++p)
                    knobs[p] = (corner >> p) & 1 ? 100.0 : 0.0;
                NoiseSource noise;
                const std::vector<double> y = RunMaster(type, knobs, 0.25,
                                                        [&](int, double& l, double& r)
                                                        {
                                                            l = noise.Next(0.5);
                                                            r = noise.Next(0.5);
                                                        });
                ASSERT_TRUE(AllFinite(y)) << type << " corner " << corner << " rate " << rate;
                EXPECT_LT(testmeasure::Peak(y), 100.0) << type << " corner " << corner;
            }
    }
}

TEST(FxFactory, MasterEqualiserKnobsGiveTheirGains)
{
    // The knob laws and the equalisers agree on units: a gain knob at 100 % lifts its band by
    // 18 dB, at 0 % cuts it by 18 dB, at 50 % leaves it flat. Both channels carry the same tone.
    struct Row
    {
        int type;
        double knobs[kMasterFxKnobs];
        double hz, dB, tolerance;
    };
    const Row rows[] = {
        {42, {100.0, 50.0, 50.0, 50.0}, 30.0, 18.0, 0.1},
        {42, {50.0, 50.0, 50.0, 0.0}, 16000.0, -18.0, 0.1},
        {42, {50.0, 50.0, 100.0, 50.0}, 2750.0, 18.0, 0.05},
        {43, {0.0, 5.0, 50.0, 50.0}, 1047.5, -18.0, 0.05},
        {44, {50.0, 50.0, 100.0, 100.0}, 7500.0, 9.0, 0.1}, // a shelf has half its gain at its corner
    };
    for (const Row& r : rows)
    {
        const double w = 2.0 * std::numbers::pi * r.hz / gSampleRate;
        const auto sine = [w](int n, double& l, double& r) { l = r = 0.25 * std::sin(w * n); };
        const std::vector<double> y = RunMaster(r.type, r.knobs, 2.0, sine);
        const double dB = testmeasure::Db(testmeasure::Rms(y, y.size() / 2) / (0.25 / std::sqrt(2.0)));
        EXPECT_NEAR(dB, r.dB, r.tolerance) << r.type << " at " << r.hz << " Hz";
    }
}
