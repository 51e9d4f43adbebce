#include "core/TapEngine.h"

#include "dsp/ScaledSum.h"
#include "dsp/Vec.h"
#include "params/ParamIds.h"
#include "params/ValueLists.h"

#include <algorithm>
#include <cmath>

namespace
{
// Loudest swell pre-echo; the gain falls linearly to 0 over the pre-echoes of a tap.
constexpr double kSwellPeak = 0.45;
// Pre-echoes per tap at full swell.
constexpr double kSwellMaxCount = 16.0;
// Square-law grid of the pre-echoes: distance = (8 d)^2 x 500 x spread samples.
constexpr double kSwellGridScale = 8.0;
constexpr double kSwellGridSamples = 500.0;
// Below this (-80 dB) no tap counts as playing.
constexpr double kPlayingFloor = 1e-4;

int ClampTap(int tap)
{
    return std::clamp(tap, 0, kNumTaps - 1);
}

} // namespace

TapEngine::TapEngine()
{
    // The catalogue's defaults, until the engine applies every parameter: all taps on, full-length
    // steps at full level, centred.
    for (int t = 0; t < kNumTaps; ++t)
    {
        tapOnL[t] = true;
        tapOnR[t] = true;
        tapFxOn[t] = false;
        tapTimeStep[t] = 1.0;
        tapLevelStep[t] = 1.0;
        tapPanStep[t] = 0.0;
    }
    // No effect parameter chosen yet: -1, which counts as chosen until the parameters arrive.
    tapFxParam[0] = -1;
    tapFxParam[1] = -1;
}

void TapEngine::SetTapCount(int index)
{
    tapCount = ClampTap(index);
}

void TapEngine::SetFeedbackTap(int value)
{
    fbTapChoice = std::clamp(value, 0, kNumTaps);
}

void TapEngine::SetDiOut(int value)
{
    tapDiOut = value;
}

void TapEngine::SetPanMode(int mode)
{
    tapPanMode = std::clamp(mode, int(kTapPanStereo), int(kTapPanRight));
}

// The two step depths are stored as their complement: 100 % means the steps count fully.
void TapEngine::SetTimeStepDepth(double percent)
{
    tapTimeDepth = 1.0 - percent / 100.0;
}

void TapEngine::SetLevelStepDepth(double percent)
{
    tapLevelDepth = 1.0 - percent / 100.0;
}

void TapEngine::SetPanWidth(double percent)
{
    tapPanDepth = percent / 100.0;
}

// At 100 % the spacing alternates between 4/3 and 2/3 of a step.
void TapEngine::SetSwing(double percent)
{
    tapSwing = percent / 3.0 / 100.0;
}

void TapEngine::SetSwell(double percent)
{
    tapSwell = percent / 100.0;
}

void TapEngine::SetTimeStep(int tap, double percent)
{
    tapTimeStep[ClampTap(tap)] = percent / 100.0;
}

void TapEngine::SetLevelStep(int tap, double percent)
{
    tapLevelStep[ClampTap(tap)] = percent / 100.0;
}

void TapEngine::SetPanStep(int tap, double percent)
{
    tapPanStep[ClampTap(tap)] = percent / 100.0;
}

void TapEngine::SetFxParam(int row, int choice)
{
    tapFxParam[std::clamp(row, 0, 1)] = choice;
}

void TapEngine::SetTapMask(int channel, std::uint32_t mask)
{
    Relaxed<bool>* on = channel == 0 ? tapOnL : tapOnR;
    for (int t = 0; t < kNumTaps; ++t)
        on[t] = ((mask >> t) & 1u) != 0;
}

void TapEngine::SetFxMask(std::uint32_t mask)
{
    for (int t = 0; t < kNumTaps; ++t)
        tapFxOn[t] = ((mask >> t) & 1u) != 0;
}

int TapEngine::FeedbackTap() const
{
    const int choice = fbTapChoice;
    return choice == 0 ? int(tapCount) : choice - 1;
}

void TapEngine::LayOutSwellGrid(double swell)
{
    mGridSwell = swell;
    mGridCount = 0;
    const double count = swell * kSwellMaxCount;
    const double ratio = count > 0.0 ? kSwellPeak / count : 0.0;
    const double spread = swell * 0.9 + 0.1;
    for (int k = 1; k <= count && mGridCount < kMaxSwellEchoes; ++k)
    {
        const double d = k * ratio;
        const double v = d * kSwellGridScale;
        mGridOffset[mGridCount] = v * v * kSwellGridSamples * spread;
        mGridGain[mGridCount++] = kSwellPeak - d;
    }
}

