#include "state/StateChunk.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "params/IParamRecord.h"
#include "params/ParamIds.h"
#include "state/ByteChunk.h"
#include "state/IStateHost.h"
#include "state/InputAttenuator.h"
#include "state/Messages.h"
#include "state/StateFields.h"

namespace
{
constexpr double kTappedMode = 3.0; // `Delay Mode n` value of the tapped delay
constexpr double kMixRoute = 6.0;   // `Delay Route n` value MIX
constexpr double kOldTappedMixFeedback = 0.7;
constexpr double kLastFbTypeBeforeGrowth = 12.0;
constexpr double kLastFxTypeBeforeGrowth = 17.0;

bool InFamily(int id, int first, int count)
{
    return id >= first && id < first + count;
}

void StoreCut(IParamRecord& param, double value)
{
    param.value = std::clamp(value, param.min, param.max);
}
} // namespace

bool WriteStateChunk(IStateHost& host, ByteChunk& chunk)
{
    std::lock_guard lock(host.StateMutex());
    const StateFields& f = host.Fields();

    chunk.Put(kStateVersion);
    chunk.Put(static_cast<std::int32_t>(f.mColorSet));
    chunk.Put(static_cast<std::int32_t>(f.mLastPage));
    chunk.Put(f.mInputAttenuator);
    PutStr(chunk, f.mPresetName);
    PutStr(chunk, f.mPresetFolderLabel);
    const bool menuSelected = !f.mPresetMenuFolder.empty();
    chunk.Put(static_cast<std::int32_t>(menuSelected ? f.mPresetMenuIndex : -1));
    PutStr(chunk, f.mPresetMenuFolder);
    chunk.Put(static_cast<std::int32_t>(f.mFocusedParam));
    for (std::int32_t mask : f.mTapOnMask)
        chunk.Put(mask);
    for (std::int32_t mask : f.mStepFxMask)
        chunk.Put(mask);
    // The two rows of a slot interleave here, unlike in preset files.
    for (int slot = 0; slot < kNumSlots; ++slot)
        for (int row = 0; row < kNumStepModRows; ++row)
            chunk.Put(f.mStepModMask[row][slot]);
    chunk.Put(static_cast<std::uint8_t>(f.mDryKill ? 1 : 0));
    host.WriteParamValues(chunk);
    return true;
}

