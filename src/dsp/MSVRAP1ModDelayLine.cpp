#include "dsp/MSVRAP1ModDelayLine.h"

#include <algorithm>

void MModDelayLine::Allocate(int maxDelay)
{
    MDelayLine::Allocate(maxDelay);
    SetCenterDelay(mCenterDelay);
}

void MModDelayLine::SetCenterDelay(int samples)
{
    mCenterDelay = std::clamp(samples, 0, mMaxDelay);
    SetDepth(mDepth);
    if (mBase == nullptr) return;
    int pos = int(mWrite - mBase) - mCenterDelay;
    if (pos < 0) pos += mSize;
    mReadPos = float(pos);
}

void MModDelayLine::SetDepth(int samples)
{
    mDepth = std::clamp(samples, 0, std::max(mCenterDelay - 1, 0));
}

void MSVRAP1ModDelayLine::UpdateHead()
{
    // The counter only decides when to update; restarting it here, where it is a multiple of the
    // interval, keeps that schedule and keeps the int from overflowing in a long session.
    if (mTick >= (1 << 30)) mTick = 0;

    const float v = mOsc != nullptr ? mOsc->Tick() : 0.0f;
    const float p = mReadPos + v * float(mDepth);
    // Integer part below p; a negative p steps one further down (so an exact -k gives -k-1, f = 1).
    int i = p >= 0.0f ? int(p) : int(double(p) - 1.0);
    mFrac = p - float(i);
    if (i >= mSize)
        i -= mSize;
    else if (i < 0)
        i += mSize;
    mRead = mBase + i;

    mReadPos += float(mInterval);
    if (mReadPos >= float(mSize)) mReadPos -= float(mSize);
}
