#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "EngineRig.h"
#include "delay/DelayMode.h"
#include "fx/EffectTable.h"

using namespace engine_rig;

// One thread switches the types of all twelve positions through the parameter records while
// another processes; the sanitizer builds check this for races and use after free.
TEST(EffectRackStress, TypeSwitchingWhileProcessing)
{
    Engine e;
    Quorvex* plug = &e.Plug();
    for (int s = 0; s < 4; ++s)
    {
        for (int id : {kSlotOn1, kFXOnPR1, kFXOnFB1, kFXOnPO1, kTapFXParam1_1})
            e.Set(id + s, 1);
        plug->Fields().mStepFxMask[s] = 0xFFFF;
    }
    e.Set({{kDelayMode1 + 1, DelayTapped}, {kDelayMode1 + 3, DelayTapped}});
    plug->SyncTapFxMasks();

    std::atomic<bool> stop{false};
    std::atomic<long> blocks{0};
    std::thread audio(
        [&]
        {
            std::minstd_rand rng(7);
            for (std::uint32_t seed = 1; !stop.load(); ++seed)
            {
                Stream(*plug, Noise(256, 0.5, seed), 256);
                // Automation of slot 4's PRE and FB types: built by the rack's worker.
                const long done = blocks.fetch_add(8);
                if (done % 64 == 0)
                {
                    const int position = done % 128 == 0 ? 3 : 7;
                    const auto scope = QuorvexProbe::AsAudioThread(*plug);
                    e.Set(kFX1PR + position, static_cast<double>(rng() % 4));
                }
            }
        });

    std::minstd_rand rng(3);
    const int menuSizes[3] = {23, 14, 23};
    for (int round = 0; round < 250; ++round)
    {
        for (int position = 0; position < 12; ++position)
        {
            if (position == 3 || position == 7) continue; // the audio thread's
            const int kind = position / 4;
            // Cheap types mostly, so that the sanitizer run stays short; now and then any type.
            const int menu =
                static_cast<int>(rng() % static_cast<unsigned>(round % 25 == 0 ? menuSizes[kind] : 4));
            e.Set({{kFX1PR + position, menu}, {kFXParam1PR1 + position, static_cast<double>(rng() % 101)}});
        }
        if (round % 2 == 0) QuorvexProbe::Effects(*plug).ServicePending();
    }
    stop.store(true);
    audio.join();
    QuorvexProbe::Effects(*plug).ServicePending();
    EXPECT_GT(blocks.load(), 0);
    // Every position ended on the type its record names.
    for (int position = 0; position < 12; ++position)
    {
        const int menu = static_cast<int>(std::lround(plug->GetParam(kFX1PR + position)->value));
        EXPECT_EQ(QuorvexProbe::SlotAt(*plug, position % 4).mFxType[position / 4],
                  FxTypeFromMenu(position / 4, menu));
    }
}
