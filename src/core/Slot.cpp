#include "core/Slot.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <type_traits>

#include "core/FeedbackSoftLimit.h"
#include "dsp/LanePair.h"
#include "dsp/Vec.h"

namespace
{
constexpr int N = gBlockLen;
// 25 ms at 96 kHz plus two blocks, rounded up to a power of two: no larger, because every block
// writes the rings and a ring much longer than its reach only walks through the cache.
constexpr int kOffsetRingSize = 1 << 12;
static_assert(kOffsetRingSize > 0.025 * kMaxSampleRate + 2 * gBlockLen);
static_assert(kOffsetRingSize / 2 < 0.025 * kMaxSampleRate + 2 * gBlockLen);
constexpr int kLongestLine = static_cast<int>(kMaxSampleRate * 8.0 + 1000.0);

// Frames a second of the editor; the slot smoothers follow its refresh rather than the sample rate.
constexpr double kEditorRefreshRate = 25.0;

} // namespace

void SlotSumBuses::Clear()
{
    for (int side = 0; side < 2; ++side)
    {
        VecZero(sum12[side], N);
        VecZero(sum13[side], N);
        VecZero(sum23[side], N);
        VecZero(sum123[side], N);
    }
}

bool SlotSumBuses::Holds(const double* buffer) const
{
    for (int side = 0; side < 2; ++side)
        if (buffer == sum12[side] || buffer == sum13[side] || buffer == sum23[side] || buffer == sum123[side])
            return true;
    return false;
}

Slot::Slot(int index) : mIndex(index)
{
    mDelayL.Reserve(kLongestLine);
    mDelayR.Reserve(kLongestLine);
    mOffsetRing[0].assign(kOffsetRingSize, 0.0);
    mOffsetRing[1].assign(kOffsetRingSize, 0.0);
    SetSource(gNoSignal, gNoSignal, false);
    UpdateFeedForward();
    UpdateSendSource();
    mDlyCellL = StageL(kStageDly);
    mDlyCellR = StageR(kStageDly);
}

void Slot::Prepare()
{
    mDelayL.SetMaxDelay(gMaxDelay);
    mDelayR.SetMaxDelay(gMaxDelay);
    SetLowPassHz(mLowPassHz);
    SetHighPassHz(mHighPassHz);
    const double ms = kEditorRefreshRate * 50.0 * 32.0 / gSampleRate;
    mInputSmoother.SetTime(ms);
    mPanSmoother.SetTime(ms);
    mLevelSmoother.SetTime(ms);
    for (BlockSmoother& s : mFxMixSmoother)
        s.SetTime(ms);
    Clear();
}

void Slot::Clear()
{
    mDelayL.Reset();
    mDelayR.Reset();
    std::fill(mOffsetRing[0].begin(), mOffsetRing[0].end(), 0.0);
    std::fill(mOffsetRing[1].begin(), mOffsetRing[1].end(), 0.0);
    mOffsetWrite = 0;
    VecZero(mBankL, kNumStages * N);
    VecZero(mBankR, kNumStages * N);
    VecZero(mFbOutL, N);
    VecZero(mFbOutR, N);
    VecZero(mDelayInL, N);
    VecZero(mDelayInR, N);
    VecZero(mMonoSum, N);
}

void Slot::Restart()
{
    Clear();
    mDelayL.RestartGlides();
    mDelayR.RestartGlides();
    mInputSmoother.Restart();
    mPanSmoother.Restart();
    mLevelSmoother.Restart();
    for (BlockSmoother& s : mFxMixSmoother)
        s.Restart();
}

// ---- parameter path ----

void Slot::SetOn(bool on)
{
    if (mOn && !on) mClearRequest = true;
    mOn = on;
}

void Slot::SetDelayOn(bool on)
{
    const bool was = mDelayOn;
    mDelayOn = on;
    if (was && !on) mClearDlyRequest = true;
    if (!was && on) mResetLinesRequest = true;
    UpdateDirectIn();
}

// Direct In runs 0..100 %: up to 50 the delay comes in, above it the direct signal goes out.
void Slot::SetDirectIn(double percent)
{
    mDirectInPercent = percent;
    UpdateDirectIn();
}

