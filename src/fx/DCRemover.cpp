#include "fx/DCRemover.h"

#include "dsp/Denormals.h"

void DCRemover::Reset()
{
    DSPShell::Reset();
    mPrev = 0.0;
    mOut = 0.0;
}

void DCRemover::RemoveDC(double* block)
{
    double prev = mPrev, y = mOut;
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double x = block[i];
        y = y * kPole + x - prev;
        prev = x;
        block[i] = y;
    }
    mPrev = prev;
    mOut = Undenormal(y);
}
