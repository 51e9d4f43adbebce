#pragma once
// The modulators' random source: a small linear congruential generator returning 0..32767. It
// holds no lock and no hidden state (unlike rand()), so it is safe on the audio thread.

#include <cstdint>

inline constexpr int kRand15Max = 32767;

// Advances `state` and returns the next value, 0..kRand15Max.
inline int NextRand15(std::uint32_t& state)
{
    state = state * 214013u + 2531011u;
    return static_cast<int>((state >> 16) & 0x7fffu);
}