void Slot::UpdateDirectIn()
{
    const double x = mDirectInPercent * 0.02;
    mWet = mDelayOn ? std::min(1.0, x) : 1.0;
    mDirect = std::min(1.0, 2.0 - x);
}

void Slot::SetDirectOut(int value)
{
    mDirectOut = value;
    UpdateFeedForward();
}

void Slot::SetRoute(int route)
{
    mRoute = std::clamp(route, 0, kNumDelayStereoModes - 1);
    UpdateFeedForward();
}

void Slot::SetMasterFxSource(int value)
{
    mMasterFxSource = value;
    UpdateSendSource();
}

void Slot::SetSource(const double* left, const double* right, bool masterFx)
{
    mSourceL = left;
    mSourceR = right;
    mFromMasterFx = masterFx;
    mCanSend = !masterFx;
    UpdateFeedForward();
}

void Slot::UpdateFeedForward()
{
    if (mFromMasterFx)
    {
        mFeedForwardL = gNullBuffer;
        mFeedForwardR = gNullBuffer;
        return;
    }
    switch (mDirectOut)
    {
    case kDirectOutPre:
        mFeedForwardL = StageL(kStagePre);
        mFeedForwardR = StageR(kStagePre);
        break;
    case kDirectOutDelay:
        // The delay cell: in the mono routes both sides read the one line's stage.
        mFeedForwardL = mRoute == DelayMixR ? StageR(kStageDly) : StageL(kStageDly);
        mFeedForwardR = mRoute == DelayMixL ? StageL(kStageDly) : StageR(kStageDly);
        break;
    case kDirectOutPost:
        mFeedForwardL = StageL(kStagePost);
        mFeedForwardR = StageR(kStagePost);
        break;
    default:
        mFeedForwardL = StageL(kStageOut);
        mFeedForwardR = StageR(kStageOut);
        break;
    }
}

// "Master FX Source ": INPUT, PRE FX, DELAY, POST FX, OUT are the stages in bank order.
void Slot::UpdateSendSource()
{
    const int stage = std::clamp(static_cast<int>(mMasterFxSource), 0, kNumStages - 1);
    mSendSourceL = StageL(stage);
    mSendSourceR = StageR(stage);
}

// Width as a rotation: 100 % keeps the channels apart, 0 % sends each to both at equal power.
void Slot::SetWidth(double percent)
{
    const double angle = (1.0 - percent * 0.01) * std::numbers::pi * 0.25;
    mStraight = std::cos(angle);
    const double cross = std::sin(angle);
    mCross = std::abs(cross) < 1e-12 ? 0.0 : cross;
}

// Negative delays the left side, positive the right.
void Slot::SetOffsetMs(double ms)
{
    mOffsetSec[0] = ms < 0.0 ? -ms * 0.001 : 0.0;
    mOffsetSec[1] = ms > 0.0 ? ms * 0.001 : 0.0;
}

void Slot::SetDelayMode(int mode)
{
    mModeRequest = std::clamp(mode, 0, kNumDelayModes - 1);
}

void Slot::SetLowPassHz(double hz)
{
    mLowPassHz = hz;
    mDelayL.SetLowPass(hz / gSampleRate);
    mDelayR.SetLowPass(hz / gSampleRate);
}

void Slot::SetHighPassHz(double hz)
{
    mHighPassHz = hz;
    mDelayL.SetHighPass(hz / gSampleRate);
    mDelayR.SetHighPass(hz / gSampleRate);
}

void Slot::SetGrainSize(double ms)
{
    mDelayL.SetGrainSize(ms);
    mDelayR.SetGrainSize(ms);
}

// The control runs -2..2 octaves; the lines take -1..1.
void Slot::SetGrainSpeed(double value)
{
    mDelayL.SetGrainSpeed(value * 0.5);
    mDelayR.SetGrainSpeed(value * 0.5);
}

void Slot::SetGrainPosition(double percent)
{
    mDelayL.SetGrainPosition(percent * 0.01);
    mDelayR.SetGrainPosition(percent * 0.01);
}

