#pragma once
// The one-pole smoother y = a y + b x + guard over a block, in place (x becomes y - guard). Four
// samples follow from the state of the one before them, so the recursion's chain is one multiply
// and one add per four samples instead of per sample; the results agree with the plain recursion
// to rounding. `n` must be a multiple of 4. Any thread; no allocation.

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
