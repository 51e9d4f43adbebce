#include "core/MasterSection.h"

#include <algorithm>

#include "dsp/Decibels.h"
#include "dsp/Vec.h"
#include "state/InputAttenuator.h"

MasterSection::MasterSection(StateFields& fields) : mFields(fields) {}

void MasterSection::SetWetLevel(double percent)
{
    mWetLevel = percent * 0.01;
}

void MasterSection::SetDryLevel(double percent)
{
    mDryPercent = percent;
    if (!mFields.mDryKill) mFields.mDryLevel = percent * 0.01;
}

void MasterSection::SetDryKill(bool on)
{
    mFields.mDryKill = on;
    mFields.mDryLevel = on ? 0.0 : mDryPercent * 0.01;
}

void MasterSection::SetOutputLevel(double dB)
{
    mOutputLevel = DbToGain(dB);
}

void MasterSection::SetAttenuator(double position)
{
    const double v = std::clamp(position, 0.0, 1.0);
    mFields.mInputAttenuator = v;
    mFields.mAttenuation = InputAttenuatorGain(v);
}

void MasterSection::SetMasterFxLevel(double percent)
{
    mMasterFxLevel = percent * 0.01;
}

void MasterSection::SetMasterFxType(int type)
{
    if (type == mMasterFxType) return;
    mMasterFxType = type;
    mMasterFxChanged = true;
}

void MasterSection::SetMasterFxBypass(bool bypass)
{
    mMasterFxBypass = bypass;
}

void MasterSection::SetMasterFxModule(int type, DSPShell* module)
{
    const int k = type - kFirstMasterFx;
    if (k >= 0 && k < kMasterFxCount) mMasterFx[k] = module;
}

DSPShell* MasterSection::ActiveMasterFx() const
{
    const int k = mMasterFxType - kFirstMasterFx;
    return k >= 0 && k < kMasterFxCount ? static_cast<DSPShell*>(mMasterFx[k]) : nullptr;
}

// Below 100 the side falls towards mono; above 100 the mid falls towards the pure difference.
void MasterSection::SetGlobalWidth(double width)
{
    const double x = (width - 100.0) * 0.01;
    mWidthMid = (1.0 - std::max(0.0, x)) * 0.5;
    mWidthSide = (std::min(0.0, x) + 1.0) * 0.5;
    mWidthOn = width != 100.0;
}

void MasterSection::SetLimiterMode(int mode)
{
    const int before = mLimiterMode;
    if (mode == before) return;
    if (mode != kLimiterOff)
    {
        // From off the limiter's look-ahead still holds the wet of its last run; clearing it
        // makes the switch seamless, since the output delay holds the same stretch of wet.
        if (before == kLimiterOff) mLimiterRestart = true;
        mLimiter.SetMode(mode, before != kLimiterOff);
    }
    mLimiterMode = mode;
}

void MasterSection::SetLimiterBoost(double dB)
{
    mLimiter.SetBoost(dB);
}

void MasterSection::Prepare(double editorFrameRate)
{
    mOutputMeter[0].SetFrameRate(editorFrameRate);
    mOutputMeter[1].SetFrameRate(editorFrameRate);
    mMasterFxMeter.SetFrameRate(editorFrameRate);
}

void MasterSection::Clear()
{
    ClearBuses();
    VecZero(mMfxOutL, kBlockSize);
    VecZero(mMfxOutR, kBlockSize);
    VecZero(mDryL, kBlockSize);
    VecZero(mDryR, kBlockSize);
    VecZero(mLimitL, kBlockSize);
    VecZero(mLimitR, kBlockSize);
    mOutputDelayL.Clear();
    mOutputDelayR.Clear();
    mLimiter.Init();
    mLimiterRestart = false;
    for (DSPShell* module : mMasterFx)
        if (module != nullptr) module->Init();
}

void MasterSection::ClearBuses()
{
    VecZero(mWetL, kBlockSize);
    VecZero(mWetR, kBlockSize);
    VecZero(mMfxInL, kBlockSize);
    VecZero(mMfxInR, kBlockSize);
}

