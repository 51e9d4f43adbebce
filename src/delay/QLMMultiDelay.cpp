#include "delay/QLMMultiDelay.h"

#include "delay/PairRead.h"
#include "dsp/Denormals.h"
#include "dsp/LanePair.h"
#include "dsp/Vec.h"
#include "dsp/WideLanes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using pairread::LoopFilters;
using pairread::PairRead;

namespace
{
// Corner settings that keep the filters out of the way until the engine sets them.
constexpr double kOpenLowPass = 0.5;
constexpr double kOpenHighPass = 0.0002;
// Where GRAIN pins the corners, whatever is asked.
constexpr double kGrainLowPass = 0.25;
constexpr double kGrainHighPass = 0.002;
// The grain length stays just short of the size asked for.
constexpr double kGrainShrink = 0.995;

// Coefficient of the first-order all-pass whose delay at low frequencies is `frac` samples.
inline double AllpassCoef(double frac)
{
    return (1.0 - frac) / (1.0 + frac);
}

// The first-order all-pass read of a block, s = (buf[p] * c + buf[q]) - s * c, a delay of frac
// samples at low frequencies and flat in level: its coefficients c and the terms u that do not
// depend on the previous output. A steady delay (the usual case) has one coefficient, and away
// from the ring's ends its reads are contiguous.
inline void AllpassTermsBody(const QLMMultiDelay& d, const float* delays, double* u, double* c)
{
    const int size = d.mSize;
    const double* buf = d.mBuf.get();
    const int write = d.mWritePos;
    // The ring was written long ago where the head reads, and the head moves on by a block each
    // block: the next block's reads are asked for now, so that they are in the cache by then.
    const int next = write + gBlockLen - static_cast<int>(delays[gBlockLen - 1]);
    if (next >= 0 && next + gBlockLen <= size)
        for (int i = 0; i < gBlockLen; i += 8)
            __builtin_prefetch(buf + next + i);
    // The block's shortest and longest delay, four at a time.
    using Quad = float __attribute__((vector_size(16)));
    static_assert(gBlockLen % 4 == 0);
    Quad lo4, hi4;
    std::memcpy(&lo4, delays, sizeof(Quad));
    hi4 = lo4;
    for (int i = 4; i < gBlockLen; i += 4)
    {
        Quad v;
        std::memcpy(&v, delays + i, sizeof(Quad));
        lo4 = v < lo4 ? v : lo4;
        hi4 = v > hi4 ? v : hi4;
    }
    const float shortest = std::min(std::min(lo4[0], lo4[1]), std::min(lo4[2], lo4[3]));
    const float longest = std::max(std::max(hi4[0], hi4[1]), std::max(hi4[2], hi4[3]));
    if (shortest == longest)
    {
        const double delay = delays[0];
        const int k = static_cast<int>(delay);
        const double coef = AllpassCoef(delay - k);
        const int first = write - k;
        if (first >= 1 && first + gBlockLen <= size)
        {
            const double* p = buf + first;
            for (int i = 0; i < gBlockLen; ++i)
            {
                u[i] = p[i] * coef + p[i - 1];
                c[i] = coef;
            }
            return;
        }
    }
    // A gliding delay: whole and fractional parts and the coefficients first, in one pass the
    // compiler runs two samples at a time, then the reads.
    int whole[gBlockLen];
    for (int i = 0; i < gBlockLen; ++i)
    {
        const double delay = delays[i];
        const int k = static_cast<int>(delay);
        whole[i] = k;
        c[i] = AllpassCoef(delay - k);
    }
    // Delays are positive, where truncation keeps their order.
    const int lo = static_cast<int>(shortest);
    const int hi = static_cast<int>(longest);
    if (lo == hi && write - hi >= 1 && write - lo + gBlockLen <= size)
    {
        // A slow glide keeps its whole part over most blocks, and then its reads are contiguous.
        const double* p = buf + (write - lo);
        for (int i = 0; i < gBlockLen; ++i)
            u[i] = p[i] * c[i] + p[i - 1];
        return;
    }
    if (write - hi >= 1 && write - lo + gBlockLen <= size)
    {
        // Every read of the block lies inside the ring, its neighbour too.
        for (int i = 0; i < gBlockLen; ++i)
        {
            const double* p = buf + (write + i - whole[i]);
            u[i] = p[0] * c[i] + p[-1];
        }
        return;
    }
    for (int i = 0; i < gBlockLen; ++i)
    {
        int p = i - whole[i] + write;
        if (p < 0)
            p += size;
        else if (p >= size)
            p = 0; // only possible in the last block before the wrap
        const int q = p - 1 < 0 ? size - 1 + p : p - 1;
        u[i] = buf[p] * c[i] + buf[q];
    }
}

void AllpassTermsBaseline(const QLMMultiDelay& d, const float* delays, double* u, double* c)
{
    AllpassTermsBody(d, delays, u, c);
}

// A gliding delay divides once per sample: four lanes halve the work around the divisions.
__attribute__((target("avx2"))) void AllpassTermsWide(const QLMMultiDelay& d, const float* delays, double* u,
                                                      double* c)
{
    AllpassTermsBody(d, delays, u, c);
}

void AllpassTerms(const QLMMultiDelay& d, const float* delays, double* u, double* c)
{
    if (WideLanes())
        AllpassTermsWide(d, delays, u, c);
    else
        AllpassTermsBaseline(d, delays, u, c);
}

} // namespace