void Slot::SetGrainFade(double ms)
{
    mDelayL.SetGrainFade(ms);
    mDelayR.SetGrainFade(ms);
}

void Slot::SetReverseFade(double ms)
{
    mDelayL.SetReverseFade(ms);
    mDelayR.SetReverseFade(ms);
}

// The depth goes first: the audio thread must never meet a source without its depth.
void Slot::WireDelayMod(int input, DelaySide side, const double* source, const double* depth)
{
    if (input < 0 || input >= kModInputs) return;
    if (side == DelaySide::kLeft || side == DelaySide::kBoth)
    {
        mDelayL.SetModDepth(input, depth);
        mDelayL.SetModSource(input, source);
    }
    if (side == DelaySide::kRight || side == DelaySide::kBoth)
    {
        mDelayR.SetModDepth(input, depth);
        mDelayR.SetModSource(input, source);
    }
}

void Slot::SetFxMixMod(int position, const double* source, const double* depth)
{
    if (source == nullptr || depth == nullptr)
    {
        mFxMixSource[position] = nullptr;
        return;
    }
    mFxMixDepth[position] = depth;
    mFxMixSource[position] = source;
}

// ---- audio thread ----

void Slot::ServeFxResets()
{
    for (int position = 0; position < kNumFxPositions; ++position)
    {
        FxModuleList& list = mFxLists[position];
        if (!mFxResetRequest[position] || !list.Enter()) continue;
        mFxResetRequest[position] = false;
        const int n = list.Count();
        for (int k = 0; k < n; ++k)
            if (DSPShell* module = list.Module(k)) module->Reset();
        list.Leave();
    }
}

void Slot::ApplyRequests()
{
    // Mostly no reset is asked for: the flags are read here, without the call.
    if (std::any_of(mFxResetRequest.begin(), mFxResetRequest.end(),
                    [](const Relaxed<bool>& r) { return bool(r); }))
        ServeFxResets();
    if (mModeRequest != mMode)
    {
        mMode = mModeRequest;
        mDelayL.SetMode(mMode);
        mDelayR.SetMode(mMode);
        SetLowPassHz(mLowPassHz);
        SetHighPassHz(mHighPassHz);
    }
    if (mClearRequest)
    {
        mClearRequest = false;
        mDelayL.Reset();
        mDelayR.Reset();
        VecZero(mBankL, kNumStages * N);
        VecZero(mBankR, kNumStages * N);
        VecZero(mMonoSum, N);
    }
    if (mClearDlyRequest)
    {
        mClearDlyRequest = false;
        VecZero(StageL(kStageDly), N);
        VecZero(StageR(kStageDly), N);
    }
    if (mResetLinesRequest)
    {
        mResetLinesRequest = false;
        mDelayL.Reset();
        mDelayR.Reset();
        VecZero(StageL(kStageDly), N);
        VecZero(StageR(kStageDly), N);
    }
}

void Slot::BeginBlock(const SlotBlockContext& ctx)
{
    ApplyRequests();
    BlockPlan& plan = mPlan;
    plan.on = mOn;
    plan.readDone = false;
    if (!plan.on) return;
    plan.sourceL = mSourceL;
    plan.sourceR = mSourceR;
    plan.route = mRoute;
    plan.delayOn = mDelayOn;
    const double unit = mTiming.Unit(ctx.secPerBeat, ctx.timeScale);
    const double spread = gSampleRate * mSpreadMs * 0.001;
    const DelayTimePair times =
        ctx.routing->DelayTimes(mIndex, unit * mTiming.Time(0) + spread, unit * mTiming.Time(1) - spread);
    plan.timeL = times.left;
    plan.timeR = times.right;
    // Main modulator wobble in samples; slots 1/2 and 3/4 take neighbouring output pairs.
    const double m = mModulation * ctx.mainDepth;
    const double* main = ctx.mainOut;
    plan.wobbleR = main != nullptr ? m * main[static_cast<int>(mIndex * 0.5)] : 0.0;
    plan.wobbleL = main != nullptr ? m * main[static_cast<int>(mIndex * 0.5 + 1.0)] : 0.0;
}

