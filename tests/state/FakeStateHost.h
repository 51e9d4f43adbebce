#pragma once
// A plug-in side for the state chunk without host or editor: the real parameter catalogue, the
// fields, and a change handler that runs the migration hook while the marker is set and keeps the
// dry gain, as the plug-in's handler does. It records what the reader asks of it.

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"
#include "state/ByteChunk.h"
#include "state/IStateHost.h"
#include "state/StateChunk.h"
#include "state/StateFields.h"

class FakeStateHost : public IStateHost
{
  public:
    FakeStateHost() { InitParams(mParams, kWaveMenuNames); }

    std::recursive_mutex& StateMutex() override { return mMutex; }
    int ParamCount() const override { return static_cast<int>(mParams.size()); }
    IParamRecord* Param(int id) override
    {
        return id >= 0 && id < ParamCount() ? mParams[id].get() : nullptr;
    }
    void ParamChanged(int id) override
    {
        if (mFields.mMigrationMarker > 0) MigrateOldParam(*this, id);
        if (id == kDryLevel && !mFields.mDryKill) mFields.mDryLevel = mParams[id]->value * 0.01;
        mChanges.push_back(id);
    }
    bool WriteParamValues(ByteChunk& chunk) override
    {
        for (const auto& p : mParams)
            chunk.Put(double(p->value));
        return true;
    }
    int ReadParamValues(const ByteChunk& chunk, int pos) override
    {
        if (pos >= 0)
            for (auto& p : mParams)
            {
                double v = 0.0;
                pos = chunk.Get(v, pos);
                // As the plug-in base does: a damaged value counts as 0.
                if (!std::isfinite(v)) v = 0.0;
                p->value = std::clamp(v, p->min, p->max);
            }
        for (int id = 0; id < ParamCount(); ++id)
            ParamChanged(id);
        return pos;
    }
    void RedrawControls() override {}
    void ShowMessage(int code) override { mMessages.push_back(code); }
    StateFields& Fields() override { return mFields; }
    void SelectPresetMenuItem(const std::string& folder, int index) override
    {
        if (!folder.empty())
            std::tie(mFields.mPresetMenuFolder, mFields.mPresetMenuIndex) = std::tie(folder, index);
    }
    void ApplyTapMask(int index, std::int32_t mask) override { mAppliedTapMasks.push_back(mask); }

    double Value(int id) { return mParams[id]->value; }
    void Set(int id, double v) { mParams[id]->value = v; }
    void Set(std::initializer_list<std::pair<int, double>> values)
    {
        for (const auto& [id, v] : values)
            mParams[id]->value = v;
    }

    std::vector<std::unique_ptr<IParamRecord>> mParams;
    StateFields mFields;
    std::recursive_mutex mMutex;
    std::vector<int> mChanges;
    std::vector<int> mMessages;
    std::vector<std::int32_t> mAppliedTapMasks;
};
