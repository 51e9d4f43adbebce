// Recursive filter core. Every filter runs as a cascade of second-order sections in transposed
// direct form II; the caller's delay array holds the two states of each section, in section order,
// and is the filter's whole memory. A direct filter of order N is factored into sections at init
// (IirFactor.cpp); for an odd order the first section is of first order and keeps one state, so the
// delay array holds exactly N doubles.
//
// The designs (IirDesign.cpp) know their roots exactly and leave them, as sections, in the working
// memory beside the taps they wrote; IirInit takes those when it is handed the very same taps. A
// redesign at block rate then finds no roots, and a sharp design near DC or Nyquist keeps poles
// that its rounded taps could not hold. The working memory must come zero-filled (as from
// VecAllocBytes) or have been used by this code before.
//
// Design conventions (IirDesignLowpass, IirDesignHighpass): the corner is pre-warped; Butterworth
// is -3.01 dB there with exactly unit gain at DC (low-pass) or Nyquist (high-pass). Chebyshev
// type I keeps its ripple peaks at 0 dB, so the filter never amplifies: the corner is the passband
// edge at -ripple dB, and an even order has -ripple dB at DC (low-pass) or Nyquist (high-pass), an
// odd order 0 dB.
//
// Unusable input gives silence: a0 = 0, taps that are not finite, an order outside 0..12 (order 0
// is a plain gain). A cascade of more than 12 sections keeps the first 12; one of 0 passes its
// input.
//
// Threads: everything here works only on its arguments; IirInit and IirRun may run on the audio
// thread (no allocation, no lock, no exception).

#include "dsp/Iir.h"
#include "dsp/Denormals.h"
#include "dsp/IirSections.h"
#include "dsp/LanePair.h"
#include "dsp/WideLanes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace
{
constexpr int kMaxSections = kIirMaxOrder;

constexpr unsigned kDesignMagic = 0x51495231u;

using Section = IirSection;

// The sections of the last design made into this working memory, and the taps it wrote.
struct DesignSections
{
    unsigned mMagic; // kDesignMagic when the rest is valid
    int mOrder;
    int mSections;
    bool mHalfFirst;
    double mTaps[2 * (kIirMaxOrder + 1)];
    Section mSec[kMaxSections];
};
} // namespace

// Plain data, so that it lives in the caller's byte array without construction; IirInit and a
// design write it in place.
struct IirState
{
    int mSections;   // internal sections, run in array order
    int mDelayCount; // doubles in the caller's delay array
    bool mHalfFirst; // the first section is of first order: its second state is not stored
    Section mSec[kMaxSections];
    double mZ[2 * kMaxSections]; // two transposed direct form II states per section
    DesignSections mDesign;
};

