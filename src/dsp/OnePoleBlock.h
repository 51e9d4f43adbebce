#pragma once
// The one-pole smoother y = a y + b x + guard over a block, in place (x becomes y - guard). Four
// samples follow from the state of the one before them, so the recursion's chain is one multiply
// and one add per four samples instead of per sample; the results agree with the plain recursion
// to rounding. `n` must be a multiple of 4. Any thread; no allocation.

#include "dsp/LanePair.h"

inline double OnePoleBlock(double* x, int n, double a, double b, double guard, double y)
{
    const double a2 = a * a, a3 = a2 * a, a4 = a2 * a2;
    for (int k = 0; k < n; k += 4)
    {
        const double u1 = b * x[k] + guard;
        const double u2 = b * x[k + 1] + guard;
        const double u3 = b * x[k + 2] + guard;
        const double u4 = b * x[k + 3] + guard;
        const double y1 = a * y + u1;
        const double y2 = a2 * y + (a * u1 + u2);
        const double y3 = a3 * y + (a2 * u1 + a * u2 + u3);
        y = a4 * y + (a3 * u1 + a2 * u2 + a * u3 + u4);
        x[k] = y1 - guard;
        x[k + 1] = y2 - guard;
        x[k + 2] = y3 - guard;
        x[k + 3] = y - guard;
    }
    return y;
}

// Two one-pole smoothers (x and its own a, b and state y for each) over their blocks in place, as
// the two lanes of one vector: each lane does exactly the operations of OnePoleBlock, in the same
// order, so each block comes out as its own OnePoleBlock gives it, and the two recursions overlap.
inline void OnePoleBlockPair(double* x0, double* x1, int n, double a0, double b0, double a1, double b1,
                             double guard, double& y0, double& y1)
{
    const LanePair a = {a0, a1}, b = {b0, b1}, g = {guard, guard};
    const LanePair a2 = a * a, a3 = a2 * a, a4 = a2 * a2;
    LanePair y = {y0, y1};
    for (int k = 0; k < n; k += 4)
    {
        const LanePair u1 = b * LanePair{x0[k], x1[k]} + g;
        const LanePair u2 = b * LanePair{x0[k + 1], x1[k + 1]} + g;
        const LanePair u3 = b * LanePair{x0[k + 2], x1[k + 2]} + g;
        const LanePair u4 = b * LanePair{x0[k + 3], x1[k + 3]} + g;
        const LanePair r1 = a * y + u1;
        const LanePair r2 = a2 * y + (a * u1 + u2);
        const LanePair r3 = a3 * y + (a2 * u1 + a * u2 + u3);
        y = a4 * y + (a3 * u1 + a2 * u2 + a * u3 + u4);
        const LanePair out[4] = {r1 - g, r2 - g, r3 - g, y - g};
        for (int j = 0; j < 4; ++j)
        {
            x0[k + j] = out[j][0];
            x1[k + j] = out[j][1];
        }
    }
    y0 = y[0];
    y1 = y[1];
}
