#include "dsp/MasterLimiter.h"

#include "dsp/Decibels.h"
#include "dsp/Vec.h"

#include <cmath>
#include <emmintrin.h>

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

// Every divisor of the gain stays at or above 1.
inline double AtLeastOne(double x)
{
    return x < 1.0 ? 1.0 : x;
}

// One sample of the look-ahead peak follower: rises over 0.5 ms, falls at once behind a 3 ms hold.
inline double LookAheadPeakStep(double x, double& env, double& held)
{
    return LimitFollowStep(x, gCoef05ms, 0.0, gCoef3ms, env, held);
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

// The stage is a few long passes rather than one per operation: each pass keeps its values in
// registers and does the same arithmetic in the same order as separate passes would.
void MasterLimiter::SlowStage(int mode)
{
    const int n = mBlockLen;
    double* t = mScratch;

    // The peak envelope of the detector and its running mean square over about half a second
    // (then the root): two independent recursions, side by side so that they overlap.
    {
        double env = mFollower[0].mEnv, held = mFollower[0].mHold;
        double s = mRmsState;
        const double rmsCoef = mRmsCoef;
        for (int i = 0; i < n; ++i)
        {
            const double x = mDetect[i];
            t[i] = LimitFollowStep(x, 0.0, gCoef1s, gCoef10ms, env, held);
            s = (x * x - s) * rmsCoef + s;
            mP[i] = s;
        }
        mFollower[0].mEnv = env;
        mFollower[0].mHold = held;
        mRmsState = s;
        // The roots after the recursions, two at a time: a root inside the loop holds it up.
        static_assert(gBlockLen % 2 == 0);
        for (int i = 0; i < n; i += 2)
            _mm_storeu_pd(mP + i, _mm_sqrt_pd(_mm_loadu_pd(mP + i)));
    }

    // Weight from how far the peak envelope stands above the RMS: dense material limits harder.
    // (The crest factor 1.0 leaves the envelope exactly as it is.)
    const double crest = mode == kLimiterSlowI ? kSlowICrest : 1.0;
    const double knee = gLimitKnee;
    for (int i = 0; i < n; ++i)
    {
        const double w = 1.0 / ((t[i] * crest - mP[i]) + 1.0);
        mW[i] = w;
        t[i] = AtLeastOne(std::fabs(w * knee * mDetect[i]));
    }

    // The gain stage, the peak stage after it and the look-ahead peak follower of Process, one
    // sample at a time, so that the three followers' recursions overlap instead of running one
    // block after the other. The look-ahead follower's output replaces t, for Process.
    const double trim = gLimitTrim;
    const double fall1 = mode == kLimiterSlowI ? gCoef1s : gCoef2s;
    double env1 = mFollower[1].mEnv, held1 = mFollower[1].mHold;
    double env2 = mFollower[2].mEnv, held2 = mFollower[2].mHold;
    double env4 = mFollower[4].mEnv, held4 = mFollower[4].mHold;
    for (int i = 0; i < n; ++i)
    {
        const double g1 = 1.0 / LimitFollowStep(t[i], gCoef100ms, fall1, gCoef10ms, env1, held1) * trim;
        const double d = mDetect[i] * g1;
        const double u = AtLeastOne(std::fabs(mW[i] * d));
        // The same divisor works twice, as a square.
        const double g2 = 1.0 / LimitFollowStep(u, gCoef20ms, gCoef100ms, gCoef10ms, env2, held2);
        const double detect = d * g2 * g2;
        mDetect[i] = detect;
        const double g = g1 * g2 * g2;
        mL[i] *= g;
        mR[i] *= g;
        t[i] = LookAheadPeakStep(AtLeastOne(std::fabs(detect)), env4, held4);
    }
    mFollower[1].mEnv = env1;
    mFollower[1].mHold = held1;
    mFollower[2].mEnv = env2;
    mFollower[2].mHold = held2;
    mFollower[4].mEnv = env4;
    mFollower[4].mHold = held4;
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

        if (mode == kLimiterSlowI)
        {
            for (int i = 0; i < n; ++i)
            {
                const double l = mIn1[i] * boost, r = mIn2[i] * boost;
                mL[i] = l;
                mR[i] = r;
                mDetect[i] = l + r;
            }
        }
        else
        {
            VecScale(mIn1, boost, mL, n);
            VecScale(mIn2, boost, mR, n);
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
        // The slow modes ran it inside their stage.
        double* t = mScratch;
        if (mode >= kLimiterFast)
        {
            for (int i = 0; i < n; ++i)
                t[i] = AtLeastOne(std::fabs(mDetect[i]));
            mFollower[4].Run(t, gCoef05ms, 0.0, gCoef3ms, n);
        }
        for (int i = 0; i < n; ++i)
            mG1[i] = 1.0 / t[i];

        if (mode != kLimiterSlowI)
        {
            // Second pass on the detector as it reaches the output: whatever the peak stage let
            // through is divided away sample by sample.
            double* d = mScratch + gBlockLen;
            const double* delayed = mDelayDetect.Read(lookAhead, n);
            for (int i = 0; i < n; ++i)
                d[i] = AtLeastOne(std::fabs(mG1[i] * delayed[i]));
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