namespace
{
IirState* StateIn(unsigned char* work)
{
    auto addr = reinterpret_cast<std::uintptr_t>(work);
    constexpr std::uintptr_t kAlign = alignof(IirState);
    addr = (addr + kAlign - 1) & ~(kAlign - 1);
    return std::launder(reinterpret_cast<IirState*>(addr));
}

// Internal state index of delay element i.
inline int StateIndex(const IirState* st, int i)
{
    return (st->mHalfFirst && i > 0) ? i + 1 : i;
}

void LoadDelay(IirState* st, const double* delay)
{
    for (double& z : st->mZ)
        z = 0.0;
    if (delay == nullptr) return;
    for (int i = 0; i < st->mDelayCount; ++i)
        st->mZ[StateIndex(st, i)] = delay[i];
}

// Zero output, with as many states as the order asks for (all of them stay zero).
void MakeSilent(IirState* st, int order)
{
    st->mSections = order > 1 ? (order + 1) / 2 : 1;
    st->mDelayCount = order;
    st->mHalfFirst = order % 2 == 1;
    for (Section& s : st->mSec)
        s = Section{0.0, 0.0, 0.0, 0.0, 0.0};
}

bool HoldsDesign(const IirState* st, const double* taps, int order)
{
    const DesignSections& d = st->mDesign;
    return d.mMagic == kDesignMagic && d.mOrder == order &&
           std::memcmp(d.mTaps, taps, sizeof(double) * 2 * static_cast<std::size_t>(order + 1)) == 0;
}

// One section in transposed direct form II over a block; in and out may be the same array.
inline void RunSection(const Section& c, double* z, const double* in, double* out, int n)
{
    const double b0 = c.b0, b1 = c.b1, b2 = c.b2, a1 = c.a1, a2 = c.a2;
    double z1 = z[0], z2 = z[1];
    for (int i = 0; i < n; ++i)
    {
        const double x = in[i];
        const double y = b0 * x + z1;
        z1 = b1 * x - a1 * y + z2;
        z2 = b2 * x - a2 * y;
        out[i] = y;
    }
    z[0] = z1;
    z[1] = z2;
}

// Three sections in one pass: each section's recursion is a chain of dependent multiply-adds, and
// interleaving the chains lets the processor overlap them.
inline void RunSectionTriple(const Section* c, double* z, const double* in, double* out, int n)
{
    const double b0 = c[0].b0, b1 = c[0].b1, b2 = c[0].b2, a1 = c[0].a1, a2 = c[0].a2;
    const double e0 = c[1].b0, e1 = c[1].b1, e2 = c[1].b2, f1 = c[1].a1, f2 = c[1].a2;
    const double g0 = c[2].b0, g1 = c[2].b1, g2 = c[2].b2, h1 = c[2].a1, h2 = c[2].a2;
    double z1 = z[0], z2 = z[1], u1 = z[2], u2 = z[3], t1 = z[4], t2 = z[5];
    for (int i = 0; i < n; ++i)
    {
        const double x = in[i];
        const double y = b0 * x + z1;
        z1 = b1 * x - a1 * y + z2;
        z2 = b2 * x - a2 * y;
        const double v = e0 * y + u1;
        u1 = e1 * y - f1 * v + u2;
        u2 = e2 * y - f2 * v;
        const double w = g0 * v + t1;
        t1 = g1 * v - h1 * w + t2;
        t2 = g2 * v - h2 * w;
        out[i] = w;
    }
    z[0] = z1;
    z[1] = z2;
    z[2] = u1;
    z[3] = u2;
    z[4] = t1;
    z[5] = t2;
}

// Two sections in one pass, likewise.
inline void RunSectionPair(const Section& c, const Section& d, double* z, const double* in, double* out,
                           int n)
{
    const double b0 = c.b0, b1 = c.b1, b2 = c.b2, a1 = c.a1, a2 = c.a2;
    const double e0 = d.b0, e1 = d.b1, e2 = d.b2, f1 = d.a1, f2 = d.a2;
    double z1 = z[0], z2 = z[1], u1 = z[2], u2 = z[3];
    for (int i = 0; i < n; ++i)
    {
        const double x = in[i];
        const double y = b0 * x + z1;
        z1 = b1 * x - a1 * y + z2;
        z2 = b2 * x - a2 * y;
        const double v = e0 * y + u1;
        u1 = e1 * y - f1 * v + u2;
        u2 = e2 * y - f2 * v;
        out[i] = v;
    }
    z[0] = z1;
    z[1] = z2;
    z[2] = u1;
    z[3] = u2;
}
} // namespace

// One fixed size serves every order and section count; the slack lets IirInit align the state.
void IirStateSize(int order, int* sizeOut)
{
    if (sizeOut != nullptr) *sizeOut = static_cast<int>(sizeof(IirState) + alignof(IirState) - 1);
}

void IirBiquadStateSize(int sections, int* sizeOut)
{
    if (sizeOut != nullptr) *sizeOut = static_cast<int>(sizeof(IirState) + alignof(IirState) - 1);
}

void IirInit(IirState** stateOut, const double* taps, int order, const double* delay, unsigned char* work)
{
    IirState* st = StateIn(work);
    *stateOut = st;
    if (order < 0 || order > kIirMaxOrder || taps == nullptr)
    {
        MakeSilent(st, 0);
    }
    else if (HoldsDesign(st, taps, order))
    {
        const DesignSections& d = st->mDesign;
        st->mSections = d.mSections;
        st->mHalfFirst = d.mHalfFirst;
        st->mDelayCount = order;
        for (int i = 0; i < d.mSections; ++i)
            st->mSec[i] = d.mSec[i];
    }
    else if (IirSectionsFromTaps(taps, order, st->mSec, st->mSections, st->mHalfFirst))
    {
        st->mDelayCount = order;
    }
    else
    {
        MakeSilent(st, order);
    }
    LoadDelay(st, delay);
}