QLMMultiDelay::QLMMultiDelay(bool isRight)
    : DSPShell(isRight), mLowPass(isRight, kBqLowpass, 1, 24.0f), mHighPass(isRight, kBqHighpass, 1, 24.0f)
{
    for (BlockSmoother& s : mTapSmoother)
        s.SetTime(100.0);
    // The corners arrive as relative frequencies and go to the designs as they are.
    mLowPass.mMapFreq = false;
    mHighPass.mMapFreq = false;
    mLowPass.SetTypeFixed();
    mHighPass.SetTypeFixed();
    SetLowPass(kOpenLowPass);
    SetHighPass(kOpenHighPass);
    SetMaxDelay(gMaxDelay);
    UpdateGrainSize(false);
    UpdateGrainSpeed(false);
    UpdateGrainPosition(false);
    UpdateFade(mGrainSizeSamples * kGrainShrink);
}

void QLMMultiDelay::RetimeSmoothers()
{
    mReverseOffsetSmoother.SetTime(300.0);
    mGrainSmoother.SetTime(10.0);
    for (BlockSmoother& s : mTapSmoother)
        s.SetTime(100.0);
}

void QLMMultiDelay::Reserve(int samples)
{
    const int needed = std::max(samples, 2 * gBlockLen) + gBlockLen;
    if (needed <= mCapacity) return;
    mBufferReady = false;
    mBuf.reset();
    mBuf.reset(new double[static_cast<size_t>(needed)]);
    mCapacity = needed;
}

void QLMMultiDelay::SetMaxDelay(double samples)
{
    mMaxFade = static_cast<int>(gSampleRate * 0.05);
    mBufferReady = false;
    mSize = std::max(static_cast<int>(samples), 2 * gBlockLen);
    Reserve(mSize);
    RetimeSmoothers();
    mBufferReady = true;
    Reset();
}

void QLMMultiDelay::SetMode(int mode)
{
    mMode = mode;
    switch (mode)
    {
    case DelayForward:
        mReadFn = &ReadForward;
        break;
    case DelayBackward:
        mReadFn = &ReadBackward;
        break;
    case DelayGrain:
        mReadFn = &ReadGrain;
        break;
    default:
        mReadFn = &ReadTapped;
        break;
    }
    Reset();
}

void QLMMultiDelay::Reset()
{
    DSPShell::Reset();
    mGrainRead = 0.0;
    mSegElapsed = 0;
    mWritePos = 0;
    mLowPass.Reset();
    mHighPass.Reset();
    if (mBuf) VecZero(mBuf.get(), mSize + gBlockLen);
    VecZero(mApState, kMaxDelayTaps);
}

void QLMMultiDelay::RestartGlides()
{
    for (BlockSmoother& s : mTapSmoother)
        s.Restart();
    mReverseOffsetSmoother.Restart();
    mGrainSmoother.Restart();
}

