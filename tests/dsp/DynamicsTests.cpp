#include "common/FilterMeasure.h"
#include "dsp/Compressor.h"
#include "dsp/Dynamics.h"
#include "dsp/Envelope.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

using filtertest::RateGuard;

namespace
{
constexpr int kN = 32;
constexpr double kFloor = 0.001867442732;
constexpr double kScale = 0.998132557;
constexpr double kDbToLn = 0.1151292546497;

// Fixed point of the block mean square for a block whose own mean square is m.
const auto SettledMeanSquare = [](double m) { return (m * 0.015 + 1e-9) / 0.015; };

// An envelope whose detector sees the raw input, so that the level laws can be checked exactly.
struct PlainEnvelope
{
    Envelope env;
    double block[kN] = {};

    PlainEnvelope()
    {
        env.mLowCut.SetBypass(true);
        env.mHighCut.SetBypass(true);
        env.mIn1 = block;
    }
    // One block of constant level x with the detector already settled on it (x = 0: silence with
    // an empty detector), so that r is x from the first block.
    void Step(double x)
    {
        std::fill(block, block + kN, x);
        env.mMeanSquare = x == 0.0 ? 0.0 : SettledMeanSquare(x * x);
        env.Process();
    }
};

// Blocks the follower needs to climb from its floor to x by a factor g per block.
const auto BlocksToClimb = [](double x, double g)
{ return int(std::ceil(std::log(x / kFloor) / std::log(g))); };
} // namespace

TEST(Dynamics, RmsLevelMovesOnePointFivePercentOfTheGapPerBlock)
{
    // The gap to the settled value shrinks to 98.5 % per block, also at 96 kHz: a per-block law.
    RateGuard guard;
    SetTimeBase(96000.0);
    Dynamics d;
    const std::vector<double> ones(kN, 1.0);
    const double target = SettledMeanSquare(1.0);
    double prev = d.mMeanSquare;
    for (int b = 1; b <= 300; ++b)
    {
        const double r = d.RmsLevel(ones.data());
        ASSERT_NEAR((target - d.mMeanSquare) / (target - prev), 0.985, 1e-9) << "block " << b;
        ASSERT_NEAR(r, std::sqrt(1.0 - std::pow(0.985, b)), 1e-7) << "block " << b;
        prev = d.mMeanSquare;
    }
}

TEST(Envelope, FollowerRisesAndFallsWithAttackAndRelease)
{
    // At a rate away from 44.1 kHz, so that the times are seen to scale with it.
    RateGuard guard;
    const double rate = 96000.0;
    SetTimeBase(rate);
    PlainEnvelope p;
    p.env.SetAttack(10.0); // climbs over 20 ms, falls over 100 ms
    p.env.SetRelease(50.0);
    p.env.Reset();
    const double up = std::exp(2.0 * M_PI * 32.0 / (0.020 * rate)),
                 down = std::exp(-2.0 * M_PI * 32.0 / (0.100 * rate));
    // Rise towards a level of 1: the first block lifts the empty state to the floor, then a factor
    // per block, capped at the level; 20 ms to the top within a block.
    const int climb = BlocksToClimb(1.0, up);
    EXPECT_NEAR(climb * 32.0 / rate, 0.020, 32.0 / rate);
    for (int b = 1; b <= climb + 5; ++b)
    {
        p.Step(1.0);
        const double expected = std::min(kFloor * std::pow(up, b - 1), p.env.mRms);
        ASSERT_NEAR(p.env.mFollow, expected, 1e-12 * expected) << "block " << b;
    }
    EXPECT_NEAR(p.env.mFollow, 1.0, 1e-6);
    // Fall in silence: a factor per block down to the floor, which it reaches after 100 ms.
    const double top = p.env.mFollow;
    const int fall = BlocksToClimb(top, 1.0 / down);
    for (int b = 1; b <= fall + 5; ++b)
    {
        p.Step(0.0);
        ASSERT_NEAR(p.env.mFollow, std::max(top * std::pow(down, b), kFloor), 1e-12) << "block " << b;
    }
    EXPECT_NEAR(fall * 32.0 / rate, 0.100, 32.0 / rate);
    EXPECT_TRUE(p.env.mFollow == kFloor && std::fabs(p.env.mScalarOut) < 1e-15);
}

