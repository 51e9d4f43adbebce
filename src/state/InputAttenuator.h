#pragma once
// Law of the input attenuator control: a position v in 0..1 gives whole decibels from -12 (v = 0)
// up to 0 (v = 1) on an exponential curve, so most of the travel sits near 0 dB. The same law
// serves the state reader, the engine's input gain and the control's own text.

#include "dsp/Decibels.h"

#include <cmath>

inline int InputAttenuatorDb(double v)
{
    if (v == 1.0) return 0;
    const double d = std::pow(2.0, (1.0 - v) * 3.0 - 1.0);
    return static_cast<int>(d * -3.0);
}

inline double InputAttenuatorGain(double v)
{
    return DbToGain(InputAttenuatorDb(v));
}
