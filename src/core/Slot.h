#pragma once
// One delay slot: input gain, L/R offset, PRE effect, a stereo pair of delay lines, FB effect,
// direct/delay mix, POST effect, pan, level, width and output, each step on 32-sample blocks. Its
// five stage buffers per channel stay readable for the rest of the block, so later slots, the sum
// buses and the master send take them by pointer without copying.
//
// Threads: the constructor allocates (rings sized for 96 kHz, so rate changes never allocate).
// Prepare and Clear run on the audio thread or under the parameter lock while audio is held off.
// RunForward, RunOff and WriteDelay run on the audio thread. The Set... calls and the public caches
// belong to the parameter path: they store scalars and pointers only; work on the rings that a
// parameter asks for (clearing, a new delay mode) is handed to the audio thread's next block.

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "core/FxModuleList.h"
#include "core/TapEngine.h"
#include "core/Tempo.h"
#include "delay/QLMMultiDelay.h"
#include "dsp/BlockSmoother.h"
#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"
#include "params/ModRouting.h"

// "Not connected": a slot fed by the master effect offers nothing to later slots. It reads as
// silence, so a pointer that still holds it is harmless.
inline const double* const gNullBuffer = gNoSignal;

// The stereo sums of earlier slots that slots 3 and 4 may take as input.
struct SlotSumBuses
{
    double sum12[2][gBlockLen] = {};
    double sum13[2][gBlockLen] = {};
    double sum23[2][gBlockLen] = {};
    double sum123[2][gBlockLen] = {};
    void Clear();
    // Whether `buffer` is one side of one of the sums.
    bool Holds(const double* buffer) const;
};

// What the block loop lends every slot for one block.
struct SlotBlockContext
{
    double fade = 1.0;
    double attenuation = 1.0;
    double secPerBeat = 0.5;
    double timeScale = 1.0;              // "Delay Time Scale" as a factor
    double feedbackMaster = 0.0;         // added to every slot's feedback
    double mainDepth = 0.0;              // "Main ModDepth" in percent: wobble in samples per unit
    const double* mainOut = nullptr;     // the main modulator's four outputs
    const ModRouting* routing = nullptr; // modulation of gain, feedback, times, pan, level, send
    bool masterFxOn = false;
    double* wetL = nullptr;
    double* wetR = nullptr;
    double* mfxInL = nullptr;
    double* mfxInR = nullptr;
    SlotSumBuses* sums = nullptr; // null in a block in which no slot takes a sum as its input
};

class Slot : private ITapFx
{
  public:
    enum Stage
    {
        kStageIn = 0,
        kStagePre,
        kStageDly,
        kStagePost,
        kStageOut,
        kNumStages
    };
    // "Input " values shared by all slots; the slot choices follow from 5 on.
    enum Input
    {
        kInputMono = 0,
        kInputLeft,
        kInputRight,
        kInputStereo,
        kInputMasterFx,
        kFirstSlotInput
    };
    enum DirectOut
    {
        kDirectOutPre = 0,
        kDirectOutDelay,
        kDirectOutPost,
        kDirectOutOut
    };
    enum OutputMode
    {
        kOutputNorm = 0,
        kOutputSwap,
        kOutputMute
    };
    enum FxPosition
    {
        kFxPre = 0,
        kFxFeedback,
        kFxPost,
        kNumFxPositions
    };
    // Modules per effect list: a pair per channel, and in TAPPED mode a pair per tap.
    static constexpr int kFxModules = FxModuleList::kCapacity;
    static constexpr double kMixFeedbackScale = 0.7; // route MIX feeds back difference and sum
    static constexpr double kMonoPingPongGain = 0.66;

    explicit Slot(int index);
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    // Rate-dependent set-up: line sizes, filter corners, smoother times. Clears the slot.
    void Prepare();
    // Clears lines, offset rings, stage banks, feedback and input buffers; keeps settings.
    void Clear();
    // Clear, and every glide (delay times, input, pan, level, effect mix) back at its start: the
    // state a new run of the engine begins from. Same threads as Clear.
    void Restart();

    // Audio thread, for every slot before any runs its block: pending requests, then the block's
    // route, delay switch and delay times, taken once so that a read done early and the rest of
    // the block agree.
    void BeginBlock(const SlotBlockContext& ctx);
    // The delay reads of two slots that both read both lines FORWARD, side by side so that their
    // recursions overlap; each one's RunForward keeps its read. Does nothing for other slots.
    // After BeginBlock; the lines are not written until every slot has run.
    static void ReadForwardTogether(Slot& a, Slot& b);
    // Whether this block reads both lines FORWARD, which another slot's read can share.
    bool ReadsForwardPair() const
    {
        return mPlan.on && mPlan.delayOn && mMode == DelayForward && mPlan.route != DelayMixL &&
               mPlan.route != DelayMixR;
    }
    // Whether the slot runs this block (RunForward) or not (RunOff), from BeginBlock.
    bool OnThisBlock() const { return mPlan.on; }
    // Whether this block's input is one of the sums of earlier slots, from BeginBlock.
    bool TakesSum(const SlotSumBuses& sums) const
    {
        return mPlan.on && (sums.Holds(mPlan.sourceL) || sums.Holds(mPlan.sourceR));
    }
    // Audio thread, in block order, after BeginBlock.
    void RunForward(const SlotBlockContext& ctx);
    // A slot that is off: the bus clearing (slots 1 and 2 start sums that later slots add to),
    // when a later slot takes a sum this block (`sums` not null).
    void RunOff(SlotSumBuses* sums);
    // The block's feedback (already scaled by the feedback gains) plus the slot's own delay input,
    // faded, goes into the lines.
    void WriteDelay(double* fbSumL, double* fbSumR, double fade);
    // The same for the slot's own feedback (FbOut times the gains), summed on the way in.
    void WriteOwnDelay(double gainL, double gainR, double fade);

