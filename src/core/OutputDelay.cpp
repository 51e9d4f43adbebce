#include "core/OutputDelay.h"

#include "dsp/Vec.h"

void OutputDelay::Clear()
{
    VecZero(mRing, kLength + gBlockLen);
    mWrite = 0;
}
