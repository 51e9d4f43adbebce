#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "engine/Quorvex.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"
#include "state/ByteChunk.h"
#include "state/Messages.h"

namespace
{
struct Releaser
{
    void operator()(Quorvex* plug) const { plug->release(); }
};
using QuorvexPtr = std::unique_ptr<Quorvex, Releaser>;

QuorvexPtr MakeQuorvex()
{
    return QuorvexPtr(new Quorvex());
}

ByteChunk StateOf(Quorvex& plug)
{
    ByteChunk chunk;
    EXPECT_TRUE(plug.SerializeState(chunk));
    return chunk;
}

// An older chunk made from a present one: the version word replaced, and the ColorSet word (absent
// up to 0x1015B) and the attenuator (absent before 0x10101) taken out.
ByteChunk Downgrade(const ByteChunk& present, std::int32_t version)
{
    const bool colorSet = version > 0x1015B;
    const bool attenuator = version >= 0x10101;
    ByteChunk old;
    old.Put(version);
    if (colorSet) old.PutBytes(present.Data() + 4, 4);
    old.PutBytes(present.Data() + 8, 4); // LastPage
    if (attenuator) old.PutBytes(present.Data() + 12, 8);
    old.PutBytes(present.Data() + 20, present.Size() - 20);
    return old;
}

TEST(Quorvex, ConstructionValues)
{
    auto plug = MakeQuorvex();
    EXPECT_EQ(plug->NParams(), 1095);
    EXPECT_EQ(plug->NInChannels(), 4);
    EXPECT_EQ(plug->NOutChannels(), 2);
    EXPECT_EQ(plug->NSidechainChannels(), 2);
    EXPECT_TRUE(plug->LegalIO(4, 2));
    EXPECT_TRUE(plug->LegalIO(2, 2));
    EXPECT_FALSE(plug->LegalIO(2, 1));
    EXPECT_EQ(plug->NPresets(), 1);
    EXPECT_EQ(plug->GetEffectName(), "Quorvex");
    EXPECT_EQ(plug->GetMfrName(), "qelmar-audio");
    EXPECT_EQ(plug->GetProductName(), "");
    EXPECT_EQ(plug->GetEffectVersion(), 0x10200);
    EXPECT_EQ(plug->GetUniqueID(), 0x5176727A); // "Qvrz"
    EXPECT_EQ(plug->GetMfrID(), 0x516C6D7A);    // "Qlmz"
    EXPECT_EQ(plug->GetLatency(), 44);
    EXPECT_FALSE(plug->DoesMidi());
    EXPECT_TRUE(plug->DoesChunks());
    EXPECT_FALSE(plug->IsInst());
    EXPECT_EQ(plug->GetSampleRate(), 44100.0);
}

TEST(Quorvex, EveryParameterIsAtItsDefaultAndItsCacheApplied)
{
    auto plug = MakeQuorvex();
    for (int id = 0; id < kNumParams; ++id)
        ASSERT_EQ(plug->GetParam(id)->value, plug->GetParam(id)->defaultValue) << id;
    EXPECT_EQ(plug->GetParam(kDryLevel)->value, 75.0);
    EXPECT_NEAR(plug->Fields().mDryLevel, 0.75, 1e-15);
}

TEST(Quorvex, DryLevelFollowsTheKnobUnlessDryKillIsOn)
{
    auto plug = MakeQuorvex();
    plug->SetParameterFromGUI(kDryLevel, 0.4);
    EXPECT_NEAR(plug->Fields().mDryLevel, 0.4, 1e-12);

    plug->Fields().mDryKill = true;
    ByteChunk chunk = StateOf(*plug);
    auto other = MakeQuorvex();
    other->UnserializeState(chunk, 0);
    EXPECT_EQ(other->Fields().mDryLevel, 0.0);
    other->SetParameterFromGUI(kDryLevel, 0.9);
    EXPECT_EQ(other->Fields().mDryLevel, 0.0);
    EXPECT_NEAR(other->GetParam(kDryLevel)->value, 90.0, 1e-9);
}

TEST(Quorvex, StateRoundTripIsByteIdentical)
{
    auto source = MakeQuorvex();
    for (int id = 0; id < kNumParams; ++id)
    {
        IParamRecord* p = source->GetParam(id);
        p->value = p->min + (p->max - p->min) * (((id * 53) % 97 + 0.25) / 97.5);
    }
    StateFields& f = source->Fields();
    f.mColorSet = 9;
    f.mLastPage = 15;
    f.mInputAttenuator = 0.61;
    f.mPresetName = "Grain Cloud";
    f.mPresetFolderLabel = "F:Ambient";
    // No menu selection: a folder that this machine's menu lacks is not taken over (tested with
    // the preset menu).
    f.mPresetMenuFolder = "";
    f.mPresetMenuIndex = -1;
    f.mFocusedParam = kFeedback2;
    for (int i = 0; i < 8; ++i)
        f.mTapOnMask[i] = 0xFFFF >> i;
    for (int s = 0; s < 4; ++s)
    {
        f.mStepFxMask[s] = 0x00FF << s;
        f.mStepModMask[0][s] = 0x1111 * (s + 1);
        f.mStepModMask[1][s] = 0x0F0F >> s;
    }
    const ByteChunk first = StateOf(*source);

    auto target = MakeQuorvex();
    EXPECT_EQ(target->UnserializeState(first, 0), first.Size());
    for (int id = 0; id < kNumParams; ++id)
    {
        const double a = source->GetParam(id)->value;
        const double b = target->GetParam(id)->value;
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << "parameter " << id;
    }
    EXPECT_EQ(target->Fields().mPageMemory, 15);
    EXPECT_FALSE(target->Fields().mRestoringState);
    EXPECT_TRUE(StateOf(*target) == first);
}

TEST(Quorvex, OldChunksMigrateThroughTheParameterHandler)
{
    auto source = MakeQuorvex();
    source->GetParam(kFX2FB)->value = 13;
    source->GetParam(kFX1PR)->value = 18;
    source->GetParam(kFX3PR)->value = 17;
    for (int slot : {0, 1})
    {
        source->GetParam(kDelayMode1 + slot)->value = 3;  // TAPPED
        source->GetParam(kDelayRoute1 + slot)->value = 6; // MIX
        source->GetParam(kFeedback1 + slot)->value = 50;
    }
    const ByteChunk present = StateOf(*source);

    auto old = MakeQuorvex();
    const ByteChunk chunk = Downgrade(present, 0x10150);
    EXPECT_EQ(old->UnserializeState(chunk, 0), chunk.Size());
    EXPECT_EQ(old->GetParam(kFX2FB)->value, 14);
    EXPECT_EQ(old->GetParam(kFX1PR)->value, 19);
    EXPECT_EQ(old->GetParam(kFX3PR)->value, 17);
    EXPECT_NEAR(old->GetParam(kFeedback1)->value, 35.0, 1e-12);
    EXPECT_EQ(old->GetParam(kFeedback2)->value, 50.0);
    EXPECT_EQ(old->Fields().mMigrationMarker, 0);

    // The present version is taken as it stands.
    auto current = MakeQuorvex();
    current->UnserializeState(present, 0);
    EXPECT_EQ(current->GetParam(kFX2FB)->value, 13);
    EXPECT_EQ(current->GetParam(kFX1PR)->value, 18);
    EXPECT_EQ(current->GetParam(kFeedback1)->value, 50.0);

    // After an old chunk, later changes are not migrated.
    old->GetParam(kFX4FB)->value = 13;
    old->OnParamChange(kFX4FB);
    EXPECT_EQ(old->GetParam(kFX4FB)->value, 13);
}

TEST(Quorvex, NewerChunkIsRefusedWithMessageSeven)
{
    auto source = MakeQuorvex();
    source->GetParam(kFeedback1)->value = 99;
    ByteChunk chunk = StateOf(*source);
    const std::int32_t newer = 0x10300;
    std::memcpy(chunk.Data(), &newer, sizeof newer);

    auto plug = MakeQuorvex();
    plug->GetParam(kFeedback2)->value = 12;
    plug->Fields().mPresetName = "Mine";
    plug->UnserializeState(chunk, 0);
    EXPECT_TRUE(plug->Message().IsPending());
    EXPECT_EQ(plug->Message().Code(), 7);
    EXPECT_EQ(plug->Message().Text(),
              "Saved data is newer than the actual QUORVEX version!\nCan't restore saved state!");
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, plug->GetParam(kFeedback1)->defaultValue);
    EXPECT_EQ(plug->GetParam(kFeedback2)->value, 12);
    EXPECT_EQ(plug->Fields().mPresetName, "Mine");
}