void QLMMultiDelay::ClearInterpolators()
{
    VecZero(mApState, kMaxDelayTaps);
}

void QLMMultiDelay::SetLowPass(double relFreq)
{
    const double f = mMode == DelayGrain ? kGrainLowPass : std::clamp(relFreq, 0.0002, 0.5);
    mLowPass.mFreqParam = f;
    // The slot hands over hz / rate: the same division here keeps the filter off at its neutral
    // end at every rate (hz times 1 / rate can round one ulp the other way).
    mLowOn = relFreq < 20000.0 / gSampleRate;
}

void QLMMultiDelay::SetHighPass(double relFreq)
{
    const double f = mMode == DelayGrain ? kGrainHighPass : std::clamp(relFreq, 0.0002, 0.5);
    mHighPass.mFreqParam = f;
    mHighOn = relFreq > 20.0 / gSampleRate;
}

void QLMMultiDelay::SetGrainSize(double ms)
{
    mGrainSizeMs = ms;
    UpdateGrainSize(false);
}

void QLMMultiDelay::SetGrainSpeed(double value)
{
    mGrainSpeedParam = value;
    UpdateGrainSpeed(false);
}

void QLMMultiDelay::SetGrainPosition(double value)
{
    mGrainPositionParam = value;
    UpdateGrainPosition(false);
}

void QLMMultiDelay::SetGrainFade(double ms)
{
    mGrainFadeMs = ms;
    // The running length block belongs to the audio thread; its target stands in for it here.
    UpdateFade(mGrainSizeSamples * kGrainShrink);
}

void QLMMultiDelay::SetReverseFade(double ms)
{
    const double len = gSampleRate * ms * 0.001;
    mReverseFadeLen = len;
    mReverseFadeInv = len > 0.0 ? 1.0 / len : 0.0;
}

void QLMMultiDelay::UpdateGrainSpeed(bool modulated)
{
    double v = mGrainSpeedParam;
    if (modulated) v += ModValue(4);
    v = std::clamp(v, -1.0, 1.0);
    // Two octaves either way, the same law up and down.
    mGrainSpeed = std::exp2(2.0 * v);
}

void QLMMultiDelay::UpdateGrainSize(bool modulated)
{
    double ms = mGrainSizeMs;
    if (modulated) ms = std::clamp(std::clamp(ModValue(5), -1.0, 1.0) * 400.0 + ms, 1.0, 400.0);
    mGrainSizeSamples = gSampleRate * 0.001 * ms;
}

void QLMMultiDelay::UpdateGrainPosition(bool modulated)
{
    double pos = mGrainPositionParam;
    if (modulated) pos += ModValue(3);
    mGrainPosition = std::clamp(pos, 0.0, 1.0);
}

void QLMMultiDelay::UpdateFade(double g)
{
    const double fadeMs = mGrainFadeMs;
    const double len =
        fadeMs == 0.0 ? std::min(g * 0.2, double(mMaxFade)) : std::min(gSampleRate * 0.001 * fadeMs, g);
    mFadeLen = len;
    mInvFadeLen = len > 0.0 ? 1.0 / len : 0.0;
}

void QLMMultiDelay::Filter(IppBiquad& f)
{
    if (f.mBypass) return;
    f.mIn1 = mMixOut;
    f.mOut1 = mMixOut;
    f.Process();
}

void QLMMultiDelay::PrepareRead(float delaySamples, int tap)
{
    mTap = std::clamp(tap, 0, kMaxDelayTaps - 1);
    mBlockLen = gBlockLen;
    mDelay = delaySamples;

    if (mMode == DelayTapped)
    {
        if (ModWired(6)) mDelay += static_cast<float>(ModValue(6) * gSampleRate);
    }
    else if (ModWired(0))
        mDelay += static_cast<float>(ModValue(0) * mChannelSign);

    const float shortest = static_cast<float>(double(gSamplesPerMs));
    const float longest = static_cast<float>(mSize - 1);
    if (mDelay < shortest) mDelay = shortest;
    if (mDelay > longest) mDelay = longest;

    if (mSnapTime)
    {
        mTapSmoother[mTap].SetLastF(mDelay);
        mSnapTime = false;
    }
}

