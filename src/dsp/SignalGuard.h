#pragma once
// The bound on what may enter the engine. Recursive filters, delay lines and reverbs keep a value
// for as long as they run, so one NaN or infinity let in would poison every later sample, and an
// absurd finite value (1e300) overflows in the first square or sum. Input that is not a number
// counts as silence; finite input is held within +-kInputLimit (+60 dBFS), far above any real
// signal. Inside, the feedback paths are soft-limited, so bounded input keeps every state finite.

#include <algorithm>
#include <cmath>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

inline constexpr double kInputLimit = 1000.0;

// Non-finite gives 0; a finite value is cut to +-limit. |x| <= the largest double fails for NaN
// and infinities alike. Written with SSE2 so that it compiles to compare, mask, max and min: the
// compiler's own code for the same test branches, and a burst of NaN then costs mispredictions.
inline double GuardSample(double x, double limit)
{
#if defined(__SSE2__)
    const __m128d v = _mm_set_sd(x);
    const __m128d magnitude = _mm_andnot_pd(_mm_set_sd(-0.0), v);
    const __m128d finite = _mm_cmple_sd(magnitude, _mm_set_sd(std::numeric_limits<double>::max()));
    const __m128d kept = _mm_and_pd(finite, v);
    return _mm_cvtsd_f64(_mm_min_sd(_mm_max_sd(kept, _mm_set_sd(-limit)), _mm_set_sd(limit)));
#else
    const double finite = std::fabs(x) <= std::numeric_limits<double>::max() ? x : 0.0;
    return std::min(std::max(finite, -limit), limit);
#endif
}

// GuardSample over a block, two samples to a vector: the same compare, mask, max and min per
// lane, so every sample comes out as GuardSample gives it.
inline void GuardBlock(const double* src, double* dst, int n, double limit)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128d sign = _mm_set1_pd(-0.0);
    const __m128d largest = _mm_set1_pd(std::numeric_limits<double>::max());
    const __m128d lo = _mm_set1_pd(-limit);
    const __m128d hi = _mm_set1_pd(limit);
    for (; i + 2 <= n; i += 2)
    {
        const __m128d v = _mm_loadu_pd(src + i);
        const __m128d finite = _mm_cmple_pd(_mm_andnot_pd(sign, v), largest);
        _mm_storeu_pd(dst + i, _mm_min_pd(_mm_max_pd(_mm_and_pd(finite, v), lo), hi));
    }
#endif
    for (; i < n; ++i)
        dst[i] = GuardSample(src[i], limit);
}
