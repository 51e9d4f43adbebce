#include "fx/MVPitchShifter.h"

#include "dsp/TimeBase.h"
#include "dsp/WideLanes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
constexpr double kMinDelay = 3.0; // keeps the four interpolation taps in the written past
constexpr double kSearchMs = 20.0;
constexpr double kMatchMs = 8.0;
constexpr double kGlideMs = 30.0;

uint32_t RingSizeFor(double samples)
{
    uint32_t size = 1;
    while (size < samples)
        size <<= 1;
    return size;
}

double Clamp01(double x)
{
    return std::clamp(x, 0.0, 1.0);
}

// L dot products of a with b[0..L-1], each as four independent sums (element j goes to sum j % 4)
// added up as (s0 + s1) + (s2 + s3). The L products run side by side, so that their chains of
// additions overlap; a product's four sums are the lanes of one vector where WideLanes() holds and
// two pairs of lanes elsewhere. Every product comes out the same in each form and for any L.
template <int L> inline void DotsBody(const double* a, const double* const* b, int n, double* out)
{
    using Quad = double __attribute__((vector_size(32)));
    Quad sum[L] = {};
    int j = 0;
    for (; j + 4 <= n; j += 4)
    {
        Quad x;
        std::memcpy(&x, a + j, sizeof x);
        for (int l = 0; l < L; ++l)
        {
            Quad y;
            std::memcpy(&y, b[l] + j, sizeof y);
            sum[l] = sum[l] + x * y;
        }
    }
    for (; j < n; ++j)
        for (int l = 0; l < L; ++l)
            sum[l][0] += a[j] * b[l][j];
    for (int l = 0; l < L; ++l)
        out[l] = (sum[l][0] + sum[l][1]) + (sum[l][2] + sum[l][3]);
}

constexpr int kDotsAtOnce = 4;
using DotsFn = void (*)(const double* a, const double* const* b, int n, double* out);

template <int L> void DotsBaseline(const double* a, const double* const* b, int n, double* out)
{
    DotsBody<L>(a, b, n, out);
}

template <int L>
__attribute__((target("avx2"))) void DotsWide(const double* a, const double* const* b, int n, double* out)
{
    DotsBody<L>(a, b, n, out);
}
} // namespace

MVPitchShifter::MVPitchShifter(bool stereo, bool isRight) : DSPShell(isRight), mStereo(stereo)
{
    mParam[0] = 0.5;
    mParam[1] = 0.5;
    mParam[2] = kDefaultSize;
    mParam[3] = 0.5;
    const double ms = 0.001 * kMaxSampleRate;
    const double longest = kMinDelay + (kMaxWindowMs + kSearchMs + kMatchMs) * ms + 8.0;
    mRing.assign(RingSizeFor(longest), 0.0);
    mMask = uint32_t(mRing.size() - 1);
    // Reference run, candidate runs and their running energies of the splice search, at 96 kHz.
    const int match = int(kMatchMs * ms), span = int(kSearchMs * ms);
    mSplice.assign(size_t(3 * match + 3 * span + 16), 0.0);
    Reset();
}

int MVPitchShifter::CoarseSemitones(double x)
{
    return int(std::lround(48.0 * Clamp01(x) - 24.0));
}

double MVPitchShifter::FineCents(double x)
{
    return 200.0 * Clamp01(x) - 100.0;
}

double MVPitchShifter::WindowMs(double x)
{
    return kMinWindowMs * std::pow(kMaxWindowMs / kMinWindowMs, Clamp01(x));
}

double MVPitchShifter::DetuneCents(double x)
{
    return (2.0 * Clamp01(x) - 1.0) * kMaxDetuneCents;
}

void MVPitchShifter::SetParam(int id, double value)
{
    if (id >= 0 && id < 4)
        mParam[id] = value;
    else if (id == 4)
        mMix = Clamp01(value);
}

double MVPitchShifter::TargetWindow() const
{
    return WindowMs(mParam[2] + ModValue(2)) * 0.001 * gSampleRate;
}