const double* QLMMultiDelay::ReadTap(float delaySamples, int tap)
{
    PrepareRead(delaySamples, tap);
    const ReadFn read = mReadFn;
    read(*this);
    return mMixOut;
}

template <int pairs>
void QLMMultiDelay::ReadForwardPairs(QLMMultiDelay* const (&lines)[4], const float (&delays)[4],
                                     double* const (&outs)[4])
{
    bool forward = true;
    for (int k = 0; k < 2 * pairs; ++k)
        forward = forward && lines[k]->mReadFn == &ReadForward;
    if (!forward)
    {
        for (int k = 0; k < 2 * pairs; ++k)
            VecCopy(lines[k]->ReadTap(delays[k], 0), outs[k], gBlockLen);
        return;
    }
    double u[2 * pairs][gBlockLen], c[2 * pairs][gBlockLen];
    PairRead r[pairs];
    LoopFilters filters[pairs];
    for (int p = 0; p < pairs; ++p)
    {
        QLMMultiDelay& left = *lines[2 * p];
        QLMMultiDelay& right = *lines[2 * p + 1];
        PrepareTermsPair(left, right, delays[2 * p], delays[2 * p + 1], 0, u[2 * p], c[2 * p], u[2 * p + 1],
                         c[2 * p + 1]);
        r[p] = pairread::StartRead(u[2 * p], c[2 * p], u[2 * p + 1], c[2 * p + 1], left.mApState[0],
                                   right.mApState[0], outs[2 * p], outs[2 * p + 1]);
        pairread::BeginLoopFilters(left, right, filters[p]);
    }
    // Two pairs whose loops run the same stages read side by side.
    bool together = false;
    if constexpr (pairs == 2)
    {
        together = filters[0].matched && filters[1].matched &&
                   pairread::LoopStages(filters[0]) == pairread::LoopStages(filters[1]);
        if (together) pairread::ReadTwoMatched(r, filters);
    }
    for (int p = 0; p < pairs; ++p)
    {
        QLMMultiDelay& left = *lines[2 * p];
        QLMMultiDelay& right = *lines[2 * p + 1];
        if (!together) pairread::ReadPairAlone(r[p], filters[p], left, right);
        left.mApState[0] = r[p].s[0];
        right.mApState[0] = r[p].s[1];
        if (filters[p].matched) pairread::EndLoopFilters(filters[p], r[p].outL, r[p].outR);
    }
}

void QLMMultiDelay::ReadForwardPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR,
                                    double* outL, double* outR)
{
    QLMMultiDelay* const lines[4] = {&left, &right, nullptr, nullptr};
    const float delays[4] = {delayL, delayR, 0.0f, 0.0f};
    double* const outs[4] = {outL, outR, nullptr, nullptr};
    ReadForwardPairs<1>(lines, delays, outs);
}

void QLMMultiDelay::ReadForwardTwoPairs(QLMMultiDelay* const (&lines)[4], const float (&delays)[4],
                                        double* const (&outs)[4])
{
    ReadForwardPairs<2>(lines, delays, outs);
}

void QLMMultiDelay::WriteBlock(const double* src)
{
    WriteBlockWith([src](int i) { return src[i]; });
}

void QLMMultiDelay::ReadTapPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR,
                                int tap)
{
    if (left.mReadFn != &ReadTapped || right.mReadFn != &ReadTapped)
    {
        left.ReadTap(delayL, tap);
        right.ReadTap(delayR, tap);
        return;
    }
    double uL[gBlockLen], cL[gBlockLen], uR[gBlockLen], cR[gBlockLen];
    tap = PrepareTermsPair(left, right, delayL, delayR, tap, uL, cL, uR, cR);
    PairRead r = pairread::StartRead(uL, cL, uR, cR, left.mApState[tap], right.mApState[tap], left.mMixOut,
                                     right.mMixOut);
    pairread::ReadUnfiltered(&r, 1);
    left.mApState[tap] = r.s[0];
    right.mApState[tap] = r.s[1];
}

