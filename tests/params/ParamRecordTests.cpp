#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"

#include "modulators/WaveMenu.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

// The laws of one record: initialisers, the normalised power curve, quantising, display texts.

namespace
{
IParamRecord MakeDouble(double def, double min, double max, double step, double shape)
{
    IParamRecord p;
    p.InitDouble("D", def, min, max, step, "u", "", shape);
    return p;
}

IParamRecord MakeInt(int def, int min, int max)
{
    IParamRecord p;
    p.InitInt("I", def, min, max);
    return p;
}
} // namespace

TEST(ParamRecord, PrecisionFollowsTheStep)
{
    // Digits needed to show the step, at most six however fine it is.
    const std::pair<double, int> rows[] = {{1.0, 0},  {0.5, 1},   {0.1, 1},  {0.25, 2},
                                           {0.01, 2}, {0.001, 3}, {1e-9, 6}, {1.0 / 3.0, 6}};
    for (const auto& [step, digits] : rows)
        EXPECT_EQ(IParamRecord::PrecisionOfStep(step), digits) << step;
}

TEST(ParamRecord, InitialisersWidenEmptyRangesAndKeepTheFirstType)
{
    IParamRecord d = MakeDouble(5, 5, 5, 0.1, 0);
    EXPECT_EQ(d.type, IParamRecord::kTypeDouble);
    EXPECT_DOUBLE_EQ(d.max, 5.1);
    EXPECT_EQ(d.shape, 1.0); // a zero shape is not taken
    EXPECT_EQ(double(d.value), 5.0);

    IParamRecord i = MakeInt(3, 3, 2);
    EXPECT_EQ(i.type, IParamRecord::kTypeInt);
    EXPECT_EQ(i.max, 4.0);
    EXPECT_EQ(i.step, 1.0);

    IParamRecord e;
    e.InitEnum("E", 0, 1);
    EXPECT_EQ(e.type, IParamRecord::kTypeEnum);
    EXPECT_EQ(e.min, 0.0);
    EXPECT_EQ(e.max, 1.0);

    // A second initialiser changes range and value but not the type.
    e.InitDouble("E", 0.5, 0, 2, 0.5, "", "", 2.0);
    EXPECT_EQ(e.type, IParamRecord::kTypeEnum);
    EXPECT_EQ(e.shape, 2.0);
    EXPECT_EQ(double(e.value), 0.5);

    IParamRecord b;
    b.InitBool("B", true);
    EXPECT_EQ(b.type, IParamRecord::kTypeBool);
    EXPECT_EQ(double(b.value), 1.0);
    ASSERT_EQ(b.displayTexts.size(), 2u);
    EXPECT_STREQ(b.displayTexts[0].text, "");
    EXPECT_STREQ(b.displayTexts[1].text, "on");
    // The empty text doesn't count: off shows as a number.
    EXPECT_EQ(b.GetDisplayForHost(0, false), "0");
    EXPECT_EQ(b.GetDisplayForHost(1, false), "on");
}

TEST(ParamRecord, KeepValueLeavesTheValueAndDropsTheTexts)
{
    IParamRecord p;
    InitEnumFromList(p, "L", std::vector<const char*>{"X", "Y", "Z"}, 1);
    p.value = 2.0;
    p.InitEnum("L", 0, 5, "", "", true);
    EXPECT_EQ(double(p.value), 2.0);
    EXPECT_EQ(p.defaultValue, 0.0);
    EXPECT_EQ(p.max, 4.0);
    EXPECT_TRUE(p.displayTexts.empty());
    p.InitEnum("L", 0, 5);
    EXPECT_EQ(double(p.value), 0.0);
}

TEST(ParamRecord, NormalisationFollowsThePowerCurveOrItsMapping)
{
    // x = min + (max - min) n^shape, clamped on the way in: {min, max, shape, n, x}.
    struct Row
    {
        double min, max, shape, n, x;
    };
    const Row rows[] = {
        {1, 4000, 3, 0.5, 500.875},       // delay time: 1 + 3999 / 8
        {-60, 12, 0.5, 0.25, -24.0},      // gain: -60 + 72 sqrt(0.25)
        {0.001, 500, 4, 0.5, 31.2509375}, // LFO rate
        {0, 160, 1, 0.25, 40.0},          // linear
    };
    for (const Row& r : rows)
    {
        const IParamRecord p = MakeDouble(r.min, r.min, r.max, 0.01, r.shape);
        EXPECT_NEAR(p.GetNonNormalized(r.n), r.x, 1e-12) << r.max;
        EXPECT_NEAR(p.GetNormalized(r.x), r.n, 1e-14) << r.max;
        EXPECT_EQ(p.GetNormalized(r.min - 5.0), 0.0);
        EXPECT_EQ(p.GetNormalized(r.max + 5.0), 1.0);
    }
    IParamRecord m = MakeDouble(0, 10, 20, 0.1, 3);
    m.mapping = IParamRecord::Mapping{[](double t) { return t * t; }, [](double n) { return std::sqrt(n); }};
    EXPECT_DOUBLE_EQ(m.GetNormalized(15), 0.25);
    EXPECT_DOUBLE_EQ(m.GetNonNormalized(0.25), 15.0);
}

