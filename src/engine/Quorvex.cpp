#include "engine/Quorvex.h"

#include <algorithm>

#include "dsp/Denormals.h"
#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "state/StateChunk.h"

Quorvex::Quorvex() : IPlugVST3(kQuorvexConfig)
{
    EnableFlushDenormals();
    // The catalogue takes the wave menu's names for the LFO wave lists.
    InitParams(params, kWaveMenuNames);
    // Every cache holds a value before the host sees the plug-in.
    for (int id = 0; id < NParams(); ++id)
        OnParamChange(id);
    mConstructing = false;
}

Quorvex::~Quorvex() = default;

void Quorvex::OnParamChange(int id)
{
    IParamRecord* param = GetParam(id);
    if (param == nullptr) return;
    if (mFields.mMigrationMarker > 0) MigrateOldParam(*this, id);

    switch (id)
    {
    case kDryLevel:
        // Dry-kill holds the dry path at zero whatever the knob says.
        if (!mFields.mDryKill) mFields.mDryLevel = param->value * 0.01;
        break;
    default:
        break;
    }
}

void Quorvex::ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames)
{
    if (mConstructing || mFields.mRestoringState)
    {
        for (int ch = 0; ch < NOutChannels(); ++ch)
            std::fill_n(outputs[ch], std::max(nFrames, 0), 0.0);
        return;
    }
    IPlugVST3::ProcessDoubleReplacing(inputs, outputs, nFrames);
}

bool Quorvex::SerializeState(ByteChunk& chunk)
{
    return WriteStateChunk(*this, chunk);
}

int Quorvex::UnserializeState(const ByteChunk& chunk, int startPos)
{
    return ReadStateChunk(*this, chunk, startPos);
}

void Quorvex::ShowMessage(int code)
{
    mMessage.Show(code);
}

// Until the preset browser exists the selection lives in the fields alone, and any folder text
// stands for its menu; an empty folder names no menu and leaves the selection as it was.
void Quorvex::SelectPresetMenuItem(const std::string& folder, int index)
{
    if (folder.empty()) return;
    mFields.mPresetMenuFolder = folder;
    mFields.mPresetMenuIndex = index;
}
