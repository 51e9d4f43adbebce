#include "fx/CompressorFx.h"

#include "dsp/Decibels.h"

#include <algorithm>
#include <cmath>

CompressorFx::CompressorFx(bool isRight) : Compressor(isRight)
{
    CompressorFx::Reset();
}

double CompressorFx::AttackMs(double x)
{
    return 0.1 * std::pow(1000.0, x);
}

double CompressorFx::ReleaseMs(double x)
{
    return 5.0 * std::pow(400.0, x);
}

void CompressorFx::SetParam(int id, double value)
{
    value = std::clamp(value, 0.0, 1.0);
    if (id >= 0 && id < 4)
        mKnob[id] = value;
    else if (id == 4)
        Compressor::SetParam(4, value); // makeup: 0..1 is 0..+24 dB in the compressor itself
}

void CompressorFx::ApplyControls(bool force)
{
    for (int p = 0; p < 4; ++p)
    {
        double x = mKnob[p];
        if (ModWired(p)) x = std::clamp(x + ModValue(p), 0.0, 1.0);
        if (!force && x == mApplied[p]) continue;
        mApplied[p] = x;
        switch (p)
        {
        case 0:
            Compressor::SetParam(0, DbToGain(ThresholdDb(x)));
            break;
        case 1:
            Compressor::SetParam(1, Ratio(x));
            break;
        case 2:
            Compressor::SetParam(2, AttackMs(x));
            break;
        default:
            Compressor::SetParam(3, ReleaseMs(x));
            break;
        }
    }
}

void CompressorFx::Reset()
{
    // Times first, so that the base's reset derives its coefficients from them at this rate.
    ApplyControls(true);
    Compressor::Reset();
}

void CompressorFx::Process()
{
    ApplyControls(false);
    Compressor::Process();
}
