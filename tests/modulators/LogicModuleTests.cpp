#include "dsp/TimeBase.h"
#include "modulators/LogicModule.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace
{
using Block = std::array<double, gBlockLen>;

// Four (a, b) pairs repeated over the block; the expected rows below are worked by hand.
constexpr std::array<double, 4> kA = {0.5, -0.6, 0.1, -0.2};
constexpr std::array<double, 4> kB = {-0.3, 0.2, 0.4, -0.7};

Block Pattern(const std::array<double, 4>& values)
{
    Block block{};
    for (int i = 0; i < gBlockLen; ++i)
        block[i] = values[i % 4];
    return block;
}

Block Constant(double value)
{
    Block block{};
    block.fill(value);
    return block;
}

void ExpectPattern(const LogicModule& logic, const std::array<double, 4>& expected, const char* what)
{
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_NEAR(logic.Output()[i], expected[i % 4], 1e-12) << what << " at " << i;
}
} // namespace

TEST(LogicModule, ModesOnKnownInputs)
{
    const Block a = Pattern(kA);
    const Block b = Pattern(kB);
    struct Case
    {
        int menu;
        std::array<double, 4> expected;
    };
    const std::array<Case, 9> cases = {{
        {0, {0.2, -0.4, 0.5, -0.9}},     // ADD
        {1, {-0.15, -0.12, 0.04, 0.14}}, // MULTIPLY
        {2, {-0.3, -0.6, 0.1, -0.7}},    // MIN
        {3, {0.5, 0.2, 0.4, -0.2}},      // MAX
        {4, {0.3, -0.2, 0.1, -0.2}},     // ABS MIN keeps the sign of the first source
        {5, {0.5, -0.6, 0.4, -0.7}},     // ABS MAX
        {6, {0.5, -0.6, 0.0, 0.0}},      // GATE
        {7, {1.0, 0.0, 0.0, 1.0}},       // HIGHER
        {8, {0.0, 1.0, 1.0, 0.0}},       // LOWER
    }};
    for (const Case& c : cases)
    {
        LogicModule logic;
        logic.SetSource1(a.data());
        logic.SetSource2(b.data());
        logic.SetModeMenu(c.menu);
        logic.Reset();
        logic.Process();
        ExpectPattern(logic, c.expected, LogicModule::kModeLabels[c.menu]);
    }
}

TEST(LogicModule, MissingSourcesCountAsZero)
{
    const Block a = Pattern(kA);
    const Block b = Pattern(kB);
    auto run = [](int menu, const double* s1, const double* s2, const std::array<double, 4>& expected)
    {
        LogicModule logic;
        logic.SetSource1(s1);
        logic.SetSource2(s2);
        logic.SetModeMenu(menu);
        logic.Process();
        ExpectPattern(logic, expected, LogicModule::kModeLabels[menu]);
    };
    run(6, a.data(), nullptr, kA);                   // GATE passes source 1
    run(7, a.data(), nullptr, {1.0, 0.0, 1.0, 0.0}); // HIGHER: above zero
    run(8, nullptr, nullptr, {0.0, 0.0, 0.0, 0.0});  // LOWER with nothing is 0
    run(8, nullptr, b.data(), {0.0, 1.0, 1.0, 0.0}); // LOWER: zero below source 2
    run(1, a.data(), nullptr, kA);                   // MULTIPLY without source 2 passes
    run(1, nullptr, b.data(), {0.0, 0.0, 0.0, 0.0}); // MULTIPLY without source 1 is 0
    run(4, a.data(), nullptr, {0.0, 0.0, 0.0, 0.0}); // ABS MIN against nothing
}

