#pragma once
// The shaping effects WAVE SHAPE (6), SATURATE (14/15), RECTIFY (16/17), DESTROY (18/19),
// NOISE (20/21) and LOFI I (23/24), one instance per channel. A filter runs on the input first
// (unless it is off), then a prepare step turns the smoothed, modulated amount into per-sample
// coefficients and a run step shapes the block; both are picked from a table at construction.
// The output is 100 % wet: the engine applies mMix.
//
// Choices where the laws leave room (see ShaperCurves.h for the curves):
// - SATURATE is tanh, antialiased by its anti-derivative ln cosh (difference quotient over the
//   last two samples, the tanh of their midpoint when they lie within 0.01).
// - DESTROY is a triangle fold of (1 + min(15 a, 3)) x; NOISE folds with the squared, halved
//   amount (1 + min(7.5 a^2, 3)) and halves its output. Both are odd: dense odd partials.
// - SIN1..SIN3 sum 1, 2 or 3 odd sine partials; ASYM1/ASYM2 are tanh with a negative half two or
//   four times harder; TUBE is a clipped quadratic step.
// - Filters: types 14..20 low-pass, 23 high-pass, the FB variants by their list, WAVE SHAPE a
//   one-section peak whose boost is the GAIN (24 x dB) and whose Q follows x^2. The list's
//   "NOTCH" is the all-pass: it notches once the engine mixes it with the dry signal.
// - Modulation: input 0 the amount (WAVE SHAPE: input 1 the gain), the filter's frequency on the
//   next input, its resonance (not for a list-valued mode) and spread on the two after.
//
// Threads: constructor on the set-up thread (no allocation after it); SetParam and the wiring on
// the parameter path (they store); Process and Reset on the audio thread.

#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"

#include <array>

// "SHAPE MODE" of WAVE SHAPE: list labels and the curve each selects.
inline constexpr std::array<const char*, 8> kShapeModeLabels = {"SATURATE", "TUBE", "RECT",  "SIN1",
                                                                "SIN2",     "SIN3", "ASYM1", "ASYM2"};
inline constexpr std::array<int, 8> kShapeModeIds = {14, 7, 16, 9, 10, 11, 12, 13};

// "FILTER MODE" of the FB variants 15, 17, 19, 21, 24: list labels and filter types.
inline constexpr std::array<const char*, 4> kShaperFilterModeLabels = {"LP", "HP", "BP", "NOTCH"};
inline constexpr std::array<int, 4> kShaperFilterModeTypes = {kBqLowpass, kBqHighpass, kBqBandpass,
                                                              kBqAllpass};

class Shaper : public DSPShell
{
  public:
    using PrepareFn = void (*)(Shaper&);
    using RunFn = void (*)(Shaper&, const double* dry, const double* shaped, double* out);

    // type: an effect type above; any other gives a pass-through.
    Shaper(int type, bool isRight);

    // WAVE SHAPE: 0 mode list index 0..7, 1 gain, 2 filter frequency, 3 filter Q, 4 spread.
    // Others: 0 amount, 1 filter frequency, 2 resonance (FB variants: filter list index 0..3),
    // 3 spread, 4 mix. All but the list indices are fractions 0..1.
    void SetParam(int id, double value) override;
    void OnModSource(int input, const double* value) override;
    void OnModDepth(int input, const double* depth) override;
    void Reset() override;
    void Process() override;

    int Type() const { return mType; }

    IppBiquad mFilter;

    // Working vectors of one block: the amount, and what the prepare step makes of it.
    double mAmount[gBlockLen] = {};
    double mCoefA[gBlockLen] = {};
    double mCoefB[gBlockLen] = {};
    double mFiltered[gBlockLen] = {};
    // Memories of the curves: last input and its anti-derivative; sample-and-hold phase and value.
    double mPrevX = 0.0;
    double mPrevF = 0.0;
    double mPhase = 0.0;
    double mHeld = 0.0;
    Relaxed<int> mModeIndex{0};

  private:
    const int mType;
    const int mAmountInput;
    const int* mFilterInputs; // filter input of each of the five module inputs, -1 for none
    PrepareFn mPrepare;
    RunFn mRun;
    Relaxed<double> mAmountParam{0.0};
    BlockSmoother mAmountSmooth{10.0};
};