void IirStoreDesign(unsigned char* work, const double* taps, int order, const IirRoot* poles,
                    const IirRoot* zeros, long double gain)
{
    if (work == nullptr || taps == nullptr || order < 1 || order > kIirMaxOrder) return;
    DesignSections& d = StateIn(work)->mDesign;
    d.mMagic = 0;
    IirSectionsFromRoots(poles, zeros, order, gain, d.mSec, d.mSections, d.mHalfFirst);
    for (int i = 0; i < 2 * (order + 1); ++i)
        d.mTaps[i] = taps[i];
    d.mOrder = order;
    d.mMagic = kDesignMagic;
}

void IirInitBiquad(IirState** stateOut, const double* taps, int sections, const double* delay,
                   unsigned char* work)
{
    IirState* st = StateIn(work);
    *stateOut = st;
    const int count =
        sections < 0 || taps == nullptr ? 0 : (sections > kMaxSections ? kMaxSections : sections);
    st->mSections = count;
    st->mDelayCount = 2 * count;
    st->mHalfFirst = false;
    for (int s = 0; s < count; ++s)
    {
        const double* t = taps + 6 * s;
        bool finite = true;
        for (int i = 0; i < 6; ++i)
            finite = finite && std::isfinite(t[i]);
        if (!finite || t[3] == 0.0)
        {
            st->mSec[s] = Section{0.0, 0.0, 0.0, 0.0, 0.0}; // an unusable section is silent
            continue;
        }
        const double a0 = t[3];
        st->mSec[s] = Section{t[0] / a0, t[1] / a0, t[2] / a0, t[4] / a0, t[5] / a0};
    }
    LoadDelay(st, delay);
}

void IirRun(const double* src, double* dst, int n, IirState* state)
{
    if (n <= 0 || state == nullptr) return;
    if (state->mSections == 0)
    {
        if (src != dst)
            for (int i = 0; i < n; ++i)
                dst[i] = src[i];
        return;
    }
    const double* in = src;
    int s = 0;
    for (; s + 2 < state->mSections; s += 3)
    {
        RunSectionTriple(state->mSec + s, state->mZ + 2 * s, in, dst, n);
        in = dst;
    }
    for (; s + 1 < state->mSections; s += 2)
    {
        RunSectionPair(state->mSec[s], state->mSec[s + 1], state->mZ + 2 * s, in, dst, n);
        in = dst;
    }
    if (s < state->mSections) RunSection(state->mSec[s], state->mZ + 2 * s, in, dst, n);
}

void IirRunI(double* srcDst, int n, IirState* state)
{
    IirRun(srcDst, srcDst, n, state);
}

