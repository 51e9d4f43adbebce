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

// Every effect the factory builds, driven through its knob laws: at its defaults it passes
// signal, and at every corner of its knobs (with and without full-depth modulation), at the
// lowest and highest rates, loud noise and the silence after it give a finite, bounded output.
namespace
{
using testnoise::NoiseSource;

struct RateGuard
{
    ~RateGuard() { SetTimeBase(44100.0); }
};

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

TEST(FxFactory, BuildsEveryTableTypeAndNothingElse)
{
    for (const FxTypeInfo& info : FxTypeTable())
        for (bool isRight : {false, true})
        {
            std::unique_ptr<DSPShell> m = CreateFxModule(info.id, isRight);
            ASSERT_EQ(m != nullptr, info.id != 0) << info.id;
            EXPECT_TRUE(m == nullptr || m->mChannelSign == (isRight ? -1.0 : 1.0)) << info.id;
        }
    EXPECT_EQ(CreateFxModule(7, false), nullptr);
    EXPECT_EQ(CreateFxModule(38, true), nullptr);
    for (int type = 36; type < 48; ++type)
        EXPECT_EQ(CreateMasterFxModule(type) != nullptr, type >= 39 && type <= 45) << type;
}

TEST(FxFactory, SlotTypesPassSignalAtDefaults)
{
    for (const FxTypeInfo& info : FxTypeTable())
        for (bool isRight : {false, true})
        {
            if (info.id == 0) continue;
            std::unique_ptr<DSPShell> m = CreateFxModule(info.id, isRight);
            m->SetBypass(false);
            for (int p = 0; p < kFxParams; ++p)
                m->SetParam(p, FxModuleValue(info.id, p, info.defaults[p] * 100.0));
            const std::vector<double> y = RunNoise(*m, 44100 / gBlockLen, 0.5, 12345u, false);
            EXPECT_TRUE(AllFinite(y)) << info.id;
            EXPECT_LT(testmeasure::Peak(y), 20.0) << info.id << (isRight ? " right" : " left");
            EXPECT_GT(testmeasure::Rms(y), 1e-3) << info.id << (isRight ? " right" : " left");
        }
}

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

TEST(FxFactory, MasterTypesPassSignalAndStayFiniteAtKnobCorners)
{
    RateGuard guard;
    for (double rate : {32000.0, 96000.0})
    {
        SetTimeBase(rate);
        for (int type = 39; type <= 45; ++type)
            for (int corner = -1; corner < 1 << kMasterFxKnobs;
                 ++corner) // -1: every knob at 50 %, for a second
            {
                std::unique_ptr<DSPShell> m = CreateMasterFxModule(type);
                m->Init();
                for (int p = 0; p < kMasterFxKnobs; ++p)
                {
                    const MasterFxSetting s = MasterFxParam(type, p,
                                                            corner < 0          ? 50.0
                                                            : (corner >> p) & 1 ? 100.0
                                                                                : 0.0);
                    m->SetParam(s.id, s.value);
                }
                NoiseSource noise;
                double left[gBlockLen], right[gBlockLen];
                m->mIn1 = m->mOut1 = left;
                m->mIn2 = m->mOut2 = right;
                std::vector<double> y;
                for (int b = 0; b < int((corner < 0 ? 1.0 : 0.25) * rate) / gBlockLen; ++b)
                {
                    for (int i = 0; i < gBlockLen; ++i)
                        left[i] = noise.Next(0.5), right[i] = noise.Next(0.5);
                    m->Process();
                    y.insert(y.end(), left, left + gBlockLen);
                    y.insert(y.end(), right, right + gBlockLen);
                }
                ASSERT_TRUE(AllFinite(y)) << type << " corner " << corner << " rate " << rate;
                EXPECT_LT(testmeasure::Peak(y), 100.0) << type << " corner " << corner;
                EXPECT_TRUE(corner >= 0 || testmeasure::Rms(y) > 1e-4) << type << " at " << rate;
            }
    }
}

namespace
{
// Gain in dB of a master module at `hz`, left channel, with its four knobs at `percent`.
double MasterGainDb(int type, const double (&percent)[kMasterFxKnobs], double hz)
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
    const double w = 2.0 * std::numbers::pi * hz / 44100.0;
    double inPower = 0.0, outPower = 0.0;
    for (int b = 0, n = 0; b < 2 * 44100 / gBlockLen; ++b)
    {
        double in[gBlockLen];
        for (int i = 0; i < gBlockLen; ++i, ++n)
            in[i] = left[i] = right[i] = 0.25 * std::sin(w * n);
        m->Process();
        for (int i = 0; b >= 44100 / gBlockLen && i < gBlockLen; ++i)
            inPower += in[i] * in[i], outPower += left[i] * left[i];
    }
    return 10.0 * std::log10(outPower / inPower);
}
} // namespace

TEST(FxFactory, MasterEqualiserKnobsGiveTheirGains)
{
    // The knob laws and the equalisers agree on units: a gain knob at 100 % lifts its band by
    // 18 dB, at 0 % cuts it by 18 dB, at 50 % leaves it flat.
    struct Row
    {
        int type;
        double knobs[kMasterFxKnobs];
        double hz, dB, tolerance;
    };
    const Row rows[] = {
        {42, {100.0, 50.0, 50.0, 50.0}, 30.0, 18.0, 0.1},
        {42, {50.0, 50.0, 50.0, 0.0}, 16000.0, -18.0, 0.1},
        {42, {50.0, 50.0, 50.0, 50.0}, 1000.0, 0.0, 0.01},
        {42, {50.0, 50.0, 100.0, 50.0}, 2750.0, 18.0, 0.05},
        {43, {0.0, 5.0, 50.0, 50.0}, 1047.5, -18.0, 0.05},
    };
    for (const Row& r : rows)
        EXPECT_NEAR(MasterGainDb(r.type, r.knobs, r.hz), r.dB, r.tolerance)
            << r.type << " at " << r.hz << " Hz";
}
