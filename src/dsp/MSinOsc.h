#pragma once
// Slow modulators for the delay lines. MModulator is the one-slot base a modulated line ticks at each
// read-head update. MSinOsc is a sine by the two-term recursion y[n] = 2 cos(w) y[n-1] - y[n-2]; it
// is re-seeded with the exact peak state whenever a step reaches +-1, so its amplitude cannot grow.
// Set up on a set-up thread (Setup), ticked on the audio thread; nothing allocates.

class MModulator
{
  public:
    virtual ~MModulator() = default;
    virtual float Tick() = 0;
};

class MSinOsc : public MModulator
{
  public:
    // Angular step w per tick and start phase p (radians): the first Tick returns sin(p + w).
    void Setup(double w, double p);

    float Tick() override;

    float mRate = 0.0f;   // the owner's rate, already multiplied by the ticks it is stepped at
    double mK = 2.0;      // 2 cos(w)
    double mY = 0.0;      // latest value
    double mYPrev = 0.0;  // value before it
    double mReseed = 1.0; // cos(w): the value one step before a peak
};