void TapEngine::FindSwell(double acc, const QLMMultiDelay& line, SwellEchoes& echoes) const
{
    // The grid moves away from the tap, so the pre-echoes that still lie after the write began
    // are its first ones.
    int count = 0;
    while (count < mGridCount && acc - mGridOffset[count] > 0.0)
        ++count;
    echoes.count = count;
    const int length = line.mSize;
    for (int k = 0; k < count; ++k)
    {
        // A block ending `pos` samples before the write head; kept inside the ring's memory.
        const int p = std::min(static_cast<int>(acc - mGridOffset[k]), length - gBlockLen);
        const int w = line.mWritePos - p;
        const int r = w - gBlockLen;
        echoes.start[k] = r < 0 ? length - gBlockLen + w : r;
    }
}

void TapEngine::AddSwell(const QLMMultiDelay& line, const SwellEchoes& echoes, const double* read,
                         double* buffer) const
{
    const double* src[kMaxSwellEchoes];
    const double* mem = line.mBuf.get();
    for (int e = 0; e < echoes.count; ++e)
        src[e] = mem + echoes.start[e];
    SumScaledBlocks(read, src, mGridGain, echoes.count, buffer);
}

void TapEngine::ReadTaps(QLMMultiDelay& left, QLMMultiDelay& right, const TapPlan* plan, int last)
{
    // In tap order on each line, as a tap at a time would read them. A tap read on both sides
    // waits for the next such tap, and the two are read together.
    int waiting = -1;
    const auto readAlone = [&](int i)
    {
        QLMMultiDelay::ReadTapPair(left, right, plan[i].delayL, plan[i].delayR, i);
        VecCopy(left.mMixOut, mRead[i][0], gBlockLen);
        VecCopy(right.mMixOut, mRead[i][1], gBlockLen);
    };
    for (int i = 0; i <= last; ++i)
    {
        const TapPlan& t = plan[i];
        if (t.skip) continue;
        if (t.readL && t.readR)
        {
            if (waiting < 0)
            {
                waiting = i;
                continue;
            }
            const float delayL[2] = {plan[waiting].delayL, t.delayL};
            const float delayR[2] = {plan[waiting].delayR, t.delayR};
            double* const out[2][2] = {{mRead[waiting][0], mRead[waiting][1]}, {mRead[i][0], mRead[i][1]}};
            QLMMultiDelay::ReadTwoTapPairs(left, right, delayL, delayR, waiting, i, out);
            waiting = -1;
            continue;
        }
        if (waiting >= 0) readAlone(waiting);
        waiting = -1;
        if (t.readL) VecCopy(left.ReadTap(t.delayL, i), mRead[i][0], gBlockLen);
        if (t.readR) VecCopy(right.ReadTap(t.delayR, i), mRead[i][1], gBlockLen);
    }
    if (waiting >= 0) readAlone(waiting);
}

