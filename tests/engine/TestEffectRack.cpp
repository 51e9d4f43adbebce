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
#include "core/EffectRack.h"
#include "delay/DelayMode.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

// The rack against a catalog of recording modules: what a position's modules receive, the tap
// step law, and the replacement protocol. Last, the real engine under concurrent type switching.

namespace
{
class RecordingModule : public DSPShell
{
  public:
    RecordingModule(int type, bool isRight, const DSPShell* left) : DSPShell(isRight), type(type), left(left)
    {
    }
    void SetParam(int p, double v) override
    {
        values[static_cast<std::size_t>(p)] = v;
        if (p == 4) mMix = v;
    }
    int type;
    const DSPShell* left;
    std::array<Relaxed<double>, 5> values{};
};

// Types 1..3 exist; a module's value is 10 x type + percent / 100, so both law and type show.
class RecordingCatalog : public FxCatalog
{
  public:
    std::unique_ptr<DSPShell> Create(int type, bool isRight, const DSPShell* left) const override
    {
        if (type < 1 || type > 3) return nullptr;
        return std::make_unique<RecordingModule>(type, isRight, left);
    }
    double ModuleValue(int type, int, double percent) const override { return 10.0 * type + percent * 0.01; }
    bool P5IsMix(int type) const override { return type != 3; }
};

struct Bench
{
    Slot slots[4] = {Slot(0), Slot(1), Slot(2), Slot(3)};
    RecordingCatalog catalog;
    EffectRack rack{slots, catalog};

    RecordingModule& Module(int position, int k)
    {
        const int kind = position / 4;
        return *static_cast<RecordingModule*>(slots[position % 4].FxModule(kind, k));
    }
};

constexpr int kPre1 = 0;   // slot 1 PRE
constexpr int kFb2 = 5;    // slot 2 FB
constexpr int kPost3 = 10; // slot 3 POST
} // namespace

TEST(EffectRack, BuildsConfiguredPairsAndReportsEachNewType)
{
    auto b = std::make_unique<Bench>();
    std::vector<std::array<int, 3>> calls;
    b->rack.SetTypeListener(
        [&](int position, int type, bool byUser) {
            calls.push_back({position, type, byUser});
        });
    b->rack.SetValue(kPre1, 0, 40.0);
    b->rack.SetValue(kPre1, 4, 70.0);
    b->rack.SetOn(kPre1, true);
    b->rack.RequestType(kPre1, 1, true, false);
    b->rack.RequestType(kPost3, 2, false, false);
    b->rack.RequestType(kFb2, 9, true, false); // no such type
    b->rack.ServicePending();

    Slot& s1 = b->slots[0];
    EXPECT_EQ(s1.mFxType[Slot::kFxPre], 1);
    ASSERT_EQ(s1.FxCount(Slot::kFxPre), 2);
    EXPECT_EQ(b->Module(kPre1, 0).mChannelSign, 1.0);
    EXPECT_EQ(b->Module(kPre1, 1).mChannelSign, -1.0);
    EXPECT_EQ(b->Module(kPre1, 1).left, &b->Module(kPre1, 0)); // the right one knows its partner
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 0).values[0], 10.4);
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 1).mMix, 10.7);
    EXPECT_FALSE(b->Module(kPre1, 0).mBypass);

    EXPECT_EQ(b->slots[2].FxCount(Slot::kFxPost), Slot::kFxModules); // a pair per tap
    EXPECT_TRUE(b->Module(kPost3, 31).mBypass);                      // its "FXOn" is off
    EXPECT_EQ(b->slots[1].mFxType[Slot::kFxFeedback], 0);
    EXPECT_EQ(b->slots[1].FxCount(Slot::kFxFeedback), 0);

    const std::vector<std::array<int, 3>> expected = {{kPre1, 1, 1}, {kFb2, 9, 1}, {kPost3, 2, 0}};
    EXPECT_EQ(calls, expected);

    // Same type again: nothing is rebuilt or reported.
    calls.clear();
    DSPShell* before = &b->Module(kPre1, 0);
    b->rack.RequestType(kPre1, 1, true, false);
    b->rack.ServicePending();
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(&b->Module(kPre1, 0), before);

    // Switching off turns every module to bypass; values reach every module of the position.
    b->rack.SetOn(kPre1, false);
    b->rack.SetValue(kPre1, 2, 25.0);
    for (int k = 0; k < 2; ++k)
    {
        EXPECT_TRUE(b->Module(kPre1, k).mBypass);
        EXPECT_DOUBLE_EQ(b->Module(kPre1, k).values[2], 10.25);
    }
}