    double* StageL(int stage) { return mBankL + stage * gBlockLen; }
    double* StageR(int stage) { return mBankR + stage * gBlockLen; }
    const double* FbOutL() const { return mFbOutL; }
    const double* FbOutR() const { return mFbOutR; }
    double FbGainL() const { return mFbL; }
    double FbGainR() const { return mFbR; }
    const double* MonoSum() const { return mMonoSum; }
    int Index() const { return mIndex; }

    // Parameter path: settings with side effects or derived pointers.
    void SetOn(bool on);
    void SetDelayOn(bool on);
    void SetDirectIn(double percent);
    void SetDirectOut(int value);
    void SetRoute(int route);
    void SetMasterFxSource(int value);
    // Points the inputs at a pair that lives as long as the engine (`masterFx` marks the master
    // effect's return: no send, nothing offered to later slots).
    void SetSource(const double* left, const double* right, bool masterFx);
    void SetWidth(double percent);
    void SetOffsetMs(double ms);
    void SetDelayMode(int mode);
    void SetLowPassHz(double hz);
    void SetHighPassHz(double hz);
    void SetGrainSize(double ms);
    void SetGrainSpeed(double value);
    void SetGrainPosition(double percent);
    void SetGrainFade(double ms);
    void SetReverseFade(double ms);
    // The published modules of a position, replaced by the effect rack.
    FxModuleList& FxList(int position) { return mFxLists[static_cast<std::size_t>(position)]; }
    const FxModuleList& FxList(int position) const { return mFxLists[static_cast<std::size_t>(position)]; }
    // A routed source of a mix-type effect's P5: the mix becomes clamp(P5 + depth x source[0], 0, 1).
    // The depth goes first, so that the block never meets a source without its depth.
    void SetFxMixMod(int position, const double* source, const double* depth);
    // Asks the block to reset the position's modules (an "FXOn" toggle) before it runs them again.
    void RequestFxReset(int position) { mFxResetRequest[position] = true; }
    // Seconds from a sample entering the lines to the last read of it by this slot's delay mode
    // (the longest time, doubled for the backward reading, all sixteen tap steps when tapped),
    // with room for time modulation. Any thread: it reads the parameter caches only.
    double ReachSeconds(double secPerBeat, double timeScale) const;
    // Share of the delay in the slot's output ("Direct In" up to 50 %). Any thread.
    double WetShare() const { return mWet; }
    // Points one modulation input of the delay modules named by `side` at a source and a depth
    // that live as long as the engine.
    void WireDelayMod(int input, DelaySide side, const double* source, const double* depth);
    // A new tap time base restarts both lines.
    void RestartLines() { mResetLinesRequest = true; }

    TapEngine& Taps() { return mTaps; }

    const double* FeedForwardL() const { return mFeedForwardL; }
    const double* FeedForwardR() const { return mFeedForwardR; }

    SlotTiming mTiming;

    // Caches written by the parameter path, read once per block.
    Relaxed<bool> mOn{false};
    Relaxed<bool> mDelayOn{true};
    Relaxed<bool> mPanPosition{false};
    Relaxed<bool> mFbProportional{false};
    Relaxed<bool> mMatrixOn{false};
    Relaxed<int> mOutputMode{kOutputNorm};
    Relaxed<double> mModulation{0.0};
    Relaxed<double> mInputGain{1.0};
    Relaxed<double> mPanning{0.0};
    Relaxed<double> mFeedback{0.5};
    Relaxed<double> mLevel{1.0};
    Relaxed<double> mSend{0.5};
    Relaxed<double> mSpreadMs{0.0};
    std::array<Relaxed<double>, 4> mMatrix{}; // from slot s into this one, as a factor
    // Effect type id of each position (not its menu index), set by the rack with the list, and
    // its "FXOn" state.
    std::array<Relaxed<int>, kNumFxPositions> mFxType{};
    std::array<Relaxed<bool>, kNumFxPositions> mFxOn{};

