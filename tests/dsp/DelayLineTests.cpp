#include "common/Noise.h"
#include "dsp/MDelayLine.h"
#include "dsp/MLPF1a.h"
#include "dsp/MSVRAP1ModDelayLine.h"
#include "dsp/MSinOsc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace
{
constexpr double kPi = std::numbers::pi;

// A modulator that holds one value.
class ConstModulator : public MModulator
{
  public:
    explicit ConstModulator(float v) : mValue(v) {}
    float Tick() override { return mValue; }
    float mValue;
};

// Runs the owner's per-sample order on a modulated line: read, then write the sample of this step.
std::vector<float> RunLine(MSVRAP1ModDelayLine& line, const std::vector<float>& in)
{
    std::vector<float> out(in.size());
    for (size_t n = 0; n < in.size(); ++n)
    {
        out[n] = line.Process();
        line.Write(in[n]);
    }
    return out;
}

// DC group delay of the line for a head offset o = v * depth from the centre C: the head sits at
// slot floor(o) ahead of the centre and the all-pass with coefficient f adds (1 - f) / (1 + f) on
// top of the newer of the two samples it reads.
double ExpectedDelay(int centre, double o)
{
    const double k = std::floor(o);
    const double f = o - k;
    return centre - k - 1.0 + (1.0 - f) / (1.0 + f);
}
} // namespace

TEST(MDelayLine, ReadsTheSampleWrittenDelaySamplesEarlierAcrossTheWrap)
{
    for (int d : {1, 2, 37, 99, 100})
    {
        MDelayLine line(100);
        line.SetDelay(d);
        const int total = 7 * line.mSize + 13;
        for (int n = 0; n < total; ++n)
        {
            const float expected = n >= d ? float(n - d + 1) : 0.0f;
            ASSERT_EQ(line.ReadBehind(d), expected) << "d " << d << " n " << n;
            ASSERT_EQ(line.Read(), expected) << "d " << d << " n " << n;
            line.Write(float(n + 1));
        }
    }

    // A delay set while running applies from the next read; too long a delay takes the maximum.
    MDelayLine line(100);
    line.SetDelay(5);
    int n = 0;
    for (; n < 333; ++n)
    {
        line.Read();
        line.Write(float(n + 1));
    }
    line.SetDelay(500);
    for (; n < 450; ++n)
    {
        ASSERT_EQ(line.Read(), float(n - 100 + 1)) << n;
        line.Write(float(n + 1));
    }
    line.SetDelay(64);
    for (; n < 700; ++n)
    {
        ASSERT_EQ(line.Read(), float(n - 64 + 1)) << n;
        line.Write(float(n + 1));
    }

    // A new allocation limits the delay to its maximum; Clear empties the ring and keeps the delay:
    // silence until the new samples come through.
    line.Allocate(4);
    for (int k = 0; k < 30; ++k)
        line.Write(1.0f), line.Read();
    line.Clear();
    for (int k = 0; k < 10; ++k)
    {
        EXPECT_EQ(line.Read(), k < 4 ? 0.0f : 100.0f + float(k - 4)) << k;
        line.Write(100.0f + float(k));
    }
}

TEST(MSinOsc, StaysOnItsAmplitudeAndFrequencyOverTenMillionTicks)
{
    // A 2.3 Hz sine ticked every 50 samples at 44.1 kHz: period 44100 / (50 * 2.3) ticks.
    const double w = 2.0 * kPi * 50.0 * 2.3 / 44100.0;
    const double period = 2.0 * kPi / w;
    MSinOsc osc;
    osc.Setup(w, 0.3);

    const int total = 10'000'000;
    const int window = 1'000'000;
    float lo = 0.0f, hi = 0.0f;
    float late_hi = 0.0f, late_lo = 0.0f;
    double prev = 0.0;
    double firstCross = -1.0, lastCross = -1.0;
    int crossings = 0;
    for (int n = 0; n < total; ++n)
    {
        const float v = osc.Tick();
        lo = std::min(lo, v);
        hi = std::max(hi, v);
        if (n >= total - window)
        {
            late_lo = std::min(late_lo, v);
            late_hi = std::max(late_hi, v);
            if (n > total - window && prev < 0.0 && v >= 0.0f)
            {
                // Upward zero crossing, placed by linear interpolation between the two ticks.
                const double at = (n - 1) + (-prev) / (double(v) - prev);
                if (firstCross < 0.0) firstCross = at;
                lastCross = at;
                ++crossings;
            }
        }
        prev = v;
    }
    EXPECT_GE(lo, -1.0f);
    EXPECT_LE(hi, 1.0f);
    // The amplitude neither grows nor fades: late peaks still reach 1 to within a step's rounding.
    EXPECT_GT(late_hi, 0.9999f);
    EXPECT_LT(late_lo, -0.9999f);
    ASSERT_GT(crossings, 100);
    const double measured = (lastCross - firstCross) / (crossings - 1);
    EXPECT_NEAR(measured / period, 1.0, 1e-8) << measured << " vs " << period;
}

