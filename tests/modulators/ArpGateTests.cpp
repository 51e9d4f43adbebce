#include "dsp/TimeBase.h"
#include "modulators/ArpGate.h"
#include "modulators/StepPresets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace
{
// Steps after each of `ticks` rising edges of a clock flag (high for one block, low for one).
std::vector<int> ClockedSteps(ArpGate& gate, int ticks)
{
    std::uint8_t flag = 0;
    gate.setClock(&flag);
    std::vector<int> steps;
    for (int t = 0; t < ticks; ++t)
    {
        flag = 1;
        gate.processBlock(0.0, 120.0f);
        steps.push_back(gate.Step());
        flag = 0;
        gate.processBlock(0.0, 120.0f);
        EXPECT_EQ(gate.Step(), steps.back()) << "a low clock must not move the step";
    }
    return steps;
}

// Where the k-th tick (k = 1, 2, ...) of a sequence of `length` steps should land.
int ExpectedStep(int direction, int length, int k)
{
    switch (direction)
    {
    case ArpGate::kBackward:
        return length - 1 - k % length;
    case ArpGate::kForwardBackward:
    {
        const int m = k % (2 * length);
        return m < length ? m : 2 * length - 1 - m;
    }
    default:
        return k % length;
    }
}

class ArpGateTest : public ::testing::Test
{
  protected:
    void SetUp() override { SetTimeBase(44100.0); }
};
} // namespace

TEST_F(ArpGateTest, DirectionsStepThroughEveryLength)
{
    // Literal sequences first, so a wrong fold cannot hide behind the helper.
    {
        ArpGate gate;
        gate.setLength(3);
        gate.setDirection(ArpGate::kForwardBackward);
        EXPECT_EQ(ClockedSteps(gate, 8), (std::vector<int>{1, 2, 2, 1, 0, 0, 1, 2}));
    }
    {
        ArpGate gate;
        gate.setLength(4);
        gate.setDirection(ArpGate::kBackward);
        EXPECT_EQ(ClockedSteps(gate, 6), (std::vector<int>{2, 1, 0, 3, 2, 1}));
    }
    {
        // A clock held high counts once, on its rise.
        ArpGate gate;
        std::uint8_t flag = 1;
        gate.setClock(&flag);
        for (int b = 0; b < 5; ++b)
            gate.processBlock(0.0, 120.0f);
        EXPECT_EQ(gate.Step(), 1);
    }
    for (int direction : {ArpGate::kForward, ArpGate::kBackward, ArpGate::kForwardBackward})
        for (int length : {1, 2, 5, 8, 16})
        {
            ArpGate gate;
            gate.setLength(length);
            gate.setDirection(direction);
            const std::vector<int> steps = ClockedSteps(gate, 3 * length + 2);
            for (int k = 1; k <= static_cast<int>(steps.size()); ++k)
                ASSERT_EQ(steps[k - 1], ExpectedStep(direction, length, k))
                    << "direction " << direction << " length " << length << " tick " << k;
        }
}

TEST_F(ArpGateTest, RandomDrawsInsideTheSequenceAndCounterGrows)
{
    ArpGate gate;
    gate.setLength(5);
    gate.setDirection(ArpGate::kRandom);
    gate.SeedRandom(1234);
    const std::vector<int> steps = ClockedSteps(gate, 400);
    std::vector<int> histogram(5, 0);
    for (int s : steps)
    {
        ASSERT_GE(s, 0);
        ASSERT_LT(s, 5);
        ++histogram[s];
    }
    for (int count : histogram)
        EXPECT_GT(count, 40); // 80 expected per step
    EXPECT_EQ(gate.Counter(), 400);
}

TEST_F(ArpGateTest, FreeRunningStepsAtTheTempo)
{
    // 1/16 at 120 bpm: 8 steps a second, so a step every 44100 / 8 / 32 = 172.27 blocks.
    ArpGate gate;
    gate.setLength(16);
    gate.setTimebase(2, nullptr);
    const double perBlock = 4.0 * gBlockLen * 120.0 / 44100.0 / 60.0;
    int previous = 0;
    int changes = 0;
    for (int j = 1; j <= 2760; ++j) // just over two seconds
    {
        gate.processBlock(0.0, 120.0f);
        const bool expected = std::floor(j * perBlock) > std::floor((j - 1) * perBlock);
        ASSERT_EQ(gate.Step() != previous, expected) << "block " << j;
        changes += expected ? 1 : 0;
        previous = gate.Step();
    }
    EXPECT_EQ(changes, 16);
    EXPECT_EQ(gate.Step(), 0);
}

