#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "core/EffectRack.h"

// The rack against a catalog of recording modules: what a position's modules receive, the tap
// step law, and the replacement as the rack drives it.

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
        return *static_cast<RecordingModule*>(slots[position % 4].FxList(kind).Module(k));
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
    ASSERT_EQ(s1.FxList(Slot::kFxPre).Count(), 2);
    EXPECT_EQ(b->Module(kPre1, 0).mChannelSign, 1.0);
    EXPECT_EQ(b->Module(kPre1, 1).mChannelSign, -1.0);
    EXPECT_EQ(b->Module(kPre1, 1).left, &b->Module(kPre1, 0)); // the right one knows its partner
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 0).values[0], 10.4);
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 1).mMix, 10.7);
    EXPECT_FALSE(b->Module(kPre1, 0).mBypass);

    EXPECT_EQ(b->slots[2].FxList(Slot::kFxPost).Count(), Slot::kFxModules); // a pair per tap
    EXPECT_TRUE(b->Module(kPost3, 31).mBypass);                             // its "FXOn" is off
    EXPECT_EQ(b->slots[1].mFxType[Slot::kFxFeedback], 0);
    EXPECT_EQ(b->slots[1].FxList(Slot::kFxFeedback).Count(), 0);

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
    FxModuleList& list = b->slots[0].FxList(Slot::kFxPre);
    Slot& slot = b->slots[0];
    b->rack.RequestType(kPre1, 1, true, false);
    b->rack.ServicePending();
    RecordingModule* old = &b->Module(kPre1, 0);

    ASSERT_TRUE(list.Enter()); // the block is running this position
    b->rack.RequestType(kPre1, 2, true, false);
    std::thread builder([&] { b->rack.ServicePending(); });
    while (!list.Swapping())
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(list.Module(0), old);
    EXPECT_EQ(slot.mFxType[Slot::kFxPre], 1);
    EXPECT_FALSE(list.Enter());       // nobody new gets in
    b->rack.SetValue(kPre1, 3, 60.0); // meets the mark: skipped for now
    EXPECT_DOUBLE_EQ(old->values[3], 10.0);
    list.Leave();
    builder.join();

    EXPECT_EQ(slot.mFxType[Slot::kFxPre], 2);
    EXPECT_FALSE(list.Swapping());
    EXPECT_DOUBLE_EQ(b->Module(kPre1, 1).values[3], 20.6);
}

// The worker builds only requests raised on the audio thread (the others wait for their caller). It
// sleeps until woken and is woken for every batch of them: none is missed, however the requests fall
// against its own clearing of the flag.
TEST(EffectRack, EveryDeferredRequestWakesTheWorker)
{
    auto b = std::make_unique<Bench>();
    b->rack.StartWorker();
    b->rack.RequestType(kPost3, 1, false, false);
    for (int round = 0; round < 200; ++round)
    {
        const int type = 1 + round % 2;
        b->rack.RequestType(kFb2, type, false, true);
        if (round % 3 == 0) b->rack.RequestType(kPre1, type, false, true); // two in one batch
        int wait = 0;
        for (; wait < 2000 && b->rack.BuiltType(kFb2) != type; ++wait)
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        ASSERT_EQ(b->rack.BuiltType(kFb2), type) << "round " << round;
    }
    for (int wait = 0; wait < 2000 && b->rack.BuiltType(kPre1) != 1; ++wait)
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    EXPECT_EQ(b->rack.BuiltType(kPre1), 1); // the last PRE request of the rounds asked for type 1
    EXPECT_EQ(b->slots[2].mFxType[Slot::kFxPost], 0);
}