TEST(MLPF1a, NegativeFeedbackIsALowPassWithTheMeasuredGains)
{
    struct Case
    {
        float b, a;
    };
    for (Case c : {Case{0.4f, -0.6f}, Case{0.05f, -0.95f}, Case{0.5f, 0.5f}})
    {
        MLPF1a lp;
        lp.mIn = c.b;
        lp.mFb = c.a;

        // DC: the step response settles on b / (1 + a).
        float y = 0.0f;
        for (int n = 0; n < 2000; ++n)
            y = lp.Run(1.0f);
        const double dc = c.b / (1.0 + c.a);
        EXPECT_NEAR(y, dc, 1e-5 * dc) << c.a;

        // Magnitude at a few bin-exact frequencies against |b / (1 + a e^-jw)|.
        const int N = 1000;
        std::vector<double> mags;
        for (int bin : {10, 125, 250, 490, 500})
        {
            lp.Clear();
            const double wn = 2.0 * kPi * bin / N;
            double re = 0.0, im = 0.0;
            for (int n = 0; n < 2 * N; ++n)
            {
                const float out = lp.Run(float(std::cos(wn * n)));
                if (n >= N)
                {
                    re += out * std::cos(wn * n);
                    im += out * std::sin(wn * n);
                }
            }
            const double scale = bin == N / 2 ? 1.0 : 2.0; // Nyquist bin has no quadrature half
            const double measured = scale * std::hypot(re, im) / N;
            const double expected = c.b / std::hypot(1.0 + c.a * std::cos(wn), c.a * std::sin(wn));
            EXPECT_NEAR(measured, expected, 1e-4 * expected) << "a " << c.a << " bin " << bin;
            mags.push_back(measured);
        }
        if (c.a < 0.0f)
            EXPECT_TRUE(std::is_sorted(mags.rbegin(), mags.rend())) << "not a low-pass for a " << c.a;
        else
            EXPECT_TRUE(std::is_sorted(mags.begin(), mags.end())) << "not a high-pass for a " << c.a;
    }
}

TEST(MSVRAP1ModDelayLine, ConstantOffsetsGiveTheAllPassDelay)
{
    const int centre = 40;
    const int depth = 8;
    // Whole-sample offsets, ahead and behind: the impulse lands exactly at centre - offset, also when
    // the head position goes negative and takes the stepped-down integer with fraction 1.
    for (float v : {0.0f, 0.5f, -0.5f, 0.125f, -1.0f})
    {
        ConstModulator mod(v);
        MSVRAP1ModDelayLine line(60);
        line.SetInterval(50);
        line.SetModulator(&mod);
        line.SetCenterDelay(centre);
        line.SetDepth(depth);
        const int delay = centre - int(v * depth);
        std::vector<float> in(40 * line.mSize, 0.0f);
        for (size_t n = 0; n < in.size(); n += 211)
            in[n] = 1.0f;
        const std::vector<float> out = RunLine(line, in);
        for (size_t n = 0; n < out.size(); ++n)
            ASSERT_EQ(out[n], n >= size_t(delay) ? in[n - delay] : 0.0f) << "v " << v << " n " << n;
    }

    // Fractional offsets: the impulse response is an all-pass (unit sum and unit energy) whose centroid,
    // the DC group delay, follows the fraction-as-coefficient law rather than the linear one.
    for (float v : {0.03125f, 0.0625f, 0.09375f, -0.03125f, 0.71875f})
    {
        ConstModulator mod(v);
        MSVRAP1ModDelayLine line(60);
        line.SetInterval(50);
        line.SetModulator(&mod);
        line.SetCenterDelay(centre);
        line.SetDepth(depth);
        const int start = 500; // the head has wrapped a few times by then
        std::vector<float> in(start + 400, 0.0f);
        in[start] = 1.0f;
        const std::vector<float> out = RunLine(line, in);
        double sum = 0.0, energy = 0.0, moment = 0.0;
        for (size_t n = start; n < out.size(); ++n)
        {
            sum += out[n];
            energy += double(out[n]) * out[n];
            moment += double(n - start) * out[n];
        }
        const double o = double(v) * depth;
        EXPECT_NEAR(sum, 1.0, 1e-5) << v;
        EXPECT_NEAR(energy, 1.0, 1e-5) << v;
        EXPECT_NEAR(moment / sum, ExpectedDelay(centre, o), 1e-4) << "offset " << o;
    }
}

