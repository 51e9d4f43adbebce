#include "reverb/AFdnReverb.h"

#include "dsp/Denormals.h"
#include "reverb/ReverbLaws.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace
{
// Line lengths in samples at 44.1 kHz, all prime: the short set for rooms, the long for halls.
constexpr double kShortLengths[12] = {601, 691, 773, 839, 919, 997, 1061, 1093, 1129, 1151, 1171, 1187};
constexpr double kLongLengths[16] = {919,  997,  1061, 1093, 1129, 1151, 1171, 1187,
                                     1213, 1237, 1259, 1283, 1303, 1319, 1327, 1361};
// 96000 / 44100: rings hold the lengths at the highest rate.
constexpr double kRingScale = 2.17687074829932;
constexpr double kInputScale = 0.1667;
} // namespace

AFdnReverb::AFdnReverb(int lines, int modLines, int third)
    : mLines(std::clamp(lines, 1, kMaxLines)), mModLines(std::clamp(modLines, 0, mLines)), mThird(third),
      mHouseholder(-2.0f / float(mLines)), mInputFilter(false, kBqHighpass, 1, 24.0f)
{
    const double* lengths = mLines < 13 ? kShortLengths : kLongLengths;
    for (int i = 0; i < kMaxLines; ++i)
    {
        mLength[i] = i < mLines ? lengths[i] : 0.0;
        mDepth[i] = 6.0;
        mInterval[i] = 50;
        mModRate[i] = 2.0f;
        mModPhase[i] = 45.0f * float(i);
        mTapL[i] = (i & 1) == 0 ? 1.0f : -1.0f;
        // Right pattern + + - - ...: the left one with the sign turned where i mod 4 is 1 or 2.
        const int q = i & 3;
        mTapR[i] = (q == 1 || q == 2) ? -mTapL[i] : mTapL[i];
    }
    for (int i = 0; i < mLines; ++i)
    {
        if (i < mModLines)
        {
            mModLine[i].Allocate(int((mLength[i] + mDepth[i]) * kRingScale + 1.0));
            mModLine[i].SetInterval(mInterval[i]);
            mModLine[i].SetModulator(&mOsc[i]);
        }
        else
            mPlainLine[i].Allocate(int(mLength[i] * kRingScale + 1.0));
    }
    mPreDelayLine.Allocate(kPreDelayMax);
    mInputFilter.mIn1 = mScratch;
    mInputFilter.mOut1 = mScratch;
    Reset();
}

int AFdnReverb::PreDelayForRate(double base)
{
    return int(std::clamp(base * ReverbLengthRatio(), 0.0, double(kPreDelayMax)));
}

void AFdnReverb::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        // A decay of zero or less would divide by zero: the shortest tail is a millisecond.
        mDecayTime = float(std::max(value, 0.001));
        mInvDecay = 1.0f / mDecayTime;
        mDirty = true;
        break;
    case 1:
        mPreDelayBase = int(std::clamp(value, 0.0, double(kPreDelayMax)));
        mPreDelay = PreDelayForRate(value);
        break;
    case 2:
        mInputFilter.SetParam(0, std::clamp(value, 0.0, 1.0));
        break;
    case 3:
        mDamp = float(0.99 - value * 0.89);
        mDirty = true;
        break;
    default:
        break;
    }
}

void AFdnReverb::SetLengthsForRate()
{
    const double ratio = ReverbLengthRatio();
    for (int i = 0; i < mLines; ++i)
    {
        const int delay = int(ratio * mLength[i]);
        if (i < mModLines)
        {
            // The head update that follows at once places the centre exactly.
            mModLine[i].mTick = 0;
            mModLine[i].SetCenterDelay(delay);
            mModLine[i].SetDepth(int(mDepth[i]));
        }
        else
            mPlainLine[i].SetDelay(delay);
    }
}