namespace
{

using LaneQuad = double __attribute__((vector_size(32)));

// One step of the wavefront of RunPairSections with sections 2q and 2q + 1 as the low and high halves of one
// four-lane vector: per lane the same operations in the same order. Sections first..last work;
// a vector with one working half keeps the other half's memory. A section takes what the section
// before it gave in the previous step, so each step first moves the last outputs one half up: the
// high half of quad q - 1 and the low half of quad q make quad q's input. The last section's
// output goes to *outL, *outR when it works.
template <int Q>
__attribute__((target("avx2"), always_inline)) inline void
WaveStepWide(LaneQuad* y, LaneQuad* w1, LaneQuad* w2, const LaneQuad* b0, const LaneQuad* b1,
             const LaneQuad* b2, const LaneQuad* a1, const LaneQuad* a2, double inL, double inR, int first,
             int last, double* outL, double* outR)
{
    LaneQuad x[Q];
    x[0] = __builtin_shufflevector(LaneQuad{inL, inR}, y[0], 0, 1, 4, 5);
    for (int q = 1; q < Q; ++q)
        x[q] = __builtin_shufflevector(y[q - 1], y[q], 2, 3, 4, 5);
    for (int q = 0; q < Q; ++q)
    {
        const bool lo = first <= 2 * q && 2 * q <= last;
        const bool hi = first <= 2 * q + 1 && 2 * q + 1 <= last;
        if (!lo && !hi) continue;
        const LaneQuad out = b0[q] * x[q] + w1[q];
        const LaneQuad m1 = b1[q] * x[q] - a1[q] * out + w2[q];
        const LaneQuad m2 = b2[q] * x[q] - a2[q] * out;
        // A half that does not work this step keeps its memory; its output is never taken.
        y[q] = out;
        w1[q] = lo && hi ? m1
                : lo     ? __builtin_shufflevector(m1, w1[q], 0, 1, 6, 7)
                         : __builtin_shufflevector(w1[q], m1, 0, 1, 6, 7);
        w2[q] = lo && hi ? m2
                : lo     ? __builtin_shufflevector(m2, w2[q], 0, 1, 6, 7)
                         : __builtin_shufflevector(w2[q], m2, 0, 1, 6, 7);
    }
    if (last == 2 * Q - 1)
    {
        *outL = y[Q - 1][2];
        *outR = y[Q - 1][3];
    }
}

// The whole wavefront of RunPairSections for a block at least as long as it, two sections to a vector.
template <int S>
__attribute__((target("avx2"))) void RunWavefrontWide(double* left, double* right, int n,
                                                      const LanePair (&c)[5][S], LanePair* z1, LanePair* z2)
{
    static_assert(S % 2 == 0);
    constexpr int Q = S / 2;
    // Lambdas do not take the function's target, so the halves are joined by hand.
    LaneQuad b0[Q], b1[Q], b2[Q], a1[Q], a2[Q], w1[Q], w2[Q], y[Q];
    for (int q = 0; q < Q; ++q)
    {
        const int lo = 2 * q, hi = 2 * q + 1;
        b0[q] = LaneQuad{c[0][lo][0], c[0][lo][1], c[0][hi][0], c[0][hi][1]};
        b1[q] = LaneQuad{c[1][lo][0], c[1][lo][1], c[1][hi][0], c[1][hi][1]};
        b2[q] = LaneQuad{c[2][lo][0], c[2][lo][1], c[2][hi][0], c[2][hi][1]};
        a1[q] = LaneQuad{c[3][lo][0], c[3][lo][1], c[3][hi][0], c[3][hi][1]};
        a2[q] = LaneQuad{c[4][lo][0], c[4][lo][1], c[4][hi][0], c[4][hi][1]};
        w1[q] = LaneQuad{z1[lo][0], z1[lo][1], z1[hi][0], z1[hi][1]};
        w2[q] = LaneQuad{z2[lo][0], z2[lo][1], z2[hi][0], z2[hi][1]};
        y[q] = LaneQuad{};
    }
    // Section s works from step s to step n - 1 + s.
#pragma GCC unroll 16
    for (int t = 0; t < S - 1; ++t)
        WaveStepWide<Q>(y, w1, w2, b0, b1, b2, a1, a2, left[t], right[t], 0, t, nullptr, nullptr);
    for (int t = S - 1; t < n; ++t)
        WaveStepWide<Q>(y, w1, w2, b0, b1, b2, a1, a2, left[t], right[t], 0, S - 1, left + t - (S - 1),
                        right + t - (S - 1));
#pragma GCC unroll 16
    for (int d = 0; d < S - 1; ++d)
        WaveStepWide<Q>(y, w1, w2, b0, b1, b2, a1, a2, 0.0, 0.0, d + 1, S - 1, left + n + d - (S - 1),
                        right + n + d - (S - 1));
    for (int q = 0; q < Q; ++q)
    {
        z1[2 * q] = LanePair{w1[q][0], w1[q][1]};
        z1[2 * q + 1] = LanePair{w1[q][2], w1[q][3]};
        z2[2 * q] = LanePair{w2[q][0], w2[q][1]};
        z2[2 * q + 1] = LanePair{w2[q][2], w2[q][3]};
    }
}

// RunWavefrontWide where it applies; false where the two-lane form runs. Two sections are bound
// by the latency of their recursions, not by the number of operations, and gain nothing from
// wider vectors.
template <int S>
bool RunWideIfWorthIt(double* left, double* right, int n, const LanePair (&c)[5][S], LanePair* z1,
                      LanePair* z2)
{
    if constexpr (S % 2 == 0 && S >= 4)
    {
        if (!WideLanes()) return false;
        RunWavefrontWide<S>(left, right, n, c, z1, z2);
        return true;
    }
    else
        return false;
}

// Every section of both filters in one pass. The sections run as a wavefront: in step t section s
// works on sample t - s, so within a step no section waits for another (each takes what the
// section before it gave in the previous step), and the chains of dependent multiply-adds of all
// sections overlap. Per lane and per sample the operations are those of RunSection, in the same
// order.
template <int S> void RunPairSections(double* left, double* right, int n, IirState* stL, IirState* stR)
{
    LanePair coef[5][S], z1[S], z2[S];
    LanePair(&b0)[S] = coef[0];
    LanePair(&b1)[S] = coef[1];
    LanePair(&b2)[S] = coef[2];
    LanePair(&a1)[S] = coef[3];
    LanePair(&a2)[S] = coef[4];
    for (int s = 0; s < S; ++s)
    {
        const Section& l = stL->mSec[s];
        const Section& r = stR->mSec[s];
        b0[s] = LanePair{l.b0, r.b0};
        b1[s] = LanePair{l.b1, r.b1};
        b2[s] = LanePair{l.b2, r.b2};
        a1[s] = LanePair{l.a1, r.a1};
        a2[s] = LanePair{l.a2, r.a2};
        z1[s] = LanePair{stL->mZ[2 * s], stR->mZ[2 * s]};
        z2[s] = LanePair{stL->mZ[2 * s + 1], stR->mZ[2 * s + 1]};
    }
    // carry[s]: the sample section s takes next, from section s - 1 in the previous step.
    LanePair carry[S] = {};
    const auto section = [&](int s, int t)
    {
        const LanePair x = s == 0 ? LanePair{left[t], right[t]} : carry[s];
        const LanePair y = b0[s] * x + z1[s];
        z1[s] = b1[s] * x - a1[s] * y + z2[s];
        z2[s] = b2[s] * x - a2[s] * y;
        if (s + 1 < S)
        {
            carry[s + 1] = y;
        }
        else
        {
            left[t - s] = y[0];
            right[t - s] = y[1];
        }
    };
    // Each step runs its sections from the last to the first, so that a carry is taken before
    // it is replaced.
    const int full = n - (S - 1); // steps in which every section has a sample
    if (full <= 0)
    {
        // A block shorter than the wavefront: no step has every section busy.
        for (int t = 0; t < n + S - 1; ++t)
            for (int s = S - 1; s >= 0; --s)
                if (s <= t && t - s < n) section(s, t);
    }
    else if (!RunWideIfWorthIt<S>(left, right, n, coef, z1, z2))
    {
        // Section s starts at step s and ends at step n - 1 + s, so the ramps at both ends have
        // fixed shapes and unroll without a test.
#pragma GCC unroll 16
        for (int t = 0; t < S - 1; ++t)
#pragma GCC unroll 16
            for (int s = t; s >= 0; --s)
                section(s, t);
        for (int t = S - 1; t < n; ++t)
        {
#pragma GCC unroll 12
            for (int s = S - 1; s >= 0; --s)
                section(s, t);
        }
#pragma GCC unroll 16
        for (int d = 0; d < S - 1; ++d)
#pragma GCC unroll 16
            for (int s = S - 1; s > d; --s)
                section(s, n + d);
    }
    for (int s = 0; s < S; ++s)
    {
        stL->mZ[2 * s] = z1[s][0];
        stR->mZ[2 * s] = z1[s][1];
        stL->mZ[2 * s + 1] = z2[s][0];
        stR->mZ[2 * s + 1] = z2[s][1];
    }
}

template <int... S>
bool RunPairOf(int sections, double* left, double* right, int n, IirState* stL, IirState* stR,
               std::integer_sequence<int, S...>)
{
    return ((sections == S + 1 ? (RunPairSections<S + 1>(left, right, n, stL, stR), true) : false) || ...);
}
} // namespace

