#include "dsp/MSinOsc.h"

#include <cmath>
#include <numbers>

void MSinOsc::Setup(double w, double p)
{
    mK = 2.0 * std::cos(w);
    mY = std::sin(p);
    mYPrev = std::sin(p - w);
    mReseed = std::sin(std::numbers::pi / 2.0 - w);
}

float MSinOsc::Tick()
{
    double t = mY * mK - mYPrev;
    if (t >= 1.0)
    {
        // Back onto the exact peak: rounding gain is cut off once per period.
        mYPrev = mReseed;
        mY = 1.0;
        return 1.0f;
    }
    if (t <= -1.0)
    {
        t = -1.0;
        mYPrev = -mReseed;
    }
    else
    {
        mYPrev = mY;
    }
    mY = t;
    return float(t);
}
