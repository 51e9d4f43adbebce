#include "ReverbMeasure.h"
#include "reverb/AFdnReverb.h"
#include "reverb/Ambience.h"
#include "reverb/ReverbLaws.h"

#include <gtest/gtest.h>

#include <random>

namespace
{
// Loud noise through every corner of the four controls; the output must stay finite and bounded.
// (A long pre-delay keeps the noise from the network within these frames; the network itself is
// the same as with a short one, so the corner still checks the ring's bounds.)
void ExpectSane(DSPShell& fx, const char* name, double rate, int corner)
{
    const int frames = 2048;
    std::mt19937 rng(static_cast<unsigned>(corner));
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    std::vector<double> l(static_cast<size_t>(frames)), r(static_cast<size_t>(frames));
    for (int i = 0; i < frames; ++i)
        l[size_t(i)] = dist(rng), r[size_t(i)] = dist(rng);
    const StereoBuffer out = RenderStereo(fx, l, r, frames);
    double peak = 0.0;
    bool finite = true;
    for (size_t i = 0; i < out.left.size(); ++i)
    {
        finite = finite && std::isfinite(out.left[i]) && std::isfinite(out.right[i]);
        peak = std::max({peak, std::fabs(out.left[i]), std::fabs(out.right[i])});
    }
    EXPECT_TRUE(finite) << name << " at " << rate << " Hz, corner " << corner;
    EXPECT_LT(peak, 100.0) << name << " at " << rate << " Hz, corner " << corner;
}

double Corner(int corner, int bit)
{
    return (corner >> bit) & 1 ? 100.0 : 0.0;
}
} // namespace

// Rates above 96 kHz keep the lengths of 96 kHz, so the rings are never overrun (the sanitizer
// build checks the memory side of it).
TEST(ReverbExtremes, FiniteAtEveryCornerAndRate)
{
    for (double rate : {32000.0, 44100.0, 88200.0, 96000.0, 192000.0})
    {
        SetTimeBase(rate);
        AFdnReverb hall(16, 7, 1), room(10, 2, 4);
        Ambience ambience;
        for (int corner = 0; corner < 16; ++corner)
        {
            const double size = Corner(corner, 0), pre = Corner(corner, 1), hp = Corner(corner, 2),
                         damp = Corner(corner, 3);
            hall.SetParam(0, HallSizeSeconds(size));
            hall.SetParam(1, PreDelaySamples(HallPreDelayMs(pre)));
            hall.SetParam(2, ReverbHighPass(hp));
            hall.SetParam(3, HallDamp(damp));
            hall.Reset();
            room.SetParam(0, RoomSizeSeconds(size));
            room.SetParam(1, PreDelaySamples(RoomPreDelayMs(pre)));
            room.SetParam(2, ReverbHighPass(hp));
            room.SetParam(3, RoomDamp(damp));
            room.Reset();
            ambience.SetParam(0, corner == 15 ? 7.0 : AmbienceSize(size));
            ambience.SetParam(1, AmbienceDecay(pre));
            ambience.SetParam(2, AmbienceModulation(hp));
            ambience.SetParam(3, AmbienceDamp(damp));
            ambience.Init();
            ExpectSane(hall, "hall", rate, corner);
            ExpectSane(room, "room", rate, corner);
            ExpectSane(ambience, "ambience", rate, corner);
        }
    }
    SetTimeBase(44100.0);
}

// The laws at their ends, as the engine shows them.
TEST(ReverbLaws, EndsOfTheControls)
{
    EXPECT_DOUBLE_EQ(HallSizeSeconds(0.0), 1.0);
    EXPECT_DOUBLE_EQ(HallSizeSeconds(100.0), 30.0);
    EXPECT_DOUBLE_EQ(RoomSizeSeconds(100.0), 4.0);
    EXPECT_DOUBLE_EQ(AmbienceSize(0.0), 1.2);
    EXPECT_DOUBLE_EQ(AmbienceSize(100.0), 5.2);
    EXPECT_LT(AmbienceDecay(100.0), 1.0);
    EXPECT_NEAR(MapFreqHz(float(ReverbHighPass(100.0))), 2000.0, 20.0);
    EXPECT_NEAR(AmbienceDampHz(0.0), 20000.0, 200.0);
    EXPECT_NEAR(AmbienceDampHz(100.0), 50.0 * std::pow(400.0, 1.0 - 0.768621786840241), 2.0);
    SetTimeBase(48000.0);
    EXPECT_DOUBLE_EQ(PreDelaySamples(HallPreDelayMs(100.0)), 24000.0);
    SetTimeBase(44100.0);
}