void IirRunPairChainI(double* left, double* right, int n, IirState* firstL, IirState* firstR, IirState* thenL,
                      IirState* thenR)
{
    if (n <= 0 || firstL == nullptr || firstR == nullptr || thenL == nullptr || thenR == nullptr) return;
    const int head = firstL->mSections, tail = thenL->mSections;
    const bool plain = !firstL->mHalfFirst && !firstR->mHalfFirst && !thenL->mHalfFirst && !thenR->mHalfFirst;
    if (!plain || head != firstR->mSections || tail != thenR->mSections || head + tail > kMaxSections)
    {
        IirRunPairI(left, right, n, firstL, firstR);
        IirRunPairI(left, right, n, thenL, thenR);
        return;
    }
    // One cascade of both filters' sections and memories per side; the first filter's last
    // section hands each sample to the second's first, as the two runs in turn would.
    IirState chainL, chainR;
    const auto join = [head, tail](IirState& chain, const IirState* first, const IirState* then)
    {
        chain.mSections = head + tail;
        chain.mHalfFirst = false;
        chain.mDelayCount = 2 * (head + tail);
        std::copy_n(first->mSec, head, chain.mSec);
        std::copy_n(then->mSec, tail, chain.mSec + head);
        std::copy_n(first->mZ, 2 * head, chain.mZ);
        std::copy_n(then->mZ, 2 * tail, chain.mZ + 2 * head);
    };
    join(chainL, firstL, thenL);
    join(chainR, firstR, thenR);
    RunPairOf(head + tail, left, right, n, &chainL, &chainR, std::make_integer_sequence<int, kMaxSections>{});
    const auto split = [head, tail](const IirState& chain, IirState* first, IirState* then)
    {
        std::copy_n(chain.mZ, 2 * head, first->mZ);
        std::copy_n(chain.mZ + 2 * head, 2 * tail, then->mZ);
    };
    split(chainL, firstL, thenL);
    split(chainR, firstR, thenR);
}