void QLMMultiDelay::ReadTwoTapPairs(QLMMultiDelay& left, QLMMultiDelay& right, const float* delayL,
                                    const float* delayR, int tapA, int tapB, double* const (*out)[2])
{
    if (left.mReadFn != &ReadTapped || right.mReadFn != &ReadTapped)
    {
        const int taps[2] = {tapA, tapB};
        for (int t = 0; t < 2; ++t)
        {
            ReadTapPair(left, right, delayL[t], delayR[t], taps[t]);
            VecCopy(left.mMixOut, out[t][0], gBlockLen);
            VecCopy(right.mMixOut, out[t][1], gBlockLen);
        }
        return;
    }
    double uL[2][gBlockLen], cL[2][gBlockLen], uR[2][gBlockLen], cR[2][gBlockLen];
    tapA = PrepareTermsPair(left, right, delayL[0], delayR[0], tapA, uL[0], cL[0], uR[0], cR[0]);
    tapB = PrepareTermsPair(left, right, delayL[1], delayR[1], tapB, uL[1], cL[1], uR[1], cR[1]);
    // Both heads' recursions side by side.
    const int taps[2] = {tapA, tapB};
    PairRead r[2];
    for (int t = 0; t < 2; ++t)
    {
        r[t] = pairread::StartRead(uL[t], cL[t], uR[t], cR[t], left.mApState[taps[t]],
                                   right.mApState[taps[t]], out[t][0], out[t][1]);
    }
    pairread::ReadUnfiltered(r, 2);
    for (int t = 0; t < 2; ++t)
    {
        left.mApState[taps[t]] = r[t].s[0];
        right.mApState[taps[t]] = r[t].s[1];
    }
}

int QLMMultiDelay::PrepareTermsPair(QLMMultiDelay& left, QLMMultiDelay& right, float delayL, float delayR,
                                    int tap, double* uL, double* cL, double* uR, double* cR)
{
    left.PrepareRead(delayL, tap);
    right.PrepareRead(delayR, tap);
    tap = left.mTap;
    AllpassTerms(left, left.mTapSmoother[tap].RunF(left.mDelay, gBlockLen), uL, cL);
    AllpassTerms(right, right.mTapSmoother[tap].RunF(right.mDelay, gBlockLen), uR, cR);
    return tap;
}

void QLMMultiDelay::ReadTapped(QLMMultiDelay& d)
{
    const int tap = d.mTap;
    double u[gBlockLen], c[gBlockLen];
    AllpassTerms(d, d.mTapSmoother[tap].RunF(d.mDelay, gBlockLen), u, c);
    // Only the last multiply and subtract depend on the previous output, which keeps the chain short.
    double s = d.mApState[tap];
    for (int i = 0; i < gBlockLen; ++i)
    {
        s = u[i] - s * c[i];
        d.mMixOut[i] = s;
    }
    d.mApState[tap] = s;
}

void QLMMultiDelay::ReadForward(QLMMultiDelay& d)
{
    ReadTapped(d);
    if (d.mHighOn) d.Filter(d.mHighPass);
    if (d.mLowOn) d.Filter(d.mLowPass);
}