TEST_F(ArpGateTest, SyncedStepFollowsHostPosition)
{
    ArpGate gate;
    gate.setLength(8);
    gate.setSyncSwitch(true);
    gate.setTimebase(1, nullptr); // 1/8: two steps a beat
    const std::uint8_t flag = 0;

    gate.processBlock(1.6, 120.0f);
    EXPECT_EQ(gate.Step(), 3);
    gate.processBlock(5.0, 120.0f); // tenth eighth: 10 mod 8
    EXPECT_EQ(gate.Step(), 2);
    gate.processBlock(5.0, 120.0f); // same position, recomputed to the same step
    EXPECT_EQ(gate.Step(), 2);
    gate.setLength(3); // length change moves the step at once
    gate.processBlock(5.0, 120.0f);
    EXPECT_EQ(gate.Step(), 1);

    gate.setLength(8);
    gate.setDirection(ArpGate::kBackward);
    gate.processBlock(5.0, 120.0f);
    EXPECT_EQ(gate.Step(), 5);
    gate.setDirection(ArpGate::kForwardBackward);
    gate.processBlock(5.2, 120.0f); // counter 10 of 16 folds to 5
    EXPECT_EQ(gate.Step(), 5);
    gate.processBlock(-0.6, 120.0f); // pre-roll: counter -1 wraps to the last position
    EXPECT_EQ(gate.Step(), 0);

    gate.setDirection(ArpGate::kForward);
    gate.setTimebase(5, nullptr); // 1/4d: 2/3 step a beat
    gate.processBlock(4.6, 120.0f);
    EXPECT_EQ(gate.Step(), 3);

    // A clock timebase turns sync off; a note value brings it back.
    gate.setTimebase(ArpGate::kFirstClockTimebase, &flag);
    gate.processBlock(12.0, 120.0f);
    EXPECT_EQ(gate.Step(), 3);
    gate.setTimebase(0, nullptr);
    gate.processBlock(12.0, 120.0f);
    EXPECT_EQ(gate.Step(), 4);
}

TEST_F(ArpGateTest, PulsesRiseOnceACycle)
{
    // Levels 0, 1, 1, 0.5: the LEVEL pulse fires on entering the first full step only, the START
    // pulse on step 0; both last one block.
    ArpGate gate;
    gate.setLength(4);
    const double levels[4] = {0.0, 1.0, 1.0, 0.5};
    for (int s = 0; s < 4; ++s)
        gate.setStepLevel(s, levels[s]);
    std::uint8_t tick = 0;
    gate.setClock(&tick);
    int level = 0, start = 0;
    for (int t = 0; t < 8; ++t)
    {
        tick = 1;
        gate.processBlock(0.0, 120.0f);
        EXPECT_EQ(*gate.LevelPulse() != 0, gate.Step() == 1) << "tick " << t;
        EXPECT_EQ(*gate.StartPulse() != 0, gate.Step() == 0) << "tick " << t;
        level += *gate.LevelPulse();
        start += *gate.StartPulse();
        tick = 0;
        gate.processBlock(0.0, 120.0f);
        EXPECT_EQ(*gate.LevelPulse() + *gate.StartPulse(), 0);
    }
    EXPECT_EQ(level, 2);
    EXPECT_EQ(start, 2);
}

TEST_F(ArpGateTest, GlideMatchesPerSampleRecursion)
{
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        ArpGate gate;
        gate.setGlide(20.0);
        gate.Reset();
        gate.setPolarity(ArpGate::kBipolar);
        gate.setDepth(0.5);
        const double levels[4] = {0.9, 0.1, 0.75, 0.3};
        for (int s = 0; s < 4; ++s)
            gate.setStepLevel(s, levels[s]);
        gate.setLength(4);
        const double a = std::exp(-2.0 * std::numbers::pi / (20.0 * 1.5 * 0.001 * rate));
        std::uint8_t tick = 0;
        gate.setClock(&tick);
        double y = 0.0;
        double maxErr = 0.0;
        for (int b = 0; b < 400; ++b)
        {
            tick = (b % 50 == 0) ? 1 : 0;
            gate.processBlock(0.0, 120.0f);
            const double target = levels[gate.Step()] * 2.0 - 1.0;
            for (int k = 0; k < gBlockLen; ++k)
            {
                y = a * y + (1.0 - a) * target;
                maxErr = std::max(maxErr, std::fabs(gate.Out()[k] - 0.5 * y));
            }
        }
        EXPECT_LT(maxErr, 1e-6) << rate; // the tabled powers are single precision
    }
    SetTimeBase(44100.0);

    // No glide: the step value from the first sample, through each polarity and the depth.
    ArpGate gate;
    gate.setStepLevel(0, 0.25);
    gate.setDepth(0.8);
    const double expected[3] = {0.25 * 0.8, -0.25 * 0.8, -0.5 * 0.8};
    for (int p = 0; p < 3; ++p)
    {
        gate.setPolarity(p);
        gate.processBlock(0.0, 120.0f);
        EXPECT_DOUBLE_EQ(gate.Out()[0], expected[p]);
        EXPECT_DOUBLE_EQ(gate.Out()[31], expected[p]);
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
    }

    // A 4-step grid moves 1/3 and 2/3 to the nearest quarters.
    const StepPattern ramp = MakeStepPattern(kStepPresetRamp, 4, 4, 0);
    EXPECT_EQ(std::vector<double>(ramp.levels.begin(), ramp.levels.begin() + 4),
              (std::vector<double>{0.0, 0.25, 0.75, 1.0}));
    // One step: finite values, no division by zero.
    for (int preset = 0; preset < kNumStepPresets; ++preset)
        EXPECT_TRUE(std::isfinite(MakeStepPattern(preset, 1, 0, 7).levels[0]));

    // Random patterns fill all 16 steps, repeatably per seed, snapped to the grid when asked.
    const StepPattern r1 = MakeStepPattern(kStepPresetRandomize, 3, 0, 99);
    EXPECT_EQ(r1.count, 16);
    EXPECT_EQ(r1.levels, MakeStepPattern(kStepPresetRandomize, 3, 0, 99).levels);
    EXPECT_NE(r1.levels, MakeStepPattern(kStepPresetRandomize, 3, 0, 100).levels);
    const StepPattern snapped = MakeStepPattern(kStepPresetRandomize, 3, 2, 99);
    for (double v : snapped.levels)
        EXPECT_TRUE(v == 0.0 || v == 0.5 || v == 1.0) << v;
}