int ReadStateChunk(IStateHost& host, const ByteChunk& chunk, int startPos)
{
    StateFields& f = host.Fields();

    std::int32_t version = 0;
    int pos = chunk.Get(version, startPos);
    if (version > kStateVersion)
    {
        host.ShowMessage(kMsgStateTooNew);
        return pos;
    }

    std::unique_lock lock(host.StateMutex());
    f.mRestoringState = true;
    f.mMigrationMarker = version < kStateVersion ? version : 0;

    if (version > kLastStateWithoutColorSet)
    {
        std::int32_t colorSet = f.mColorSet;
        pos = chunk.Get(colorSet, pos);
        f.mColorSet = colorSet;
    }

    // Defaults first, quietly: whatever the chunk doesn't hold stays at its default.
    for (int id = 0; id < host.ParamCount(); ++id)
        if (IParamRecord* param = host.Param(id)) param->value = param->defaultValue;

    if (version < kOldestReadableState)
    {
        f.mMigrationMarker = 0;
        f.mRestoringState = false;
        return pos;
    }

    f.mLoadingState = true;

    std::int32_t lastPage = f.mLastPage;
    pos = chunk.Get(lastPage, pos);
    f.mPageMemory = lastPage >= kFirstLargeDelayPage ? lastPage : kDelayOverviewPage;

    double attenuator = 1.0;
    if (version >= kFirstStateWithAttenuator)
    {
        attenuator = f.mInputAttenuator;
        pos = chunk.Get(attenuator, pos);
        if (std::isnan(attenuator) || attenuator > 1.0)
            attenuator = 1.0;
        else if (attenuator < 0.0)
            attenuator = 0.0;
    }
    f.mInputAttenuator = attenuator;
    host.SetAttenuatorControl(attenuator);
    f.mAttenuation = InputAttenuatorGain(attenuator);

    std::string presetName;
    std::string folderLabel;
    pos = GetStr(chunk, presetName, pos);
    pos = GetStr(chunk, folderLabel, pos);

    std::int32_t menuIndex = f.mPresetMenuIndex;
    std::string menuFolder;
    pos = chunk.Get(menuIndex, pos);
    pos = GetStr(chunk, menuFolder, pos);

    std::int32_t focused = f.mFocusedParam;
    pos = chunk.Get(focused, pos);
    f.mFocusedParam = focused;
    for (std::int32_t& mask : f.mTapOnMask)
        pos = chunk.Get(mask, pos);
    for (std::int32_t& mask : f.mStepFxMask)
        pos = chunk.Get(mask, pos);
    for (int slot = 0; slot < kNumSlots; ++slot)
        for (int row = 0; row < kNumStepModRows; ++row)
            pos = chunk.Get(f.mStepModMask[row][slot], pos);
    std::uint8_t dryKill = f.mDryKill ? 1 : 0;
    pos = chunk.Get(dryKill, pos);
    f.mDryKill = dryKill != 0;

    pos = host.ReadParamValues(chunk, pos);

    if (!presetName.empty()) f.mPresetName = presetName;
    if (!folderLabel.empty()) f.mPresetFolderLabel = folderLabel;
    host.SelectPresetMenuItem(menuFolder, menuIndex);

    f.mDryKill = host.SetDryKillControl(f.mDryKill);
    const IParamRecord* dryLevel = host.Param(kDryLevel);
    f.mDryLevel = f.mDryKill || dryLevel == nullptr ? 0.0 : dryLevel->value * 0.01;

    host.RefreshPageControl();
    host.RedrawControls();
    if (focused >= 0 && focused < host.ParamCount()) host.ParamChanged(focused);

    for (int i = 0; i < kNumTapMasks; ++i)
        host.ApplyTapMask(i, f.mTapOnMask[i]);
    f.mLastPage = lastPage;
    host.ShowColorSetAndPage(f.mColorSet, lastPage);
    host.RebuildStepViews();

    host.FlushTimedLabels();
    f.mLoadingState = false;
    host.FinishStateLoad();

    f.mMigrationMarker = 0;
    f.mRestoringState = false;
    return pos;
}

void MigrateOldParam(IStateHost& host, int id)
{
    IParamRecord* param = host.Param(id);
    if (param == nullptr) return;
    StateFields& f = host.Fields();
    const int marker = f.mMigrationMarker;
    double value = param->value;

    if (InFamily(id, kDelayMode1, kNumSlots))
    {
        f.mWasTapped[id - kDelayMode1] = value == kTappedMode;
    }
    else if (InFamily(id, kDelayRoute1, kNumSlots))
    {
        const int slot = id - kDelayRoute1;
        IParamRecord* feedback = host.Param(kFeedback1 + slot);
        if (value == kMixRoute && f.mWasTapped[slot] && feedback != nullptr)
        {
            // Ends the migration of this chunk at once: only the first such slot is scaled.
            StoreCut(*feedback, feedback->value * kOldTappedMixFeedback);
            f.mMigrationMarker = 0;
            host.ParamChanged(kFeedback1 + slot);
        }
    }
    else if (marker < kFbListGrewAt)
    {
        if (InFamily(id, kFX1FB, kNumSlots))
        {
            if (value > kLastFbTypeBeforeGrowth) value += 1.0;
        }
        else if (marker < kFxListGrewAt &&
                 (InFamily(id, kFX1PR, kNumSlots) || InFamily(id, kFX1PO, kNumSlots)))
        {
            if (value > kLastFxTypeBeforeGrowth) value += 1.0;
        }
    }
    StoreCut(*param, value);
}