void IirRunPairI(double* left, double* right, int n, IirState* stateL, IirState* stateR)
{
    if (n <= 0 || stateL == nullptr || stateR == nullptr) return;
    const int sections = stateL->mSections;
    if (sections != stateR->mSections || stateL->mHalfFirst != stateR->mHalfFirst ||
        !RunPairOf(sections, left, right, n, stateL, stateR, std::make_integer_sequence<int, kMaxSections>{}))
    {
        IirRunI(left, n, stateL);
        IirRunI(right, n, stateR);
    }
}

bool IirGetSingleSection(IirState* state, IirSingleSection& out)
{
    if (state == nullptr || state->mSections != 1) return false;
    const Section& c = state->mSec[0];
    out = IirSingleSection{c.b0, c.b1, c.b2, c.a1, c.a2, state->mZ};
    return true;
}

void IirSetDelay(IirState* state, const double* delay)
{
    if (state == nullptr || delay == nullptr) return;
    if (!state->mHalfFirst)
    {
        for (int i = 0; i < state->mDelayCount; ++i)
            state->mZ[i] = delay[i];
        return;
    }
    for (int i = 0; i < state->mDelayCount; ++i)
        state->mZ[StateIndex(state, i)] = delay[i];
}

void IirFlushFirstDelay(IirState* state)
{
    double& z = state->mZ[StateIndex(state, 0)];
    z = Undenormal(z);
}

void IirGetDelay(const IirState* state, double* delay)
{
    if (state == nullptr || delay == nullptr) return;
    if (!state->mHalfFirst)
    {
        for (int i = 0; i < state->mDelayCount; ++i)
            delay[i] = state->mZ[i];
        return;
    }
    for (int i = 0; i < state->mDelayCount; ++i)
        delay[i] = state->mZ[StateIndex(state, i)];
}
