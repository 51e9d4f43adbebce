#include "dsp/TimeBase.h"
#include "fx/EffectTable.h"
#include "fx/FxFactory.h"
#include "fx/FxParamLaw.h"
#include "fx/MasterFxLaws.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace
{
constexpr int kSecondBlocks = 44100 / gBlockLen + 1;

// Deterministic white noise in -0.5..0.5.
struct Noise
{
    uint32_t state = 12345u;
    double Next()
    {
        state = state * 1664525u + 1013904223u;
        return static_cast<double>(state >> 8) / 16777216.0 - 0.5;
    }
};

struct Level
{
    double sumSquares = 0.0;
    double peak = 0.0;
    long count = 0;
    bool finite = true;
    void Add(const double* x)
    {
        for (int i = 0; i < gBlockLen; ++i)
        {
            finite = finite && std::isfinite(x[i]);
            peak = std::max(peak, std::fabs(x[i]));
            sumSquares += x[i] * x[i];
        }
        count += gBlockLen;
    }
    double Rms() const { return std::sqrt(sumSquares / static_cast<double>(count)); }
};
} // namespace

TEST(FxFactory, BuildsEveryTableTypeForBothChannels)
{
    SetTimeBase(44100.0);
    for (const FxTypeInfo& info : FxTypeTable())
    {
        std::unique_ptr<DSPShell> left = CreateFxModule(info.id, false);
        std::unique_ptr<DSPShell> right = CreateFxModule(info.id, true);
        if (info.id == 0)
        {
            EXPECT_EQ(left, nullptr);
            EXPECT_EQ(right, nullptr);
            continue;
        }
        ASSERT_NE(left, nullptr) << info.id;
        ASSERT_NE(right, nullptr) << info.id;
        EXPECT_EQ(left->mChannelSign, 1.0) << info.id;
        EXPECT_EQ(right->mChannelSign, -1.0) << info.id;
    }
    EXPECT_EQ(CreateFxModule(7, false), nullptr);
    EXPECT_EQ(CreateFxModule(38, true), nullptr);
    for (int type = 36; type < 48; ++type)
        EXPECT_EQ(CreateMasterFxModule(type) != nullptr, type >= 39 && type <= 45) << type;
}

// Every slot type, both channels, in place with its default knobs: a second of noise gives a
// finite, bounded output that still carries signal.
TEST(FxFactory, SlotTypesRunASecondOfNoiseAtDefaults)
{
    SetTimeBase(44100.0);
    for (const FxTypeInfo& info : FxTypeTable())
    {
        if (info.id == 0) continue;
        for (bool isRight : {false, true})
        {
            std::unique_ptr<DSPShell> module = CreateFxModule(info.id, isRight);
            ASSERT_NE(module, nullptr) << info.id;
            module->SetBypass(false);
            for (int p = 0; p < kFxParams; ++p)
                module->SetParam(p, FxModuleValue(info.id, p, info.defaults[p] * 100.0));
            double block[gBlockLen];
            module->mIn1 = block;
            module->mOut1 = block;
            Noise noise;
            Level level;
            for (int b = 0; b < kSecondBlocks; ++b)
            {
                for (double& x : block)
                    x = noise.Next();
                module->Process();
                level.Add(block);
            }
            EXPECT_TRUE(level.finite) << info.id << (isRight ? " right" : " left");
            EXPECT_LT(level.peak, 20.0) << info.id << (isRight ? " right" : " left");
            EXPECT_GT(level.Rms(), 1e-3) << info.id << (isRight ? " right" : " left");
        }
    }
}

TEST(FxFactory, MasterTypesRunASecondOfStereoNoise)
{
    SetTimeBase(44100.0);
    for (int type = 39; type <= 45; ++type)
    {
        std::unique_ptr<DSPShell> module = CreateMasterFxModule(type);
        ASSERT_NE(module, nullptr) << type;
        module->Init();
        for (int p = 0; p < kMasterFxKnobs; ++p)
        {
            const MasterFxSetting setting = MasterFxParam(type, p, 50.0);
            ASSERT_GE(setting.id, 0) << type << " " << p;
            module->SetParam(setting.id, setting.value);
        }
        double left[gBlockLen];
        double right[gBlockLen];
        module->mIn1 = left;
        module->mIn2 = right;
        module->mOut1 = left;
        module->mOut2 = right;
        Noise noise;
        Level levelL;
        Level levelR;
        for (int b = 0; b < kSecondBlocks; ++b)
        {
            for (int i = 0; i < gBlockLen; ++i)
            {
                left[i] = noise.Next();
                right[i] = noise.Next();
            }
            module->Process();
            levelL.Add(left);
            levelR.Add(right);
        }
        EXPECT_TRUE(levelL.finite && levelR.finite) << type;
        EXPECT_LT(std::max(levelL.peak, levelR.peak), 20.0) << type;
        EXPECT_GT(levelL.Rms(), 1e-3) << type;
        EXPECT_GT(levelR.Rms(), 1e-3) << type;
    }
}

namespace
{
// Gain in dB of a master module at `hz`, left channel, with its four knobs at `percent`.
double MasterGainDb(int type, const double (&percent)[kMasterFxKnobs], double hz)
{
    std::unique_ptr<DSPShell> module = CreateMasterFxModule(type);
    module->Init();
    for (int p = 0; p < kMasterFxKnobs; ++p)
    {
        const MasterFxSetting setting = MasterFxParam(type, p, percent[p]);
        module->SetParam(setting.id, setting.value);
    }
    double left[gBlockLen];
    double right[gBlockLen];
    module->mIn1 = left;
    module->mIn2 = right;
    module->mOut1 = left;
    module->mOut2 = right;
    const double w = 2.0 * std::numbers::pi * hz / 44100.0;
    double inPower = 0.0;
    double outPower = 0.0;
    for (int b = 0, n = 0; b < 2 * kSecondBlocks; ++b)
    {
        double in[gBlockLen];
        for (int i = 0; i < gBlockLen; ++i, ++n)
            in[i] = left[i] = right[i] = 0.25 * std::sin(w * n);
        module->Process();
        if (b < kSecondBlocks) continue; // settled after a second
        for (int i = 0; i < gBlockLen; ++i)
        {
            inPower += in[i] * in[i];
            outPower += left[i] * left[i];
        }
    }
    return 10.0 * std::log10(outPower / inPower);
}
} // namespace

// The knob laws and the equalisers agree on units: a gain knob at 100 % lifts its band by 18 dB,
// at 0 % cuts it by 18 dB, and at 50 % leaves it flat.
TEST(FxFactory, MasterEqualiserKnobsGiveTheirGains)
{
    SetTimeBase(44100.0);
    EXPECT_NEAR(MasterGainDb(42, {100.0, 50.0, 50.0, 50.0}, 30.0), 18.0, 0.1);
    EXPECT_NEAR(MasterGainDb(42, {50.0, 50.0, 50.0, 0.0}, 16000.0), -18.0, 0.1);
    EXPECT_NEAR(MasterGainDb(42, {50.0, 50.0, 50.0, 50.0}, 1000.0), 0.0, 0.01);
    // A peak at 2750 Hz (P2 = 50 %) raised by 18 dB.
    EXPECT_NEAR(MasterGainDb(42, {50.0, 50.0, 100.0, 50.0}, 2750.0), 18.0, 0.05);
    // Two-band: peak 1 at 1045 Hz (P2 = 5 %) cut by 18 dB.
    EXPECT_NEAR(MasterGainDb(43, {0.0, 5.0, 50.0, 50.0}, 1047.5), -18.0, 0.05);
}
