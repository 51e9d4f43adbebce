#include "fx/FilterFx.h"

#include "dsp/IppBiquad.h"
#include "dsp/QLMSVF.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr float kPeakRangeDb = 24.0f;
constexpr int kMultiTypes[4] = {kBqLowpass, kBqHighpass, kBqBandpass, kBqAllpass};

int ListIndex(double value, int count)
{
    return std::clamp(int(std::lround(value)), 0, count - 1);
}

std::unique_ptr<QLMFilter> MakeFilter(int type, bool isRight)
{
    switch (type)
    {
    case kFxMultiSvf:
        return std::make_unique<QLMSVF>(isRight, 0);
    case kFxLowHigh24:
        return std::make_unique<IppBiquad>(isRight, kBqChebyLow4, 4, kPeakRangeDb);
    case kFxMulti12Fb:
        return std::make_unique<IppBiquad>(isRight, kBqOrderFromParam, 1, kPeakRangeDb);
    case kFxPeak:
        return std::make_unique<IppBiquad>(isRight, kBqPeak, 2, kPeakRangeDb);
    case kFxVowel:
        return std::make_unique<IppBiquad>(isRight, kBqVowel, 2, kPeakRangeDb);
    default:
        return std::make_unique<IppBiquad>(isRight, kBqLowpass, 1, kPeakRangeDb);
    }
}
} // namespace

FilterFx::FilterFx(int type, bool isRight)
    : DSPShell(isRight), mFxType(type), mFilter(MakeFilter(type, isRight))
{
    FilterFx::Reset();
}

void FilterFx::SetParam(int id, double value)
{
    QLMFilter& f = *mFilter;
    switch (id)
    {
    case 0:
    case 1:
        // Frequency (or vowel position); resonance, slope by sections, or vowel set.
        f.SetParam(id, std::clamp(value, 0.0, 1.0));
        break;
    case 2:
        f.SetParam(2, 2.0 * std::clamp(value, 0.0, 1.0) - 1.0);
        break;
    case 3:
        switch (mFxType)
        {
        case kFxMultiSvf:
            f.SetParam(3, ListIndex(value, int(kSvfModeLabels.size())));
            break;
        case kFxLowHigh24:
            f.SetParam(3, ListIndex(value, 2) == 0 ? kBqChebyLow4 : kBqChebyHigh4);
            break;
        case kFxPeak:
        case kFxVowel:
            f.SetParam(3, std::clamp(value, 0.0, 1.0));
            break;
        default:
            f.SetParam(3, kMultiTypes[ListIndex(value, 4)]);
            break;
        }
        break;
    case 4:
        if (mFxType == kFxPeak || mFxType == kFxVowel)
            f.SetParam(4, std::clamp(value, 0.0, 1.0));
        else
            mMix = value;
        break;
    default:
        break;
    }
}

int FilterFx::FilterInput(int p) const
{
    switch (p)
    {
    case 0:
    case 2:
        return p;
    case 1:
        return mFxType == kFxMulti12Fb || mFxType == kFxVowel ? -1 : 1;
    case 3:
        return mFxType == kFxPeak || mFxType == kFxVowel ? 3 : -1;
    default:
        return -1;
    }
}

void FilterFx::OnModSource(int input, const double* value)
{
    if (const int q = FilterInput(input); q >= 0) mFilter->SetModSource(q, value);
}

void FilterFx::OnModDepth(int input, const double* depth)
{
    if (const int q = FilterInput(input); q >= 0) mFilter->SetModDepth(q, depth);
}

void FilterFx::Reset()
{
    DSPShell::Reset();
    mFilter->Reset();
}

void FilterFx::Init()
{
    DSPShell::Init();
    mFilter->Init();
}

void FilterFx::Process()
{
    QLMFilter& f = *mFilter;
    f.mBlockLen = mBlockLen;
    f.mIn1 = mIn1;
    f.mOut1 = mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1);
    f.Process();
}
