#include "engine/Quorvex.h"

#include <mutex>

#include "dsp/Decibels.h"
#include "dsp/Denormals.h"
#include "dsp/Vec.h"
#include "modulators/WaveMenu.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "state/StateChunk.h"

namespace
{
// Host rate the engine was last derived for, shared by every instance of the process: the last
// instance's rate wins, and an instance meeting another rate resets the shared values again.
Relaxed<double> gEngineHostRate{-1.0};

// Corner of the band limit on everything that reaches the slots; the dry path keeps full band.
constexpr double kInputLowpassHz = 15000.0;
constexpr int kInputLowpassOrder = 12;
} // namespace

Quorvex::Quorvex() : IPlugVST3(kQuorvexConfig)
{
    EnableFlushDenormals();
    // The catalogue takes the wave menu's names for the LFO wave lists.
    InitParams(params, kWaveMenuNames);
    ResetEngine();
    // The first call derives the engine again for whatever rate the host then runs at.
    mEngineRate = -1.0;
    // Every cache holds a value before the host sees the plug-in.
    for (int id = 0; id < NParams(); ++id)
        OnParamChange(id);
    mConstructing = false;
}

Quorvex::~Quorvex() = default;

void Quorvex::Reset()
{
    std::lock_guard lock(paramsMutex);
    ResetEngine();
}

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
    case kWetLevel:
        mWetLevel = param->value * 0.01;
        break;
    case kOutputLevel:
        mOutputLevel = DbToGain(param->value);
        break;
    case kLimiterOn:
        SetLimiterMode(static_cast<int>(param->value));
        break;
    case kLimiterLevel:
        mLimiter.SetBoost(param->value);
        break;
    default:
        break;
    }
}

// The limiter hears of a mode only when it changes. Between two running modes it fades through
// silence; coming from off it is not running, so it switches at once.
void Quorvex::SetLimiterMode(int mode)
{
    const int before = mLimiterMode;
    if (mode == before) return;
    mLimiterMode = mode;
    if (mode != kLimiterOff) mLimiter.SetMode(mode, before != kLimiterOff);
}

bool Quorvex::Silenced() const
{
    return mPresetLoading.load() || mConstructing || mFields.mRestoringState;
}

void Quorvex::ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames)
{
    double* outL = outputs[0];
    double* outR = outputs[1];
    mOutputsL = outL;
    mOutputsR = outR;

    const bool scLeft = IsInChannelConnected(2);
    mSidechainInUse = scLeft || IsInChannelConnected(3);
    const double* sidechain = mSidechainInUse ? inputs[scLeft ? 2 : 3] : nullptr;

    if (nFrames <= 0) return;
    if (Silenced())
    {
        VecZero(outL, nFrames);
        VecZero(outR, nFrames);
        return;
    }

    const double rate = GetSampleRate();
    if (rate != gEngineHostRate || rate != mEngineRate)
    {
        ResetEngine();
        gEngineHostRate = rate;
        mEngineRate = rate;
    }
    if (mLatencyDirty)
    {
        SetLatency(gLookAhead + kBlockSize);
        mLatencyDirty = false;
    }
    mTempo.Update(GetTempo());
    VecZero(mBlockSC, kBlockSize);

    const double* inL = inputs[0];
    const double* inR = inputs[1];
    for (int i = 0; i < nFrames; ++i)
    {
        mInWrite &= kInRingSize - 1;
        mOutRead &= kBlockSize - 1;
        mInRingL[mInWrite] = inL[i];
        mInRingR[mInWrite] = inR[i];
        if (sidechain != nullptr) mInRingSC[mInWrite] = sidechain[i];
        outL[i] = mOutBlockL[mOutRead];
        outR[i] = mOutBlockR[mOutRead];
        ++mInWrite;
        ++mOutRead;
        if (mOutRead == kBlockSize) RunBlock();
    }
}

void Quorvex::RunBlock()
{
    mFadeIn.Step();
    FillBlock();
    ReadTransport();
    ClearBuses();
    ScaleDry();
    PrepareWet();
    OutputStage();
}

