#pragma once
// Process-wide time base, shared by every plug-in instance in the process and rewritten by the
// engine's sample-rate reset before any module is reset: the last instance's rate wins, by design.
// gSampleRate is clamped to 32..96 kHz; gSampleRateRatio is not, so that lengths tuned at 44.1 kHz
// keep scaling with the true host rate.

#include "dsp/Relaxed.h"

inline constexpr int gBlockLen = 32;        // samples per internal block, fixed by design
inline constexpr int kNoSignalLength = 128; // longest block any module reads at once

inline constexpr double kMinSampleRate = 32000.0;
inline constexpr double kMaxSampleRate = 96000.0;

inline Relaxed<double> gSampleRate{44100.0};
inline Relaxed<double> gSampleRateRatio{1.0};
inline Relaxed<double> gInvSampleRateRatio{1.0};
inline Relaxed<double> gInvSampleRate{1.0 / 44100.0};
inline Relaxed<double> gHundredOverRate{100.0 / 44100.0};
inline Relaxed<double> gSamplesPerMs{44.1};
inline Relaxed<double> gTenthMs{4.41};
inline Relaxed<double> gHalfRate{22050.0};
inline Relaxed<int> gLookAhead{44};
inline Relaxed<int> gMaxDelay{353800};

// Zero block: default target of modulation depth pointers and stand-in for an unused second input.
// Never written.
extern const double gNoSignal[kNoSignalLength];
// Sink for an unused second output. Modules should not write through it; it is a block, not a single
// double, so that a module that does cannot corrupt memory.
extern double gNoOutput[kNoSignalLength];

// Writes every value above from a host rate.
void SetTimeBase(double hostRate);
