#pragma once
// A 16-step sequencer that serves as a modulation source. Once per 32-sample block it moves through
// its steps (free from the tempo, synced to the host's song position, or one step per rising edge of
// a clock flag such as another gate's pulse), glides to the step's value in closed form and leaves
// a 32-sample buffer in Out(). After each block it raises two one-block pulses: LEVEL when a step at
// full level has just been entered, START when the sequence has just returned to step 0.
//
// Threads: the set... calls come from the parameter path and only store scalars (setGlide stores the
// time; the audio thread refills the smoother's tables at its next block). processBlock and Reset
// run on the audio thread. Nothing allocates; the smoother's tables are fixed-size members.

#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"

#include <cstdint>

class ArpGate : public DSPShell
{
  public:
    static constexpr int kMaxSteps = 16;
    static constexpr int kDefaultLength = 8;
    // Timebase list indices from here on name a clock flag instead of a note value.
    static constexpr int kFirstClockTimebase = 12;
    static constexpr int kNumTimebases = 22;

    enum Direction
    {
        kForward = 0,
        kBackward,
        kForwardBackward,
        kRandom
    };
    enum Polarity
    {
        kPositive = 0,
        kNegative,
        kBipolar
    };

    ArpGate();

    // Steps per quarter note of a note-value timebase (index 0..11), or 0 for a clock index.
    static double TimebaseRate(int index);

    void setStepLevel(int step, double value); // 0..1
    void setLength(int n);                     // clamped to 1..16
    void setDirection(int d);
    void setRate(double stepsPerBeat);
    void setClock(const std::uint8_t* flag); // null: internal clock
    void setSyncMode(int m);
    void setDepth(double d); // 0..1
    void setGlide(double ms);
    void setPolarity(int p);

    // The timebase list and the sync switch together: a note value sets the rate and clears the
    // clock, a clock index takes `clockFlag`; sync is on only for a note value with the switch on.
    // The switch is remembered, so sync returns when a note value is chosen again.
    void setTimebase(int index, const std::uint8_t* clockFlag);
    void setSyncSwitch(bool on);

    // One block. beatPosition: host position in quarter notes; tempo in beats per minute.
    void processBlock(double beatPosition, float tempo);

    // Clears the phase and refills the glide tables for the present sample rate; the step, its
    // counter and the glide state carry on.
    void Reset() override;

    const double* Out() const { return mOut; }
    int Step() const { return mStep; }
    int Counter() const { return mCounter; }
    int Length() const { return mLength; }
    const std::uint8_t* LevelPulse() const { return &mLevelPulse; }
    const std::uint8_t* StartPulse() const { return &mStartPulse; }
    int Polarity() const { return mPolarity; }
    // Seed of the random step order; set-up only, before the audio thread runs the gate.
    void SeedRandom(std::uint32_t seed) { mRandState = seed; }

  private:
    int nextRandomStep(int length);
    void setStepFromCounter(int length);
    void deriveSync();

    Relaxed<double> mStepLevel[kMaxSteps];
    Relaxed<int> mLength{kDefaultLength};
    Relaxed<const std::uint8_t*> mClock{nullptr};
    int mCounter = 0;
    int mStep = 0;
    int mLastCounter = 0;
    Relaxed<int> mPolarity{kPositive};
    double mPhaseAcc = 0.0;
    Relaxed<double> mRate{1.0};
    Relaxed<double> mDepth{1.0};
    Relaxed<double> mPolOffset{0.0};
    Relaxed<double> mPolScale{1.0};
    double mLastClock = 0.0;
    alignas(64) double mOut[gBlockLen] = {};
    Relaxed<int> mDirection{kForward};
    Relaxed<int> mSyncMode{0};
    BlockSmoother mGlide{0.0};
    Relaxed<double> mGlideMs{0.0};
    Relaxed<bool> mGlideChanged{false};

    Relaxed<int> mTimebase{0};
    Relaxed<bool> mSyncSwitch{false};

    // Pulses of the block just done, and what they are measured against.
    std::uint8_t mLevelPulse = 0;
    std::uint8_t mStartPulse = 0;
    double mPrevOut = 0.0;
    std::uint32_t mRandState = 1;
};
