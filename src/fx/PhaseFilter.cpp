#include "fx/PhaseFilter.h"

#include "dsp/Denormals.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kMinFreq = 0.0001;
constexpr double kFeedbackScale = 0.8;
// Share of the feedback taken back off the output level, so that resonance doesn't jump out.
constexpr double kFeedbackLevelComp = 0.65;
} // namespace

PhaseFilter::PhaseFilter(bool isRight) : QLMFilter(isRight)
{
    PhaseFilter::Reset();
}

void PhaseFilter::SetParam(int id, double value)
{
    switch (id)
    {
    case 0:
        mFreqBase = std::clamp(value, 0.0, 1.0);
        break;
    case 1:
        mAmountBase = std::clamp(value, 0.0, 1.0);
        break;
    case 2:
        mSpread = (2.0 * std::clamp(value, 0.0, 1.0) - 1.0) * mChannelSign;
        break;
    case 3:
        mStages = std::clamp(int(4.0 * value + 3.0), 3, kMaxStages);
        // A different chain length starts from silence.
        mClearPending = true;
        break;
    case 4:
        mMix = value;
        break;
    default:
        break;
    }
}

void PhaseFilter::UpdateCoefficients()
{
    double f = mFreqBase + mSpread + ModValue(0) + ModValue(2) * mChannelSign;
    f = std::clamp(f, kMinFreq, 1.0);
    const double f2 = f * f;
    mCoef = 1.0 - f2 * f2;
    double b = mAmountBase;
    if (ModWired(1)) b = std::clamp(b + ModValue(1), 0.0, 1.0);
    mFeedback = b * kFeedbackScale;
    mOutGain = 1.0 - b * kFeedbackScale * kFeedbackLevelComp;
}

void PhaseFilter::ClearMemories()
{
    std::fill(mPrevIn, mPrevIn + kMaxStages + 1, 0.0);
    std::fill(mStage, mStage + kMaxStages + 1, 0.0);
}

void PhaseFilter::Reset()
{
    DSPShell::Reset();
    RetimeSmoothers();
    ClearMemories();
    mClearPending = false;
    // No sweep after a reset: the coefficient starts where the controls put it.
    UpdateCoefficients();
    mFreqSmooth.SetLastD(mCoef);
}

namespace
{
// One block through N stages, states in locals so that they live in registers. Per stage the
// recursion y = (x + y[-1]) * a - x[-1] is split so that only x * a + (...) waits on the stage
// before it: the chain is then one multiply and one add long per stage.
template <int N>
void RunChain(const double* in, double* out, int n, const double* coef, double fb, double* prevIn,
              double* stage)
{
    double s[N + 1], p[N];
    for (int k = 0; k <= N; ++k)
        s[k] = stage[k];
    for (int k = 0; k < N; ++k)
        p[k] = prevIn[k];
    for (int i = 0; i < n; ++i)
    {
        const double a = coef[i];
        double rest[N];
        for (int k = 0; k < N; ++k)
            rest[k] = s[k + 1] * a - p[k];
        s[0] = s[N] * fb + in[i];
        for (int k = 0; k < N; ++k)
        {
            p[k] = s[k];
            s[k + 1] = s[k] * a + rest[k];
        }
        out[i] = s[N];
    }
    for (int k = 0; k <= N; ++k)
        stage[k] = Undenormal(s[k]);
    for (int k = 0; k < N; ++k)
        prevIn[k] = p[k];
}
} // namespace

void PhaseFilter::Process()
{
    if (mClearPending)
    {
        mClearPending = false;
        ClearMemories();
    }
    UpdateCoefficients();
    const int n = mBlockLen;
    const double* coef = mFreqSmooth.RunD(mCoef, n);
    double* out = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
    switch (std::clamp(int(mStages), 3, kMaxStages))
    {
    case 3:
        RunChain<3>(mIn1, out, n, coef, mFeedback, mPrevIn, mStage);
        break;
    case 4:
        RunChain<4>(mIn1, out, n, coef, mFeedback, mPrevIn, mStage);
        break;
    case 5:
        RunChain<5>(mIn1, out, n, coef, mFeedback, mPrevIn, mStage);
        break;
    case 6:
        RunChain<6>(mIn1, out, n, coef, mFeedback, mPrevIn, mStage);
        break;
    default:
        RunChain<7>(mIn1, out, n, coef, mFeedback, mPrevIn, mStage);
        break;
    }
    VecScaleI(mOutGain, out, n);
}