void Slot::ReadForwardTogether(Slot& a, Slot& b)
{
    if (!a.ReadsForwardPair() || !b.ReadsForwardPair()) return;
    QLMMultiDelay* const lines[4] = {&a.mDelayL, &a.mDelayR, &b.mDelayL, &b.mDelayR};
    const float delays[4] = {static_cast<float>(a.mPlan.timeL + a.mPlan.wobbleL),
                             static_cast<float>(a.mPlan.timeR + a.mPlan.wobbleR),
                             static_cast<float>(b.mPlan.timeL + b.mPlan.wobbleL),
                             static_cast<float>(b.mPlan.timeR + b.mPlan.wobbleR)};
    double* const outs[4] = {a.StageL(kStageDly), a.StageR(kStageDly), b.StageL(kStageDly),
                             b.StageR(kStageDly)};
    QLMMultiDelay::ReadForwardTwoPairs(lines, delays, outs);
    a.mPlan.readDone = true;
    b.mPlan.readDone = true;
}

void Slot::RunOff(SlotSumBuses* sums)
{
    if (sums == nullptr) return;
    if (mIndex == 0)
        for (int side = 0; side < 2; ++side)
        {
            VecZero(sums->sum12[side], N);
            VecZero(sums->sum13[side], N);
            VecZero(sums->sum123[side], N);
        }
    else if (mIndex == 1)
        for (int side = 0; side < 2; ++side)
            VecZero(sums->sum23[side], N);
}

void Slot::RunForward(const SlotBlockContext& ctx)
{
    double* preL = StageL(kStagePre);
    double* preR = StageR(kStagePre);
    double* postL = StageL(kStagePost);
    double* postR = StageR(kStagePost);

    const ModRouting& routing = *ctx.routing;
    const double gain = routing.InputGainTarget(mIndex, mInputGain * ctx.attenuation);
    RunInputAndOffset(mInputSmoother.RunD(gain * ctx.fade, N));

    const int route = mPlan.route;
    const bool delayOn = mPlan.delayOn;
    const bool monoL = route == DelayMixL && delayOn;
    const bool monoR = route == DelayMixR && delayOn;
    RunFxPosition(kFxPre, preL, preR, monoL, monoR);

    const double tL = mPlan.timeL;
    const double tR = mPlan.timeR;

    const double fb = routing.FeedbackAmount(mIndex, mFeedback + ctx.feedbackMaster);
    mFbL = route == DelayMix ? fb * kMixFeedbackScale : fb;
    mFbR = mFbL;

    FillDelayInput();
    // Proportional feedback: the shorter side repeats more often, so its gain is raised to the
    // power of the time ratio and both sides lose the same level per second.
    if (mMode == DelayForward && route == DelayDual && mFbProportional)
    {
        if (tL >= tR)
            mFbR = std::pow(std::abs(fb), tR / tL);
        else
            mFbL = std::pow(std::abs(fb), tL / tR);
    }

    bool postDone = false;
    if (!delayOn)
    {
        VecCopy(preL, postL, N);
        VecCopy(preR, postR, N);
    }
    else
    {
        postDone = ReadDelay(ctx, monoL, monoR);
        FeedbackSoftLimit(mFbOutL);
        FeedbackSoftLimit(mFbOutR);
        // The other modes add the direct share as they fill the post stage.
        if (mMode == DelayTapped)
        {
            VecAddScaled(preL, mDirect, postL, N);
            VecAddScaled(preR, mDirect, postR, N);
        }
    }

    if (!postDone) RunFxPosition(kFxPost, postL, postR, false, false);
    PanLevelWidth(ctx);
    Output(ctx);

    const double* ffL = mFeedForwardL;
    const double* ffR = mFeedForwardR;
    if (ffL != gNullBuffer) VecAdd(ffL, ffR, mMonoSum, N);
    if (ffL != gNullBuffer && ctx.sums != nullptr) FeedSums(*ctx.sums);
}

