#pragma once
// The plug-in's state beyond its parameter values: what the host state chunk stores next to them
// and the flags that its reading sets. The plug-in owns one; the editor shows and edits it.
// Written on the UI thread under the parameter mutex; the gains and the restoring flag are read
// by the audio thread, and the migration marker by the parameter handler on any thread.

#include <cstdint>
#include <string>

#include "dsp/Relaxed.h"

inline constexpr int kNumSlots = 4;
inline constexpr int kNumTapMasks = 2 * kNumSlots; // one per slot and channel
inline constexpr int kNumStepModRows = 2;
inline constexpr int kDelayOverviewPage = 2;
inline constexpr int kFirstLargeDelayPage = 10;

struct StateFields
{
    int mColorSet = 0;
    int mLastPage = kDelayOverviewPage;   // page on display
    int mPageMemory = kDelayOverviewPage; // last page shown for the delay overview (2 or a large view)
    double mInputAttenuator = 1.0;        // position of the attenuator control, 0..1
    Relaxed<double> mAttenuation{1.0};    // engine input gain derived from the position
    std::string mPresetName;
    std::string mPresetFolderLabel; // "U:..." or "F:..."
    int mPresetMenuIndex = -1;      // selection in the preset menu of mPresetMenuFolder
    std::string mPresetMenuFolder;  // empty: nothing selected
    int mFocusedParam = -1;
    // Entry 2 * slot + channel; bit t: tap t on. All on, as the tap engine starts.
    std::int32_t mTapOnMask[kNumTapMasks] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
    std::int32_t mStepFxMask[kNumSlots] = {};
    std::int32_t mStepModMask[kNumStepModRows][kNumSlots] = {};
    bool mDryKill = false;                // dry signal off whatever Dry Level says
    Relaxed<double> mDryLevel{0.0};       // engine dry gain: Dry Level / 100 unless dry-kill
    bool mLoadingState = false;           // step buttons are being set by the state reader
    Relaxed<bool> mRestoringState{false}; // a state chunk is being applied: output silent
    Relaxed<int> mMigrationMarker{0};     // version of an old chunk while it is read, else 0
    bool mWasTapped[kNumSlots] = {};      // slot was in tapped delay mode (old chunks only)
};
