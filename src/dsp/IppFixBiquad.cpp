#include "dsp/IppFixBiquad.h"

#include "dsp/Vec.h"

#include <algorithm>

IppFixBiquad::IppFixBiquad(bool isRight) : QLMFilter(isRight)
{
    int bytes = 0;
    IirStateSize(kIirMaxOrder, &bytes);
    mWork = VecAllocBytes(bytes);
    Design(4, 0.49);
}

IppFixBiquad::~IppFixBiquad()
{
    VecFree(mWork);
}

// A new design starts from silence: the memory belonged to the previous design and rate.
void IppFixBiquad::Design(int order, double relFreq)
{
    mOrder = std::clamp(order, 1, kIirMaxOrder);
    IirDesignLowpass(relFreq, 0.0, mOrder, mTaps, 0, mWork);
    IirInit(&mState, mTaps, mOrder, nullptr, mWork);
}

void IppFixBiquad::ClearMemory()
{
    static constexpr double kSilence[2 * kIirMaxOrder] = {};
    IirSetDelay(mState, kSilence);
}

void IppFixBiquad::RunI(double* block, int n)
{
    IirRunI(block, n, mState);
    IirFlushFirstDelay(mState);
}

void IppFixBiquad::RunPairI(IppFixBiquad& left, IppFixBiquad& right, double* blockL, double* blockR, int n)
{
    IirRunPairI(blockL, blockR, n, left.mState, right.mState);
    IirFlushFirstDelay(left.mState);
    IirFlushFirstDelay(right.mState);
}
