#include "dsp/ScaledSum.h"

#include "dsp/TimeBase.h"
#include "dsp/Vec.h"
#include "dsp/WideLanes.h"

namespace
{
// N sources per pass, so that the running sum stays in a register instead of going through
// memory once per source. The in-place form reads dst itself: a pass whose input overlaps its
// output is not vectorised.
template <int N, bool kInPlace>
inline void AddGroup(const double* base, const double* const* src, const double* gain, double* dst)
{
    for (int i = 0; i < gBlockLen; ++i)
    {
        double sum = kInPlace ? dst[i] : base[i];
        for (int k = 0; k < N; ++k)
            sum += src[k][i] * gain[k];
        dst[i] = sum;
    }
}

inline void SumBlocks(const double* base, const double* const* src, const double* gain, int count,
                      double* dst)
{
    int k = 0;
    if (count >= 8)
    {
        AddGroup<8, false>(base, src, gain, dst);
        k = 8;
    }
    else if (count >= 4)
    {
        AddGroup<4, false>(base, src, gain, dst);
        k = 4;
    }
    else
        VecCopy(base, dst, gBlockLen);
    for (; k + 8 <= count; k += 8)
        AddGroup<8, true>(nullptr, src + k, gain + k, dst);
    for (; k + 4 <= count; k += 4)
        AddGroup<4, true>(nullptr, src + k, gain + k, dst);
    for (; k < count; ++k)
        VecAddScaled(src[k], gain[k], dst, gBlockLen);
}

void SumBaseline(const double* base, const double* const* src, const double* gain, int count, double* dst)
{
    SumBlocks(base, src, gain, count, dst);
}

// The same loops compiled for AVX2 without FMA: multiplies and adds stay separate.
__attribute__((target("avx2"))) void SumWide(const double* base, const double* const* src, const double* gain,
                                             int count, double* dst)
{
    SumBlocks(base, src, gain, count, dst);
}
} // namespace

void SumScaledBlocks(const double* base, const double* const* src, const double* gain, int count, double* dst)
{
    if (WideLanes())
        SumWide(base, src, gain, count, dst);
    else
        SumBaseline(base, src, gain, count, dst);
}
