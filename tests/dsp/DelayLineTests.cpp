#include "common/Noise.h"
#include "dsp/MDelayLine.h"
#include "dsp/MSVRAP1ModDelayLine.h"
#include "dsp/MSinOsc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>
#include <vector>

namespace
{

// A modulator that holds one value.
struct ConstModulator : MModulator
{
    explicit ConstModulator(float v) : mValue(v) {}
    float Tick() override { return mValue; }
    float mValue;
};

// A line whose head moves every `interval` samples by the modulator's value times the depth.
std::unique_ptr<MSVRAP1ModDelayLine> MakeLine(MModulator& mod, int size, int centre, int depth,
                                              int interval = 50)
{
    auto line = std::make_unique<MSVRAP1ModDelayLine>(size);
    line->SetInterval(interval);
    line->SetModulator(&mod);
    line->SetCenterDelay(centre);
    line->SetDepth(depth);
    return line;
}

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
const auto ExpectedDelay = [](int centre, double o)
{ return centre - std::floor(o) - 1.0 + (1.0 - (o - std::floor(o))) / (1.0 + (o - std::floor(o))); };
} // namespace

TEST(MDelayLine, ReadsTheSampleWrittenDelaySamplesEarlierAcrossTheWrap)
{
    // Sample n holds n + 1, so a read is checked against its exact source, over seven turns of the
    // ring. A delay set while running applies from the next read; too long a delay takes the
    // maximum. A read behind the head by d gives the same sample as a delay of d.
    MDelayLine line(100);
    int n = 0;
    for (const auto& [set, delay, until] :
         {std::tuple{1, 1, 100}, {5, 5, 333}, {500, 100, 450}, {64, 64, 700}})
        for (line.SetDelay(set); n < until; ++n)
        {
            ASSERT_EQ(line.Read(), n >= delay ? float(n - delay + 1) : 0.0f) << n;
            for (const int d : {1, 2, 37, 100})
                ASSERT_EQ(line.ReadBehind(d), n >= d ? float(n - d + 1) : 0.0f) << n << " behind " << d;
            line.Write(float(n + 1));
        }
    // A new allocation limits the delay to its maximum; Clear empties the ring and keeps the delay:
    // silence until the new samples come through.
    line.Allocate(4);
    for (int k = 0; k < 30; ++k)
    {
        line.Write(1.0f);
        line.Read();
    }
    line.Clear();
    for (int k = 0; k < 10; ++k)
    {
        EXPECT_EQ(line.Read(), k < 4 ? 0.0f : 100.0f + float(k - 4)) << k;
        line.Write(100.0f + float(k));
    }
}

TEST(MSinOsc, StaysOnItsAmplitudeOverTenMillionTicks)
{
    // A 2.3 Hz sine ticked every 50 samples at 44.1 kHz. The amplitude neither grows nor fades: in
    // the last million ticks the peaks still reach 1 to within a step's rounding. (Its frequency runs
    // in the reverbs of the golden renders.)
    MSinOsc osc;
    osc.Setup(2.0 * M_PI * 50.0 * 2.3 / 44100.0, 0.3);
    float peak = 0.0f, lateLo = 0.0f, lateHi = 0.0f;
    for (int n = 0; n < 10'000'000; ++n)
    {
        const float v = osc.Tick();
        peak = std::max(peak, std::fabs(v));
        if (n > 9'000'000) lateLo = std::min(lateLo, v), lateHi = std::max(lateHi, v);
    }
    EXPECT_TRUE(peak <= 1.0f && lateHi > 0.9999f && lateLo < -0.9999f)
        << peak << " " << lateLo << " " << lateHi;
}

TEST(MSVRAP1ModDelayLine, ConstantOffsetsGiveTheAllPassDelay)
{
    const int centre = 40, depth = 8;
    const auto run = [&](float v, const std::vector<float>& in)
    {
        ConstModulator mod(v);
        return RunLine(*MakeLine(mod, 60, centre, depth), in);
    };
    // Whole-sample offsets, ahead and behind: the impulse lands exactly at centre - offset, also when
    // the head position goes negative and takes the stepped-down integer with fraction 1.
    std::vector<float> in(2400, 0.0f);
    for (size_t n = 0; n < in.size(); n += 211)
        in[n] = 1.0f;
    for (float v : {0.0f, 0.5f, -0.5f, 0.125f, -1.0f})
    {
        const int delay = centre - int(v * depth);
        const std::vector<float> out = run(v, in);
        for (size_t n = 0; n < out.size(); ++n)
            ASSERT_EQ(out[n], n >= size_t(delay) ? in[n - delay] : 0.0f) << "v " << v << " n " << n;
    }
    // Fractional offsets: the impulse response is an all-pass (unit sum and unit energy) whose
    // centroid, the DC group delay, follows the fraction-as-coefficient law rather than the linear
    // one. The impulse comes when the head has wrapped a few times.
    const int start = 500;
    std::vector<float> impulse(start + 400, 0.0f);
    impulse[start] = 1.0f;
    for (float v : {0.03125f, 0.0625f, 0.09375f, -0.03125f, 0.71875f})
    {
        const std::vector<float> out = run(v, impulse);
        double sum = 0.0, energy = 0.0, moment = 0.0;
        for (size_t n = start; n < out.size(); ++n)
        {
            sum += out[n];
            energy += double(out[n]) * out[n];
            moment += double(n - start) * out[n];
        }
        EXPECT_TRUE(std::fabs(sum - 1.0) < 1e-5 && std::fabs(energy - 1.0) < 1e-5)
            << v << ": " << sum << " " << energy;
        EXPECT_NEAR(moment / sum, ExpectedDelay(centre, double(v) * depth), 1e-4) << "offset " << v * depth;
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
    auto line = MakeLine(mod, 60, centre, 4, interval);
    mod.line = line.get();
    const std::vector<double> noise = testnoise::Noise(3000, 0.5);
    const std::vector<float> in(noise.begin(), noise.end()), out = RunLine(*line, in);
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
