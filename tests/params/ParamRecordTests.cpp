#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>

// The laws of one record: initialisers, the normalised power curve, quantising. Its texts are
// checked as hosts read and type them, through the bundle (host/load).

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

TEST(ParamRecord, InitialisersWidenEmptyRangesKeepTheFirstTypeAndSetThePrecision)
{
    // Digits needed to show the step, at most six however fine it is.
    for (const auto& [step, digits] : {std::pair{1.0, 0}, {0.5, 1}, {0.25, 2}, {0.001, 3}, {1.0 / 3.0, 6}})
        EXPECT_EQ(IParamRecord::PrecisionOfStep(step), digits) << step;
    IParamRecord d = MakeDouble(5, 5, 5, 0.1, 0);
    EXPECT_DOUBLE_EQ(d.max, 5.1);
    EXPECT_EQ(d.shape, 1.0); // a zero shape is not taken
    EXPECT_EQ(MakeInt(3, 3, 2).max, 4.0);

    // A second initialiser changes range and value but not the type; keepValue keeps the value
    // and drops the texts.
    IParamRecord e;
    InitEnumFromList(e, "L", std::vector<const char*>{"X", "Y", "Z"}, 1);
    e.value = 2.0;
    e.InitEnum("L", 0, 5, "", "", true);
    EXPECT_EQ(double(e.value), 2.0);
    EXPECT_EQ(e.max, 4.0);
    EXPECT_TRUE(e.displayTexts.empty());
    e.InitDouble("E", 0.5, 0, 2, 0.5, "", "", 2.0);
    EXPECT_EQ(e.type, IParamRecord::kTypeEnum);
    EXPECT_EQ(double(e.value), 0.5);

    // The empty off text doesn't count: off shows as a number.
    IParamRecord b;
    b.InitBool("B", true);
    EXPECT_EQ(double(b.value), 1.0);
    EXPECT_EQ(b.GetDisplayForHost(0, false), "0");
    EXPECT_EQ(b.GetDisplayForHost(1, false), "on");
}

TEST(ParamRecord, NormalisationFollowsThePowerCurveOrItsMapping)
{
    // x = min + (max - min) n^shape, clamped on the way in: {min, max, shape, n, x}.
    const std::tuple<double, double, double, double, double> rows[] = {
        {1, 4000, 3, 0.5, 500.875},       // delay time: 1 + 3999 / 8
        {-60, 12, 0.5, 0.25, -24.0},      // gain: -60 + 72 sqrt(0.25)
        {0.001, 500, 4, 0.5, 31.2509375}, // LFO rate
    };
    for (const auto& [min, max, shape, n, x] : rows)
    {
        const IParamRecord p = MakeDouble(min, min, max, 0.01, shape);
        EXPECT_NEAR(p.GetNonNormalized(n), x, 1e-12) << max;
        EXPECT_NEAR(p.GetNormalized(x), n, 1e-14) << max;
        EXPECT_EQ(p.GetNormalized(min - 5.0), 0.0);
        EXPECT_EQ(p.GetNormalized(max + 5.0), 1.0);
    }
    IParamRecord m = MakeDouble(0, 10, 20, 0.1, 3);
    m.mapping = IParamRecord::Mapping{[](double t) { return t * t; }, [](double n) { return std::sqrt(n); }};
    EXPECT_DOUBLE_EQ(m.GetNormalized(15), 0.25);
    EXPECT_DOUBLE_EQ(m.GetNonNormalized(0.25), 15.0);
}

TEST(ParamRecord, IntegersRoundHalfUpAndAreCutAboveOnly)
{
    // {min, max, normalised, value}: half rounds up; above the top the value is cut, below the
    // bottom it is not. Doubles (max 0) are not snapped to their step, only clamped.
    const std::tuple<int, int, double, double> rows[] = {
        {0, 1, 0.5, 1},    {0, 1, 0.4999, 0}, {0, 4, 0.375, 2},           {0, 4, 0.625, 3}, {0, 4, 0.6, 2},
        {1, 16, 1.04, 16}, {0, 1, -0.75, -1}, {0, 0, 0.123456, 19.75296}, {0, 0, 1.1, 160}};
    for (const auto& [min, max, n, value] : rows)
    {
        IParamRecord p = max > 0 ? MakeInt(min, min, max) : MakeDouble(50, 0, 160, 0.1, 1);
        p.SetNormalized(n);
        EXPECT_NEAR(double(p.value), value, 1e-12) << min << ".." << max << " at " << n;
    }
}
