#include <gtest/gtest.h>

#include "EngineRig.h"
#include "params/ModRouting.h"

// The band-limited copy of the input is made only while someone hears it: a slot that is on, or
// an envelope that follows the input. These tests check the listeners still hear what they heard
// when the copy was made for every block.
using namespace engine_rig;

// Slot 1 passes its input straight to the output. It hears a steady level, is switched off while
// the input falls silent, and is switched on again: the band limit's memory of the old level must
// not come out as a burst when it does.
TEST(InputRest, ASlotSwitchedOnAgainHearsNoStaleInput)
{
    Rig rig;
    const Stereo loud = rig.Run(Stereo(200 * kMs, 0.8));
    ASSERT_NEAR(loud.l.back(), 0.8, 0.01);
    rig.Set(kSlotOn1, 0.0);
    rig.Run(Stereo(100 * kMs, 0.0));
    rig.Set(kSlotOn1, 1.0);
    const Stereo back = rig.Run(Stereo(20 * kMs, 0.0));
    EXPECT_LT(Peak(back, 0), 1e-9);
}

// With every slot off, an envelope on the input still follows the band-limited input: a 20 kHz
// tone above the 15 kHz limit leaves it near rest, a 1 kHz tone of the same level lifts it, as
// when a slot is on.
TEST(InputRest, AnEnvelopeOnTheInputHearsTheBandLimitWithEverySlotOff)
{
    for (const bool slotOn : {true, false})
        for (const int source : {kEnvSrcInMono, kEnvSrcInLeft, kEnvSrcInRight})
        {
            SCOPED_TRACE(testing::Message() << "slot " << (slotOn ? "on" : "off") << ", source " << source);
            const auto follow = [&](double hz)
            {
                Rig rig;
                rig.Set({{kSlotOn1, slotOn ? 1.0 : 0.0},
                         {kENV1On, 1.0},
                         {kENV1Source, source},
                         {kENV1Attack, 1.0}});
                rig.Run(Sine(300 * kMs, hz, 0.5));
                return rig.Source(kModSourceEnv1)[kBlock - 1];
            };
            const double high = follow(20000.0), low = follow(1000.0);
            EXPECT_GT(low, 0.5);
            EXPECT_LT(high, 0.05 * low);
        }
}
