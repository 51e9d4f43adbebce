#pragma once
// Measurements on reverb responses: a stereo renderer for block processors, the decay time from the
// backward-integrated energy decay curve and band-pass filtering.

#include "common/Measure.h"
#include "dsp/DSPShell.h"
#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

struct StereoBuffer
{
    std::vector<double> left, right;
};

// Runs `fx` over the given input (padded with silence to a whole number of blocks, at least
// `frames` long), in place, and returns both outputs.
inline StereoBuffer RenderStereo(DSPShell& fx, std::vector<double> inL, std::vector<double> inR, int frames)
{
    const int blocks = (frames + gBlockLen - 1) / gBlockLen;
    inL.resize(size_t(blocks) * gBlockLen, 0.0);
    inR.resize(size_t(blocks) * gBlockLen, 0.0);
    for (int b = 0; b < blocks; ++b)
    {
        fx.mIn1 = fx.mOut1 = inL.data() + b * gBlockLen;
        fx.mIn2 = fx.mOut2 = inR.data() + b * gBlockLen;
        fx.Process();
    }
    return {std::move(inL), std::move(inR)};
}

inline std::vector<double> Impulse(int frames, int at = 0)
{
    std::vector<double> x(size_t(frames), 0.0);
    x[size_t(at)] = 1.0;
    return x;
}

// Decay time to -60 dB in seconds from a signal's energy: Schroeder's backward integral, with a
// least-squares line fitted to the curve between -5 and -35 dB.
inline double MeasureRt60(const std::vector<double>& a, const std::vector<double>& b, double rate)
{
    std::vector<double> edc(a.size());
    double acc = 0.0;
    for (size_t i = a.size(); i-- > 0;)
    {
        acc += a[i] * a[i] + b[i] * b[i];
        edc[i] = acc;
    }
    const double total = edc[0];
    double sx = 0, sy = 0, sxx = 0, sxy = 0;
    int count = 0;
    for (size_t i = 0; i < edc.size(); ++i)
    {
        const double db = 10.0 * std::log10(edc[i] / total);
        if (db > -5.0) continue;
        if (db < -35.0) break;
        const double t = double(i) / rate;
        sx += t;
        sy += db;
        sxx += t * t;
        sxy += t * db;
        ++count;
    }
    const double slope = (count * sxy - sx * sy) / (count * sxx - sx * sx);
    return -60.0 / slope;
}

// RBJ band-pass (constant 0 dB peak gain) at `hz`, quality q.
inline std::vector<double> BandPass(const std::vector<double>& x, double hz, double q, double rate)
{
    const double w = 2.0 * std::numbers::pi * hz / rate;
    const double alpha = std::sin(w) / (2.0 * q);
    const double a0 = 1.0 + alpha;
    const double b0 = alpha / a0, b2 = -alpha / a0, a1 = -2.0 * std::cos(w) / a0, a2 = (1.0 - alpha) / a0;
    std::vector<double> y(x.size());
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (size_t i = 0; i < x.size(); ++i)
    {
        y[i] = b0 * x[i] + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x[i];
        y2 = y1;
        y1 = y[i];
    }
    return y;
}
