#include "dsp/MasterLimiter.h"

#include "dsp/Decibels.h"
#include "dsp/Vec.h"

#include <cmath>

// exp(-1 / samples) for each time at 44.1 kHz; not recomputed at a rate change.
const double gCoef05ms = std::exp(-1.0 / 22.05);
const double gCoef3ms = std::exp(-1.0 / 132.3);
const double gCoef10ms = std::exp(-1.0 / 441.0);
const double gCoef20ms = std::exp(-1.0 / 882.0);
const double gCoef100ms = std::exp(-1.0 / 4410.0);
const double gCoef1s = std::exp(-1.0 / 44100.0);
const double gCoef2s = std::exp(-1.0 / 88200.0);

namespace
{
constexpr int kChannelDelay = 200; // rounded up to a ring of 256
// The single-channel detector runs hotter than the audio so that the other channel keeps room.
constexpr double kDetectHeadroom = 1.09;
// SLOW I subtracts the RMS from the peak envelope scaled by about 1 / sqrt(2).
constexpr double kSlowICrest = 0.708;

// A null output means in place; the shared zero input is never written, its sink takes the block.
double* OutputBlock(double* out, const double* in)
{
    if (out != nullptr) return out;
    return in == gNoSignal ? gNoOutput : const_cast<double*>(in);
}

// T = |T|, then at least 1.0: every divisor of the gain stays at or above 1.
void AbsAtLeastOne(double* t, int n)
{
    VecAbsI(t, n);
    VecFloorI(t, n, 1.0);
}
} // namespace

void SetLimiterCurve(int mode)
{
    const double knee = mode == kLimiterSlowI ? 5.0 : 1.5;
    gLimitKnee = knee;
    gLimitTrim = knee * 0.1 + 0.9;
}

MasterLimiter::MasterLimiter(bool isRight) : Dynamics(isRight)
{
    mDelayL.Allocate(kChannelDelay);
    mDelayR.Allocate(kChannelDelay);
    MasterLimiter::Reset();
}

void MasterLimiter::SetMode(int mode, bool fade)
{
    if (fade)
    {
        mFade.mFadeOut = true;
        gPendingLimiterMode = mode;
    }
    else
    {
        mMode = mode;
        SetLimiterCurve(mode);
    }
}

void MasterLimiter::SetBoost(double dB)
{
    mBoostDb = dB;
    OnLevelChanged();
}

void MasterLimiter::OnLevelChanged()
{
    mBoostGain = std::exp(mBoostDb * kDbToLn);
}

void MasterLimiter::Reset()
{
    // A mode change still fading out takes effect now: the fade that would have switched it is
    // cleared below, and a cleared limiter has nothing to fade.
    if (mFade.mFadeOut || mFade.mSwitchNow)
    {
        mMode = int(gPendingLimiterMode);
        SetLimiterCurve(mMode);
    }
    Dynamics::Reset();
    mRmsState = 1.0;
    mRmsCoef = 1.0 - std::exp(-1.0 / (double(gSampleRate) * 0.5));
    mDelayL.Clear();
    mDelayR.Clear();
    mDelayDetect.Clear();
    mFade.Prepare();
    mFade.mFadeOut = false;
    mFade.mFadeIn = false;
    mFade.mGain = 1.0;
    for (MasterLimitFollower& f : mFollower)
        f.Reset();
}

