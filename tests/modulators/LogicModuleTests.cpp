#include "dsp/TimeBase.h"
#include "modulators/LogicModule.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <tuple>

namespace
{
using Block = std::array<double, gBlockLen>;
using Four = std::array<double, 4>;

// Four (a, b) pairs repeated over the block; the expected rows below are worked by hand.
constexpr Four kA = {0.5, -0.6, 0.1, -0.2};
constexpr Four kB = {-0.3, 0.2, 0.4, -0.7};
constexpr Four kZero = {0.0, 0.0, 0.0, 0.0};

Block Pattern(const Four& values)
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

void ExpectPattern(const LogicModule& logic, const Four& expected)
{
    for (int i = 0; i < gBlockLen; ++i)
        EXPECT_NEAR(logic.Output()[i], expected[i % 4], 1e-12) << "at " << i;
}
} // namespace

TEST(LogicModule, ModesDepthsAndClipOnKnownInputs)
{
    const Block a = Pattern(kA), b = Pattern(kB), big = Constant(0.9);
    // {menu, source 1, source 2, their depths and the output depth in percent, expected}; a missing
    // source counts as zero; the sum is clipped to -1..1.
    const std::tuple<int, const double*, const double*, double, double, double, Four> cases[] = {
        {0, a.data(), b.data(), 100, 100, 100, {0.2, -0.4, 0.5, -0.9}},     // ADD
        {1, a.data(), b.data(), 100, 100, 100, {-0.15, -0.12, 0.04, 0.14}}, // MULTIPLY
        {2, a.data(), b.data(), 100, 100, 100, {-0.3, -0.6, 0.1, -0.7}},    // MIN
        {3, a.data(), b.data(), 100, 100, 100, {0.5, 0.2, 0.4, -0.2}},      // MAX
        {4, a.data(), b.data(), 100, 100, 100, {0.3, -0.2, 0.1, -0.2}},     // ABS MIN keeps source 1's sign
        {5, a.data(), b.data(), 100, 100, 100, {0.5, -0.6, 0.4, -0.7}},     // ABS MAX
        {6, a.data(), b.data(), 100, 100, 100, {0.5, -0.6, 0.0, 0.0}},      // GATE
        {7, a.data(), b.data(), 100, 100, 100, {1.0, 0.0, 0.0, 1.0}},       // HIGHER
        {8, a.data(), b.data(), 100, 100, 100, {0.0, 1.0, 1.0, 0.0}},       // LOWER
        {6, a.data(), nullptr, 100, 100, 100, kA},                          // GATE passes source 1
        {7, a.data(), nullptr, 100, 100, 100, {1.0, 0.0, 1.0, 0.0}},        // HIGHER: above zero
        {8, nullptr, nullptr, 100, 100, 100, kZero},                        // LOWER with nothing is 0
        {8, nullptr, b.data(), 100, 100, 100, {0.0, 1.0, 1.0, 0.0}},        // LOWER: zero below source 2
        {1, a.data(), nullptr, 100, 100, 100, kA},                          // MULTIPLY without source 2
        {1, nullptr, b.data(), 100, 100, 100, kZero},                       // MULTIPLY without source 1
        {4, a.data(), nullptr, 100, 100, 100, kZero},                       // ABS MIN against nothing
        {0, a.data(), b.data(), 200, -50, 50, {0.575, -0.65, 0.0, -0.025}}, // (2a - b / 2) / 2
        {0, big.data(), big.data(), 100, 100, 100, {1.0, 1.0, 1.0, 1.0}},   // clipped above
        {0, big.data(), big.data(), 100, 100, -100, {-1.0, -1.0, -1.0, -1.0}},
    };
    for (const auto& [menu, s1, s2, depth1, depth2, depth, expected] : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << LogicModule::kModeLabels[menu] << (s1 ? "" : " no source 1")
                     << (s2 ? "" : " no source 2") << " depths " << depth1 << " " << depth2 << " " << depth);
        LogicModule logic;
        logic.SetSource1(s1);
        logic.SetSource2(s2);
        logic.SetSource1Depth(depth1);
        logic.SetSource2Depth(depth2);
        logic.SetDepth(depth);
        logic.SetModeMenu(menu);
        logic.Reset();
        logic.Process();
        ExpectPattern(logic, expected);
    }

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

// The smoothing pole's time constant is the set time / (2 pi) at every rate; the depth acts after
// the smoother, 0 ms passes the input straight through, and the module reads its own output one
// block late.
TEST(LogicModule, SmoothingDepthAfterItAndOwnOutputReadLate)
{
    const Block one = Constant(0.8);
    for (double rate : {44100.0, 96000.0})
    {
        SetTimeBase(rate);
        LogicModule logic;
        logic.SetSource1(one.data());
        logic.SetSmooth(10.0);
        logic.Reset();
        int crossing = -1; // the sample that reaches 63 % of the step
        for (int block = 0; block < 40 && crossing < 0; ++block)
        {
            logic.Process();
            for (int i = 0; i < gBlockLen && crossing < 0; ++i)
                if (logic.Output()[i] >= 0.8 * (1.0 - std::exp(-1.0))) crossing = block * gBlockLen + i + 1;
        }
        EXPECT_NEAR(crossing, 0.010 * rate / (2.0 * M_PI), 1.0) << rate;
        // Halving the depth mid-ramp halves the very next sample: the smoother does not see it.
        const double before = logic.Output()[gBlockLen - 1];
        logic.SetDepth(50.0);
        logic.Process();
        EXPECT_LT(logic.Output()[0], 0.5 * 0.8);
        EXPECT_GT(logic.Output()[0], 0.5 * before);
        for (int block = 0; block < 100; ++block)
            logic.Process();
        EXPECT_NEAR(logic.Output()[gBlockLen - 1], 0.4, 1e-9) << rate;
    }
    SetTimeBase(44100.0);

    LogicModule direct;
    direct.SetSource1(one.data());
    direct.SetSmooth(0.0);
    direct.Process();
    EXPECT_DOUBLE_EQ(direct.Output()[0], 0.8);

    // Depth modulated by the module's own output, which it reads one block late: w = last output +
    // 0.5, out = 0.5 w, so the outputs run 0.25, 0.375, 0.4375, ... towards 0.5.
    const Block a = Constant(0.5);
    Block bank{};
    LogicModule own(bank.data());
    own.SetSource1(a.data());
    own.SetDepthSource(bank.data());
    own.SetDepthMod(100.0);
    own.SetDepth(50.0);
    double expected = 0.0;
    for (int block = 0; block < 4; ++block)
    {
        expected = 0.5 * (expected + 0.5);
        own.Process();
        for (int i = 0; i < gBlockLen; ++i)
            ASSERT_NEAR(bank[i], expected, 1e-12) << block << ", " << i;
    }
}
