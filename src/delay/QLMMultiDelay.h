#pragma once
// One channel of a slot's delay: a long ring of doubles with one write head and four ways of
// reading it (DelayMode). The engine never calls Process: per block it calls ReadTap for every tap
// it wants (sample i of a read at delay d is ring position mWritePos + i - d), then WriteBlock.
//
// Threads: the constructor and SetMaxDelay are set-up work (the only allocation; SetMaxDelay and
// SetMode run while the engine holds audio off). ReadTap, WriteBlock, Reset and ClearInterpolators
// run on the audio thread and never allocate. The remaining setters come from the parameter path
// and only store scalars (Relaxed); none of them touches the ring.

#include "delay/DelayMode.h"
#include "dsp/BlockSmoother.h"
#include "dsp/DSPShell.h"
#include "dsp/IppBiquad.h"
#include "dsp/Relaxed.h"

#include <memory>

inline constexpr int kMaxDelayTaps = 16;
// Ring length before the first SetMaxDelay.
inline constexpr int kInitialDelaySize = 10000;

class QLMMultiDelay : public DSPShell
{
  public:
    using ReadFn = void (*)(QLMMultiDelay&);

    explicit QLMMultiDelay(bool isRight = false);

    // Set-up work: makes room for rings of up to `samples`, so that later SetMaxDelay calls within
    // it (a sample-rate change, which happens on the audio thread) never allocate.
    void Reserve(int samples);
    // Sizes the ring to `samples` (+32 guard samples), retimes the smoothers and resets. Allocates
    // only beyond the reserved room (then it throws std::bad_alloc when the ring can't be had).
    void SetMaxDelay(double samples);

    // Stores the mode, picks its read and resets (the ring is cleared).
    void SetMode(int mode) override;
    // Clears the ring, the read heads and the filters; keeps every setting.
    void Reset() override;

