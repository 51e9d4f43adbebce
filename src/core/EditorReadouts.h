#pragma once
// What the editor shows of the running engine: meter peaks, modulator positions and playing
// steps, handed from the audio thread to the UI thread without locks. The audio thread raises a
// held peak (the largest since the UI last took it) or overwrites a position; the UI thread takes
// the peaks and reads the positions once per editor frame. Every value is one relaxed atomic, so
// nothing tears; a peak raised between the UI's read and reset may be lost, which a meter that
// refreshes 25 times a second never shows.

#include <array>
#include <atomic>

class EditorReadouts
{
  public:
    enum EMeter : int
    {
        kOutL,
        kOutR,
        kSlot1, // .. kSlot4: each slot's echo output
        kSlot4 = kSlot1 + 3,
        kMod1, // .. the 14 modulator outputs in source order (LFO1-4, GATE1-4, ENV1-2, LOGIC1-4)
        kModLast = kMod1 + 13,
        kEnvIn1, // .. kEnvIn2: what each envelope follower hears
        kNumMeters = kEnvIn1 + 2
    };
    static constexpr int kGateStep1 = 0; // .. the 4 gates' playing steps
    static constexpr int kTapStep1 = 4;  // .. the 4 slots' loudest taps (-1 none)
    static constexpr int kNumSteps = 8;

    // Audio thread.
    void HoldPeak(int meter, double peak)
    {
        std::atomic<double>& held = mPeak[static_cast<unsigned>(meter)];
        if (peak > held.load(std::memory_order_relaxed)) held.store(peak, std::memory_order_relaxed);
    }
    // A position (a modulator's latest output), overwritten every block.
    void SetPosition(int meter, double value)
    {
        mPeak[static_cast<unsigned>(meter)].store(value, std::memory_order_relaxed);
    }
    void SetStep(int which, int step)
    {
        mStep[static_cast<unsigned>(which)].store(step, std::memory_order_relaxed);
    }

    // UI thread: the held peak, which starts again from zero.
    double TakePeak(int meter)
    {
        return mPeak[static_cast<unsigned>(meter)].exchange(0.0, std::memory_order_relaxed);
    }
    double Position(int meter) const
    {
        return mPeak[static_cast<unsigned>(meter)].load(std::memory_order_relaxed);
    }
    int Step(int which) const { return mStep[static_cast<unsigned>(which)].load(std::memory_order_relaxed); }

  private:
    std::array<std::atomic<double>, kNumMeters> mPeak{};
    std::array<std::atomic<int>, kNumSteps> mStep{};
};
