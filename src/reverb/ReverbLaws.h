#pragma once
// Control laws of the reverb knobs: the 0..100 control the engine holds to the value the reverb's
// SetParam takes. Pure functions, callable from any thread; the pre-delay conversion reads the
// process-wide rate.
//
// Rates above 96 kHz: the reverbs' rings are sized for 96 kHz, so every length they derive from the
// rate uses ReverbLengthRatio, which stops at 96000 / 44100. Above 96 kHz the tails keep their 96 kHz
// lengths in samples (they run shorter in time) and no ring is ever overrun.

#include "dsp/FreqMapping.h"
#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>

inline constexpr double kReverbMaxRatio = kMaxSampleRate / 44100.0;

// gSampleRateRatio, limited to what the rings were built for.
inline double ReverbLengthRatio()
{
    return std::min(double(gSampleRateRatio), kReverbMaxRatio);
}

// Hall and room ("REVERB", "ROOM").
inline double HallSizeSeconds(double x)
{
    const double u = 0.01 * x;
    return u * u * 29.0 + 1.0;
}
inline double RoomSizeSeconds(double x)
{
    const double u = 0.01 * x;
    return u * u * 3.0 + 1.0;
}
inline double HallPreDelayMs(double x)
{
    return x * 5.0;
}
inline double RoomPreDelayMs(double x)
{
    return x * 2.0;
}
// What the engine hands to the pre-delay parameter: samples at the present rate.
inline double PreDelaySamples(double ms)
{
    return ms * 0.001 * gSampleRate;
}
// Input high-pass control, 0..1 in the 50 Hz * 400^x law (about 2 kHz at 100).
inline double ReverbHighPass(double x)
{
    return 0.0061568910657988 * x;
}
inline double HallDamp(double x)
{
    return std::pow(0.01 * x, 0.1);
}
inline double RoomDamp(double x)
{
    return std::pow(0.01 * x, 0.1) * 0.9;
}

// Ambience ("QUORVEX").
inline double AmbienceSize(double x)
{
    return (0.01 * x + 0.3) * 4.0;
}
inline double AmbienceDecay(double x)
{
    return std::pow(x * 0.00999, 0.5) + 0.0005;
}
inline double AmbienceModulation(double x)
{
    return 0.01 * x;
}
// Damp control 0..1 in the 50 Hz * 400^x law; AmbienceDampHz is the frequency shown.
inline double AmbienceDamp(double x)
{
    return 1.0 - 0.01 * x * 0.768621786840241;
}
inline double AmbienceDampHz(double x)
{
    return MapFreqHz(float(AmbienceDamp(x)));
}