void MasterSection::ScaleDry(const double* inL, const double* inR)
{
    const double g = DryGain();
    VecScale(inL, g, mDryL, kBlockSize);
    VecScale(inR, g, mDryR, kBlockSize);
}

void MasterSection::RunMasterFx()
{
    if (mMasterFxChanged)
    {
        // The old effect's return must not keep feeding the slots that read it.
        mMasterFxChanged = false;
        VecZero(mMfxOutL, kBlockSize);
        VecZero(mMfxOutR, kBlockSize);
        if (DSPShell* module = ActiveMasterFx()) module->Reset();
    }
    if (mMasterFxType <= kMasterFxOff) return;

    DSPShell* module = ActiveMasterFx();
    if (module != nullptr && !mMasterFxBypass && !module->mBypass)
    {
        module->mIn1 = mMfxInL;
        module->mIn2 = mMfxInR;
        module->mOut1 = mMfxInL;
        module->mOut2 = mMfxInR;
        module->Process();
    }
    VecCopy(mMfxInL, mMfxOutL, kBlockSize);
    VecCopy(mMfxInR, mMfxOutR, kBlockSize);
    const double level = mMasterFxLevel;
    VecScaleI(level, mMfxInL, kBlockSize);
    VecScaleI(level, mMfxInR, kBlockSize);
    VecAddI(mMfxInL, mWetL, kBlockSize);
    VecAddI(mMfxInR, mWetR, kBlockSize);
}

void MasterSection::RunWidth()
{
    if (!mWidthOn) return;
    const double mid = mWidthMid;
    const double side = mWidthSide;
    for (int k = 0; k < kBlockSize; ++k)
    {
        const double l = mWetL[k];
        const double r = mWetR[k];
        const double m = (l + r) * mid;
        const double s = (l - r) * side;
        mWetL[k] = m + s;
        mWetR[k] = m - s;
    }
}

void MasterSection::RunOutput(double fade, double* outL, double* outR)
{
    const double g = WetGain(fade);
    const int delay = gLookAhead;
    // A bypassed limiter takes the path of the limiter off: unlimited, and still aligned.
    if (mLimiterMode == kLimiterOff || mLimiter.mBypass)
    {
        // The sum goes into the delay as it is formed.
        const auto run = [g, delay](OutputDelay& line, const double* dry, const double* wet, double* out)
        {
            line.Run(
                delay, [=](int i) { return LoadPair(dry + i) + LoadPair(wet + i) * g; },
                [out](int i, LanePair v) { StorePair(out + i, v); });
        };
        run(mOutputDelayL, mDryL, mWetL, outL);
        run(mOutputDelayR, mDryR, mWetR, outR);
        return;
    }

    if (mLimiterRestart)
    {
        mLimiterRestart = false;
        mLimiter.Reset();
    }
    mLimiter.mIn1 = mWetL;
    mLimiter.mIn2 = mWetR;
    mLimiter.mOut1 = mLimitL;
    mLimiter.mOut2 = mLimitR;
    mLimiter.Process();
    // The limited wet signal joins the delayed dry one as it comes out.
    const auto run = [g, delay](OutputDelay& line, const double* dry, const double* limited, double* out)
    {
        line.Run(
            delay, [dry](int i) { return LoadPair(dry + i); },
            [=](int i, LanePair v) { StorePair(out + i, v + LoadPair(limited + i) * g); });
    };
    run(mOutputDelayL, mDryL, mLimitL, outL);
    run(mOutputDelayR, mDryR, mLimitR, outR);
}

double MasterSection::TickOutputMeter(int channel, const double* hostOut, int n)
{
    LevelMeter& meter = mOutputMeter[channel != 0 ? 1 : 0];
    return meter.Tick(MeterLaw(BlockPeak(hostOut, std::min(n, kBlockSize))));
}

double MasterSection::TickMasterFxMeter()
{
    return mMasterFxMeter.Tick(PairMeterLaw(mMfxInL, mMfxInR, kBlockSize));
}
