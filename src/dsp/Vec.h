#pragma once
// Whole-block arithmetic on short arrays (usually 32 samples). Every operation is a plain
// element-wise loop the compiler can vectorise; a length of 0 or less does nothing.
// Naming: no suffix works on double, F on float, I in place (the last array is source and
// destination). Source and destination may be the same array in the non-I forms; only
// VecMove allows arrays that overlap with an offset. Argument orders are part of the contract:
// note that VecSub gives the second operand minus the first.

#include <cstddef>
#include <cstdint>

#include "dsp/LanePair.h"

using Vec64 = double*;
using Vec32 = float*;

// Memory. The VecAlloc family is for set-up only, never for the audio thread.
double* VecAlloc(int n);
float* VecAllocF(int n);
unsigned char* VecAllocBytes(int n);
void VecFree(void* p);

// Two zeros to a store. The compiler is not told that the stored pair is zero: it would turn a
// short block into a string store (rep stos), whose start-up costs more than the block itself.
inline void VecZero(double* dst, int n)
{
    LanePair zero = {0.0, 0.0};
#if defined(__SSE2__)
    __asm__("" : "+x"(zero));
#endif
    int i = 0;
    for (; i + 2 <= n; i += 2)
        StorePair(dst + i, zero);
    for (; i < n; ++i)
        dst[i] = 0.0;
}
inline void VecZeroI32(int32_t* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = 0;
}
inline void VecSet(double value, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = value;
}
inline void VecCopy(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i];
}
inline void VecCopyF(const float* src, float* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i];
}
void VecMove(const double* src, double* dst, int n);

// Two blocks.
inline void VecAdd(const double* a, const double* b, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = a[i] + b[i];
}
inline void VecAddI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += src[i];
}
// dst = b - a: the second operand minus the first.
inline void VecSub(const double* a, const double* b, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = b[i] - a[i];
}
inline void VecSubI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] -= src[i];
}
inline void VecMul(const double* a, const double* b, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = a[i] * b[i];
}
inline void VecMulI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= src[i];
}
inline void VecMulF(const float* a, const float* b, float* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = a[i] * b[i];
}
inline void VecDivI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] /= src[i];
}
inline void VecAddProduct(const double* a, const double* b, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += a[i] * b[i];
}
inline void VecMinI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = src[i] < srcDst[i] ? src[i] : srcDst[i];
}
inline void VecMaxI(const double* src, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = src[i] > srcDst[i] ? src[i] : srcDst[i];
}

// A block and a constant.
inline void VecScale(const double* src, double k, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] * k;
}
inline void VecScaleI(double k, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= k;
}
inline void VecScaleF(const float* src, float k, float* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] * k;
}
inline void VecAddScaled(const double* src, double k, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += src[i] * k;
}
inline void VecAddScaledF(const float* src, float k, float* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += src[i] * k;
}
inline void VecAddConst(const double* src, double k, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] + k;
}
inline void VecAddConstI(double k, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += k;
}
inline void VecAddConstFI(float k, float* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] += k;
}
inline void VecSubConstI(double k, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] -= k;
}
inline void VecRevSub(const double* src, double k, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = k - src[i];
}
inline void VecRevSubI(double k, double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = k - srcDst[i];
}
// Multiplies by the reciprocal formed once, so results may differ from a true division in the last bit.
inline void VecDivConstI(double k, double* srcDst, int n)
{
    const double r = 1.0 / k;
    for (int i = 0; i < n; ++i)
        srcDst[i] *= r;
}

// Element functions.
void VecAbs(const double* src, double* dst, int n);
void VecAbsI(double* srcDst, int n);
inline void VecSqr(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] * src[i];
}
inline void VecSqrI(double* srcDst, int n)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] *= srcDst[i];
}
void VecSqrtI(double* srcDst, int n);
inline void VecRecip(const double* src, double* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = 1.0 / src[i];
}
void VecTrunc(const double* src, double* dst, int n);
// intDst = src rounded toward zero, fracDst = the rest with the sign of src; fracDst may be src.
void VecModf(const double* src, double* intDst, double* fracDst, int n);
void VecExp(const double* src, double* dst, int n);
void VecLn(const double* src, double* dst, int n);
void VecSin(const double* src, double* dst, int n);
void VecCos(const double* src, double* dst, int n);
void VecSinCos(const double* src, double* sinDst, double* cosDst, int n);
void VecTanh(const double* src, double* dst, int n);

// Bounds.
inline void VecFloorI(double* srcDst, int n, double level)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] < level ? level : srcDst[i];
}
inline void VecCeilI(double* srcDst, int n, double level)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] > level ? level : srcDst[i];
}
inline void VecBelowSetI(double* srcDst, int n, double level, double value)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] < level ? value : srcDst[i];
}
inline void VecAboveSetI(double* srcDst, int n, double level, double value)
{
    for (int i = 0; i < n; ++i)
        srcDst[i] = srcDst[i] > level ? value : srcDst[i];
}
inline void VecBandSetI(double* srcDst, int n, double levelLow, double valueLow, double levelHigh,
                        double valueHigh)
{
    for (int i = 0; i < n; ++i)
    {
        const double x = srcDst[i];
        srcDst[i] = x < levelLow ? valueLow : (x > levelHigh ? valueHigh : x);
    }
}

// Reductions.
void VecMaxAbs(const double* src, int n, double* result);
void VecMean(const double* src, int n, double* result);
void VecSumF(const float* src, int n, float* result);
