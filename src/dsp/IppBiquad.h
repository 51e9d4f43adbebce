#pragma once
// Cascade of up to twelve identical second-order sections (or a direct Chebyshev filter of order
// 2 or 4), redesigned at block rate inside Process, whose signal memory stays in the filter state
// between blocks and passes through mDelay at a redesign, and so survives every redesign. A type
// change of equal section count hands the new design the memory it would have had, had it run all
// along (from a short input history), so the change makes no click.
// Threads: constructor and destructor on the set-up thread (the only allocation); SetParam,
// SetType, SetOrder and the QLMFilter slots on the parameter path (they store and flag; a change
// of section count clears the memory at the start of the next block); Process on the audio
// thread; Reset on the audio thread or while audio is held off.
//
// Types: 0 and others low-pass, 3 high-pass, 6 band-pass, 10/12 peak, 15/16 Chebyshev low-pass
// order 2/4, 18/19 Chebyshev high-pass order 2/4, 20 all-pass, 21 vowel (three formant peaks),
// 22 low-pass on the left / high-pass on the right, 23 low shelf, 24 high shelf, 26 off.
// Type 25 at construction lets parameter 1 choose the number of sections (low-pass).

#include "dsp/Iir.h"
#include "dsp/QLMFilter.h"
#include "dsp/Relaxed.h"

inline constexpr int kBiquadMaxSections = 12;
// Samples of input kept for a type change: long enough for the ringing of any design but the
// sharpest low corners to have died away.
inline constexpr int kTypeChangeHistory = 1024;

enum IppBiquadType : int
{
    kBqLowpass = 0,
    kBqHighpass = 3,
    kBqBandpass = 6,
    kBqPeak = 10,
    kBqPeakB = 12,
    kBqChebyLow2 = 15,
    kBqChebyLow4 = 16,
    kBqChebyHigh2 = 18,
    kBqChebyHigh4 = 19,
    kBqAllpass = 20,
    kBqVowel = 21,
    kBqLowHighSplit = 22,
    kBqLowShelf = 23,
    kBqHighShelf = 24,
    kBqOrderFromParam = 25,
    kBqOff = 26,
};

// Formants of the vowel type, in hertz: three vowels of three formants. Shared by every vowel
// filter of the process; SetParam(1) of a vowel filter copies a row group into it.
inline Relaxed<float> gVowelFormants[3][3];

class IppBiquad : public QLMFilter
{
  public:
    using StageFn = void (*)(IppBiquad&);

    IppBiquad(bool isRight, int type, int sections, float gainRange);
    ~IppBiquad() override;

    // 0 frequency 0..1; 1 resonance (vowel group, or section count with type 25); 2 spread;
    // 3 type (peak gain for 10, vowel gain for 21); 4 mix (makeup for 10 and 21).
    void SetParam(int id, double value) override;
    // Sections = truncate(2x + 2): 2, 4, 6 for 0, 1, 2.
    void SetOrder(double x) override;
    void Reset() override;
    void Process() override;
    // Process of a left and a right filter, each in place on its own block: where both have
    // the same structure the pair runs as the lanes of one vector, each side rounding exactly as
    // its own Process would.
    static void ProcessPair(IppBiquad& left, IppBiquad& right);
    // ProcessPair(firstL, firstR), then ProcessPair(thenL, thenR) on what the first pair gave, in
    // place: where the second pair keeps no history and the first has no output gain, all four
    // run as one cascade per side, the same bits with the recursions overlapping.
    static void ProcessChainPair(IppBiquad& firstL, IppBiquad& firstR, IppBiquad& thenL, IppBiquad& thenR);
    // Process in the hands of an owner that runs the filter inside a loop of its own. BeginBlock
    // does the block's control work and loads the memory; false: nothing runs this block. Then
    // either the owner runs the single section (SingleSection: false for any other filter, or a
    // type that scales its output) over its block and calls EndBlock with the block's input and
    // output, or RunBlockInPlace runs the filter as Process would.
    bool BeginBlock();
    bool SingleSection(IirSingleSection& out);
    void EndBlock(const double* input, double* output);
    void RunBlockInPlace(double* block);
    void SetType(int type) override;

    IirState* mState = nullptr;
    unsigned char* mWork = nullptr;
    double mDelay[2 * kBiquadMaxSections] = {};
    double mTaps[6 * kBiquadMaxSections] = {};
    Relaxed<int> mSections{1};
    float mOutGain = 1.0f;
    Relaxed<float> mMakeup{0.0f};
    float mGainRange = 24.0f;
    bool mOrderFromParam = false;
    float mAlpha = 0.0f;
    float mOmega = 0.0f;
    Relaxed<StageFn> mDesign{nullptr};
    Relaxed<StageFn> mUpdate{nullptr};

    // For a filter whose type never changes after construction: it keeps no input history, which
    // only a type change reads.
    void SetTypeFixed() { mKeepHistory = false; }
    // Whether EndBlock reads the block's input (for the history a type change starts from).
    bool KeepsHistory() const { return mKeepHistory; }

  private:
    // Process in three steps: the block's controls and history (false when nothing is to run),
    // the filter itself, then the memory kept and the type's output gain.
    bool PrepareRun(int type);
    // The rest of ProcessPair once both sides are prepared.
    static void RunPreparedPair(IppBiquad& left, bool runL, int typeL, IppBiquad& right, bool runR,
                                int typeR);
    bool PrepareControls(int type);
    void KeepHistory(const double* input);
    int mBegunType = kBqOff;
    double* RunTarget() { return mOut1 != nullptr ? mOut1 : const_cast<double*>(mIn1); }
    void FinishRun(double* out, int type);
    void ControlUpdate();
    // Stores a new section count; a change clears the memory before the next block.
    void ChangeSections(int sections);

    // Runs the recent input through a freshly designed filter to give it the memory of the new type.
    void WarmUpFromHistory();

    Relaxed<bool> mClearPending{false};
    // The last input, so that a type change can hand the new design the memory it would have had.
    double mHistory[kTypeChangeHistory] = {};
    int mHistoryPos = 0;
    bool mKeepHistory = true;
    bool mHasRun = false;
};