double MVPitchShifter::Ratio() const
{
    // Stereo: each channel instance takes its own coarse knob and modulation input.
    const int coarse = mStereo && mChannelSign < 0.0 ? 1 : 0;
    double cents = 100.0 * CoarseSemitones(mParam[coarse] + ModValue(coarse));
    if (!mStereo) cents += FineCents(mParam[1] + ModValue(1));
    cents += DetuneCents(mParam[3] + ModValue(3)) * mChannelSign;
    return std::exp2(cents / 1200.0);
}

void MVPitchShifter::Reset()
{
    DSPShell::Reset();
    std::fill(mRing.begin(), mRing.end(), 0.0);
    mWrite = 0;
    mPhase = 0.0;
    mOffset[0] = mOffset[1] = 0.0;
    const double rate = gSampleRate;
    mRateDivisor = rate;
    mStride = rate > 64000.0 ? 2 : 1;
    mSearch = int(kSearchMs * 0.001 * rate);
    mMatch = int(kMatchMs * 0.001 * rate) / mStride;
    mGlide = 1.0 - std::exp(-double(gBlockLen) / (kGlideMs * 0.001 * rate));
    mWindow = TargetWindow();
}

// Four-point Lagrange through the samples at delays floor(d) - 1 .. floor(d) + 2.
double MVPitchShifter::ReadAt(uint32_t now, double delay) const
{
    const double whole = std::floor(delay);
    const double t = delay - whole;
    const uint32_t i = now - uint32_t(whole);
    const double* x = mRing.data();
    const double ym1 = x[(i + 1) & mMask];
    const double y0 = x[i & mMask];
    const double y1 = x[(i - 1) & mMask];
    const double y2 = x[(i - 2) & mMask];
    const double tp1 = t + 1.0, tm1 = t - 1.0, tm2 = t - 2.0;
    return -t * tm1 * tm2 * (1.0 / 6.0) * ym1 + tp1 * tm1 * tm2 * 0.5 * y0 - tp1 * t * tm2 * 0.5 * y1 +
           tp1 * t * tm1 * (1.0 / 6.0) * y2;
}

// The delay in lowDelay .. lowDelay + search span whose recent past best matches that of the head at
// otherDelay (normalised cross-correlation, peak refined by a parabola). The ring is first unwrapped
// into contiguous runs, one per stride phase, so that each lag costs one plain dot product.
double MVPitchShifter::SpliceDelay(uint32_t now, double otherDelay, double lowDelay)
{
    const double* x = mRing.data();
    const double otherWhole = std::round(otherDelay);
    const int first = int(std::ceil(lowDelay));
    const int stride = mStride, match = mMatch, span = mSearch;
    const int run = span / stride + 1 + match; // samples per stride phase
    double* ref = mSplice.data();
    double* cand = ref + match;
    double* energy = cand + stride * run;
    const uint32_t refStart = now - uint32_t(otherWhole);
    for (int j = 0; j < match; ++j)
        ref[j] = x[(refStart - uint32_t(j * stride)) & mMask];
    const uint32_t candStart = now - uint32_t(first);
    for (int p = 0; p < stride; ++p)
    {
        double* c = cand + p * run;
        double* e = energy + p * (run + 1);
        e[0] = 0.0;
        for (int k = 0; k < run; ++k)
        {
            c[k] = x[(candStart - uint32_t(p + k * stride)) & mMask];
            e[k + 1] = e[k] + c[k] * c[k];
        }
    }
    const bool wide = WideLanes();
    const DotsFn dots = wide ? DotsWide<kDotsAtOnce> : DotsBaseline<kDotsAtOnce>;
    const DotsFn dot = wide ? DotsWide<1> : DotsBaseline<1>;
    const auto candidate = [&](int lag) { return cand + (lag % stride) * run + lag / stride; };
    const auto normalise = [&](int lag, double product)
    {
        const int p = lag % stride, q = lag / stride;
        const double* e = energy + p * (run + 1);
        const double power = std::max(e[q + match] - e[q], 0.0) + 1e-20;
        return product / std::sqrt(power);
    };
    auto score = [&](int lag)
    {
        const double* b = candidate(lag);
        double product;
        dot(ref, &b, match, &product);
        return normalise(lag, product);
    };
    // Every second lag first, several at a time, then a climb to the best single-sample neighbour.
    int lag = 0;
    double mid = -2.0;
    const auto consider = [&](int k, double s)
    {
        if (s > mid)
        {
            mid = s;
            lag = k;
        }
    };
    int k = 0;
    for (; k + 2 * (kDotsAtOnce - 1) <= span; k += 2 * kDotsAtOnce)
    {
        const double* b[kDotsAtOnce];
        double products[kDotsAtOnce];
        for (int l = 0; l < kDotsAtOnce; ++l)
            b[l] = candidate(k + 2 * l);
        dots(ref, b, match, products);
        for (int l = 0; l < kDotsAtOnce; ++l)
            consider(k + 2 * l, normalise(k + 2 * l, products[l]));
    }
    for (; k <= span; k += 2)
        consider(k, score(k));
    double left = lag > 0 ? score(lag - 1) : -2.0, right = lag < span ? score(lag + 1) : -2.0;
    if (left > mid && left >= right)
    {
        right = mid;
        mid = left;
        --lag;
        left = lag > 0 ? score(lag - 1) : -2.0;
    }
    else if (right > mid)
    {
        left = mid;
        mid = right;
        ++lag;
        right = lag < span ? score(lag + 1) : -2.0;
    }
    double shift = 0.0;
    const double curve = left - 2.0 * mid + right;
    if (lag > 0 && lag < span && curve < 0.0) shift = std::clamp(0.5 * (left - right) / curve, -0.5, 0.5);
    // Keep the reference head's fraction so that the two heads line up to the sub-sample.
    const double delay = first + lag + shift + (otherDelay - otherWhole);
    return std::max(delay, lowDelay);
}

