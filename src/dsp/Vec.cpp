#include "dsp/Vec.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace
{
// One cache line: enough for any vector width the compiler may choose.
constexpr std::size_t kVecAlignment = 64;

void* AlignedBytes(std::size_t bytes)
{
    const std::size_t rounded = (bytes + kVecAlignment - 1) / kVecAlignment * kVecAlignment;
    void* p = std::aligned_alloc(kVecAlignment, rounded == 0 ? kVecAlignment : rounded);
    if (p != nullptr) std::memset(p, 0, rounded == 0 ? kVecAlignment : rounded);
    return p;
}
} // namespace

double* VecAlloc(int n)
{
    return static_cast<double*>(AlignedBytes(sizeof(double) * static_cast<std::size_t>(n > 0 ? n : 0)));
}
float* VecAllocF(int n)
{
    return static_cast<float*>(AlignedBytes(sizeof(float) * static_cast<std::size_t>(n > 0 ? n : 0)));
}
unsigned char* VecAllocBytes(int n)
{
    return static_cast<unsigned char*>(AlignedBytes(static_cast<std::size_t>(n > 0 ? n : 0)));
}
void VecFree(void* p)
{
    std::free(p);
}

void VecMove(const double* src, double* dst, int n)
{
    if (n > 0) std::memmove(dst, src, sizeof(double) * static_cast<std::size_t>(n));
}

void VecAbs(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::fabs(src[i]);
}
void VecAbsI(double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = std::fabs(srcDst[i]);
}
void VecSqrtI(double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = std::sqrt(srcDst[i]);
}
void VecTrunc(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::trunc(src[i]);
}
void VecModf(const double* src, double* intDst, double* fracDst, int n)
{
    for (int i = 0; i < n; ++i)
    {
        const double x = src[i];
        const double whole = std::trunc(x);
        intDst[i] = whole;
        fracDst[i] = x - whole;
    }
}
void VecExp(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::exp(src[i]);
}
void VecLn(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::log(src[i]);
}
void VecSin(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::sin(src[i]);
}
void VecCos(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::cos(src[i]);
}
void VecSinCos(const double* src, double* sinDst, double* cosDst, int n)
{
    for (int i = 0; i < n; ++i)
    {
        const double x = src[i];
        sinDst[i] = std::sin(x);
        cosDst[i] = std::cos(x);
    }
}
void VecTanh(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = std::tanh(src[i]);
}

void VecMaxAbs(const double* src, int n, double* result)
{
    // Four running maxima, so the loop maps onto vector lanes without reassociating any sum: a
    // maximum is exact in any order, and NaN is passed over in each lane as in one.
    double m[4] = {0.0, 0.0, 0.0, 0.0};
    int i = 0;
    for (; i + 4 <= n; i += 4)
        for (int k = 0; k < 4; ++k)
        {
            const double a = std::fabs(src[i + k]);
            m[k] = a > m[k] ? a : m[k];
        }
    for (; i < n; ++i)
    {
        const double a = std::fabs(src[i]);
        m[0] = a > m[0] ? a : m[0];
    }
    const double lo = m[0] > m[1] ? m[0] : m[1];
    const double hi = m[2] > m[3] ? m[2] : m[3];
    *result = lo > hi ? lo : hi;
}
void VecMean(const double* src, int n, double* result)
{
    if (n <= 0) return;
    double s = 0.0;
    for (int i = 0; i < n; ++i)
        s += src[i];
    *result = s / n;
}
void VecSumF(const float* src, int n, float* result)
{
    float s = 0.0f;
    for (int i = 0; i < n; ++i)
        s += src[i];
    *result = n > 0 ? s : 0.0f;
}
