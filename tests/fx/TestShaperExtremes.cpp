// Every shaping and drive-filter type at the corners of its parameter space, at the lowest and
// highest rates, on loud noise: the output stays finite and bounded.

#include "dsp/TimeBase.h"
#include "fx/LPHP.h"
#include "fx/Lofi.h"
#include "fx/Shaper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace
{
struct Case
{
    int type;
    double top[5]; // the highest value of each parameter: 1, or a list's last index
};

std::unique_ptr<DSPShell> Make(int type)
{
    if (type == 22) return std::make_unique<Lofi>(false);
    if (type == 56) return std::make_unique<LPHP>(false);
    if (type == 57) return std::make_unique<VARILPHP>(false);
    return std::make_unique<Shaper>(type, false);
}
} // namespace

TEST(ShaperExtremes, FiniteAtParameterCornersAndRateLimits)
{
    const Case cases[] = {
        {6, {7, 1, 1, 1, 1}},  {14, {1, 1, 1, 1, 1}}, {15, {1, 1, 3, 1, 1}}, {16, {1, 1, 1, 1, 1}},
        {17, {1, 1, 3, 1, 1}}, {18, {1, 1, 1, 1, 1}}, {19, {1, 1, 3, 1, 1}}, {20, {1, 1, 1, 1, 1}},
        {21, {1, 1, 3, 1, 1}}, {22, {1, 1, 1, 1, 1}}, {23, {1, 1, 1, 1, 1}}, {24, {1, 1, 3, 1, 1}},
        {56, {1, 1, 1, 5, 1}}, {57, {1, 3, 1, 3, 1}},
    };
    uint32_t seed = 1;
    std::vector<double> in(gBlockLen), out(gBlockLen);
    for (double rate : {32000.0, 96000.0})
    {
        SetTimeBase(rate);
        for (const Case& c : cases)
            for (int corner = 0; corner < 32; ++corner)
            {
                SCOPED_TRACE(testing::Message()
                             << "type " << c.type << " corner " << corner << " rate " << rate);
                std::unique_ptr<DSPShell> m = Make(c.type);
                for (int p = 0; p < 5; ++p)
                    m->SetParam(p, (corner >> p) & 1 ? c.top[p] : 0.0);
                m->Reset();
                m->mIn1 = in.data();
                m->mOut1 = out.data();
                double peak = 0.0;
                for (int b = 0; b < 60; ++b)
                {
                    for (double& v : in)
                    {
                        seed = seed * 1664525u + 1013904223u;
                        v = 8.0 * (double(seed) / 4294967296.0 - 0.5);
                    }
                    m->Process();
                    for (double v : out)
                    {
                        ASSERT_TRUE(std::isfinite(v));
                        peak = std::max(peak, std::fabs(v));
                    }
                }
                EXPECT_LT(peak, 1e3);
            }
    }
    SetTimeBase(44100.0);
}
