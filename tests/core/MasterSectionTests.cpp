#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <vector>

#include "common/Noise.h"
#include "core/LevelMeter.h"
#include "core/MasterSection.h"
#include "dsp/TimeBase.h"
#include "state/StateFields.h"

namespace
{
constexpr int kBlock = gBlockLen;

struct Stereo
{
    std::vector<double> l, r;
    explicit Stereo(int n = 0) : l(std::size_t(n), 0.0), r(std::size_t(n), 0.0) {}
    int Size() const { return int(l.size()); }
};

Stereo Noise(int n, double amp, std::uint32_t seed)
{
    Stereo s;
    s.l = testnoise::Noise(std::size_t(n), amp, seed);
    s.r = testnoise::Noise(std::size_t(n), amp, seed + 1);
    return s;
}

double Db(double dB)
{
    return std::pow(10.0, dB / 20.0);
}

// Drives the section as the engine's block does: clear the buses, let the "slots" fill the wet sum
// and the effect bus, scale the dry, then effect, width and output. Whole blocks only; `beforeBlock`
// runs ahead of each block with its number, as a parameter change would.
Stereo RunBlocks(MasterSection& m, const Stereo& dry, const Stereo& wet, const Stereo* mfx = nullptr,
                 double fade = 1.0, const std::function<void(int)>& beforeBlock = {})
{
    Stereo out(dry.Size());
    for (int off = 0; off + kBlock <= dry.Size(); off += kBlock)
    {
        if (beforeBlock) beforeBlock(off / kBlock);
        m.ClearBuses();
        std::copy_n(wet.l.begin() + off, kBlock, m.mWetL);
        std::copy_n(wet.r.begin() + off, kBlock, m.mWetR);
        if (mfx != nullptr) std::copy_n(mfx->l.begin() + off, kBlock, m.mMfxInL);
        if (mfx != nullptr) std::copy_n(mfx->r.begin() + off, kBlock, m.mMfxInR);
        m.ScaleDry(dry.l.data() + off, dry.r.data() + off);
        m.RunMasterFx();
        m.RunWidth();
        m.RunOutput(fade, out.l.data() + off, out.r.data() + off);
    }
    return out;
}

// Largest |out[i + delay] - (a * x.l[i] + b * x.r[i])| over the left channel and its mirror on the
// right (b * l + a * r).
double MixError(const Stereo& out, const Stereo& x, int delay, double a, double b)
{
    double err = 0.0;
    for (int i = 0; i + delay < out.Size(); ++i)
    {
        err = std::max(err, std::fabs(out.l[i + delay] - (a * x.l[i] + b * x.r[i])));
        err = std::max(err, std::fabs(out.r[i + delay] - (b * x.l[i] + a * x.r[i])));
    }
    return err;
}

// Stand-in master effect: doubles its bus in place.
class Doubler : public DSPShell
{
  public:
    void Process() override
    {
        for (int k = 0; k < kBlock; ++k)
        {
            mOut1[k] = 2.0 * mIn1[k];
            mOut2[k] = 2.0 * mIn2[k];
        }
    }
};

class MasterSectionTest : public ::testing::Test
{
  protected:
    void SetUp() override { UseRate(44100.0); }
    void TearDown() override { SetTimeBase(44100.0); }

    // A wet-only section at unity: Wet 100 %, Dry 0, Output 0 dB, limiter off.
    void UseRate(double rate)
    {
        SetTimeBase(rate);
        master.SetWetLevel(100.0);
        master.SetDryLevel(0.0);
        master.SetOutputLevel(0.0);
        master.SetLimiterBoost(0.0);
        master.Prepare();
        master.Clear();
    }

