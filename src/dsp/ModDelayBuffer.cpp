#include "dsp/ModDelayBuffer.h"

#include "dsp/TimeBase.h"
#include "dsp/Vec.h"

#include <algorithm>
#include <cmath>

ModDelayBuffer::ModDelayBuffer()
{
    AllocateSize(kModDelayDefaultSize);
}

ModDelayBuffer::~ModDelayBuffer()
{
    VecFree(mBuf);
}

void ModDelayBuffer::Allocate(int minLength)
{
    // Single precision on purpose: it decides where the ring doubles, and the sizes must match.
    const float bits = std::ceil(std::log(static_cast<float>(std::max(minLength, 1))) / std::log(2.0f));
    AllocateSize(1 << std::clamp(static_cast<int>(bits), 0, 30));
}

void ModDelayBuffer::AllocateSize(int size)
{
    VecFree(mBuf);
    mBuf = VecAlloc(size);
    mAllocated = mBuf != nullptr;
    mSize = mAllocated ? size : 0;
    mMask = mSize - 1;
    mTimeSmoother.SetTime(10.0);
    Clear();
}

void ModDelayBuffer::Clear()
{
    mAllPassState = 0.0;
    mWrite = 0;
    if (mAllocated) VecZero(mBuf, mSize);
    VecZero(mOut, gBlockLen);
}

void ModDelayBuffer::Write(const double* src, int n)
{
    if (!mAllocated || n <= 0) return;
    const int first = std::min(n, mSize - mWrite);
    VecCopy(src, mBuf + mWrite, first);
    VecCopy(src + first, mBuf, n - first);
    if (mWrite + n < mSize)
        mWrite += n;
    else
        mWrite = mWrite - mSize + n;
}

const double* ModDelayBuffer::Read(double delay, int n)
{
    n = std::min(n, kModDelayOutLen);
    if (!mAllocated || n <= 0) return mOut;
    const int d = std::clamp(static_cast<int>(delay), 0, mMask);
    const int start = (mWrite - d - n) & mMask;
    if (start + n <= mSize) return mBuf + start;
    for (int i = 0; i < n; ++i)
        mOut[i] = mBuf[(start + i) & mMask];
    return mOut;
}

const double* ModDelayBuffer::ReadModulated(double delay, int n)
{
    n = std::min(n, gBlockLen);
    if (!mAllocated || n <= 0) return mOut;
    const double tenthMs = gTenthMs;
    const double* times = mTimeSmoother.RunD(delay < tenthMs ? tenthMs : delay, n);
    const int start = mWrite - n;
    double state = mAllPassState;
    for (int i = 0; i < n; ++i)
    {
        const double t = times[i];
        const int k = static_cast<int>(t);
        const double f = t - k;
        // First-order all-pass whose low-frequency delay is k + f samples.
        const double e = (1.0 - f) / (1.0 + f);
        const int p = i - k + start;
        state = e * (mBuf[p & mMask] - state) + mBuf[(p - 1) & mMask];
        mOut[i] = state;
    }
    mAllPassState = state;
    return mOut;
}
