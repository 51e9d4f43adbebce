#include "dsp/TimeBase.h"
#include "modulators/EnvelopeSource.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

namespace
{
using Block = std::array<double, gBlockLen>;

// A 1 kHz sine block at the given amplitude, continuing the phase across calls.
struct Sine
{
    double amplitude = 0.5;
    long sample = 0;
    Block Next()
    {
        Block block{};
        for (double& x : block)
            x = amplitude *
                std::sin(2.0 * std::numbers::pi * 1000.0 * double(sample++) / double(gSampleRate));
        return block;
    }
};

// Gate mode with a -20 dB threshold: a 0.5 sine holds the level at full scale.
void SetUpGate(EnvelopeSource& env)
{
    env.SetMode(1);
    env.SetThreshold(-20.0);
    env.SetAttack(5.0);
    env.SetDecay(20.0);
    env.SetHold(50.0);
    env.Reset();
}

double Rms(const double* x, int n)
{
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += x[i] * x[i];
    return std::sqrt(sum / n);
}
} // namespace

TEST(EnvelopeSource, ChoiceTableResolvesEveryBuffer)
{
    std::array<Block, 17> buffers{};
    EnvSourceBuffers engine;
    engine.inMono = buffers[0].data();
    engine.inLeft = buffers[1].data();
    engine.inRight = buffers[2].data();
    for (int s = 0; s < 4; ++s)
    {
        engine.slotMono[s] = buffers[3 + 3 * s].data();
        engine.slotLeft[s] = buffers[4 + 3 * s].data();
        engine.slotRight[s] = buffers[5 + 3 * s].data();
    }
    engine.sidechain = buffers[15].data();
    engine.masterFx = buffers[16].data();

    // The menu order: input mono, left, right, then mono, left, right of each slot, side chain, master.
    for (int c = 0; c < kNumEnvSources; ++c)
        EXPECT_EQ(ResolveEnvelopeSource(c, engine), buffers[c].data()) << kEnvSourceTable[c].label;
    EXPECT_EQ(ResolveEnvelopeSource(-1, engine), nullptr);
    EXPECT_EQ(ResolveEnvelopeSource(kNumEnvSources, engine), nullptr);
    // A slot whose routing holds no channel gives no buffer.
    engine.slotRight[2] = nullptr;
    EXPECT_EQ(ResolveEnvelopeSource(kEnvSrcSlot3Right, engine), nullptr);
}

// The gate pulses once per rise to full scale, however long the level stays there; a block without
// a source forgets the level, so the next block at full scale pulses again. Silence never pulses.
TEST(EnvelopeSource, TriggerOncePerRiseToFullLevel)
{
    EnvelopeSource env;
    SetUpGate(env);
    Sine sine;
    const Block silence{};
    // {blocks, input: 's'ine, 'z'eros or 'n'o source, triggers expected in them}: 0.3 s bursts
    // and 0.5 s of silence, long enough to fall back to idle.
    const int burst = int(0.3 * gSampleRate / gBlockLen), rest = int(0.5 * gSampleRate / gBlockLen);
    for (const auto& [blocks, input, expected] : {std::tuple{200, 'z', 0},
                                                  {burst, 's', 1},
                                                  {rest, 'z', 0},
                                                  {burst, 's', 1},
                                                  {1, 'n', 0},
                                                  {1, 's', 1}})
    {
        int triggers = 0, full = 0;
        for (int b = 0; b < blocks; ++b)
        {
            const Block in = input == 's' ? sine.Next() : silence;
            env.SetSourceBuffer(input == 'n' ? nullptr : in.data());
            const double before = env.Level();
            env.Process(nullptr, nullptr);
            full += env.Level() >= 1.0;
            if (env.Triggered())
            {
                ++triggers;
                EXPECT_GE(env.Level(), 1.0);
                EXPECT_TRUE(before < 1.0 || blocks == 1); // a forgotten level may still read full
            }
        }
        EXPECT_EQ(triggers, expected) << input << " for " << blocks << " blocks";
        EXPECT_TRUE(input != 's' || blocks == 1 || full > 50) << full; // held full, yet one pulse
        EXPECT_TRUE(input != 'z' || env.Level() < 1.0) << "still held after the silence";
    }
    env.SetSourceBuffer(silence.data());
    for (int b = 0; b < 200; ++b)
        env.Process(nullptr, nullptr);
    EXPECT_EQ(Rms(env.Output(), gBlockLen), 0.0);
}

