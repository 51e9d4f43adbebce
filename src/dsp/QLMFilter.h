#pragma once
// Common base of the tunable filters: frequency, resonance and gain controls as set (m...Param,
// written by the parameter path), their modulated and smoothed block-rate values (written only
// inside Process), and the change test that decides when a derived filter redesigns.
// The controls move by a scalar one-pole step once per control update, with the sample-rate
// coefficients of three smoothers; run once per update, that stretches them to the sweep time.

#include "dsp/BlockSmoother.h"
#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"

class QLMFilter : public DSPShell
{
  public:
    explicit QLMFilter(bool isRight = false);

    // Slots behind the nine of DSPShell, in this order. Parameter path.
    virtual void SetResonance(float value) { mResParam = value; }
    virtual void SetResMin(double value) { mResMin = value; }
    virtual void SetResSpan(double value) { mResSpan = value; }
    virtual void SetType(int type) { mType = type; }
    // Audio thread. Compares mFreq, mRes, mGain with their last values in this order, stores the
    // first that differs and reports it at once: two changes in one update give two redesigns in
    // successive updates.
    virtual bool HasChanged();

    int mSectionsHint = gBlockLen;
    BlockSmoother mFreqSmooth{1.0};
    BlockSmoother mResSmooth{1.0};
    BlockSmoother mGainSmooth{5.0 / 32.0};
    Relaxed<double> mResParam{0.0};
    double mRes = 0.0;
    Relaxed<double> mResMin{1.0};
    Relaxed<double> mResSpan{1.0};
    double mResLast = 0.0;
    Relaxed<double> mFreqParam{0.0};
    double mFreq = 0.0;
    double mFreqLast = 0.0;
    double mRippleScale = 1.0;
    Relaxed<double> mGainParam{1.0};
    double mGain = 0.0;
    double mGainLast = 0.0;
    Relaxed<bool> mDesignPending{false};
    Relaxed<int> mType{26};
    Relaxed<bool> mMapFreq{true};

  protected:
    // Control update, steps common to every tunable filter: frequency (with spread and inputs 0
    // and 2), resonance (input 1) and gain (input 3, bounded to gainLo..gainHi), each through its
    // one-pole step. Returns the frequency stored by the previous change test. Audio thread.
    double UpdateControls(double gainLo, double gainHi);

    // Takes up the present sample rate in the three smoothers' coefficients.
    void RetimeSmoothers();

    // One-pole states of the three control steps; they carry the 1e-15 guard.
    double mFreqState = 0.0;
    double mResState = 0.0;
    double mGainState = 0.0;
};
