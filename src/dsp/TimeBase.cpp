#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>

const double gNoSignal[kNoSignalLength] = {};
double gNoOutput[kNoSignalLength] = {};

void SetTimeBase(double hostRate)
{
    const double rate = std::clamp(hostRate, kMinSampleRate, kMaxSampleRate);
    gSampleRate = rate;
    gSampleRateRatio = hostRate / 44100.0;
    gInvSampleRateRatio = 44100.0 / hostRate;
    gInvSampleRate = 1.0 / rate;
    gHundredOverRate = 100.0 / rate;
    gSamplesPerMs = rate * 0.001;
    gTenthMs = rate * 0.0001;
    gHalfRate = rate * 0.5;
    gLookAhead = static_cast<int>(std::floor(rate / 1000.0));
    gMaxDelay = static_cast<int>(rate * 8.0 + 1000.0);
}
