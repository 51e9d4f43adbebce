#pragma once
// Feedback delay network reverb, the hall (16 lines, 7 modulated) and the room (10 lines, 2
// modulated): a mono sum of the stereo input, high-passed and pre-delayed, feeds N single-precision
// lines coupled by a permutation with a rank-one (Householder) correction; each line carries its own
// loop gain and damping low-pass, and two orthogonal sign patterns tap the lines for left and right.
// Stereo: Process reads mIn1/mIn2 and writes mOut1/mOut2 (which may be the inputs), 32 samples.
// Rings are allocated in the constructor for 96 kHz. SetParam (parameter thread) only stores and
// flags the loop for recomputation; Process, Reset and ClearLines belong to the audio thread (or run
// while audio is held off).

#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"
#include "dsp/MDelayLine.h"
#include "dsp/MLPF1a.h"
#include "dsp/MSVRAP1ModDelayLine.h"
#include "dsp/MSinOsc.h"
#include "dsp/Relaxed.h"

class AFdnReverb : public DSPShell
{
  public:
    static constexpr int kMaxLines = 16;
    static constexpr int kPreDelayMax = 144000;

    // lines N (at most 16), modulated lines M (lines 0..M-1), and a third number kept for the
    // factory's sake (1 hall, 4 room) that the signal path does not use.
    AFdnReverb(int lines, int modLines, int third);

    // 0 decay in seconds; 1 pre-delay in samples at 44.1 kHz; 2 input high-pass 0..1;
    // 3 damping 0..1 (larger damps more).
    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;
    // Silences every ring and damper; coefficients stay.
    void ClearLines();

    int mLines;
    int mModLines;
    int mThird;
    float mSum = 0.0f;
    Relaxed<float> mDecayTime{12.0f};
    Relaxed<float> mInvDecay{1.0f / 12.0f};
    Relaxed<float> mDamp{0.5f};
    Relaxed<int> mPreDelay{0};
    Relaxed<int> mPreDelayBase{0};
    double mLength[kMaxLines] = {};
    double mDepth[kMaxLines];
    int mInterval[kMaxLines];
    float mModRate[kMaxLines];
    float mModPhase[kMaxLines];
    float mHouseholder;
    float mTapL[kMaxLines] = {};
    float mTapR[kMaxLines] = {};
    double mGainLine[kMaxLines] = {};
    double mDampCoef[kMaxLines] = {};
    float mV[kMaxLines] = {};
    float mW[kMaxLines] = {};
    float mScratchLine[kMaxLines] = {};
    IppBiquad mInputFilter;
    MSVRAP1ModDelayLine mModLine[kMaxLines];
    MSinOsc mOsc[kMaxLines];
    MDelayLine mPlainLine[kMaxLines];
    MLPF1a mDamper[kMaxLines];
    MDelayLine mPreDelayLine;

  private:
    void SetLengthsForRate();
    void SetupOscillators();
    void RecomputeLoop();
    // Pre-delay in samples at the present rate for a value in samples at 44.1 kHz, within the ring.
    // The engine's conversion already holds the rate once, so the time doubles at 88.2 kHz, as meant.
    static int PreDelayForRate(double base);
};