TEST(ParamRecord, IntegersRoundHalfUpAndAreCutAboveOnly)
{
    IParamRecord sw = MakeInt(0, 0, 1);
    sw.SetNormalized(0.5);
    EXPECT_EQ(double(sw.value), 1.0);
    sw.SetNormalized(0.4999);
    EXPECT_EQ(double(sw.value), 0.0);

    IParamRecord five;
    five.InitEnum("E", 0, 5);  // 0..4, so n gives 4n
    five.SetNormalized(0.375); // 1.5
    EXPECT_EQ(double(five.value), 2.0);
    five.SetNormalized(0.625); // 2.5
    EXPECT_EQ(double(five.value), 3.0);
    five.SetNormalized(0.6); // 2.4
    EXPECT_EQ(double(five.value), 2.0);

    // Above the top: 1.5 rounds to 2 and is cut to 1.
    sw.SetNormalized(1.5);
    EXPECT_EQ(double(sw.value), 1.0);
    IParamRecord factor = MakeInt(4, 1, 16);
    factor.SetNormalized(1.04); // 16.6 -> 17 -> 16
    EXPECT_EQ(double(factor.value), 16.0);
    // Below the bottom nothing is cut: -0.75 rounds to -1, under the minimum 0.
    sw.SetNormalized(-0.75);
    EXPECT_EQ(double(sw.value), -1.0);
    factor.SetNormalized(-0.1); // 1 - 1.5 = -0.5 -> 0, under the minimum 1
    EXPECT_EQ(double(factor.value), 0.0);

    // Doubles are not snapped to their step.
    IParamRecord fb = MakeDouble(50, 0, 160, 0.1, 1);
    fb.SetNormalized(0.123456);
    EXPECT_DOUBLE_EQ(double(fb.value), 160 * 0.123456);
    fb.SetNormalized(1.1);
    EXPECT_EQ(double(fb.value), 160.0);
}

TEST(ParamRecord, DisplayUsesTextsThenNumbers)
{
    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, kWaveMenuNames);
    const IParamRecord& feedback = *params[kFeedback1];
    EXPECT_EQ(feedback.GetDisplayForHost(50, false), "50.0");
    EXPECT_EQ(feedback.GetDisplayForHost(0.25, true), "40.0");
    EXPECT_EQ(params[kDelayTimeL1]->GetDisplayForHost(500, false), "500.00");
    EXPECT_EQ(params[kInputGain1]->GetDisplayForHost(-3, false), "-3.0");
    EXPECT_EQ(params[kDelayFactorL1]->GetDisplayForHost(4, false), "4");

    const IParamRecord& timebase = *params[kTimebase1];
    EXPECT_EQ(timebase.GetDisplayForHost(2, false, false), "2");
    // A normalised value shows the entry it would select: 10 n rounded.
    EXPECT_EQ(timebase.GetDisplayForHost(0.24, true), "1/16");
    EXPECT_EQ(timebase.GetDisplayForHost(0.26, true), "1/32");
    EXPECT_EQ(timebase.GetDisplayForHost(1.0, true), "1/32t");
    // A non-integer value matches no text.
    EXPECT_EQ(timebase.GetDisplayForHost(2.4, false), "2");

    // Blank list entries show their number.
    EXPECT_EQ(params[kFX1PR]->GetDisplayForHost(23, false), "23");
    EXPECT_EQ(params[kFX1PR]->GetDisplayForHost(22, false), "COMPRESSOR");
    EXPECT_EQ(params[kFX1FB]->GetDisplayForHost(13, false), "COMPRESSOR");
    EXPECT_EQ(params[kFX1FB]->GetDisplayForHost(14, false), "14");

    IParamRecord negated = *params[kFeedback1];
    negated.negateDisplay = true;
    EXPECT_EQ(negated.GetDisplayForHost(50, false), "-50.0");
}

TEST(ParamRecord, TextToValueMatchesDisplayTextsExactly)
{
    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, kWaveMenuNames);
    double v = -1;
    ASSERT_TRUE(params[kTimebase2]->GetValueFromDisplayText("1/16", v));
    EXPECT_EQ(v, 2.0);
    ASSERT_TRUE(params[kFX3FB]->GetValueFromDisplayText("COMPRESSOR", v));
    EXPECT_EQ(v, 13.0);
    ASSERT_TRUE(params[kLFOWave2]->GetValueFromDisplayText("S&H", v));
    EXPECT_EQ(v, 26.0);
    ASSERT_TRUE(params[kInput4]->GetValueFromDisplayText("SLOT 1+2+3", v));
    EXPECT_EQ(v, 11.0);
    v = -1;
    EXPECT_FALSE(params[kTimebase2]->GetValueFromDisplayText("1/16 ", v));
    EXPECT_FALSE(params[kTimebase2]->GetValueFromDisplayText("ms", v));
    EXPECT_FALSE(params[kFeedback1]->GetValueFromDisplayText("50.0", v));
    EXPECT_EQ(v, -1.0);
}