TEST(LogicModule, SourceAndOutputDepthsAndClip)
{
    const Block a = Pattern(kA);
    const Block b = Pattern(kB);
    LogicModule logic;
    logic.SetSource1(a.data());
    logic.SetSource2(b.data());
    logic.SetSource1Depth(200.0);
    logic.SetSource2Depth(-50.0);
    logic.SetDepth(50.0);
    logic.Process();
    // (2a - b / 2) / 2
    ExpectPattern(logic, {0.575, -0.65, 0.0, -0.025}, "scaled ADD");

    const Block big = Constant(0.9);
    logic.SetSource1(big.data());
    logic.SetSource2(big.data());
    logic.SetSource1Depth(100.0);
    logic.SetSource2Depth(100.0);
    logic.SetDepth(100.0);
    logic.Process();
    ExpectPattern(logic, {1.0, 1.0, 1.0, 1.0}, "clipped above");
    logic.SetDepth(-100.0);
    logic.Process();
    ExpectPattern(logic, {-1.0, -1.0, -1.0, -1.0}, "clipped below");

    // A depth source moves the output depth sample by sample: 0.5 (0.2 - 0.5 d[i]).
    const Block half = Constant(0.5);
    Block depth{};
    for (int i = 0; i < gBlockLen; ++i)
        depth[i] = double(i) / gBlockLen;
    LogicModule modulated;
    modulated.SetSource1(half.data());
    modulated.SetDepthSource(depth.data());
    modulated.SetDepthMod(-50.0);
    modulated.SetDepth(20.0);
    modulated.Process();
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_NEAR(modulated.Output()[i], 0.5 * (0.2 - 0.5 * depth[i]), 1e-12) << i;
}

TEST(LogicModule, SmoothingTimeConstantAtTwoRates)
{
    const Block one = Constant(0.8);
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        LogicModule logic;
        logic.SetSource1(one.data());
        logic.SetSmooth(10.0);
        logic.Reset();
        // The pole's time constant is 10 ms / (2 pi): 63 % of the step after that many samples.
        const double tau = 0.010 * rate / (2.0 * std::numbers::pi);
        int crossing = -1;
        for (int block = 0; block < 40 && crossing < 0; ++block)
        {
            logic.Process();
            for (int i = 0; i < gBlockLen && crossing < 0; ++i)
                if (logic.Output()[i] >= 0.8 * (1.0 - std::exp(-1.0))) crossing = block * gBlockLen + i + 1;
        }
        EXPECT_NEAR(crossing, tau, 1.0) << rate;
        for (int block = 0; block < 100; ++block)
            logic.Process();
        EXPECT_NEAR(logic.Output()[gBlockLen - 1], 0.8, 1e-9) << rate;
    }
    SetTimeBase(44100.0);

    // 0 ms passes the input straight through from the first sample.
    LogicModule direct;
    direct.SetSource1(one.data());
    direct.SetSmooth(0.0);
    direct.Process();
    EXPECT_DOUBLE_EQ(direct.Output()[0], 0.8);
}

TEST(LogicModule, DepthActsAfterSmoothing)
{
    // Halving the depth mid-ramp halves the very next sample: the smoother does not see it.
    const Block step = Constant(0.6);
    LogicModule changed, steady;
    for (LogicModule* logic : {&changed, &steady})
    {
        logic->SetSource1(step.data());
        logic->SetSmooth(200.0);
        logic->Reset();
        for (int block = 0; block < 10; ++block)
            logic->Process();
    }
    changed.SetDepth(50.0);
    changed.Process();
    steady.Process();
    ASSERT_GT(steady.Output()[0], 0.05);
    ASSERT_LT(steady.Output()[gBlockLen - 1], 0.5);
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_NEAR(changed.Output()[i], 0.5 * steady.Output()[i], 1e-12);
}

TEST(LogicModule, ReadsItsOwnOutputOneBlockLate)
{
    // Depth modulated by the module's own output: w = last output + 0.5, out = 0.5 w, so the
    // outputs run 0.25, 0.375, 0.4375, ... towards 0.5.
    const Block a = Constant(0.5);
    Block bank{};
    LogicModule logic(bank.data());
    ASSERT_EQ(logic.Output(), bank.data());
    logic.SetSource1(a.data());
    logic.SetDepthSource(bank.data());
    logic.SetDepthMod(100.0);
    logic.SetDepth(50.0);
    double expected = 0.0;
    for (int block = 0; block < 4; ++block)
    {
        expected = 0.5 * (expected + 0.5);
        logic.Process();
        for (int i = 0; i < gBlockLen; ++i)
            ASSERT_NEAR(bank[i], expected, 1e-12) << block << ", " << i;
    }

    // As its own first source it delays by one block too: ADD of itself and 0.1 counts up.
    Block bank2{};
    const Block tenth = Constant(0.1);
    LogicModule counter(bank2.data());
    counter.SetSource1(bank2.data());
    counter.SetSource2(tenth.data());
    for (int block = 1; block <= 3; ++block)
    {
        counter.Process();
        EXPECT_NEAR(bank2[gBlockLen - 1], 0.1 * block, 1e-12) << block;
    }
}