    StateFields fields;
    MasterSection master{fields};
    const Stereo silent = Stereo(60 * kBlock);
};

// Output = a L + b R on the left and b L + a R on the right, 1 ms late. 0 is mono at half of L + R;
// 100 skips the stage, bit for bit; 150 has mid 0.25 and side 0.5; 200 leaves half the difference.
TEST_F(MasterSectionTest, GlobalWidthLaw)
{
    const Stereo wet = Noise(40 * kBlock, 0.5, 7);
    for (const auto& [width, a, b] : {std::tuple{0.0, 0.5, 0.5},
                                      {50.0, 0.75, 0.25},
                                      {100.0, 1.0, 0.0},
                                      {150.0, 0.75, -0.25},
                                      {200.0, 0.5, -0.5}})
    {
        master.Clear();
        master.SetGlobalWidth(width);
        const double err = MixError(RunBlocks(master, Stereo(wet.Size()), wet), wet, gLookAhead, a, b);
        EXPECT_LE(err, width == 100.0 ? 0.0 : 1e-15) << width;
    }
}

// Switching the limiter on again later is seamless: the run that switches it on at block 30 gives
// the output of the run that never switched it off (its look-ahead holds audio from the first
// stretch with it on).
TEST_F(MasterSectionTest, LimiterSwitchesOnSeamlessly)
{
    const Stereo quiet = Noise(60 * kBlock, 0.4, 3);
    Stereo outs[2];
    for (int run = 0; run < 2; ++run)
    {
        master.Clear();
        const auto modes = [&](int b)
        {
            if (b == 0) master.SetLimiterMode(kLimiterFast);
            if (b == 10) master.SetLimiterMode(kLimiterOff);
            if (b == 30 && run == 1) master.SetLimiterMode(kLimiterFast);
        };
        outs[run] = RunBlocks(master, silent, quiet, nullptr, 1.0, modes);
    }
    EXPECT_LT(MixError(outs[1], outs[0], 0, 1.0, 0.0), 1e-12);
}

// Dry-kill holds the dry at zero through changes of Dry Level and gives the last one back.
TEST_F(MasterSectionTest, DryKillHoldsTheDryAtZeroAndGivesItBack)
{
    const Stereo x = Noise(8 * kBlock, 0.2, 5), none(8 * kBlock);
    master.SetWetLevel(0.0);
    master.SetDryLevel(50.0);
    master.SetOutputLevel(-6.0);
    master.SetDryKill(true);
    master.SetDryLevel(80.0);
    EXPECT_LT(MixError(RunBlocks(master, x, none), x, gLookAhead, 0.0, 0.0), 1e-300);
    master.SetDryKill(false);
    EXPECT_LT(MixError(RunBlocks(master, x, none), x, gLookAhead, 0.8 * Db(-6.0), 0.0), 1e-12);
}

// OFF: the bus never reaches the output. A type without a module passes the bus: return = bus,
// wet += level x bus; a module works in place on the bus and its result is the return, unless
// bypassed. Back to OFF the return is cleared once.
TEST_F(MasterSectionTest, MasterEffectBusAndReturn)
{
    const int n = 8 * kBlock;
    const Stereo bus = Noise(n, 0.5, 21), none(n);
    master.SetMasterFxLevel(50.0);
    Doubler fx;
    const auto expectMix = [&](double gain, const char* what)
    { EXPECT_LT(MixError(RunBlocks(master, none, none, &bus), bus, gLookAhead, gain, 0.0), 1e-15) << what; };
    expectMix(0.0, "off");
    master.SetMasterFxType(40);
    expectMix(0.5, "no module");
    EXPECT_EQ(master.mMfxOutL[kBlock - 1], bus.l[n - 1]);
    EXPECT_EQ(master.mMfxOutR[0], bus.r[n - kBlock]);
    master.SetMasterFxModule(40, &fx);
    EXPECT_EQ(master.ActiveMasterFx(), &fx);
    expectMix(1.0, "doubler");
    EXPECT_EQ(master.mMfxOutL[3], 2.0 * bus.l[n - kBlock + 3]);
    master.SetMasterFxBypass(true);
    expectMix(0.5, "bypassed");
    master.SetMasterFxType(MasterSection::kMasterFxOff);
    EXPECT_EQ(master.ActiveMasterFx(), nullptr);
    expectMix(0.0, "off again");
    EXPECT_EQ(*std::max_element(master.mMfxOutL, master.mMfxOutL + kBlock), 0.0);
}

// The meter law's clamps, the bus meters (larger channel, 1.5 times hotter) and the output meter's
// ballistics at 96 kHz; the law between and the ballistics at 48 kHz are read off the editor on the
// engine.
TEST_F(MasterSectionTest, MeterLawClampsAndBusMeter)
{
    for (const auto& [level, shown] : {std::pair{0.0, 0.0}, {Db(-80.0), 0.0}, {3.0, 1.0}})
        EXPECT_NEAR(MeterLaw(level), shown, 1e-12) << level;
    const double l[kBlock] = {0.0, 0.05, -0.1};
    const double r[kBlock] = {0.0, -0.08};
    EXPECT_NEAR(PairMeterLaw(l, r, kBlock), 1.0 + 20.0 * std::log10(0.15) / 60.0, 1e-12);
    EXPECT_NEAR(SlotActivityLaw(-0.5), 3.0 / 3.25, 1e-15); // v = 0.75: 3 / (2.25 + 1)
    EXPECT_NEAR(master.TickOutputMeter(0, nullptr, kBlock), 0.0, 1e-12);
    // The output meter moves by exp(-2 pi / 40) a frame at 25 frames a second at this rate too: a
    // block peaking at -12 dB reads 0.8 (1 - c^10) after ten frames.
    UseRate(96000.0);
    master.Prepare(25.0);
    double host[kBlock] = {};
    host[17] = -Db(-12.0);
    double shown = 0.0;
    for (int k = 0; k < 10; ++k)
        shown = master.TickOutputMeter(1, host, kBlock);
    EXPECT_NEAR(shown, 0.8 * (1.0 - std::pow(std::exp(-2.0 * M_PI / 40.0), 10)), 1e-9);
}
} // namespace
