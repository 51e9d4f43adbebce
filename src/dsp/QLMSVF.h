#pragma once
// State-variable filter (trapezoidal integrators) with a saturating stage: types 0..10 choose a
// linear pass, a saturating pass (a tanh on the band state, with resonance) or the saturating pass
// followed by a linear one, and which output (low, band, high, low + high, input + band) to give.
// Threads: SetParam, SetType and the QLMFilter slots on the parameter path; Process on the audio
// thread; Reset on the audio thread or while audio is held off. Nothing allocates.
//
// Controls: 0 frequency 0..1 (50 Hz * 400^x), 1 resonance 0..1 (saturating types only), 2 spread,
// 3 type, 4 mix. Input 3 is a ratio bounded to 0.5..2 that only takes part in the change test.

#include "dsp/QLMFilter.h"
#include "dsp/Relaxed.h"

enum QLMSVFOutput : int
{
    kSvfLow = 0,
    kSvfHigh = 1,
    kSvfBand = 2,
    kSvfLowHigh = 3,
    kSvfInputBand = 4,
};

class QLMSVF : public QLMFilter
{
  public:
    using PassFn = void (*)(QLMSVF&);

    explicit QLMSVF(bool isRight = false, int type = 2);

    void SetParam(int id, double value) override;
    void SetType(int type) override;
    void Reset() override;
    void Process() override;

    // Integrator gain tan(pi * f / rate), loop terms and saturating-pass terms from mFreq and mRes.
    void Tune();

    double mG = 0.0;
    double mFreqUsed = 0.0;
    double mH2 = 1.0;
    double mH1 = 1.0;
    double mR2 = 1.0;
    double mR1 = 1.0;
    double mS1 = 0.0;
    double mS2 = 0.0;
    double mS1b = 0.0;
    double mS2b = 0.0;
    Relaxed<const double* const*> mInputPtr{&mIn1};
    Relaxed<bool> mResonant{true};
    Relaxed<int> mOutputSel{kSvfLow};
    double mHighOut[gBlockLen] = {};
    double mBandOut[gBlockLen] = {};
    double mLowOut[gBlockLen] = {};
    Relaxed<PassFn> mProcessFn{nullptr};
};
