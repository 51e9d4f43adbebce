#pragma once
// Two doubles as the lanes of one SSE2 vector: the left and right side of a stereo pair, or two
// neighbouring samples. Baseline x86-64 has these registers; the compiler keeps lane-wise
// arithmetic on them exactly as it would on each double alone. Loads and stores go through memcpy,
// which compiles to unaligned moves.

#include <cstring>

using LanePair = double __attribute__((vector_size(16)));

inline LanePair LoadPair(const double* p)
{
    LanePair v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void StorePair(double* p, LanePair v)
{
    std::memcpy(p, &v, sizeof v);
}