void MasterLimiter::SlowStage(int mode)
{
    const int n = mBlockLen;
    double* t = mScratch;
    VecSet(1.0, mG1, n);
    VecSet(1.0, mG2, n);
    VecSet(1.0, mG3, n);
    VecCopy(mDetect, t, n);
    mFollower[0].Run(t, 0.0, gCoef1s, gCoef10ms, n);

    // Running mean square of the detector over about half a second, then its root.
    double s = mRmsState;
    for (int i = 0; i < n; ++i)
    {
        const double x = mDetect[i];
        s = (x * x - s) * mRmsCoef + s;
        mP[i] = s;
    }
    mRmsState = s;
    VecSqrtI(mP, n);

    // Weight from how far the peak envelope stands above the RMS: dense material limits harder.
    if (mode == kLimiterSlowI) VecScaleI(kSlowICrest, t, n);
    VecSubI(mP, t, n);
    VecAddConstI(1.0, t, n);
    VecRecip(t, mW, n);

    const double knee = gLimitKnee;
    VecScale(mW, knee, t, n);
    VecMulI(mDetect, t, n);
    AbsAtLeastOne(t, n);
    mFollower[1].Run(t, gCoef100ms, mode == kLimiterSlowI ? gCoef1s : gCoef2s, gCoef10ms, n);
    VecDivI(t, mG1, n);
    VecScaleI(gLimitTrim, mG1, n);
    VecMulI(mG1, mDetect, n);

    VecMul(mW, mDetect, t, n);
    AbsAtLeastOne(t, n);
    mFollower[2].Run(t, gCoef20ms, gCoef100ms, gCoef10ms, n);
    // The same divisor works twice, as a square.
    VecDivI(t, mG2, n);
    VecMulI(mG2, mDetect, n);
    VecDivI(t, mG3, n);
    VecMulI(mG3, mDetect, n);

    VecMulI(mG3, mG1, n);
    VecMulI(mG2, mG1, n);
    VecMulI(mG1, mL, n);
    VecMulI(mG1, mR, n);
}

void MasterLimiter::Process()
{
    const int n = mBlockLen;
    double* out1 = OutputBlock(mOut1, mIn1);
    double* out2 = OutputBlock(mOut2, mIn2);

    if (mFade.mSwitchNow)
    {
        // The switch block does no audio work: the outputs keep what the caller left there.
        const int mode = gPendingLimiterMode;
        mMode = mode;
        SetLimiterCurve(mode);
        mFade.mSwitchNow = false;
    }
    else
    {
        const int mode = mMode;
        const int lookAhead = gLookAhead;
        const double boost = mBoostGain;
        VecScale(mIn1, boost, mL, n);
        VecScale(mIn2, boost, mR, n);

        if (mode == kLimiterSlowI)
            VecAdd(mL, mR, mDetect, n);
        else
        {
            double peak1 = 0.0, peak2 = 0.0;
            VecMaxAbs(mIn1, n, &peak1);
            VecMaxAbs(mIn2, n, &peak2);
            VecScale(peak2 > peak1 ? mR : mL, kDetectHeadroom, mDetect, n);
        }

        if (mode < kLimiterFast) SlowStage(mode);

        mDelayL.Write(mL, n);
        mDelayR.Write(mR, n);
        mDelayDetect.Write(mDetect, n);

        // Peak stage: rises over 0.5 ms within the look-ahead, falls at once behind a 3 ms hold.
        double* t = mScratch;
        VecAbs(mDetect, t, n);
        VecFloorI(t, n, 1.0);
        mFollower[4].Run(t, gCoef05ms, 0.0, gCoef3ms, n);
        VecSet(1.0, mG1, n);
        VecSet(1.0, mG2, n);
        VecDivI(t, mG1, n);

        if (mode != kLimiterSlowI)
        {
            // Second pass on the detector as it reaches the output: whatever the peak stage let
            // through is divided away sample by sample.
            double* d = mScratch + gBlockLen;
            VecMul(mG1, mDelayDetect.Read(lookAhead, n), d, n);
            AbsAtLeastOne(d, n);
            mFollower[5].Run(d, 0.0, 0.0, gCoef3ms, n);
            VecDivI(d, mG1, n);
        }

        VecMul(mG1, mDelayL.Read(lookAhead, n), out1, n);
        VecMul(mG1, mDelayR.Read(lookAhead, n), out2, n);
    }
    StepFade();
}

void MasterLimiter::StepFade()
{
    FadeRamp& f = mFade;
    if (!f.mFadeOut && !f.mFadeIn) return;
    if (f.mFadeOut)
    {
        f.mGain -= f.mOutStep;
        if (f.mGain <= 0.0)
        {
            f.mFadeOut = false;
            f.mSwitchNow = true;
            f.mFadeIn = true;
        }
    }
    else
    {
        f.mGain += f.mInStep;
        f.mFadeIn = f.mGain < 1.0;
    }
    const double g = f.mGain * f.mGain;
    double* out1 = OutputBlock(mOut1, mIn1);
    double* out2 = OutputBlock(mOut2, mIn2);
    VecScaleI(g, out1, mBlockLen);
    VecScaleI(g, out2, mBlockLen);
}