// The input stage, source times the gain ramp, goes into the offset ring as it is formed, and on a
// side without an offset straight on to the pre stage too; a side with an offset reads its ring.
void Slot::RunInputAndOffset(const double* gainRamp)
{
    const int mask = kOffsetRingSize - 1;
    static_assert(N % 2 == 0);
    for (int side = 0; side < 2; ++side)
    {
        const double* source = side == 0 ? mPlan.sourceL : mPlan.sourceR;
        double* in = side == 0 ? StageL(kStageIn) : StageR(kStageIn);
        double* pre = side == 0 ? StageL(kStagePre) : StageR(kStagePre);
        double* ring = mOffsetRing[side].data();
        // The write position steps by whole blocks through a ring of whole blocks: no wrap inside.
        static_assert(kOffsetRingSize % N == 0);
        double* block = ring + mOffsetWrite;
        // The form is chosen once per side, not once per pair of samples.
        const auto form = [&](auto toPre)
        {
            for (int i = 0; i < N; i += 2)
            {
                const LanePair v = LoadPair(source + i) * LoadPair(gainRamp + i);
                StorePair(in + i, v);
                StorePair(block + i, v);
                if constexpr (toPre) StorePair(pre + i, v);
            }
        };
        const double seconds = mOffsetSec[side];
        if (seconds == 0.0)
        {
            form(std::true_type{});
            continue;
        }
        form(std::false_type{});
        const int back = static_cast<int>(seconds * gSampleRate);
        for (int i = 0; i < N; ++i)
            pre[i] = ring[(mOffsetWrite + i - back) & mask];
    }
    mOffsetWrite = (mOffsetWrite + N) & mask;
}

void Slot::FillDelayInput()
{
    const double* preL = StageL(kStagePre);
    const double* preR = StageR(kStagePre);
    const int route = mPlan.route;
    if (mMode == DelayTapped || mMode == DelayBackward || route == DelayDual)
    {
        // The pre stage keeps its block until the lines are written: no copy needed.
        mDelayInSrcL = preL;
        mDelayInSrcR = preR;
        return;
    }
    mDelayInSrcL = mDelayInL;
    mDelayInSrcR = mDelayInR;
    switch (route)
    {
    case DelayPingPongML:
        VecAdd(preL, preR, mDelayInL, N);
        VecScaleI(kMonoPingPongGain, mDelayInL, N);
        VecZero(mDelayInR, N);
        break;
    case DelayPingPongMR:
        VecAdd(preR, preL, mDelayInR, N);
        VecScaleI(kMonoPingPongGain, mDelayInR, N);
        VecZero(mDelayInL, N);
        break;
    default:
        VecScale(preL, route == DelayPingPongR ? 0.0 : 1.0, mDelayInL, N);
        VecScale(preR, route == DelayPingPongL ? 0.0 : 1.0, mDelayInR, N);
        break;
    }
}