  private:
    void ApplyRequests();
    void RunInputAndOffset(const double* gainRamp);
    void FillDelayInput();
    // Reads the lines into the delay stage, or runs the taps; true when the taps ran the POST
    // effect per tap.
    bool ReadDelay(const SlotBlockContext& ctx, bool monoL, bool monoR);
    // The tap engine's effect calls.
    void RunTapFx(double* buffer, int index) override;
    void RunFeedbackFx(double* left, double* right) override;
    void RouteFeedback(int route);
    void PanLevelWidth(const SlotBlockContext& ctx);
    void Output(const SlotBlockContext& ctx);
    void FeedSums(SlotSumBuses& sums) const;
    // The effects of one position over a stereo stage, in place; mono routes run one side only.
    void RunFxPosition(int position, double* left, double* right, bool monoL, bool monoR);
    // index >= 0 runs one module (even left, odd right); -1 runs both with the position's mix.
    void RunFx(const double* left, const double* right, double* outL, double* outR, int position, int index);
    void UpdateFeedForward();
    void UpdateSendSource();
    void UpdateDirectIn();

    int mIndex;

    // Stage banks: in, pre, dly, post, out of a channel lie contiguously.
    double mBankL[kNumStages * gBlockLen] = {};
    double mBankR[kNumStages * gBlockLen] = {};
    double mFbOutL[gBlockLen] = {};
    double mFbOutR[gBlockLen] = {};
    double mDelayInL[gBlockLen] = {};
    double mDelayInR[gBlockLen] = {};
    // What the lines take besides the feedback: the pre stage itself or the blocks above.
    const double* mDelayInSrcL = mDelayInL;
    const double* mDelayInSrcR = mDelayInR;
    double mMonoSum[gBlockLen] = {};
    double mGainL[gBlockLen] = {};
    double mGainR[gBlockLen] = {};
    bool mGainsHeld = false; // the gains belong to the pan and level ramps the smoothers hold
    double mFxOutL[gBlockLen] = {};
    double mFxOutR[gBlockLen] = {};
    const double* mDlyCellL = nullptr;
    const double* mDlyCellR = nullptr;
    double mFbL = 0.0;
    double mFbR = 0.0;

    Relaxed<const double*> mSourceL;
    Relaxed<const double*> mSourceR;
    Relaxed<const double*> mFeedForwardL;
    Relaxed<const double*> mFeedForwardR;
    Relaxed<const double*> mSendSourceL;
    Relaxed<const double*> mSendSourceR;
    Relaxed<bool> mCanSend{true};
    Relaxed<bool> mFromMasterFx{false};
    Relaxed<int> mRoute{DelayDual};
    Relaxed<int> mDirectOut{kDirectOutOut};
    Relaxed<int> mMasterFxSource{0};
    Relaxed<double> mDirectInPercent{0.0};
    Relaxed<double> mWet{0.0};
    Relaxed<double> mDirect{1.0};
    Relaxed<double> mStraight{1.0};
    Relaxed<double> mCross{0.0};
    std::array<Relaxed<double>, 2> mOffsetSec{};
    Relaxed<double> mLowPassHz{20000.0};
    Relaxed<double> mHighPassHz{20.0};

    // Requests from the parameter path, served at the start of the next block.
    Relaxed<bool> mClearRequest{false};
    Relaxed<bool> mClearDlyRequest{false};
    Relaxed<bool> mResetLinesRequest{false};
    Relaxed<int> mModeRequest{DelayForward};
    int mMode = DelayForward;

    TapEngine mTaps;
    double mTapScratchL[gBlockLen] = {};
    double mTapScratchR[gBlockLen] = {};
    QLMMultiDelay mDelayL{false};
    QLMMultiDelay mDelayR{true};
    // The L/R offset lines: power-of-two rings long enough for 25 ms at 96 kHz.
    std::vector<double> mOffsetRing[2];
    int mOffsetWrite = 0;

    BlockSmoother mInputSmoother;
    BlockSmoother mPanSmoother;
    BlockSmoother mLevelSmoother;
    BlockSmoother mFxMixSmoother[kNumFxPositions];

    // Effect lists of the three positions. A list runs only when it holds at least its first pair.
    std::array<FxModuleList, kNumFxPositions> mFxLists;
    std::array<Relaxed<const double*>, kNumFxPositions> mFxMixSource{};
    std::array<Relaxed<const double*>, kNumFxPositions> mFxMixDepth{};
    std::array<Relaxed<bool>, kNumFxPositions> mFxResetRequest{};
    // The position's wet amount of this block: the first module's mix plus the routed modulation.
    double FxMix(int position, int first) const;
    void ServeFxResets();

    // This block's settings, from BeginBlock.
    struct BlockPlan
    {
        bool on = false;
        int route = DelayDual;
        bool delayOn = true;
        double timeL = 0.0; // delay times in samples before the main modulator's wobble
        double timeR = 0.0;
        double wobbleL = 0.0; // the main modulator's wobble in samples
        double wobbleR = 0.0;
        bool readDone = false;             // the delay stage already holds the block's read
        const double* sourceL = gNoSignal; // the block's input
        const double* sourceR = gNoSignal;
    };
    BlockPlan mPlan;
};