    // Reads one block at `delaySamples` for head `tap` (0..15); returns mMixOut (32 samples).
    const double* ReadTap(float delaySamples, int tap);
    // ReadTap(delay, 0) of a left and a right line in FORWARD mode at once, into outL and outR
    // (32 samples each), the two all-pass recursions and filters as the lanes of one vector; each
    // side comes out exactly as its own ReadTap gives it. Lines in another mode read one after
    // the other.
    static void ReadForwardPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR,
                                double* outL, double* outR);
    // ReadForwardPair of two line pairs, lines {left, right, left, right} into outs: where both
    // pairs run the same loop filters, the four recursions run in one loop, so that the chains of
    // the two pairs overlap. Each block comes out exactly as ReadForwardPair gives it.
    static void ReadForwardTwoPairs(QLMMultiDelay* const (&lines)[4], const float (&delays)[4],
                                    double* const (&outs)[4]);
    // ReadTap(delay, tap) of a left and a right line in TAPPED mode at once, each into its own
    // mMixOut, the two all-pass recursions as the lanes of one vector; each side comes out exactly
    // as its own ReadTap gives it. Lines in another mode read one after the other.
    static void ReadTapPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR, int tap);
    // ReadTapPair of two heads, first tapA then tapB, into out[0] (left, right of tapA) and out[1]:
    // their four recursions run in one loop, so that the chains of the two heads overlap. Each
    // block comes out exactly as ReadTapPair gives it.
    static void ReadTwoTapPairs(QLMMultiDelay& left, QLMMultiDelay& right, const float* delayL,
                                const float* delayR, int tapA, int tapB, double* const (*out)[2]);
    // Appends 32 samples to the ring.
    void WriteBlock(const double* src);
    // The same for samples computed on the way in: sample(i) for i = 0..31.
    template <class Sample> void WriteBlockWith(const Sample& sample);

    // The next read jumps to its delay without a glide.
    void SnapTime() { mSnapTime = true; }
    void ClearInterpolators();
    // Puts the read-time glides where a new delay starts them, so that a new run of the engine
    // glides in exactly as the first one did. Audio thread, or with audio held off.
    void RestartGlides();

    // Relative corner frequencies (hertz / rate). GRAIN pins them at 0.25 and 0.002.
    void SetLowPass(double relFreq);
    void SetHighPass(double relFreq);

    void SetGrainSize(double ms);
    void SetGrainSpeed(double value);    // -1..1: two octaves down to two up
    void SetGrainPosition(double value); // 0..1
    void SetGrainFade(double ms);        // 0: automatic
    void SetReverseFade(double ms);

    // The reads of the four modes, on mMixOut.
    static void ReadForward(QLMMultiDelay& d);
    static void ReadBackward(QLMMultiDelay& d);
    static void ReadGrain(QLMMultiDelay& d);
    static void ReadTapped(QLMMultiDelay& d);

    Relaxed<bool> mRestart{false};
    int mSize = kInitialDelaySize;
    int mWritePos = 0;
    int mSegElapsed = 0;
    int mSegStart = 0;
    int mTap = 0;
    Relaxed<int> mMode{DelayForward};
    int mMaxFade = 0;
    int mFadeReadPos = 0;
    float mDelay = 0.0f;
    bool mBufferReady = false;
    bool mFadeActive = false;
    Relaxed<bool> mSnapTime{false};
    Relaxed<bool> mLowOn{false};
    Relaxed<bool> mHighOn{false};
    std::unique_ptr<double[]> mBuf;
    int mCapacity = 0; // samples the ring's memory holds, guard included
    const double* mGrainLen = nullptr;
    Relaxed<double> mFadeLen{0.0};
    Relaxed<double> mReverseFadeLen{0.0};
    Relaxed<double> mReverseFadeInv{0.0};
    Relaxed<double> mInvFadeLen{0.0};
    double mGrainElapsed = 0.0;
    double mGrainRead = 0.0;
    Relaxed<double> mGrainPosition{0.0};
    double mFadeRead = 0.0;
    Relaxed<double> mGrainSpeed{1.0};
    Relaxed<double> mGrainSpeedParam{0.0};
    Relaxed<double> mGrainFadeMs{0.0};
    Relaxed<double> mGrainSizeMs{200.0};
    Relaxed<double> mGrainSizeSamples{100.0};
    Relaxed<double> mGrainPositionParam{0.0};
    Relaxed<double> mReverseOffset{0.0};
    double mApState[kMaxDelayTaps] = {};
    double mMixOut[2 * gBlockLen] = {};
    Relaxed<ReadFn> mReadFn{&ReadForward};
    BlockSmoother mReverseOffsetSmoother{300.0};
    BlockSmoother mGrainSmoother{10.0};
    BlockSmoother mTapSmoother[kMaxDelayTaps];
    IppBiquad mLowPass;
    IppBiquad mHighPass;

  private:
    // The settings step of ReadTap: head, delay with its modulation and limits, a pending snap.
    void PrepareRead(float delaySamples, int tap);
    // PrepareRead on both lines of a pair, then each one's all-pass terms of head `tap` for a read
    // as two lanes; returns the head.
    static int PrepareTermsPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR,
                                int tap, double* uL, double* cL, double* uR, double* cR);
    // ReadForwardPair of the first `pairs` (1 or 2) line pairs.
    template <int pairs>
    static void ReadForwardPairs(QLMMultiDelay* const (&lines)[4], const float (&delays)[4],
                                 double* const (&outs)[4]);
    // Grain controls from their settings plus, where asked, their modulation inputs.
    void UpdateGrainSpeed(bool modulated);
    void UpdateGrainSize(bool modulated);
    void UpdateGrainPosition(bool modulated);
    // Cross-fade length from grain length g.
    void UpdateFade(double g);
    void RetimeSmoothers();
    // Runs a filter in place on mMixOut.
    void Filter(IppBiquad& f);
};

template <class Sample> void QLMMultiDelay::WriteBlockWith(const Sample& sample)
{
    double* buf = mBuf.get();
    // The next block lands where the ring was written a whole ring length ago: fetched early.
    if (mWritePos + 3 * gBlockLen <= mSize)
        for (int i = 0; i < gBlockLen; i += 8)
            __builtin_prefetch(buf + mWritePos + gBlockLen + i, 1);
    const int first = mSize - mWritePos < gBlockLen ? mSize - mWritePos : gBlockLen;
    double* at = buf + mWritePos;
    for (int i = 0; i < first; ++i)
        at[i] = sample(i);
    for (int i = first; i < gBlockLen; ++i)
        buf[i - first] = sample(i);
    mWritePos += gBlockLen;
    if (mWritePos >= mSize) mWritePos -= mSize;
    // Just after the wrap, mirror the ring's start behind its end so that reads running a few
    // samples past the end find the newest data.
    if (mWritePos < 2 * gBlockLen)
        for (int i = 0; i < gBlockLen; ++i)
            buf[mSize + i] = buf[i];
}
