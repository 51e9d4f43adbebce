#include "modulators/EnvelopeSource.h"

#include "dsp/Decibels.h"
#include "dsp/FreqMapping.h"
#include "dsp/Vec.h"

#include <cmath>

const double* ResolveEnvelopeSource(int choice, const EnvSourceBuffers& buffers)
{
    if (choice < 0 || choice >= kNumEnvSources) return nullptr;
    const EnvSourceEntry& entry = kEnvSourceTable[static_cast<size_t>(choice)];
    const auto slot = static_cast<size_t>(entry.slot);
    switch (entry.kind)
    {
    case EnvBufferKind::kInputMono:
        return buffers.inMono;
    case EnvBufferKind::kInputLeft:
        return buffers.inLeft;
    case EnvBufferKind::kInputRight:
        return buffers.inRight;
    case EnvBufferKind::kSlotMono:
        return buffers.slotMono[slot];
    case EnvBufferKind::kSlotLeft:
        return buffers.slotLeft[slot];
    case EnvBufferKind::kSlotRight:
        return buffers.slotRight[slot];
    case EnvBufferKind::kSidechain:
        return buffers.sidechain;
    case EnvBufferKind::kMasterFx:
        return buffers.masterFx;
    }
    return nullptr;
}

EnvelopeSource::EnvelopeSource()
{
    // The envelope reads one buffer as both channels and writes no second output.
    mEnv.mOut2 = gNoOutput;
}

void EnvelopeSource::SetGain(double dB)
{
    mEnv.SetInputGain(DbToGain(dB));
}

void EnvelopeSource::SetThreshold(double dB)
{
    mEnv.SetThreshold(DbToGain(dB));
}

double EnvelopeSource::NormaliseFreq(double hz)
{
    return std::log(hz / kFreqLowHz) / std::log(400.0);
}

void EnvelopeSource::SetLocut(double hz)
{
    mEnv.SetLowCutFreq(NormaliseFreq(hz));
}

void EnvelopeSource::SetHicut(double hz)
{
    mEnv.SetHighCutFreq(NormaliseFreq(hz));
}

void EnvelopeSource::Reset()
{
    mEnv.Reset();
    mPreviousLevel = 0.0;
    mTriggerFlag = 0;
}

void EnvelopeSource::Process(double* masterLeft, double* masterRight)
{
    if (!Prepare()) return;
    mEnv.Process();
    Finish(masterLeft, masterRight);
}

void EnvelopeSource::ProcessPair(EnvelopeSource& a, EnvelopeSource& b, double* masterLeft,
                                 double* masterRight)
{
    const bool runA = a.Prepare(), runB = b.Prepare();
    if (runA && runB)
        Envelope::ProcessPair(a.mEnv, b.mEnv);
    else if (runA)
        a.mEnv.Process();
    else if (runB)
        b.mEnv.Process();
    if (runA) a.Finish(masterLeft, masterRight);
    if (runB) b.Finish(masterLeft, masterRight);
}

bool EnvelopeSource::Prepare()
{
    const double* source = mSourceBuffer;
    if (!source)
    {
        // A pulse lasts one block, so it ends here too.
        mPreviousLevel = 0.0;
        mTriggerFlag = 0;
        return false;
    }
    mEnv.mIn1 = source;
    mEnv.mIn2 = source;
    mEnv.mBlockLen = gBlockLen;
    return true;
}

void EnvelopeSource::Finish(double* masterLeft, double* masterRight)
{
    const double level = mEnv.mEnvOut;
    mTriggerFlag = (level >= 1.0 && mPreviousLevel < 1.0) ? 1 : 0;
    mPreviousLevel = level;

    if (mListen)
    {
        if (masterLeft) VecCopy(mEnv.mFiltered, masterLeft, gBlockLen);
        if (masterRight) VecCopy(mEnv.mFiltered, masterRight, gBlockLen);
    }
}

void ToggleEnvelopeListen(std::span<EnvelopeSource* const> envelopes, int chosen)
{
    for (int i = 0; i < static_cast<int>(envelopes.size()); ++i)
    {
        EnvelopeSource* env = envelopes[static_cast<size_t>(i)];
        if (!env) continue;
        env->SetListen(i == chosen ? !env->Listening() : false);
    }
}