TEST(Envelope, FollowerOutputCurve)
{
    // Settled at a level r the output is v = (r - floor) * 0.998132557 * 1.43, through the soft
    // knee v / (v + 0.03) * 1.01 unless linear, times the depth; the output block settles on it.
    for (bool linear : {false, true})
        for (double level : {0.05, 1.0})
        {
            PlainEnvelope p;
            p.env.SetLinear(linear);
            p.env.SetDepth(0.5);
            for (int b = 0; b < 200; ++b)
                p.Step(level);
            double v = (std::sqrt(SettledMeanSquare(level * level) - 1e-9) - kFloor) * kScale * 1.43;
            if (!linear) v = v / (v + 0.03) * 1.01;
            EXPECT_TRUE(std::fabs(p.env.mEnvOut - v) < 1e-12 &&
                        std::fabs(p.env.mScalarOut - 0.5 * v) < 1e-12 &&
                        std::fabs(p.env.mOut[kN - 1] - 0.5 * v) < 1e-6)
                << linear << " " << level;
        }
}

TEST(Envelope, GateAttackHoldReleaseAndRetrigger)
{
    // Attack: a straight ramp of 32 / (10 ms) per block up to 1; above the threshold the level holds
    // at exactly 1, and below it for about 20 ms more (counted from the last loud block); then it
    // falls by 32 / (50 ms) per block to 0. A phase that lands on 1 within rounding may take one
    // block more. The gate speaks through the scalar only.
    RateGuard guard;
    const double rate = 48000.0;
    SetTimeBase(rate);
    PlainEnvelope p;
    p.env.SetGateMode(true);
    p.env.SetThreshold(0.2);
    p.env.SetDepth(0.8);
    p.env.SetAttack(5.0);
    p.env.SetHold(20.0);
    p.env.SetRelease(25.0);
    p.env.Reset();
    const double up = 32.0 / (0.010 * rate), down = 32.0 / (0.050 * rate);
    for (int b = 0; b < 5; ++b)
        p.Step(0.1); // below the threshold: idle
    EXPECT_EQ(p.env.mScalarOut, 0.0);
    int b = 1;
    for (p.Step(0.5); p.env.mEnvOut < 1.0; p.Step(0.5), ++b)
        ASSERT_TRUE(std::fabs(p.env.mEnvOut - b * up) < 1e-12 &&
                    std::fabs(p.env.mScalarOut - 0.8 * b * up) < 1e-12)
            << "attack block " << b;
    EXPECT_TRUE(b >= std::ceil(1.0 / up) && b <= std::ceil(1.0 / up) + 1) << "attack blocks " << b;
    for (int k = 0; k < 400; ++k, p.Step(0.5))
        ASSERT_TRUE(p.env.mEnvOut == 1.0 && p.env.mOut[0] == 0.0) << "hold block " << k;
    const int holdBlocks = int(std::ceil(0.020 * rate / 32.0)) - 1;
    int held = 0, m = 1;
    for (p.Step(0.0); p.env.mEnvOut == 1.0; p.Step(0.0))
        ++held;
    EXPECT_TRUE(held >= holdBlocks && held <= holdBlocks + 1) << "hold blocks " << held;
    for (; p.env.mGateState != Envelope::kGateIdle; p.Step(0.0), ++m)
        ASSERT_NEAR(p.env.mEnvOut, 1.0 - m * down, 1e-12) << "release block " << m;
    ASSERT_NEAR(p.env.mEnvOut, 1.0 - m * down, 1e-12) << "last release block";
    EXPECT_TRUE(m >= std::ceil(1.0 / down) - 1 && m <= std::ceil(1.0 / down)) << "release blocks " << m;
    p.Step(0.0);
    EXPECT_TRUE(p.env.mEnvOut == 0.0 && p.env.mGateState == Envelope::kGateIdle);
    // A loud block while releasing restarts the attack from the releasing level, not from zero.
    p.env.SetHold(1.0);
    for (int k = 0; k < 70; ++k)
        p.Step(k < 40 ? 0.5 : 0.0);
    const double released = p.env.mEnvOut;
    p.Step(0.5);
    p.Step(0.5);
    EXPECT_TRUE(released > 0.3 && released < 0.9 && std::fabs(p.env.mEnvOut - (released - down + up)) < 1e-12)
        << released << " then " << p.env.mEnvOut;
}