bool Slot::ReadDelay(const SlotBlockContext& ctx, bool monoL, bool monoR)
{
    const double tL = mPlan.timeL;
    const double tR = mPlan.timeR;
    double* dlyL = StageL(kStageDly);
    double* dlyR = StageR(kStageDly);
    double* postL = StageL(kStagePost);
    double* postR = StageR(kStagePost);

    const double mL = mPlan.wobbleL;
    const double mR = mPlan.wobbleR;

    if (mMode == DelayTapped)
    {
        TapBlockIO io;
        io.postL = postL;
        io.postR = postR;
        io.dlyL = dlyL;
        io.dlyR = dlyR;
        io.fbOutL = mFbOutL;
        io.fbOutR = mFbOutR;
        io.tapL = mTapScratchL;
        io.tapR = mTapScratchR;
        io.stepSamples = mTiming.TapStepSamples(ctx.secPerBeat, ctx.timeScale);
        io.modL = mL;
        io.modR = mR;
        io.fbL = mFbL;
        io.wet = mWet;
        io.postFxOn = mFxType[kFxPost] != 0 && mFxOn[kFxPost];
        io.fbFxOn = mFxType[kFxFeedback] != 0 && mFxOn[kFxFeedback];
        io.postSwapping = mFxLists[kFxPost].Swapping();
        io.fx = this;
        mDlyCellL = dlyL;
        mDlyCellR = dlyR;
        return mTaps.Process(mDelayL, mDelayR, io);
    }
    if (mMode == DelayBackward)
    {
        const double unit = mTiming.Unit(ctx.secPerBeat, ctx.timeScale);
        mDelayL.mReverseOffset = std::max(mL, 0.0);
        mDelayR.mReverseOffset = std::max(mR, 0.0);
        VecCopy(mDelayL.ReadTap(static_cast<float>(unit * mTiming.Time(0)), 0), dlyL, N);
        VecCopy(mDelayR.ReadTap(static_cast<float>(unit * mTiming.Time(1)), 0), dlyR, N);
    }
    else if (!mPlan.readDone) // a read beside another slot's is already in place
    {
        if (mMode == DelayForward && !monoL && !monoR)
        {
            QLMMultiDelay::ReadForwardPair(mDelayL, mDelayR, static_cast<float>(tL + mL),
                                           static_cast<float>(tR + mR), dlyL, dlyR);
        }
        else
        {
            if (!monoR) VecCopy(mDelayL.ReadTap(static_cast<float>(tL + mL), 0), dlyL, N);
            if (!monoL) VecCopy(mDelayR.ReadTap(static_cast<float>(tR + mR), 0), dlyR, N);
        }
    }

    RunFxPosition(kFxFeedback, dlyL, dlyR, monoL, monoR);
    mDlyCellL = dlyL;
    mDlyCellR = dlyR;
    RouteFeedback(mPlan.route);
    // The delay's share and the direct share of the post stage in one pass.
    const double* preL = StageL(kStagePre);
    const double* preR = StageR(kStagePre);
    const double* cellL = mDlyCellL;
    const double* cellR = mDlyCellR;
    // Two samples to a vector: the post stage is none of the arrays it reads, but the compiler
    // can't know that and would test it first.
    const LanePair wet = {mWet, mWet};
    const LanePair direct = {mDirect, mDirect};
    static_assert(N % 2 == 0);
    for (int i = 0; i < N; i += 2)
    {
        StorePair(postL + i, LoadPair(cellL + i) * wet + LoadPair(preL + i) * direct);
        StorePair(postR + i, LoadPair(cellR + i) * wet + LoadPair(preR + i) * direct);
    }
    return false;
}

void Slot::RouteFeedback(int route)
{
    const double* dlyL = StageL(kStageDly);
    const double* dlyR = StageR(kStageDly);
    switch (route)
    {
    case DelayDual:
        VecCopy(dlyL, mFbOutL, N);
        VecCopy(dlyR, mFbOutR, N);
        break;
    case DelayMix:
        VecSub(dlyR, dlyL, mFbOutL, N); // L - R
        VecAdd(dlyL, dlyR, mFbOutR, N);
        break;
    case DelayMixL:
        VecCopy(dlyL, mFbOutL, N);
        VecZero(mFbOutR, N);
        mDlyCellR = dlyL;
        break;
    case DelayMixR:
        VecCopy(dlyR, mFbOutR, N);
        VecZero(mFbOutL, N);
        mDlyCellL = dlyR;
        break;
    default:
        // Ping-pong: each line feeds the other.
        VecCopy(dlyR, mFbOutL, N);
        VecCopy(dlyL, mFbOutR, N);
        break;
    }
}

