#pragma once
// Two-corner band filters with a saturating drive in front, one instance per channel (LPHP_ST:
// both channels). The drive is a SATURATE shaper without its own filter; the low-pass and the
// high-pass are IppBiquad cascades of second-order sections (12 dB per octave per section, each
// section at Q 0.725), run in series or, in the parallel modes, summed. Output 100 % wet.
// Threads: constructors on the set-up thread; SetParam, SetMode and the wiring on the parameter
// path (they store; a changed section count clears that filter at its next block); Process and
// Reset on the audio thread.

#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"
#include "fx/Shaper.h"

#include <array>

// "FILTER MODE" of DRIVE LP+HP: list index = SetMode argument, labels as the list shows them. The
// modes run 2, 4 and 6 sections per filter, so their far slopes are 24, 48 and 72 dB per octave.
inline constexpr std::array<const char*, 6> kLphpModeLabels = {"12db-S", "24db-S", "36db-S",
                                                               "12db-P", "24db-P", "36db-P"};
// "HP SLOPE" and "LP SLOPE" of VARAIBLE LPHP: list index + 1 sections.
inline constexpr std::array<const char*, 4> kVariLphpSlopeLabels = {"12dB", "24dB", "36dB", "48dB"};

// DRIVE LP+HP (slot type 56). Parameters: 0 high-pass frequency, 1 low-pass frequency (both
// 0..1, 50 * 400^x Hz), 2 drive amount 0..1, 3 mode list index 0..5, 4 mix. Modulation inputs 0, 1
// and 2 move the high-pass, the low-pass and the drive.
class LPHP : public DSPShell
{
  public:
    explicit LPHP(bool isRight);

    // 0 and 3: 2 sections each, 1 and 4: 4, 2 and 5: 6; 3..5 run the filters in parallel. An
    // unchanged value does nothing; a value beyond 5 is only stored.
    void SetMode(int slope) override;
    void SetParam(int id, double value) override;
    void OnModSource(int input, const double* value) override;
    void OnModDepth(int input, const double* depth) override;
    void Reset() override;
    void Process() override;

    Relaxed<bool> mParallel{false};
    bool mDrive = true;
    Relaxed<int> mSlope{-1};
    IppBiquad mLow;
    IppBiquad mHigh;
    Shaper mShaper;
    Relaxed<double> mDriveGain{1.0};

  protected:
    // Sets a filter's number of sections (1..12).
    static void SetSections(IppBiquad& filter, int sections);
};

// VARAIBLE LPHP (slot type 57): the same chain, always serial, with free slopes. Parameters: 0
// high-pass frequency, 1 high-pass slope list index 0..3, 2 low-pass frequency, 3 low-pass slope
// list index 0..3, 4 mix. Modulation inputs 0 and 2 move the two frequencies.
class VARILPHP : public LPHP
{
  public:
    explicit VARILPHP(bool isRight) : LPHP(isRight) {}

    void SetParam(int id, double value) override;
    void OnModSource(int input, const double* value) override;
    void OnModDepth(int input, const double* depth) override;
};

// The master effect DRIVE LP+HP: a left and a right LPHP on (mIn1, mOut1) and (mIn2, mOut2); a null
// output means in place, and a bypassed channel is not run. It holds LPHP, not VARILPHP, so that
// the four master controls (HP, LP, gain, mode index) keep LPHP's parameter numbers 0..3.
// Reset, Init, SetParam, SetMode and the modulation wiring go to both.
class LPHP_ST : public DSPShell
{
  public:
    LPHP_ST();

    void SetMode(int slope) override;
    void SetParam(int id, double value) override;
    void OnModSource(int input, const double* value) override;
    void OnModDepth(int input, const double* depth) override;
    void Reset() override;
    void Init() override;
    void Process() override;

    LPHP mLeft{false};
    LPHP mRight{true};
};
