#include "dsp/TimeBase.h"
#include "modulators/ArpGate.h"
#include "modulators/StepPresets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <tuple>
#include <vector>

namespace
{
// Steps after each of `ticks` rising edges of a clock flag (high for one block, low for one);
// `pulses` gets 2 x LEVEL + START of each tick. A pulse must last one block.
std::vector<int> ClockedSteps(ArpGate& gate, int ticks, std::vector<int>* pulses = nullptr)
{
    std::uint8_t flag = 0;
    gate.setClock(&flag);
    std::vector<int> steps;
    for (int t = 0; t < ticks; ++t)
    {
        flag = 1;
        gate.processBlock(0.0, 120.0f);
        steps.push_back(gate.Step());
        if (pulses != nullptr) pulses->push_back(2 * *gate.LevelPulse() + *gate.StartPulse());
        flag = 0;
        gate.processBlock(0.0, 120.0f);
        EXPECT_EQ(gate.Step(), steps.back()) << "a low clock must not move the step";
        EXPECT_EQ(*gate.LevelPulse() + *gate.StartPulse(), 0) << "a pulse lasts one block";
    }
    return steps;
}

class ArpGateTest : public ::testing::Test
{
  protected:
    void SetUp() override { SetTimeBase(44100.0); }
    void TearDown() override { SetTimeBase(44100.0); }
};
} // namespace

TEST_F(ArpGateTest, DirectionsStepThroughTheirSequences)
{
    // {direction, length, steps after each clock tick}: the sequence starts at step 0, so the
    // first tick moves it; forward-backward repeats its ends.
    const std::tuple<int, int, std::vector<int>> rows[] = {
        {ArpGate::kForward, 5, {1, 2, 3, 4, 0, 1, 2}},
        {ArpGate::kForward, 1, {0, 0, 0}},
        {ArpGate::kBackward, 4, {2, 1, 0, 3, 2, 1}},
        {ArpGate::kForwardBackward, 3, {1, 2, 2, 1, 0, 0, 1, 2}},
        {ArpGate::kForwardBackward, 1, {0, 0, 0}},
        {ArpGate::kForwardBackward, 16, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15, 14, 13}},
    };
    for (const auto& [direction, length, steps] : rows)
    {
        ArpGate gate;
        gate.setLength(length);
        gate.setDirection(direction);
        EXPECT_EQ(ClockedSteps(gate, int(steps.size())), steps)
            << "direction " << direction << " length " << length;
    }
    // A clock held high counts once, on its rise.
    ArpGate gate;
    std::uint8_t flag = 1;
    gate.setClock(&flag);
    for (int b = 0; b < 5; ++b)
        gate.processBlock(0.0, 120.0f);
    EXPECT_EQ(gate.Step(), 1);
}

TEST_F(ArpGateTest, RandomDrawsInsideTheSequenceAndCounterGrows)
{
    ArpGate gate;
    gate.setLength(5);
    gate.setDirection(ArpGate::kRandom);
    gate.SeedRandom(1234);
    std::vector<int> histogram(5, 0);
    for (int s : ClockedSteps(gate, 400))
    {
        ASSERT_TRUE(s >= 0 && s < 5) << s;
        ++histogram[s];
    }
    for (int count : histogram)
        EXPECT_GT(count, 40); // 80 expected per step
    EXPECT_EQ(gate.Counter(), 400);
}

TEST_F(ArpGateTest, PulsesRiseOnceACycle)
{
    // Levels 0, 1, 1, 0.5: the LEVEL pulse (2) fires on entering the first full step only, step 1,
    // the START pulse (1) on step 0. The steps run 1, 2, 3, 0, ...
    ArpGate gate;
    gate.setLength(4);
    const double levels[4] = {0.0, 1.0, 1.0, 0.5};
    for (int s = 0; s < 4; ++s)
        gate.setStepLevel(s, levels[s]);
    std::vector<int> pulses;
    ClockedSteps(gate, 8, &pulses);
    EXPECT_EQ(pulses, (std::vector<int>{2, 0, 0, 1, 2, 0, 0, 1}));
}

TEST_F(ArpGateTest, SyncedStepFollowsHostPosition)
{
    // Settings applied in order, then a block at the host position: {length, direction, timebase,
    // beat position, step}. 1/8 makes two steps a beat, 1/4d 2/3 of a step; a clock timebase
    // turns sync off and a note value brings it back.
    const std::uint8_t flag = 0;
    const int fwd = ArpGate::kForward, back = ArpGate::kBackward, fb = ArpGate::kForwardBackward;
    const std::tuple<int, int, int, double, int> rows[] = {
        {8, fwd, 1, 1.6, 3},  {8, fwd, 1, 5.0, 2}, // tenth eighth: 10 mod 8
        {8, fwd, 1, 5.0, 2},  {3, fwd, 1, 5.0, 1}, // same place again; a new length moves at once
        {8, back, 1, 5.0, 5}, {8, fb, 1, 5.2, 5},  // counter 10 of 16 folds to 5
        {8, fb, 1, -0.6, 0},                       // pre-roll: counter -1 wraps to the last place
        {8, fwd, 5, 4.6, 3},  {8, fwd, ArpGate::kFirstClockTimebase, 12.0, 3},
        {8, fwd, 0, 12.0, 4},
    };
    ArpGate gate;
    gate.setSyncSwitch(true);
    for (const auto& [length, direction, timebase, beat, step] : rows)
    {
        gate.setLength(length);
        gate.setDirection(direction);
        gate.setTimebase(timebase, timebase >= ArpGate::kFirstClockTimebase ? &flag : nullptr);
        gate.processBlock(beat, 120.0f);
        EXPECT_EQ(gate.Step(), step) << "timebase " << timebase << " at beat " << beat;
    }
}

