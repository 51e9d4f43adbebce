#include "core/FeedbackSoftLimit.h"

#include <emmintrin.h>

#include "dsp/LanePair.h"
#include "dsp/TimeBase.h"

void FeedbackSoftLimit(double* x)
{
    constexpr int N = gBlockLen;
    // Mostly nothing is above 1: the largest size, two samples at a time, finds that out. A NaN
    // may pass the test either way; the loop below leaves it as it is.
    static_assert(N % 2 == 0);
    const LanePair sign = {-0.0, -0.0};
    LanePair peak = {0.0, 0.0};
    for (int i = 0; i < N; i += 2)
    {
        const LanePair size = _mm_andnot_pd(sign, LoadPair(x + i));
        peak = peak < size ? size : peak;
    }
    if (peak[0] <= 1.0 && peak[1] <= 1.0) return;
    for (int i = 0; i < N; ++i)
    {
        const double v = x[i];
        if (v > 1.0)
            x[i] = 1.0 + 0.5 * (v - 1.0) / v;
        else if (v < -1.0)
            x[i] = -1.0 - 0.5 * (v + 1.0) / v;
    }
}
