#include "PresetBridge.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "state/ByteChunk.h"
#include "state/IStateHost.h"
#include "state/PresetFile.h"
#include "state/StateChunk.h"
#include "state/StateFields.h"

namespace render
{
namespace
{
// A plug-in's parameter table and fields without its engine: what the preset and state code
// work on. Starts as a fresh instance does.
class TableHost : public IStateHost
{
  public:
    TableHost() { InitParams(mParams, kWaveMenuNames); }

    std::recursive_mutex& StateMutex() override { return mMutex; }
    int ParamCount() const override { return static_cast<int>(mParams.size()); }
    IParamRecord* Param(int id) override
    {
        return id >= 0 && id < ParamCount() ? mParams[id].get() : nullptr;
    }
    void ParamChanged(int id) override {}
    bool WriteParamValues(ByteChunk& chunk) override
    {
        for (const auto& p : mParams)
            chunk.Put(p->value.Load());
        return true;
    }
    int ReadParamValues(const ByteChunk& chunk, int pos) override
    {
        for (const auto& p : mParams)
        {
            double v = p->value;
            pos = chunk.Get(v, pos);
            if (!std::isfinite(v)) v = 0.0;
            p->value = std::clamp(v, p->min, p->max);
        }
        return pos;
    }
    void RedrawControls() override {}
    void ShowMessage(int code) override { mMessage = code; }
    StateFields& Fields() override { return mFields; }
    void SelectPresetMenuItem(const std::string& folder, int index) override {}

    int mMessage = -1;

  private:
    std::vector<std::unique_ptr<IParamRecord>> mParams;
    StateFields mFields;
    std::recursive_mutex mMutex;
};
} // namespace

bool ApplyPresetFile(vst3host::PluginInstance& plug, const std::string& path, std::string& error,
                     std::vector<std::string>& warnings)
{
    PresetData data;
    switch (ReadPresetText(path, data))
    {
    case PresetReadResult::kNoFile:
        error = "cannot open the preset file " + path;
        return false;
    case PresetReadResult::kWrongFile:
        error = path + " is not a Quorvex preset file";
        return false;
    case PresetReadResult::kOk:
        break;
    }
    if (data.stoppedEarly) warnings.push_back(path + ": reading stopped at a value that is not a number");

    TableHost table;
    ApplyPresetMasks(table, data);
    ApplyPresetParams(table, data);
    for (const std::string& key : data.keys)
        warnings.push_back(path + ": no parameter has the key " + key);

    ByteChunk chunk;
    WriteStateChunk(table, chunk);
    const std::vector<std::uint8_t> bytes(chunk.Data(), chunk.Data() + chunk.Size());
    if (!plug.SetState(bytes))
    {
        error = "the plug-in refused the preset's state";
        return false;
    }
    return true;
}

bool WritePresetFile(vst3host::PluginInstance& plug, const std::string& path, std::string& error)
{
    std::vector<std::uint8_t> bytes;
    if (!plug.GetState(bytes))
    {
        error = "the plug-in gave no state";
        return false;
    }
    ByteChunk chunk;
    chunk.PutBytes(bytes.data(), static_cast<int>(bytes.size()));
    TableHost table;
    if (ReadStateChunk(table, chunk, 0) < 0 || table.mMessage >= 0)
    {
        error = "the plug-in's state could not be read";
        return false;
    }
    if (!WritePresetText(path, table))
    {
        error = "cannot write the preset file " + path;
        return false;
    }
    return true;
}
} // namespace render