bool TapEngine::Process(QLMMultiDelay& left, QLMMultiDelay& right, const TapBlockIO& io)
{
    VecZero(io.postL, gBlockLen);
    VecZero(io.postR, gBlockLen);

    const double stepSamples = io.stepSamples;
    const int count = tapCount;
    const int fbTap = FeedbackTap();
    const int last = std::max(count, fbTap);
    const int panMode = tapPanMode;
    const bool fxActive = io.postFxOn && (tapFxParam[0] != 0 || tapFxParam[1] != 0);
    const bool runTapFx = fxActive && !io.postSwapping && io.fx != nullptr;
    const double swing = tapSwing;
    const double timeDepth = tapTimeDepth;
    const double levelDepth = tapLevelDepth;
    const double panDepth = tapPanDepth;
    const double maxDelay = gMaxDelay;

    if (const double swell = tapSwell; swell != mGridSwell) LayOutSwellGrid(swell);

    const bool track = trackPlaying;
    int loudestTap = -1;
    double loudest = kPlayingFloor;
    const auto note = [&](int tap, const double* block, double gain)
    {
        double peak = 0.0;
        VecMaxAbs(block, gBlockLen, &peak);
        if (peak * std::abs(gain) > loudest)
        {
            loudest = peak * std::abs(gain);
            loudestTap = tap;
        }
    };

    // Each tap's time, switches and gains first. Times add up from tap to tap.
    TapPlan plan[kNumTaps];
    double acc = 0.0;
    for (int i = 0; i <= last; ++i)
    {
        TapPlan& t = plan[i];
        const double swingFactor = (i & 1) == 0 ? 1.0 + swing : 1.0 - swing;
        t.fx = runTapFx && tapFxOn[i];
        t.onL = tapOnL[i] && i <= count && panMode != kTapPanRight;
        t.onR = tapOnR[i] && i <= count && panMode != kTapPanLeft;
        t.readL = t.onL || i == fbTap || i == count;
        t.readR = t.onR || i == fbTap || i == count;
        const double step = std::min((1.0 - timeDepth) * tapTimeStep[i] + timeDepth, 1.0);
        acc += step * stepSamples * swingFactor;
        t.acc = acc;
        t.gainA = 1.0;
        t.gainB = 1.0;
        if (t.onL || t.onR)
        {
            const double level = std::clamp(tapLevelStep[i] + levelDepth, 0.0, 1.0) * io.wet;
            const double pan = tapPanStep[i] * panDepth;
            t.gainA = std::min(1.0 + pan, 1.0) * level;
            t.gainB = std::min(1.0 - pan, 1.0) * level;
        }
        t.skip = acc > maxDelay;
        t.delayL = static_cast<float>(io.modL + acc);
        t.delayR = static_cast<float>(io.modR + acc);
    }
    ReadTaps(left, right, plan, last);

    const bool ringsInStep = left.mSize == right.mSize && left.mWritePos == right.mWritePos;
    for (int i = 0; i <= last; ++i)
    {
        const TapPlan& t = plan[i];
        if (t.skip) continue;
        const double gainA = t.gainA, gainB = t.gainB;

        // Both sides' pre-echoes lie at the same distances, and in lines written in step also at
        // the same places.
        SwellEchoes echoes;
        if (t.onL || t.onR) FindSwell(t.acc, left, echoes);
        if (t.readL)
        {
            const double* read = mRead[i][0];
            if (i == fbTap) VecScale(read, io.fbL, io.fbOutL, gBlockLen);
            if (i == count) VecCopy(read, io.dlyL, gBlockLen);
            if (t.onL)
            {
                AddSwell(left, echoes, read, io.tapL);
                if (t.fx) io.fx->RunTapFx(io.tapL, 2 * i);
                if (track) note(i, io.tapL, std::max(gainA, panMode != kTapPanStereo ? gainB : 0.0));
                VecAddScaled(io.tapL, gainA, io.postL, gBlockLen);
                if (panMode != kTapPanStereo && gainB != 0.0)
                    VecAddScaled(io.tapL, gainB, io.postR, gBlockLen);
            }
        }
        if (t.readR)
        {
            const double* read = mRead[i][1];
            if (i == fbTap) VecScale(read, io.fbL, io.fbOutR, gBlockLen);
            if (i == count) VecCopy(read, io.dlyR, gBlockLen);
            if (t.onR)
            {
                if (!ringsInStep) FindSwell(t.acc, right, echoes);
                AddSwell(right, echoes, read, io.tapR);
                if (t.fx) io.fx->RunTapFx(io.tapR, 2 * i + 1);
                if (track) note(i, io.tapR, std::max(gainB, panMode != kTapPanStereo ? gainA : 0.0));
                VecAddScaled(io.tapR, gainB, io.postR, gBlockLen);
                if (panMode != kTapPanStereo && gainA != 0.0)
                    VecAddScaled(io.tapR, gainA, io.postL, gBlockLen);
            }
        }
    }

    mPlayingTap = track ? loudestTap : -1;

    // This mode holds its FB effect back while the POST position is replaced.
    if (io.fbFxOn && !io.postSwapping && io.fx != nullptr) io.fx->RunFeedbackFx(io.fbOutL, io.fbOutR);

    if (tapDiOut != 0)
    {
        VecCopy(io.postL, io.dlyL, gBlockLen);
        VecCopy(io.postR, io.dlyR, gBlockLen);
    }
    return fxActive;
}
