#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "QuorvexProbe.h"
#include "delay/DelayMode.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

// One thread switches the types of all twelve positions through the parameter records while
// another processes; the sanitizer builds check this for races and use after free.
TEST(EffectRackStress, TypeSwitchingWhileProcessing)
{
    std::unique_ptr<Quorvex, void (*)(Quorvex*)> plug(new Quorvex(), [](Quorvex* q) { q->release(); });
    plug->SetSampleRate(48000.0);
    const auto set = [&](int id, double v)
    {
        plug->GetParam(id)->value = v;
        plug->OnParamChange(id);
    };
    for (int s = 0; s < 4; ++s)
    {
        set(kSlotOn1 + s, 1);
        set(kFXOnPR1 + s, 1);
        set(kFXOnFB1 + s, 1);
        set(kFXOnPO1 + s, 1);
        set(kTapFXParam1_1 + s, 1);
        plug->Fields().mStepFxMask[s] = 0xFFFF;
    }
    set(kDelayMode1 + 1, DelayTapped);
    set(kDelayMode1 + 3, DelayTapped);
    plug->SyncTapFxMasks();

    std::atomic<bool> stop{false};
    std::atomic<long> blocks{0};
    std::thread audio(
        [&]
        {
            std::vector<double> inL(256), inR(256), outL(256), outR(256), sc(256, 0.0);
            std::minstd_rand rng(7);
            std::uniform_real_distribution<double> noise(-0.5, 0.5);
            while (!stop.load())
            {
                for (int i = 0; i < 256; ++i)
                {
                    inL[static_cast<std::size_t>(i)] = noise(rng);
                    inR[static_cast<std::size_t>(i)] = noise(rng);
                }
                double* in[4] = {inL.data(), inR.data(), sc.data(), sc.data()};
                double* out[2] = {outL.data(), outR.data()};
                plug->ProcessDoubleReplacing(in, out, 256);
                // Automation of slot 4's PRE and FB types: built by the rack's worker.
                const long done = blocks.fetch_add(8);
                if (done % 64 == 0)
                {
                    const int position = done % 128 == 0 ? 3 : 7;
                    const auto scope = QuorvexProbe::AsAudioThread(*plug);
                    set(kFX1PR + position, static_cast<double>(rng() % 4));
                }
            }
        });

    std::minstd_rand rng(3);
    const int menuSizes[3] = {23, 14, 23};
    int switches = 0;
    for (int round = 0; round < 250; ++round)
    {
        for (int position = 0; position < 12; ++position)
        {
            if (position == 3 || position == 7) continue; // the audio thread's
            const int kind = position / 4;
            // Cheap types mostly, so that the sanitizer run stays short; now and then any type.
            const int menu =
                static_cast<int>(rng() % static_cast<unsigned>(round % 25 == 0 ? menuSizes[kind] : 4));
            set(kFX1PR + position, menu);
            set(kFXParam1PR1 + position, static_cast<double>(rng() % 101));
            ++switches;
        }
        if (round % 2 == 0) QuorvexProbe::Effects(*plug).ServicePending();
    }
    stop.store(true);
    audio.join();
    QuorvexProbe::Effects(*plug).ServicePending();
    EXPECT_EQ(switches, 2500);
    EXPECT_GT(blocks.load(), 0);
    // Every position ended on the type its record names.
    for (int position = 0; position < 12; ++position)
    {
        const int menu = static_cast<int>(std::lround(plug->GetParam(kFX1PR + position)->value));
        EXPECT_EQ(QuorvexProbe::SlotAt(*plug, position % 4).mFxType[position / 4],
                  FxTypeFromMenu(position / 4, menu));
    }
}