// 1/16 at 120 bpm runs free at 8 steps a second: a step every 44100 / 8 / 32 = 172.27 blocks.
TEST_F(ArpGateTest, FreeRunningStepsAtTheTempo)
{
    ArpGate gate;
    gate.setLength(16);
    gate.setTimebase(2, nullptr);
    const double perBlock = 4.0 * gBlockLen * 120.0 / 44100.0 / 60.0;
    int previous = 0, changes = 0;
    for (int j = 1; j <= 2760; ++j) // just over two seconds
    {
        gate.processBlock(0.0, 120.0f);
        const bool expected = std::floor(j * perBlock) > std::floor((j - 1) * perBlock);
        ASSERT_EQ(gate.Step() != previous, expected) << "block " << j;
        changes += expected;
        previous = gate.Step();
    }
    EXPECT_EQ(changes, 16);
    EXPECT_EQ(gate.Step(), 0);
}

// The glide is a one-pole recursion with time constant 1.5 x 20 ms / (2 pi) towards the step's
// value, sample by sample, alike at every rate.
TEST_F(ArpGateTest, GlideIsAOnePoleTowardsTheStep)
{
    const double levels[4] = {0.9, 0.1, 0.75, 0.3};
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        ArpGate gate;
        gate.setGlide(20.0);
        gate.Reset();
        gate.setPolarity(ArpGate::kBipolar);
        gate.setDepth(0.5);
        for (int s = 0; s < 4; ++s)
            gate.setStepLevel(s, levels[s]);
        gate.setLength(4);
        const double a = std::exp(-2.0 * std::numbers::pi / (20.0 * 1.5 * 0.001 * rate));
        std::uint8_t tick = 0;
        gate.setClock(&tick);
        double y = 0.0, maxErr = 0.0;
        for (int b = 0; b < 400; ++b)
        {
            tick = (b % 50 == 0) ? 1 : 0;
            gate.processBlock(0.0, 120.0f);
            for (int k = 0; k < gBlockLen; ++k)
            {
                y = a * y + (1.0 - a) * (levels[gate.Step()] * 2.0 - 1.0);
                maxErr = std::max(maxErr, std::fabs(gate.Out()[k] - 0.5 * y));
            }
        }
        EXPECT_LT(maxErr, 1e-6) << rate; // the tabled powers are single precision
    }
}

// Without glide the step value holds from the first sample, through each polarity and the depth.
TEST_F(ArpGateTest, PolarityAndDepthShapeTheOutput)
{
    ArpGate gate;
    gate.setStepLevel(0, 0.25);
    gate.setDepth(0.8);
    const double expected[3] = {0.25 * 0.8, -0.25 * 0.8, -0.5 * 0.8};
    for (int p = 0; p < 3; ++p)
    {
        gate.setPolarity(p);
        gate.processBlock(0.0, 120.0f);
        EXPECT_DOUBLE_EQ(gate.Out()[0], expected[p]) << p;
        EXPECT_DOUBLE_EQ(gate.Out()[31], expected[p]) << p;
    }
}

TEST(StepPresets, PatternsAndGrid)
{
    const double s = std::sin(std::numbers::pi / 4.0);
    const std::vector<std::vector<double>> expected{
        {0, 0, 0, 0, 0},     {1, 1, 1, 1, 1}, {0, 0.25, 0.5, 0.75, 1},   {0, 0.0625, 0.25, 0.5625, 1},
        {0, 0.5, 1, 0.5, 0}, {0, s, 1, s, 0}, {0.5, 0.5, 0.5, 0.5, 0.5},
    };
    for (int preset = 0; preset < kStepPresetRandomize; ++preset)
    {
        const StepPattern p = MakeStepPattern(preset, 5, 0, 0);
        ASSERT_EQ(p.count, 5) << kStepPresetNames[preset];
        for (int i = 0; i < 5; ++i)
            EXPECT_NEAR(p.levels[i], expected[preset][i], 1e-12) << kStepPresetNames[preset] << " step " << i;
        // One step: finite values, no division by zero.
        EXPECT_TRUE(std::isfinite(MakeStepPattern(preset, 1, 0, 7).levels[0])) << kStepPresetNames[preset];
    }
    // A 4-step grid moves 1/3 and 2/3 to the nearest quarters.
    const StepPattern ramp = MakeStepPattern(kStepPresetRamp, 4, 4, 0);
    EXPECT_EQ(std::vector<double>(ramp.levels.begin(), ramp.levels.begin() + 4),
              (std::vector<double>{0.0, 0.25, 0.75, 1.0}));
    // Random patterns fill all 16 steps, repeatably per seed, snapped to the grid when asked.
    const StepPattern r1 = MakeStepPattern(kStepPresetRandomize, 3, 0, 99);
    EXPECT_EQ(r1.count, 16);
    EXPECT_EQ(r1.levels, MakeStepPattern(kStepPresetRandomize, 3, 0, 99).levels);
    EXPECT_NE(r1.levels, MakeStepPattern(kStepPresetRandomize, 3, 0, 100).levels);
    for (double v : MakeStepPattern(kStepPresetRandomize, 3, 2, 99).levels)
        EXPECT_TRUE(v == 0.0 || v == 0.5 || v == 1.0) << v;
}
