#include "dsp/MDelayLine.h"

#include <algorithm>

void MDelayLine::Clear()
{
    if (mBase != nullptr) std::fill(mBase, mEnd, 0.0f);
}

void MDelayLine::Allocate(int maxDelay)
{
    mMaxDelay = std::max(maxDelay, 0);
    mSize = mMaxDelay + kSpare;
    mStorage.reset(new float[mSize]());
    mBase = mStorage.get();
    mEnd = mBase + mSize;
    mWrite = mBase;
    SetDelay(mDelay);
}

void MDelayLine::SetDelay(int samples)
{
    mDelay = std::clamp(samples, 0, mMaxDelay);
    if (mBase == nullptr) return;
    const int pos = int(mWrite - mBase) - mDelay;
    mRead = mBase + (pos < 0 ? pos + mSize : pos);
}
