#pragma once
// A one-pole low-pass run over a whole block in closed form, for a target that is constant over the
// block: out[i] = a^(i+1) * last + (1 - a) * target * (1 + a + ... + a^i). The powers and sums are
// tabled once per time setting, so a 32-sample ramp costs two vector operations and no
// transcendental. The powers are rounded to single precision in both tables on purpose.
// Tables are fixed-size members: nothing allocates after construction.

#include "dsp/TimeBase.h"

#include <cstdint>

class BlockSmoother
{
  public:
    explicit BlockSmoother(double ms = 10.0) { SetTime(ms); }

    // a = clamp(exp(-2 pi / (ms * 0.001 * gSampleRate)), 0, 1); refills the tables.
    void SetTime(double ms);

    // Smoothed block towards target; n <= gBlockLen. The state carries the 1e-15 guard.
    const double* RunD(double target, int n);
    // Whether the last RunD gave the block the one before it gave (a settled smoother with a
    // steady target), so that what a caller made of that block still holds.
    bool HeldD() const { return mHeldD; }
    const float* RunF(float target, int n);

    // Adds a modulation block to a control value within lo..hi. For n < 2 it works on the scalar
    // *value (or on *dest, which then takes the value over); for n >= 2 on a block of n values,
    // filled from *value when dest is given.
    static void ApplyMod(const double* mod, double depth, double* value, double* dest, int n, double lo,
                         double hi);

    double Coef() const { return mCoef; }
    double Gain() const { return mGain; }
    double LastD() const { return mLastD; }
    void SetLastD(double y) { mLastD = y; }
    void SetLastF(double y) { mLastF = y; }
    // Back to where a new smoother starts, so that every run glides in alike.
    void Restart()
    {
        mLastF = 0.0;
        mLastD = 0.0;
    }

    // The last block's inputs, as bits: the same inputs give the same block, which then is already
    // in the output array (a settled smoother with a steady target costs a compare).
    struct LastRun
    {
        std::uint64_t target = 0, last = 0;
        int n = -1; // -1: no block since the tables were filled
    };
    LastRun mRunD;
    bool mHeldD = false;
    LastRun mRunF;

    double mCoef = 0.0;
    double mGain = 1.0;
    double mLastF = 0.0;
    int mLen = gBlockLen;
    double mLastD = 0.0;
    bool mAllocated = true;
    float mOutF[gBlockLen] = {};
    float mPowF[gBlockLen] = {};
    float mSumF[gBlockLen] = {};
    double mOutD[gBlockLen] = {};
    double mPowD[gBlockLen] = {};
    double mSumD[gBlockLen] = {};
};
