#include "dsp/Denormals.h"

#if defined(__SSE__) || defined(__x86_64__)
#include <xmmintrin.h>
namespace
{
constexpr unsigned kFlushToZero = 0x8000;      // MXCSR FTZ
constexpr unsigned kDenormalsAreZero = 0x0040; // MXCSR DAZ
} // namespace

void EnableFlushDenormals()
{
    _mm_setcsr(_mm_getcsr() | kFlushToZero | kDenormalsAreZero);
}

ScopedFlushDenormals::ScopedFlushDenormals() : mSaved(_mm_getcsr())
{
    _mm_setcsr(mSaved | kFlushToZero | kDenormalsAreZero);
}
ScopedFlushDenormals::~ScopedFlushDenormals()
{
    _mm_setcsr(mSaved);
}
#else
void EnableFlushDenormals() {}
ScopedFlushDenormals::ScopedFlushDenormals() {}
ScopedFlushDenormals::~ScopedFlushDenormals() {}
#endif