TEST(Quorvex, UserPresetRecordsTheStateChunkOnce)
{
    auto plug = MakeQuorvex();
    EXPECT_TRUE(plug->RestorePreset(0));
    EXPECT_EQ(plug->GetPreset(0)->name, "user preset 1");
    EXPECT_TRUE(plug->GetPreset(0)->chunk == StateOf(*plug));
    EXPECT_FALSE(plug->RestorePreset(0));
    EXPECT_FALSE(plug->RestorePreset(1));
}

// An infinity in a chunk still says which end of the range was meant: it is cut to the range like
// a finite value. A NaN says nothing and counts as 0, cut to the range.
TEST(Quorvex, InfinitiesInAChunkAreCutToTheRange)
{
    auto source = MakeQuorvex();
    ByteChunk chunk = StateOf(*source);
    const auto patch = [&](int id, double value)
    {
        const int at = chunk.Size() - (kNumParams - id) * static_cast<int>(sizeof(double));
        std::memcpy(chunk.Data() + at, &value, sizeof value);
    };
    patch(kDelayLopass1, std::numeric_limits<double>::infinity());
    patch(kDelayLopass2, -std::numeric_limits<double>::infinity());
    patch(kFeedback1, std::numeric_limits<double>::infinity());
    patch(kDelayTimeL1, -std::numeric_limits<double>::infinity());
    patch(kDelayLopass3, std::numeric_limits<double>::quiet_NaN());
    patch(kLevel1, std::numeric_limits<double>::quiet_NaN());
    auto target = MakeQuorvex();
    target->UnserializeState(chunk, 0);
    EXPECT_EQ(target->GetParam(kDelayLopass1)->value, 20000.0);
    EXPECT_EQ(target->GetParam(kDelayLopass2)->value, 200.0);
    EXPECT_EQ(target->GetParam(kFeedback1)->value, 160.0);
    EXPECT_EQ(target->GetParam(kDelayTimeL1)->value, 1.0);
    EXPECT_EQ(target->GetParam(kDelayLopass3)->value, 200.0);
    EXPECT_EQ(target->GetParam(kLevel1)->value, 0.0);
}
} // namespace
