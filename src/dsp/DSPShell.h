#pragma once
// Base of every audio processor. The caller hands it block pointers, parameters by number
// (0 main control, 1 second, 2 spread, 3 selector or third, 4 mix) and up to ten modulation inputs,
// and it works on one internal block of 32 samples per Process call. The module never applies
// mMix: the engine does the wet/dry mix. Nothing here allocates after construction.
//
// Threads: Process runs on the audio thread; SetParam, SetMode and the wiring calls come from the
// parameter path and only store scalars, which the audio thread picks up at its next block.

#include <atomic>

#include "dsp/BlockSmoother.h"
#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"

inline constexpr int kModInputs = 10;

class DSPShell
{
  public:
    explicit DSPShell(bool isRight = false);
    virtual ~DSPShell() = default;
    DSPShell(const DSPShell&) = delete;
    DSPShell& operator=(const DSPShell&) = delete;

    // The nine virtual slots, in their fixed order.
    virtual void SetMode(int mode) {}
    virtual void Reset();
    virtual void SetParam(int id, double value) {}
    virtual void SetOrder(double value) {}
    virtual void OnModSource(int input, const double* value) {}
    virtual void OnModDepth(int input, const double* depth) {}
    virtual void Process();
    virtual void Init();
    virtual void Trigger() {}

    // Stores the flag, then resets: a module back from bypass has no memory of what it did.
    void SetBypass(bool bypass);
    void SetModSource(int input, const double* value);
    void SetModDepth(int input, const double* depth);

    // Present value of modulation input k times its depth, or 0 when nothing is wired.
    double ModValue(int k) const { return mModSource[k] != nullptr ? *mModSource[k] * ModDepth(k) : 0.0; }
    // The depth behind input k: the parameter path rewrites it while audio runs, so it is read as
    // a relaxed atomic.
    double ModDepth(int k) const
    {
        return std::atomic_ref<double>(const_cast<double&>(*mModDepth[k])).load(std::memory_order_relaxed);
    }
    bool ModWired(int k) const { return mModSource[k] != nullptr; }

    Relaxed<const double*> mModSource[kModInputs];
    Relaxed<const double*> mModDepth[kModInputs];
    Relaxed<double> mMix{1.0};
    Relaxed<double> mSpread{0.0};
    BlockSmoother mSmoothA{50.0};
    BlockSmoother mSmoothB{10.0};
    double mChannelSign = 1.0;
    const double* mIn1 = gNoSignal;
    double* mOut1 = gNoOutput;
    const double* mIn2 = gNoSignal;
    double* mOut2 = gNoOutput;
    double mScratch[2 * gBlockLen] = {};
    int mUpdatePhase = 0;
    int mBlockLen = gBlockLen;
    Relaxed<bool> mDirty{true};
    Relaxed<bool> mBypass{false};

  private:
    void Wire();
};

// Lightweight base of the parts inside delays and reverbs: no sample-rate or block logic.
class Module
{
  public:
    virtual ~Module() = default;
    virtual void Clear() {}
    virtual int Size() const { return 0; }
};

namespace QLM_DSPFunctions
{
// Mixin of the oscillator-driven effects, placed first in their base list. SetRate stores the rate,
// lets the derived class react (OnRate), forms the phase increment and hands its half on (OnPhase).
class SimpleOSC
{
  public:
    explicit SimpleOSC(double rateDivisor = 44100.0) : mRateDivisor(rateDivisor) {}
    virtual ~SimpleOSC() = default;

    virtual void SetRate(double hz);
    virtual void OnRate(double hz) {}
    virtual void OnPhase(double halfPhaseInc) {}

    Relaxed<double> mPhaseInc{0.0};
    Relaxed<double> mRateHz{0.0};
    Relaxed<double> mHalfPhaseInc{0.0};
    double mRateDivisor;
};
} // namespace QLM_DSPFunctions