void QLMMultiDelay::ReadBackward(QLMMultiDelay& d)
{
    if (d.ModWired(3)) d.UpdateGrainPosition(true);
    const double spm = gSamplesPerMs;
    const double pos = d.mGrainPosition;
    const double segLen = (d.mDelay - spm) * (1.0 - pos) * (1.0 - pos) + spm;
    const int size = d.mSize;
    const double* buf = d.mBuf.get();
    const double target = d.mReverseOffset;
    const double a = d.mReverseOffsetSmoother.mCoef;
    const double fadeLen = d.mReverseFadeLen;
    const double fadeInv = d.mReverseFadeInv;
    double offState = d.mReverseOffsetSmoother.mLastD;

    for (int i = 0; i < gBlockLen; ++i)
    {
        // The offset glides sample by sample, not through the block tables.
        offState = offState * a + target * (1.0 - a) + kDenormGuard;
        const double o = offState - kDenormGuard;
        const int k = static_cast<int>(o);
        int p = d.mSegStart - d.mSegElapsed - k;
        // The head runs backwards, so the fraction counts from the other side.
        const double g = 1.0 - (o - k);
        if (p < 0)
            p += size;
        else if (p >= size)
            p = 0;
        const int q = p + 1 >= size ? 0 : p + 1;

        ++d.mSegElapsed;
        if ((d.mSegElapsed >= segLen || d.mRestart) && !d.mFadeActive)
        {
            d.mSegStart = d.mWritePos;
            d.mFadeReadPos = q;
            d.mSegElapsed = 0;
            d.mRestart = false;
        }
        if (d.mFadeReadPos < 0) d.mFadeReadPos += size;

        const double y = (buf[p] - d.mApState[0]) * AllpassCoef(g) + buf[q];
        d.mFadeActive = false;
        d.mApState[0] = y;

        double out = y;
        if (d.mSegElapsed < fadeLen)
        {
            // The old head goes on downwards as a plain read while the new segment fades in.
            const double w = d.mSegElapsed * fadeInv;
            d.mFadeActive = true;
            out = w * y + (1.0 - w) * buf[d.mFadeReadPos];
            d.mFadeReadPos -= 1;
        }
        d.mMixOut[i] = out;
    }
    d.mReverseOffsetSmoother.mLastD = offState;
    d.Filter(d.mLowPass);
}

void QLMMultiDelay::ReadGrain(QLMMultiDelay& d)
{
    if (d.ModWired(4)) d.UpdateGrainSpeed(true);
    if (d.ModWired(5)) d.UpdateGrainSize(true);
    if (d.ModWired(3)) d.UpdateGrainPosition(true);

    const double* len = d.mGrainSmoother.RunD(d.mGrainSizeSamples * kGrainShrink, gBlockLen);
    d.mGrainLen = len;
    if (static_cast<int>(len[0]) != static_cast<int>(len[1])) d.UpdateFade(len[0]);

    const int size = d.mSize;
    const double* buf = d.mBuf.get();
    const double speed = d.mGrainSpeed;
    const double pos = d.mGrainPosition;
    const double fadeLen = d.mFadeLen;
    const double fadeInv = d.mInvFadeLen;

    for (int i = 0; i < gBlockLen; ++i)
    {
        d.mGrainRead += speed;
        if (d.mGrainRead >= size) d.mGrainRead -= size;
        d.mGrainElapsed += speed;

        const double grainLen = len[i];
        if (d.mGrainElapsed >= grainLen)
        {
            d.mFadeRead = d.mGrainRead;
            // At least one grain back, so that a fast head can't overtake the writer in a grain.
            const double back = std::max(grainLen, (1.0 - pos) * d.mDelay);
            d.mGrainRead = d.mWritePos + i - back;
            if (d.mGrainRead < 0.0) d.mGrainRead += size;
            d.mGrainElapsed = 0.0;
        }

        // Catmull-Rom through the four samples around the head.
        const double r = d.mGrainRead;
        const int i0 = static_cast<int>(r);
        const double u = r - i0;
        const double xm = buf[i0 - 1 < 0 ? size - 1 + i0 : i0 - 1];
        const double x0 = buf[i0];
        const double x1 = buf[i0 + 1 >= size ? i0 + 1 - size : i0 + 1];
        const double x2 = buf[i0 + 2 >= size ? i0 + 2 - size : i0 + 2];
        const double y =
            ((1.5 * x0 - 0.5 * xm - 1.5 * x1 + 0.5 * x2) * u + (xm - 2.5 * x0 + 2.0 * x1 - 0.5 * x2)) * u *
                u +
            (0.5 * x1 - 0.5 * xm) * u + x0;

        double out = y;
        if (d.mGrainElapsed < fadeLen)
        {
            const double w = d.mGrainElapsed * fadeInv;
            const double z = buf[static_cast<int>(d.mFadeRead)];
            d.mFadeRead += speed;
            if (d.mFadeRead >= size) d.mFadeRead -= size;
            out = static_cast<float>(w) * y + static_cast<float>(1.0 - w) * z;
        }
        d.mApState[0] = y;
        d.mMixOut[i] = out;
    }
}
