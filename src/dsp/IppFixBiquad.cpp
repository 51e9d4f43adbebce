#include "dsp/IppFixBiquad.h"

#include "dsp/Denormals.h"
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

void IppFixBiquad::Design(int order, double relFreq)
{
    mOrder = std::clamp(order, 1, kIirMaxOrder);
    ClearMemory();
    IirDesignLowpass(relFreq, 0.0, mOrder, mTaps, 0, mWork);
    IirInit(&mState, mTaps, mOrder, mDelay, mWork);
}

void IppFixBiquad::RunI(double* block, int n)
{
    IirSetDelay(mState, mDelay);
    IirRunI(block, n, mState);
    IirGetDelay(mState, mDelay);
    mDelay[0] = Undenormal(mDelay[0]);
}

void IppFixBiquad::RunPairI(IppFixBiquad& left, IppFixBiquad& right, double* blockL, double* blockR, int n)
{
    IirSetDelay(left.mState, left.mDelay);
    IirSetDelay(right.mState, right.mDelay);
    IirRunPairI(blockL, blockR, n, left.mState, right.mState);
    IirGetDelay(left.mState, left.mDelay);
    IirGetDelay(right.mState, right.mDelay);
    left.mDelay[0] = Undenormal(left.mDelay[0]);
    right.mDelay[0] = Undenormal(right.mDelay[0]);
}