TEST(EffectRack, TapStepsScaleTheSelectedParameterOfEachPair)
{
    auto b = std::make_unique<Bench>();
    const int slot = 2;
    b->rack.SetValue(kPost3, 1, 80.0);
    b->rack.RequestType(kPost3, 1, true, false);
    b->rack.ServicePending();
    b->rack.SetTapped(slot, true);
    b->rack.SetTapSelection(slot, 0, 2); // row 1 drives P2
    b->rack.SetTapDepth(slot, 0, 50.0);
    b->rack.SetTapStep(slot, 0, 3, 20.0);
    b->rack.SetTapStep(slot, 0, 4, 20.0);
    b->rack.SetTapStepMask(slot, 0, 1u << 3); // tap 4's step button is off

    // base x ((1 - depth) + depth x step) = 80 x (0.5 + 0.5 x 0.2) = 48 %.
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 6).values[1], 10.48);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 7).values[1], 10.48);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 8).values[1], 10.8);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 0).values[1], 10.8);

    // A new base is re-sent through the steps; leaving TAPPED or the row gives the plain base.
    b->rack.SetValue(kPost3, 1, 40.0);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 6).values[1], 10.24);
    b->rack.SetTapped(slot, false);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 6).values[1], 10.4);
    b->rack.SetTapped(slot, true);
    b->rack.SetTapSelection(slot, 0, 0);
    EXPECT_DOUBLE_EQ(b->Module(kPost3, 6).values[1], 10.4);
}

// The builder must not swap while a user is inside the position, and a write skipped meanwhile
// must reach the new modules.
TEST(EffectRack, ReplacementWaitsForUsersAndCatchesSkippedWrites)
{
    auto b = std::make_unique<Bench>();
    Slot& slot = b->slots[0];
    b->rack.RequestType(kPre1, 1, true, false);
    b->rack.ServicePending();
    RecordingModule* old = &b->Module(kPre1, 0);

    ASSERT_TRUE(slot.EnterFx(Slot::kFxPre)); // the block is running this position
    b->rack.RequestType(kPre1, 2, true, false);
    std::thread builder([&] { b->rack.ServicePending(); });
    while (slot.mFxSwapping[Slot::kFxPre].load() == 0)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(slot.FxModule(Slot::kFxPre, 0), old);
    EXPECT_EQ(slot.mFxType[Slot::kFxPre], 1);
    EXPECT_FALSE(slot.EnterFx(Slot::kFxPre)); // nobody new gets in
    b->rack.SetValue(kPre1, 3, 60.0);         // meets the mark: skipped for now
    EXPECT_DOUBLE_EQ(old->values[3], 10.0);
    slot.LeaveFx(Slot::kFxPre);
    builder.join();

    EXPECT_EQ(slot.mFxType[Slot::kFxPre], 2);
    EXPECT_EQ(slot.mFxSwapping[Slot::kFxPre].load(), 0);
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 1).values[3], 20.6);
}

// A request raised on the audio thread is built by the worker; the others wait for their caller.
TEST(EffectRack, WorkerBuildsDeferredRequestsOnly)
{
    auto b = std::make_unique<Bench>();
    b->rack.StartWorker();
    b->rack.RequestType(kPre1, 1, false, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(b->slots[0].mFxType[Slot::kFxPre], 0);
    b->rack.RequestType(kFb2, 2, false, true);
    for (int wait = 0; wait < 1000 && b->slots[1].mFxType[Slot::kFxFeedback] != 2; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(b->slots[1].mFxType[Slot::kFxFeedback], 2);
    EXPECT_EQ(b->slots[0].mFxType[Slot::kFxPre], 0);
}

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