void MVPitchShifter::Process()
{
    const int n = mBlockLen;
    for (int i = 0; i < n; ++i)
        mRing[(mWrite + uint32_t(i)) & mMask] = mIn1[i];

    const double target = TargetWindow();
    const double startWindow = mWindow;
    mWindow += (target - mWindow) * mGlide;
    const double windowStep = (mWindow - startWindow) / n;
    SetRate((1.0 - Ratio()) * gSampleRate / mWindow);
    const double inc = mPhaseInc;

    // The raised-cosine window by a rotating phasor: the phase moves by inc every sample.
    double cosine = std::cos(2.0 * M_PI * mPhase), sine = std::sin(2.0 * M_PI * mPhase);
    const double turnCos = std::cos(2.0 * M_PI * inc), turnSin = std::sin(2.0 * M_PI * inc);
    double window = startWindow;
    for (int i = 0; i < n; ++i)
    {
        const uint32_t now = mWrite + uint32_t(i);
        window += windowStep;
        const double last = mPhase;
        double phase = last + inc;
        bool wrap0 = false;
        if (phase >= 1.0)
        {
            phase -= 1.0;
            wrap0 = true;
        }
        else if (phase < 0.0)
        {
            phase += 1.0;
            wrap0 = true;
        }
        const bool wrap1 = !wrap0 && ((last < 0.5) != (phase < 0.5));
        mPhase = phase;
        const double phase1 = phase < 0.5 ? phase + 0.5 : phase - 0.5;
        if (wrap0)
        {
            const double low = kMinDelay + phase * window;
            const double other = kMinDelay + phase1 * window + mOffset[1];
            mOffset[0] = SpliceDelay(now, other, low) - low;
        }
        else if (wrap1)
        {
            const double low = kMinDelay + phase1 * window;
            const double other = kMinDelay + phase * window + mOffset[0];
            mOffset[1] = SpliceDelay(now, other, low) - low;
        }
        const double turned = cosine * turnCos - sine * turnSin;
        sine = sine * turnCos + cosine * turnSin;
        cosine = turned;
        const double w0 = 0.5 - 0.5 * cosine;
        const double a = ReadAt(now, kMinDelay + phase * window + mOffset[0]);
        const double b = ReadAt(now, kMinDelay + phase1 * window + mOffset[1]);
        mOut1[i] = b + w0 * (a - b);
    }
    mWrite += uint32_t(n);
}