void Slot::PanLevelWidth(const SlotBlockContext& ctx)
{
    const double pan = ctx.routing->PanTarget(mIndex, mPanning);
    const double* p = mPanSmoother.RunD(pan, N);
    const bool panHeld = mPanSmoother.HeldD();
    const double level = ctx.routing->LevelTarget(mIndex, mLevel);
    const double* lv = mLevelSmoother.RunD(level * ctx.fade, N);

    double* postL = StageL(kStagePost);
    double* postR = StageR(kStagePost);
    double* outL = StageL(kStageOut);
    double* outR = StageR(kStageOut);
    const double straight = mStraight;
    const double cross = mCross;
    static_assert(N % 2 == 0);
    // The pan law min(1 -+ p, 1) times the level, two samples to a vector; the select is
    // std::min's own (1 < x ? 1 : x). Both ramps as they were: the gains too.
    if (!(panHeld && mLevelSmoother.HeldD() && mGainsHeld))
    {
        const LanePair one = {1.0, 1.0};
        for (int i = 0; i < N; i += 2)
        {
            const LanePair pv = LoadPair(p + i), lvv = LoadPair(lv + i);
            const LanePair l = one - pv;
            const LanePair r = one + pv;
            StorePair(mGainL + i, (one < l ? one : l) * lvv);
            StorePair(mGainR + i, (one < r ? one : r) * lvv);
        }
        mGainsHeld = true;
    }
    if (cross == 0.0)
    {
        // Full width: the gains go straight onto the post stage.
        for (int i = 0; i < N; i += 2)
        {
            StorePair(outL + i, LoadPair(postL + i) * LoadPair(mGainL + i));
            StorePair(outR + i, LoadPair(postR + i) * LoadPair(mGainR + i));
        }
        return;
    }
    const auto width = [&](const double* l, const double* r)
    {
        for (int i = 0; i < N; ++i)
        {
            const double a = l[i];
            const double b = r[i];
            outL[i] = a * straight + b * cross;
            outR[i] = b * straight + a * cross;
        }
    };
    if (mPanPosition)
    {
        VecMul(postL, mGainL, outL, N);
        VecMul(postR, mGainR, outR, N);
        width(outL, outR);
    }
    else
    {
        width(postL, postR);
        VecMulI(mGainL, outL, N);
        VecMulI(mGainR, outR, N);
    }
}

void Slot::Output(const SlotBlockContext& ctx)
{
    const double* outL = StageL(kStageOut);
    const double* outR = StageR(kStageOut);
    switch (mOutputMode)
    {
    case kOutputNorm:
        VecAddI(outL, ctx.wetL, N);
        VecAddI(outR, ctx.wetR, N);
        break;
    case kOutputSwap:
        VecAddI(outL, ctx.wetR, N);
        VecAddI(outR, ctx.wetL, N);
        break;
    default:
        break;
    }
    if (mCanSend && ctx.masterFxOn)
    {
        const double level = ctx.routing->SendLevel(mIndex, mSend);
        VecAddScaled(mSendSourceL, level, ctx.mfxInL, N);
        VecAddScaled(mSendSourceR, level, ctx.mfxInR, N);
    }
}

// Slot 1 starts the sums it belongs to, slot 2 adds to them, slot 3 adds, slot 4 is in none.
void Slot::FeedSums(SlotSumBuses& sums) const
{
    const double* ff[2] = {mFeedForwardL, mFeedForwardR};
    for (int side = 0; side < 2; ++side)
    {
        switch (mIndex)
        {
        case 0:
            VecCopy(ff[side], sums.sum12[side], N);
            VecCopy(ff[side], sums.sum13[side], N);
            VecCopy(ff[side], sums.sum123[side], N);
            break;
        case 1:
            VecAddI(ff[side], sums.sum12[side], N);
            VecAddI(ff[side], sums.sum123[side], N);
            VecCopy(ff[side], sums.sum23[side], N);
            break;
        case 2:
            VecAddI(ff[side], sums.sum13[side], N);
            VecAddI(ff[side], sums.sum23[side], N);
            VecAddI(ff[side], sums.sum123[side], N);
            break;
        default:
            break;
        }
    }
}

double Slot::ReachSeconds(double secPerBeat, double timeScale) const
{
    // Room for delay-time modulation, the main modulator's wobble and grain windows.
    constexpr double kModulationRoom = 1.25;
    constexpr double kGrainWindowSec = 0.4;
    const double unitSec = mTiming.Unit(secPerBeat, timeScale) / gSampleRate;
    double longest = unitSec * std::max(mTiming.Time(0), mTiming.Time(1)) + std::abs(mSpreadMs) * 0.001;
    switch (mModeRequest)
    {
    case DelayBackward:
        longest *= 2.0;
        break;
    case DelayGrain:
        longest += kGrainWindowSec;
        break;
    case DelayTapped:
        longest = 2.0 * mTiming.TapSeconds(secPerBeat) * timeScale * (kNumTaps + 1);
        break;
    default:
        break;
    }
    return longest * kModulationRoom;
}

