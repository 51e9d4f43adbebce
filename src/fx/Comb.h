#pragma once
// Comb: the input plus a delayed copy of itself, the delay being one period of the comb frequency
// (sampleRate / f samples), so the response peaks at every multiple of f and has nulls halfway
// between. The delayed signal passes a one-pole low-pass and a one-pole high-pass. The output,
// times the feedback (0 to -0.5), soft-limited and scaled by 1.66, is added to what enters the line:
// a negative feedback deepens and narrows the nulls while the peaks stay at multiples of f.
//
// Soft limit: y - (4/27) y^3 for |y| <= 1.5, +-1 beyond (slope 1 at 0 and 0 at the knee), so the
// small-signal loop gain is at most 0.83 and the fed-back signal never exceeds 1.66.
// Filters: the P4 low-pass uses the one-pole coefficient g = 1 - 0.98 x (open at 0) and the P3
// high-pass subtracts a one-pole low-pass of coefficient g = 0.5 x^2 (off at 0); both coefficients
// are for 44.1 kHz and are converted so that their corners stay put at other rates.
// The line holds 48000 samples whatever the rate: f is clamped to 1..10000 Hz and the read position
// to the line, so at rates above 48 kHz the lowest frequencies read the line's far end.
//
// Parameters (SetParam, parameter thread): 0 frequency (10^(4x) Hz), 1 feedback, 2 high-pass,
// 3 low-pass, 4 spread (f x 10^(x x channel sign)); mMix stays 1. Process, Reset, Init: audio thread.

#include "dsp/DSPShell.h"

#include <memory>

class Comb : public QLM_DSPFunctions::SimpleOSC, public DSPShell
{
  public:
    static constexpr int kLineLength = 48000;
    static constexpr double kFeedbackScale = -0.5;
    static constexpr double kLimitGain = 1.66;

    explicit Comb(bool isRight);

    void Reset() override;
    void SetParam(int id, double value) override;
    void Process() override;

    // Comb frequency in hertz for the present parameters and modulation, clamped to 1..10000.
    double CombHz() const;
    // Delay in samples the comb settles on, after clamping to the line.
    double TargetDelay() const;

  private:
    Relaxed<double> mFreqX{0.0};
    Relaxed<double> mFeedbackX{0.0};
    Relaxed<double> mHighX{0.0};
    Relaxed<double> mLowX{0.0};

    // Audio-thread state.
    std::unique_ptr<double[]> mLine;
    int mWrite = 0;
    double mLowState = 0.0;
    double mHighState = 0.0;
    bool mSnap = true;
};