// The oldest 32 ring entries become the block; the sidechain is taken without the fade.
void Quorvex::FillBlock()
{
    const double fade = mFadeIn.mFade;
    for (int k = 0; k < kBlockSize; ++k)
    {
        const int pos = (mInRead + k) & (kInRingSize - 1);
        mBlockL[k] = mInRingL[pos] * fade;
        mBlockR[k] = mInRingR[pos] * fade;
    }
    if (mSidechainInUse)
        for (int k = 0; k < kBlockSize; ++k)
            mBlockSC[k] = mInRingSC[(mInRead + k) & (kInRingSize - 1)];
    mInRead = (mInRead + kBlockSize) & (kInRingSize - 1);
}

void Quorvex::ReadTransport()
{
    ITimeInfo info;
    GetTime(info);
    mTransport = TransportCache::From(info);
    mSongPosition.Advance(mTransport, mTempo.beatsPerSample);
}

void Quorvex::ClearBuses()
{
    VecZero(mWetL, kBlockSize);
    VecZero(mWetR, kBlockSize);
}

void Quorvex::ScaleDry()
{
    const double gain = mFields.mDryLevel * mOutputLevel * mFields.mAttenuation;
    VecScale(mBlockL, gain, mDryL, kBlockSize);
    VecScale(mBlockR, gain, mDryR, kBlockSize);
}

// The wet copy: denormal guard, then the band limit.
void Quorvex::PrepareWet()
{
    VecAddConstI(kDenormGuard, mBlockL, kBlockSize);
    VecAddConstI(kDenormGuard, mBlockR, kBlockSize);
    mInputFilterL.RunI(mBlockL, kBlockSize);
    mInputFilterR.RunI(mBlockR, kBlockSize);
    VecAdd(mBlockL, mBlockR, mBlockMono, kBlockSize);
}

// Wet and dry meet here. With the limiter off the wet joins the dry before the output delay; with
// it on the limiter's look-ahead delays the wet by the same amount, and only the dry goes through
// the output delay.
void Quorvex::OutputStage()
{
    const double wetGain = mWetLevel * mOutputLevel * mFadeIn.mFade;
    const int delay = gLookAhead;
    if (mLimiterMode == kLimiterOff)
    {
        VecAddScaled(mWetL, wetGain, mDryL, kBlockSize);
        VecAddScaled(mWetR, wetGain, mDryR, kBlockSize);
        mOutputDelayL.Run(mDryL, mOutBlockL, delay);
        mOutputDelayR.Run(mDryR, mOutBlockR, delay);
        return;
    }

    if (mLimiter.mBypass)
    {
        // A bypassed limiter lets the wet through unlimited and without its look-ahead.
        VecCopy(mWetL, mScratchL, kBlockSize);
        VecCopy(mWetR, mScratchR, kBlockSize);
    }
    else
    {
        mLimiter.mIn1 = mWetL;
        mLimiter.mIn2 = mWetR;
        mLimiter.mOut1 = mScratchL;
        mLimiter.mOut2 = mScratchR;
        mLimiter.Process();
    }
    mOutputDelayL.Run(mDryL, mOutBlockL, delay);
    mOutputDelayR.Run(mDryR, mOutBlockR, delay);
    VecAddScaled(mScratchL, wetGain, mOutBlockL, kBlockSize);
    VecAddScaled(mScratchR, wetGain, mOutBlockR, kBlockSize);
}

void Quorvex::ResetEngine()
{
    mLatencyDirty = true;
    SetTimeBase(GetSampleRate());
    mTempo.Derive();
    const double relFreq = kInputLowpassHz / gSampleRate;
    mInputFilterL.Design(kInputLowpassOrder, relFreq);
    mInputFilterR.Design(kInputLowpassOrder, relFreq);
    mFadeIn.Prepare();
    mFadeIn.Request();
    ClearEngine();
}

void Quorvex::ClearEngine()
{
    ClearBuses();
    VecZero(mInRingL, kInRingSize);
    VecZero(mInRingR, kInRingSize);
    VecZero(mInRingSC, kInRingSize);
    VecZero(mOutBlockL, kBlockSize);
    VecZero(mOutBlockR, kBlockSize);
    mOutputDelayL.Clear();
    mOutputDelayR.Clear();
    VecZero(mScratchL, kBlockSize);
    VecZero(mScratchR, kBlockSize);
    mLimiter.Init();
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