TEST(MSVRAP1ModDelayLine, AnExactNegativeHeadPositionStepsDownWithFractionOne)
{
    // Half-sample offset everywhere, except at the update whose read position is 0: there the head
    // lands on exactly -1, which takes the integer -2 with fraction 1, so the line runs
    // y[n] = x[n-C-2] + x[n-C-1] - y[n-1] and carries the all-pass state on as an alternation (a
    // head on -1 with fraction 0 would output x[n-C-1] exactly and drop it).
    struct PositionModulator : MModulator
    {
        const MSVRAP1ModDelayLine* line = nullptr;
        int ticks = 0, atZero = -1;
        float Tick() override
        {
            if (line->mReadPos == 0.0f && atZero < 0) atZero = ticks;
            return ticks++ == atZero ? -0.25f : 0.125f;
        }
    };
    const int centre = 40, interval = 50;
    PositionModulator mod;
    MSVRAP1ModDelayLine line(60);
    mod.line = &line;
    line.SetInterval(interval);
    line.SetModulator(&mod);
    line.SetCenterDelay(centre);
    line.SetDepth(4);
    std::vector<float> in(3000);
    const std::vector<double> noise = testnoise::Noise(in.size(), 0.5);
    std::copy(noise.begin(), noise.end(), in.begin());
    const std::vector<float> out = RunLine(line, in);
    ASSERT_GE(mod.atZero, 1);
    const int start = mod.atZero * interval;
    double alternation = 0.0;
    for (int n = start + 1; n < start + interval; ++n)
    {
        ASSERT_NEAR(out[n] + out[n - 1], in[n - centre - 2] + in[n - centre - 1], 1e-6) << n;
        alternation = std::max(alternation, std::fabs(double(out[n]) - in[n - centre - 1]));
    }
    EXPECT_GT(alternation, 1e-3);
}

TEST(MSVRAP1ModDelayLine, SineModulationDelaysByCentrePlusMinusDepthFarPastTheRing)
{
    // The reverb's set-up: head update every 50 samples, a 2 Hz sine, depth 6 around a centre of 40.
    const int centre = 40, depth = 6, interval = 50;
    const double w = 2.0 * kPi * interval * 2.0 / 44100.0;
    MSinOsc osc, shadow;
    osc.Setup(w, 0.7);
    shadow.Setup(w, 0.7);
    MSVRAP1ModDelayLine line(centre + depth + 2);
    line.SetInterval(interval);
    line.SetModulator(&osc);
    line.SetCenterDelay(centre);
    line.SetDepth(depth);
    ASSERT_EQ(line.mDepth, depth);

    // A ramp passes an all-pass as the ramp delayed by the DC group delay: n - y[n] is the delay.
    const int total = 1 << 17; // six modulator periods, about 2300 turns of the ring
    double lo = 1e9, hi = -1e9, worst = 0.0;
    float v = 0.0f;
    for (int n = 0; n < total; ++n)
    {
        if (n % interval == 0) v = shadow.Tick();
        const float y = line.Process();
        line.Write(float(n));
        if (n < 4 * interval) continue;
        const double delay = n - double(y);
        lo = std::min(lo, delay);
        hi = std::max(hi, delay);
        worst = std::max(worst, std::fabs(delay - ExpectedDelay(centre, double(v) * depth)));
    }
    EXPECT_LT(worst, 0.2);
    EXPECT_NEAR(lo, centre - depth, 0.1);
    EXPECT_NEAR(hi, centre + depth, 0.1);
}
