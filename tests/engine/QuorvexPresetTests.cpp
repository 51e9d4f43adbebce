#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "PresetRig.h"
#include "state/ByteChunk.h"

// Presets as the whole plug-in loads and rewrites them (the file format and the menu are tested in
// the state suite; the preset row, the steps and saving through the prompt in PresetRowTests).

using namespace engine_rig;

namespace
{
// A load sets the file's values, name, folder label and page and resets the rest; a missing or
// foreign file then leaves every parameter as it was, says so and marks the list stale.
TEST(QuorvexPresets, LoadingSetsValuesNamesAndPageAndFailedLoadsChangeNothing)
{
    PresetRig rig;
    rig.Dir().Write("/Factory Presets/Spaces/Wide Hall.txt", File(14, "Feedback1 64\nDelayMode2 2\n"));
    rig.Dir().Write("/User Presets/Foreign.txt", "NotQuorvex V. 1.2.0r14 PresetFile!\nFeedback1 10\n");
    auto plug = rig.Make();
    plug->GetParam(kLevel3)->value = -30.0;
    plug->Fields().mFocusedParam = kLevel3;
    ASSERT_TRUE(plug->LoadPreset("/Factory Presets/Spaces/Wide Hall.txt"));
    EXPECT_EQ(plug->GetParam(kFeedback1)->value, 64.0);
    EXPECT_EQ(plug->GetParam(kDelayMode2)->value, 2.0);
    EXPECT_EQ(plug->GetParam(kLevel3)->value, plug->GetParam(kLevel3)->defaultValue);
    EXPECT_EQ(plug->Fields().mPresetName + " " + plug->Fields().mPresetFolderLabel, "Wide Hall F:Spaces");
    EXPECT_EQ(plug->Fields().mLastPage, 12);
    EXPECT_EQ(plug->Fields().mFocusedParam, -1);
    EXPECT_FALSE(plug->PresetLoading());

    plug->GetParam(kFeedback2)->value = 77.0;
    plug->GetParam(kFX3PO)->value = 5.0;
    std::vector<double> before;
    for (int id = 0; id < kNumParams; ++id)
        before.push_back(plug->GetParam(id)->value);
    for (const auto& [path, shown] :
         {std::pair{"/User Presets/Nowhere.txt", "NO FILE"}, {"/User Presets/Foreign.txt", "WRONG FILE"}})
    {
        const int generation = PresetListGeneration();
        EXPECT_FALSE(plug->LoadPreset(path));
        EXPECT_EQ(plug->Fields().mPresetName, shown);
        EXPECT_FALSE(plug->PresetLoading());
        EXPECT_EQ(PresetListGeneration(), generation + 1) << "a failed load marks the list stale";
        for (int id = 0; id < kNumParams; ++id)
            ASSERT_EQ(plug->GetParam(id)->value, before[static_cast<std::size_t>(id)]) << id;
    }
}

TEST(QuorvexPresets, OldFilesAreRewrittenInThePresentFormatCurrentOnesAreNotTouched)
{
    PresetRig rig;
    rig.Dir().Write("/User Presets/Old.txt",
                    File(13, "DelayMode1 3\nDelayRoute1 6\nFeedback1 50\nFX1FB 12\n"));
    auto plug = rig.Make();
    ASSERT_TRUE(plug->LoadPreset("/User Presets/Old.txt"));
    EXPECT_NEAR(plug->GetParam(kFeedback1)->value, 35.0, 1e-5);
    const std::string rewritten = rig.Read("/User Presets/Old.txt");
    EXPECT_EQ(rewritten.rfind("Quorvex V. 1.2.0r14 PresetFile!\nPresetVersion: 14\n", 0), 0u) << rewritten;
    EXPECT_NE(rewritten.find("\nFeedback1 35\n"), std::string::npos) << rewritten;
    EXPECT_NE(rewritten.find("\nLastPage\n12\n"), std::string::npos) << rewritten;
    // A file of the present version is not rewritten, even where the writer would lay it out anew.
    rig.Dir().Write("/User Presets/Current.txt", File(14, "Feedback1 50\n"));
    ASSERT_TRUE(plug->LoadPreset("/User Presets/Current.txt"));
    EXPECT_EQ(rig.Read("/User Presets/Current.txt"), File(14, "Feedback1 50\n"));
}

// A load cuts the old sound and starts the new one from silence with the squared 100 ms fade-in:
// input block b after the load (from 1) is scaled by (b x 32 / 4800)^2 until that reaches 1, and
// the dry path puts it out 64 samples plus 1 ms later. The second load comes while the first
// preset sounds. (The samples of the block in which the ramp reaches 1 are left out.)
TEST(QuorvexPresets, TheAudioHearsALoadAsSilenceThenTheSquaredFadeIn)
{
    PresetRig rig;
    rig.Dir().Write("/User Presets/Dry.txt", File(14, "SlotOn1 0\nDryLevel 100\n"));
    auto plug = rig.Make();
    const Stereo tone = Sine(static_cast<int>(0.2 * kRate), 440.0, 0.5);
    const double step = kBlock / (0.1 * kRate);
    for (int load = 0; load < 2; ++load)
    {
        ASSERT_TRUE(plug->LoadPreset("/User Presets/Dry.txt"));
        const Stereo out = Stream(*plug, tone, 64);
        EXPECT_EQ(Peak(out, 0, 64 + kMs), 0.0) << "load " << load;
        for (int s = 0; s + 64 + kMs < out.Size(); ++s)
        {
            const int block = s / kBlock + 1;
            if (block * step > 1.0 - 1e-9 && (block - 1) * step < 1.0 + 1e-9) continue;
            const double ramp = std::min(1.0, block * step);
            ASSERT_NEAR(out.l[s + 64 + kMs], tone.l[s] * ramp * ramp, 1e-9)
                << "load " << load << ", sample " << s;
        }
    }
}

// Presets loaded on one thread while another processes audio: the audio thread sees silence and a
// fade-in, never a half-applied preset. Run under ThreadSanitizer this also proves the handshake.
TEST(QuorvexPresets, LoadingWhileAudioRunsOnAnotherThreadKeepsEverySampleFinite)
{
    PresetRig rig;
    rig.Dir().Write("/User Presets/One.txt",
                    File(14, "DelayMode1 3\nFeedback1 90\nFX1FB 2\nFXOnFB1 1\nMasterFX 2\nLFOOn1 1\n"
                             "PanningModSource1 1\nPanningModDepth1 80\nSlotOn2 1\nDelayMode2 2\n"));
    rig.Dir().Write("/User Presets/Two.txt",
                    File(14, "DelayMode1 1\nFeedback1 40\nFX1PR 6\nFXOnPR1 1\nMasterFX 3\nSlotOn3 1\n"
                             "DelayRoute3 6\nGate1On 1\nLevelModSource3 5\nLevelModDepth3 100\n"));
    auto plug = rig.Make();
    std::atomic<bool> done{false}, finite{true};
    std::atomic<int> calls{0};
    std::thread audio(
        [&]
        {
            const Stereo tone = Sine(256, 440.0, 0.5);
            while (!done.load())
            {
                if (!std::isfinite(Peak(Stream(*plug, tone, 64)))) finite = false;
                calls.fetch_add(1);
            }
        });
    for (int k = 0; k < 16; ++k)
    {
        EXPECT_TRUE(plug->LoadPreset(k % 2 == 0 ? "/User Presets/One.txt" : "/User Presets/Two.txt"));
        const int seen = calls.load();
        while (calls.load() < seen + 2)
            std::this_thread::yield();
    }
    done = true;
    audio.join();
    EXPECT_TRUE(finite.load());
    EXPECT_EQ(plug->GetParam(kDelayRoute3)->value, 6.0);
}

// A session's preset-menu selection is taken over only where this machine's menu holds its folder;
// otherwise the selection stays as it was, a fresh instance's "none" included.
TEST(QuorvexPresets, AStatesMenuSelectionIsTakenOnlyWhereTheMenuHoldsItsFolder)
{
    PresetRig rig;
    rig.Dir().Write("/User Presets/Mine/A.txt", File(14, ""));
    rig.Dir().Write("/User Presets/Mine/B.txt", File(14, ""));

    auto source = rig.Make();
    ASSERT_TRUE(source->SelectPresetItem("/User Presets/Mine/B"));
    const int index = source->Fields().mPresetMenuIndex;
    ByteChunk known;
    ASSERT_TRUE(source->SerializeState(known));
    source->Fields().mPresetMenuFolder = "/Factory Presets/Elsewhere/";
    source->Fields().mPresetMenuIndex = 3;
    ByteChunk foreign;
    ASSERT_TRUE(source->SerializeState(foreign));

    // A folder the menu holds is selected and stored; a later foreign one leaves it so.
    auto target = rig.Make();
    target->UnserializeState(known, 0);
    auto fresh = rig.Make();
    fresh->UnserializeState(foreign, 0);
    EXPECT_EQ(fresh->Fields().mPresetMenuFolder, "");
    EXPECT_EQ(fresh->Fields().mPresetMenuIndex, -1);
    for (int pass = 0; pass < 2; ++pass, target->UnserializeState(foreign, 0))
    {
        EXPECT_EQ(target->SelectedPresetPath(), "/User Presets/Mine/B");
        EXPECT_EQ(target->Fields().mPresetMenuFolder, "/User Presets/Mine/");
        EXPECT_EQ(target->Fields().mPresetMenuIndex, index);
    }
}
} // namespace
