#pragma once
// The ambience reverb: four long double-precision delays in a 4 x 4 Householder feedback loop with a
// negative loop gain. Lines 0 and 1 take the left and right input, are low-passed in the loop and
// feed the outputs; their lengths wander with a Rossler attractor stepped once per block, so the
// tail has no fixed period. Stereo: Process reads mIn1/mIn2 and writes mOut1/mOut2 (which may be the
// inputs), 32 samples. Rings are allocated in the constructor for size 6 at 96 kHz. SetParam
// (parameter thread) only stores; Process, Reset and Init belong to the audio thread (or run while
// audio is held off).

#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"
#include "dsp/ModDelayBuffer.h"
#include "dsp/Relaxed.h"

class Ambience : public DSPShell
{
  public:
    static constexpr int kLines = 4;
    static constexpr double kMaxSize = 6.0;

    Ambience();

    // 0 size factor (at most 6); 1 decay, the loop gain 0..1; 2 modulation 0..1; 3 damp frequency 0..1.
    void SetParam(int id, double value) override;
    // Clears the rings, dampers and loop; the attractor keeps its state.
    void Reset() override;
    // Retimes the rings' glides for the present rate, starts the attractor afresh and resets; the
    // rings keep their fixed size.
    void Init() override;
    void Process() override;

    Relaxed<double> mTime[kLines];
    double mBaseLength[kLines] = {4297.0, 1669.0, 2753.0, 3581.0};
    Relaxed<double> mSize{1.0};
    Relaxed<double> mFeedback{0.0};
    double mDx = 0.0;
    double mDy = 0.0;
    double mDz = 0.0;
    double mX = 0.0;
    double mY = 1.0;
    double mZ = 1.0;
    double mRate = 8.7e-05;
    double mChaosA = 0.0;
    double mChaosB = 0.0;
    Relaxed<double> mChaosDepth{0.0};
    alignas(32) double mLoop[kLines][gBlockLen] = {};
    double mSumBlock[gBlockLen] = {};
    double* mLoopPtr[kLines];
    const double* mLineOut[kLines];
    ModDelayBuffer mLine[kLines];
    IppBiquad mDampL;
    IppBiquad mDampR;

  private:
    // Delays of the two fixed lines from the size, within the rings.
    void SetFixedTimes();
    // Delays of the two wandering lines from the size and the present offsets.
    void SetChaosTimes();
    double LimitTime(int line, double samples) const;
};