void Slot::WriteDelay(double* fbSumL, double* fbSumR, double fade)
{
    for (int i = 0; i < N; ++i)
    {
        fbSumL[i] = (fbSumL[i] + mDelayInSrcL[i]) * fade;
        fbSumR[i] = (fbSumR[i] + mDelayInSrcR[i]) * fade;
    }
    mDelayL.WriteBlock(fbSumL);
    mDelayR.WriteBlock(fbSumR);
}

void Slot::WriteOwnDelay(double gainL, double gainR, double fade)
{
    const double* fbL = mFbOutL;
    const double* fbR = mFbOutR;
    const double* inL = mDelayInSrcL;
    const double* inR = mDelayInSrcR;
    mDelayL.WriteBlockWith([=](int i) { return (fbL[i] * gainL + inL[i]) * fade; });
    mDelayR.WriteBlockWith([=](int i) { return (fbR[i] * gainR + inR[i]) * fade; });
}

void Slot::RunFxPosition(int position, double* left, double* right, bool monoL, bool monoR)
{
    FxModuleList& list = mFxLists[position];
    if (mFxType[position] == 0 || !mFxOn[position] || !list.Enter()) return;
    if (list.Count() >= 2)
    {
        if (monoL)
            RunFx(left, left, left, left, position, 0);
        else if (monoR)
            RunFx(right, right, right, right, position, 1);
        else
            RunFx(left, right, left, right, position, -1);
    }
    list.Leave();
}

void Slot::RunTapFx(double* buffer, int index)
{
    FxModuleList& list = mFxLists[kFxPost];
    if (!list.Enter()) return;
    if (index < list.Count()) RunFx(buffer, buffer, buffer, buffer, kFxPost, index);
    list.Leave();
}

void Slot::RunFeedbackFx(double* left, double* right)
{
    FxModuleList& list = mFxLists[kFxFeedback];
    if (!list.Enter()) return;
    if (list.Count() >= 2) RunFx(left, right, left, right, kFxFeedback, -1);
    list.Leave();
}

double Slot::FxMix(int position, int first) const
{
    const DSPShell* module = mFxLists[position].Module(first);
    if (module == nullptr) return 1.0;
    double m = module->mMix;
    if (const double* source = mFxMixSource[position])
        m += *static_cast<const double*>(mFxMixDepth[position]) * source[0];
    return std::clamp(m, 0.0, 1.0);
}

// Modules process in mono into the slot's effect buffers (left modules even, right odd); the mix
// with the input follows the module's wet amount, for a pair through the position's smoother.
void Slot::RunFx(const double* left, const double* right, double* outL, double* outR, int position, int index)
{
    const int first = index < 0 ? 0 : index;
    const int last = index < 0 ? 1 : index;
    for (int k = first; k <= last; ++k)
    {
        DSPShell* module = mFxLists[position].Module(k);
        if (module == nullptr || module->mBypass) continue;
        module->mIn1 = (k % 2 == 0) ? left : right;
        module->mOut1 = (k % 2 == 0) ? mFxOutL : mFxOutR;
        module->Process();
    }
    const double m = FxMix(position, first);
    const double* ramp = nullptr;
    if (index < 0 && m > 0.0 && m < 1.0) ramp = mFxMixSmoother[position].RunD(m, N);
    for (int k = first; k <= last; ++k)
    {
        const double* in = (k % 2 == 0) ? left : right;
        const double* processed = (k % 2 == 0) ? mFxOutL : mFxOutR;
        double* out = (k % 2 == 0) ? outL : outR;
        for (int i = 0; i < N; ++i)
        {
            const double g = ramp != nullptr ? ramp[i] : m;
            out[i] = g * processed[i] + (1.0 - g) * in[i];
        }
    }
}
