#include "core/OutputDelay.h"

#include <algorithm>

#include "dsp/Vec.h"

void OutputDelay::Clear()
{
    VecZero(mDryDelay, kLength);
}

// The buffer holds the last `delay` samples at its front and the new block behind them; its first
// 32 entries are then the output.
void OutputDelay::Run(const double* in, double* out, int delay)
{
    const int n = std::clamp(delay, 0, kMaxDelay);
    VecMove(mDryDelay + gBlockLen, mDryDelay, n);
    VecCopy(in, mDryDelay + n, gBlockLen);
    VecCopy(mDryDelay, out, gBlockLen);
}