TEST(Envelope, DetectorBandFollowsTheCutControls)
{
    // The low cut is the high-pass and the high cut the low-pass: a 100 Hz and a 5 kHz tone are
    // told apart by whichever corner is moved to 1 kHz (control 0.5 on 50 Hz .. 20 kHz).
    // Both tones pass the open band at the RMS of a sine; each corner at 1 kHz removes one of them.
    for (const auto& [lowCut, highCut] : {std::pair{0.0, 1.0}, {0.5, 1.0}, {0.0, 0.5}})
        for (const double hz : {100.0, 5000.0})
        {
            Envelope env;
            env.SetLowCutFreq(lowCut);
            env.SetHighCutFreq(highCut);
            env.SetLinear(true);
            double block[kN];
            env.mIn1 = block;
            for (long t = 0; t < 2000 * kN; env.Process())
                for (int i = 0; i < kN; ++i, ++t)
                    block[i] = std::sin(2.0 * M_PI * hz * double(t) / 44100.0);
            const bool passes = !(lowCut == 0.5 && hz == 100.0) && !(highCut == 0.5 && hz == 5000.0);
            EXPECT_NEAR(env.mRms, passes ? std::sqrt(0.5) : 0.0, passes ? 0.05 : 0.014)
                << lowCut << highCut << hz;
        }
}

namespace
{
// A sine of period 16 samples: every 32-sample block holds two whole periods, so the detector
// sees a steady mean square of A^2 / 2.
// The phase is taken modulo the period so that every block is bit-identical: the follower reacts
// to a level that dips by one rounding step with a whole release step.
const auto Sine16 = [](long t, double a)
{ return a * std::sin(2.0 * M_PI * double(((t % 16) + 16) % 16) / 16.0); };

// Expected settled gain for a steady RMS r, from the law: dB over the threshold through the
// follower's rescale, times (ratio - 1) / ratio, with the makeup.
double SettledGain(double r, double threshold, double ratio, double makeup)
{
    const double over = std::max(20.0 * std::log10(r / threshold), 0.0);
    const double reduction = (std::max(over, kFloor) - kFloor) * kScale * (ratio - 1.0) / ratio;
    return std::exp(-reduction * kDbToLn) * std::pow(10.0, makeup * 24.0 / 20.0);
}
} // namespace

TEST(Compressor, SettlesOnTheGainItsRatioGivesAndResetEmptiesTheLookAhead)
{
    RateGuard guard;
    const std::array<double, 5> cases[] = {
        {44100.0, 1.0, 0.1, 4.0, 0.0},  {44100.0, 0.5, 0.25, 2.0, 0.0}, {44100.0, 1.0, 0.05, 10.0, 0.0},
        {44100.0, 1.0, 0.1, 1.0, 0.0},  {44100.0, 0.1, 0.5, 8.0, 0.0},  {44100.0, 0.8, 0.2, 3.0, 0.5},
        {96000.0, 1.0, 0.1, 4.0, 0.25},
    };
    for (const auto& [rate, amp, threshold, ratio, makeup] : cases)
    {
        SetTimeBase(rate);
        Compressor comp;
        for (const auto& [index, value] :
             {std::pair{0, threshold}, {1, ratio}, {2, 1.0}, {3, 20.0}, {4, makeup}})
            comp.SetParam(index, value);
        double in[kN], out[kN];
        comp.mIn1 = in;
        comp.mOut1 = out;
        long t = 0;
        for (int b = 0; b < 3000; ++b)
        {
            for (int i = 0; i < kN; ++i, ++t)
                in[i] = Sine16(t, amp);
            comp.Process();
        }
        const double gain =
            SettledGain(std::sqrt(SettledMeanSquare(amp * amp / 2.0) - 1e-9), threshold, ratio, makeup);
        // Output = gain x the input of 10 ms before, sample by sample.
        const int la = static_cast<int>(rate * 0.01);
        for (int i = 0; i < kN; ++i)
            ASSERT_NEAR(out[i], gain * Sine16(t - kN + i - la, amp), 1e-9 * amp)
                << rate << " thr " << threshold << " ratio " << ratio;
        // Reset empties the look-ahead: audio still inside it must not come out afterwards.
        comp.Reset();
        std::fill(in, in + kN, 0.0);
        for (int b = 0; b <= la / kN + 1; ++b)
        {
            comp.Process();
            ASSERT_TRUE(std::all_of(out, out + kN, [](double v) { return v == 0.0; })) << b;
        }
    }
    // The worked case: 1.0 peak (-3 dB RMS) over a -20 dB threshold at 4:1 takes 12.7 dB off.
    EXPECT_NEAR(20.0 * std::log10(SettledGain(std::sqrt(0.5), 0.1, 4.0, 0.0)), -12.72, 0.01);
}