TEST(EnvelopeSource, ListenIsExclusiveAndCarriesTheFilteredInput)
{
    // Choosing one envelope turns the other off; only the listening one writes the master pair:
    // its input after 20 dB of gain, with the detector band wide open around 1 kHz.
    EnvelopeSource env1, env2;
    EnvelopeSource* both[2] = {&env1, &env2};
    ToggleEnvelopeListen(both, 0);
    ToggleEnvelopeListen(both, 1);
    EXPECT_FALSE(env1.Listening());
    EXPECT_TRUE(env2.Listening());
    Sine sine{0.05};
    Block left{}, right{};
    double inSum = 0.0, outSum = 0.0;
    for (EnvelopeSource* env : both)
    {
        env->SetGain(20.0);
        env->SetLocut(50.0);
        env->SetHicut(20000.0);
    }
    for (int b = 0; b < 200; ++b)
    {
        const Block in = sine.Next();
        left.fill(7.0);
        right.fill(7.0);
        env1.SetSourceBuffer(in.data());
        env1.Process(left.data(), right.data());
        ASSERT_EQ(left[0], 7.0) << "a muted envelope wrote the master";
        env2.SetSourceBuffer(in.data());
        env2.Process(left.data(), right.data());
        ASSERT_EQ(left, right);
        if (b >= 100) inSum += Rms(in.data(), gBlockLen), outSum += Rms(left.data(), gBlockLen);
    }
    EXPECT_NEAR(outSum / inSum, 10.0, 0.2);
}

// Two sources run together give what each gives alone, bit for bit: different bands, modes and
// inputs, band corners moved while they run, one source missing for a while, listening on.
TEST(EnvelopeSource, PairedRunMatchesSingleRuns)
{
    SetTimeBase(48000.0);
    EnvelopeSource single[2], paired[2];
    for (EnvelopeSource* env : {&single[0], &paired[0], &single[1], &paired[1]})
    {
        if (env == &single[1] || env == &paired[1])
        {
            SetUpGate(*env);
            env->SetLocut(60.0);
            env->SetHicut(12000.0);
            env->SetListen(true);
        }
        else
            env->SetLocut(200.0), env->SetHicut(3000.0), env->SetGain(6.0), env->SetAttack(3.0),
                env->SetDecay(80.0), env->Reset();
    }
    Sine loud{0.5}, quiet{0.05};
    std::size_t differing = 0, nonzero = 0;
    for (int b = 0; b < 1500; ++b)
    {
        const Block x = loud.Next();
        const Block y = b % 300 < 150 ? quiet.Next() : loud.Next();
        const bool missing = b >= 900 && b < 1000; // the second source is missing for a while
        for (int e = 0; e < 2; ++e)
            for (EnvelopeSource* env : {&single[e], &paired[e]})
            {
                if (b == 400 && e == 0) env->SetHicut(800.0);
                if (b == 700 && e == 1) env->SetLocut(1500.0);
                env->SetSourceBuffer(e == 0 ? x.data() : (missing ? nullptr : y.data()));
            }
        Block listenSingle{}, listenPaired{};
        single[0].Process(listenSingle.data(), nullptr);
        single[1].Process(listenSingle.data(), nullptr);
        EnvelopeSource::ProcessPair(paired[0], paired[1], listenPaired.data(), nullptr);
        for (int e = 0; e < 2; ++e)
        {
            differing += single[e].Level() != paired[e].Level();
            differing += single[e].Triggered() != paired[e].Triggered();
            for (int i = 0; i < gBlockLen; ++i)
            {
                differing += single[e].Output()[i] != paired[e].Output()[i];
                nonzero += single[e].Output()[i] != 0.0;
            }
        }
        for (int i = 0; i < gBlockLen; ++i)
            differing += listenSingle[size_t(i)] != listenPaired[size_t(i)];
    }
    EXPECT_EQ(differing, 0u);
    EXPECT_GT(nonzero, 1000u * gBlockLen);
}