void AFdnReverb::SetupOscillators()
{
    for (int i = 0; i < mModLines; ++i)
    {
        const double w =
            2.0 * std::numbers::pi * (double(mInterval[i]) * double(mModRate[i])) * gInvSampleRate;
        const double p = 2.0 * std::numbers::pi * double(mModPhase[i]) / 360.0;
        mOsc[i].Setup(w, p);
        mOsc[i].mRate = float(mInterval[i]) * mModRate[i];
    }
}

void AFdnReverb::RecomputeLoop()
{
    mDirty = false;
    // Half of the rate's effect on the lengths enters the loop gain, by design.
    const double k = ReverbLengthRatio() * 0.5 + 0.5;
    const double alpha = double(mDamp) / k;
    const double invDecay = mInvDecay;
    const double invRate = gInvSampleRate;
    for (int i = 0; i < mLines; ++i)
    {
        mGainLine[i] = std::pow(10.0, -3.0 * invDecay * k * invRate * mLength[i]);
        // ln(10) / 4 times the dB-per-pass slope, tilted by alpha: 0 at alpha 1, more below.
        const double d =
            std::min(std::log10(mGainLine[i]) * (1.0 - 1.0 / (alpha * alpha)) * 0.575646273248511, 1.0);
        mDampCoef[i] = d;
        mDamper[i].mFb = float(-d);
        mDamper[i].mIn = float((1.0 - d) * mGainLine[i]);
    }
}

void AFdnReverb::ClearLines()
{
    mPreDelayLine.Clear();
    for (int i = 0; i < mLines; ++i)
    {
        if (i < mModLines)
        {
            mModLine[i].Clear();
            // A cleared reverb starts its head schedule afresh, so that every run sounds alike.
            mModLine[i].Restart();
        }
        else
            mPlainLine[i].Clear();
        mDamper[i].Clear();
        mV[i] = mW[i] = 0.0f;
    }
}

void AFdnReverb::Reset()
{
    DSPShell::Reset();
    SetLengthsForRate();
    mPreDelay = PreDelayForRate(double(mPreDelayBase));
    SetupOscillators();
    mInputFilter.Reset();
    RecomputeLoop();
    ClearLines();
}

void AFdnReverb::Process()
{
    if (mDirty) RecomputeLoop();
    const int n = gBlockLen;
    for (int s = 0; s < n; ++s)
        mScratch[s] = mIn1[s] + mIn2[s] + kDenormGuard;
    mInputFilter.Process();

    const int lines = mLines;
    const int modLines = mModLines;
    const int preDelay = mPreDelay;
    const float householder = mHouseholder;
    double* out1 = mOut1;
    double* out2 = mOut2;
    for (int s = 0; s < n; ++s)
    {
        mSum = float(mScratch[s] * kInputScale);
        mPreDelayLine.Write(mSum);
        const float u = mPreDelayLine.ReadBehind(preDelay + 1);

        for (int i = 0; i < modLines; ++i)
            mScratchLine[i] = mModLine[i].Process();
        for (int i = modLines; i < lines; ++i)
            mScratchLine[i] = mPlainLine[i].ReadBehind(mPlainLine[i].mDelay + 1);
        // The loop gain sits in the damper: what reaches the taps is already attenuated.
        float left = 0.0f, right = 0.0f, sum = 0.0f;
        for (int i = 0; i < lines; ++i)
        {
            const float v = mDamper[i].Run(mScratchLine[i]);
            mV[i] = v;
            left += mTapL[i] * v;
            right += mTapR[i] * v;
            sum += v;
        }
        const float c = householder * sum + u;
        // Rotate by one while adding the Householder term and the input: line i takes line i + 1.
        for (int i = 0; i < lines - 1; ++i)
            mW[i] = mV[i + 1] + c;
        mW[lines - 1] = mV[0] + c;
        for (int i = 0; i < modLines; ++i)
            mModLine[i].Write(mW[i]);
        for (int i = modLines; i < lines; ++i)
            mPlainLine[i].Write(mW[i]);
        out1[s] = left;
        out2[s] = right;
    }
}
