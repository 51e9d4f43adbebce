#pragma once
// The filter effect types of the slot positions, each a shell round one tunable filter:
//   29 "MULTI SVF"  state-variable filter, P4 one of its 11 modes
//   30 "HP/LP 24dB" Chebyshev order 4, P4 "LP" / "HP"
//   31 "MULTI 12dB" one biquad section, P4 "LP" / "HP" / "BP" / "NOTCH"
//   32 "MULTI 12dB" (FB list) as 31, P2 "FILTER SLOPE" picks 1..3 sections (floor(3x) + 1)
//   33 "PEAK"       two peak sections sharing +-24 dB, P4 gain, P5 "DIM" (makeup)
//   36 "VOWEL"      three formant peaks, P1 position among 3 vowels, P2 vowel set, P4 gain, P5 "DIM"
// SetParam takes knob fractions 0..1, except P4 of 29..32, which is the list index. P1 is the
// frequency (50 Hz * 400^x), P2 the resonance unless stated, P3 the spread (taken as 2x - 1, signed
// by the channel). P5 of 29..32 is the mix, applied by the engine; 33 and 36 keep mMix at 1.
// "NOTCH" is the all-pass design: blended half and half with the dry signal by the mix, it cancels
// at the corner.
// Modulation inputs reach the filter's own inputs where they mean the same control: P1 the
// frequency, P2 the resonance (not the slope, set or mode), P3 the spread, P4 the gain of 33 and 36.
// Threads: constructor on the set-up thread (the only allocation); SetParam and the wiring calls
// on the parameter path; Process and Reset on the audio thread or while audio is held off.

#include "dsp/DSPShell.h"
#include "dsp/QLMFilter.h"

#include <array>
#include <memory>

enum FilterFxType : int
{
    kFxMultiSvf = 29,
    kFxLowHigh24 = 30,
    kFxMulti12 = 31,
    kFxMulti12Fb = 32,
    kFxPeak = 33,
    kFxVowel = 36,
};

// Mode labels of P4, by list index.
inline constexpr std::array<const char*, 11> kSvfModeLabels = {
    "LP SAT2", "LP SAT", "LP", "HP SAT2", "HP SAT", "LP II", "BP SAT", "BP SAT2", "LP III", "LP+HP", "IN+BP"};
inline constexpr std::array<const char*, 2> kLowHighModeLabels = {"LP", "HP"};
inline constexpr std::array<const char*, 4> kMultiModeLabels = {"LP", "HP", "BP", "NOTCH"};

class FilterFx : public DSPShell
{
  public:
    FilterFx(int type, bool isRight = false);

    void SetParam(int id, double value) override;
    void Reset() override;
    void Init() override;
    void Process() override;
    void OnModSource(int input, const double* value) override;
    void OnModDepth(int input, const double* depth) override;

    int Type() const { return mFxType; }
    QLMFilter& Filter() { return *mFilter; }

  private:
    // The filter's input for slot parameter p, or -1 when that parameter is not modulated there.
    int FilterInput(int p) const;

    int mFxType;
    std::unique_ptr<QLMFilter> mFilter;
};
