#pragma once
// One channel of the master equalisers: a fixed set of one-section biquads run in series, chosen
// by the layout at construction. Layout 0 "FIX EQ": peak 1, low shelf, high shelf; layout 1
// "2 BAND EQ": peak 1, peak 2; layout 2 "LO/HI SHELF": low shelf, high shelf.
//
// SetParam(id, value), by layout (4 is the mix, kept for the engine):
//   id | layout 0               | layout 1               | layout 2
//   0  | low shelf gain  (amp)  | peak 1 gain  (frac)    | low shelf gain  (amp)
//   1  | peak 1 frequency (Hz)  | peak 1 frequency (Hz)  | low shelf frequency (Hz)
//   2  | peak 1 gain  (frac)    | peak 2 gain  (frac)    | high shelf gain (amp)
//   3  | high shelf gain  (amp) | peak 2 frequency (Hz)  | high shelf frequency (Hz)
// amp: the shelf's linear amplitude, the square root of its gain: 10^(dB / 40) for a shelf of dB
//      (the engine's "dB / 2 to linear"); 1 is flat.
// frac: 0..1, the peak giving 18 * (2 * value - 1) dB at its frequency; 0.5 is flat. The engine's
//      gain law dB = (v - 50) * 0.36 thus arrives as v / 100.
// Hz: the corner or centre frequency in hertz, kept in hertz so that a rate change re-derives it.
// Defaults: shelves at 500 Hz and 3000 Hz, peaks at 1000 Hz and 5000 Hz, all flat.
// Threads: SetParam on the parameter path (stores only); Process and Reset on the audio thread or
// while audio is held off. Nothing allocates after construction.

#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"
#include "dsp/Relaxed.h"

enum EqLayout : int
{
    kEqFix = 0,
    kEqTwoBand = 1,
    kEqShelves = 2,
};

class EQ_M : public DSPShell
{
  public:
    static constexpr float kPeakRangeDb = 18.0f;

    explicit EQ_M(int layout, bool isRight = false);

    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    int mLayout;
    IppBiquad mLowShelf;
    IppBiquad mPeak1;
    IppBiquad mPeak2;
    IppBiquad mHighShelf;

  private:
    static void SetFrequency(IppBiquad& section, double hz);
    void ApplyFrequencies();

    Relaxed<double> mLowShelfHz{500.0};
    Relaxed<double> mPeak1Hz{1000.0};
    Relaxed<double> mPeak2Hz{5000.0};
    Relaxed<double> mHighShelfHz{3000.0};
    IppBiquad* mChain[3] = {};
    int mChainLen = 0;
};
