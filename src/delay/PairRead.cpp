#include "delay/PairRead.h"

#include "dsp/WideLanes.h"

namespace pairread
{
namespace
{
// The all-pass recursion of P line pairs, s = u - s * c, then K one-section filters per sample,
// as IirRun runs them: per lane the operations of the separate passes, in the same order. Pairs
// side by side overlap their chains, which set the pace of a read. With `Keep`, each section's
// input goes to in[k] for the filter's history.
template <int K, int P, bool Keep = true> void ReadAndFilter(PairRead* r)
{
    LanePair b0[P][K + 1], b1[P][K + 1], b2[P][K + 1], a1[P][K + 1], a2[P][K + 1], z1[P][K + 1], z2[P][K + 1];
    LanePair a[P];
    // Locals, so that the stores of the loop can't be taken to move them.
    const double *uL[P], *cL[P], *uR[P], *cR[P];
    double *outL[P], *outR[P];
    double(*inL[P])[gBlockLen];
    double(*inR[P])[gBlockLen];
    for (int p = 0; p < P; ++p)
    {
        uL[p] = r[p].uL;
        cL[p] = r[p].cL;
        uR[p] = r[p].uR;
        cR[p] = r[p].cR;
        outL[p] = r[p].outL;
        outR[p] = r[p].outR;
        inL[p] = r[p].inL;
        inR[p] = r[p].inR;
        for (int k = 0; k < K; ++k)
        {
            const IirSingleSection& l = r[p].secL[k];
            const IirSingleSection& q = r[p].secR[k];
            b0[p][k] = LanePair{l.b0, q.b0};
            b1[p][k] = LanePair{l.b1, q.b1};
            b2[p][k] = LanePair{l.b2, q.b2};
            a1[p][k] = LanePair{l.a1, q.a1};
            a2[p][k] = LanePair{l.a2, q.a2};
            z1[p][k] = LanePair{l.z[0], q.z[0]};
            z2[p][k] = LanePair{l.z[1], q.z[1]};
        }
        a[p] = r[p].s;
    }
    for (int i = 0; i < gBlockLen; ++i)
        for (int p = 0; p < P; ++p)
        {
            a[p] = LanePair{uL[p][i], uR[p][i]} - a[p] * LanePair{cL[p][i], cR[p][i]};
            LanePair x = a[p];
            for (int k = 0; k < K; ++k)
            {
                if constexpr (Keep)
                {
                    inL[p][k][i] = x[0];
                    inR[p][k][i] = x[1];
                }
                const LanePair y = b0[p][k] * x + z1[p][k];
                z1[p][k] = b1[p][k] * x - a1[p][k] * y + z2[p][k];
                z2[p][k] = b2[p][k] * x - a2[p][k] * y;
                x = y;
            }
            outL[p][i] = x[0];
            outR[p][i] = x[1];
        }
    for (int p = 0; p < P; ++p)
    {
        r[p].s = a[p];
        for (int k = 0; k < K; ++k)
        {
            r[p].secL[k].z[0] = z1[p][k][0];
            r[p].secR[k].z[0] = z1[p][k][1];
            r[p].secL[k].z[1] = z2[p][k][0];
            r[p].secR[k].z[1] = z2[p][k][1];
        }
    }
}

// ReadAndFilter<K, 2, false> with the lanes {left 1, right 1, left 2, right 2} in one four-lane
// vector: each lane does the same operations in the same order, so the bits are the same, and
// the two pairs' filters fit the registers without spilling.
using Quad = double __attribute__((vector_size(32)));
template <int K> __attribute__((target("avx2"))) void ReadTwoPairsWide(PairRead* r)
{
    Quad b0[K + 1], b1[K + 1], b2[K + 1], a1[K + 1], a2[K + 1], z1[K + 1], z2[K + 1];
    for (int k = 0; k < K; ++k)
    {
        const IirSingleSection* sec[4] = {&r[0].secL[k], &r[0].secR[k], &r[1].secL[k], &r[1].secR[k]};
        for (int lane = 0; lane < 4; ++lane)
        {
            b0[k][lane] = sec[lane]->b0;
            b1[k][lane] = sec[lane]->b1;
            b2[k][lane] = sec[lane]->b2;
            a1[k][lane] = sec[lane]->a1;
            a2[k][lane] = sec[lane]->a2;
            z1[k][lane] = sec[lane]->z[0];
            z2[k][lane] = sec[lane]->z[1];
        }
    }
    const double* const u[4] = {r[0].uL, r[0].uR, r[1].uL, r[1].uR};
    const double* const c[4] = {r[0].cL, r[0].cR, r[1].cL, r[1].cR};
    double* const out[4] = {r[0].outL, r[0].outR, r[1].outL, r[1].outR};
    Quad a = {r[0].s[0], r[0].s[1], r[1].s[0], r[1].s[1]};
    for (int i = 0; i < gBlockLen; ++i)
    {
        a = Quad{u[0][i], u[1][i], u[2][i], u[3][i]} - a * Quad{c[0][i], c[1][i], c[2][i], c[3][i]};
        Quad x = a;
        for (int k = 0; k < K; ++k)
        {
            const Quad y = b0[k] * x + z1[k];
            z1[k] = b1[k] * x - a1[k] * y + z2[k];
            z2[k] = b2[k] * x - a2[k] * y;
            x = y;
        }
        for (int lane = 0; lane < 4; ++lane)
            out[lane][i] = x[lane];
    }
    r[0].s = LanePair{a[0], a[1]};
    r[1].s = LanePair{a[2], a[3]};
    for (int k = 0; k < K; ++k)
    {
        IirSingleSection* sec[4] = {&r[0].secL[k], &r[0].secR[k], &r[1].secL[k], &r[1].secR[k]};
        for (int lane = 0; lane < 4; ++lane)
        {
            sec[lane]->z[0] = z1[k][lane];
            sec[lane]->z[1] = z2[k][lane];
        }
    }
}

} // namespace

// Starts the block of a pair's loop filters where both lines run the same ones.
void BeginLoopFilters(QLMMultiDelay& left, QLMMultiDelay& right, LoopFilters& f)
{
    const bool highL = left.mHighOn && !left.mHighPass.mBypass;
    const bool highR = right.mHighOn && !right.mHighPass.mBypass;
    const bool lowL = left.mLowOn && !left.mLowPass.mBypass;
    const bool lowR = right.mLowOn && !right.mLowPass.mBypass;
    f.matched = highL == highR && lowL == lowR;
    if (!f.matched) return;
    if (highL)
    {
        f.stagesL[f.stages] = &left.mHighPass;
        f.stagesR[f.stages++] = &right.mHighPass;
    }
    if (lowL)
    {
        f.stagesL[f.stages] = &left.mLowPass;
        f.stagesR[f.stages++] = &right.mLowPass;
    }
    f.single = true;
    for (int k = 0; k < f.stages; ++k)
    {
        f.runL[k] = f.stagesL[k]->BeginBlock();
        f.runR[k] = f.stagesR[k]->BeginBlock();
        f.history = f.history || f.stagesL[k]->KeepsHistory() || f.stagesR[k]->KeepsHistory();
        f.single = f.single && f.runL[k] && f.runR[k] && f.stagesL[k]->mBlockLen == gBlockLen &&
                   f.stagesR[k]->mBlockLen == gBlockLen && f.stagesL[k]->SingleSection(f.secL[k]) &&
                   f.stagesR[k]->SingleSection(f.secR[k]);
    }
}

// Ends the block of a matched pair's loop filters after the read, running those its loop did not.
void EndLoopFilters(LoopFilters& f, double* outL, double* outR)
{
    for (int k = 0; k < f.stages; ++k)
    {
        if (f.single)
        {
            f.stagesL[k]->EndBlock(f.inL[k], k + 1 < f.stages ? f.inL[k + 1] : outL);
            f.stagesR[k]->EndBlock(f.inR[k], k + 1 < f.stages ? f.inR[k + 1] : outR);
            continue;
        }
        if (f.runL[k]) f.stagesL[k]->RunBlockInPlace(outL);
        if (f.runR[k]) f.stagesR[k]->RunBlockInPlace(outR);
    }
}

namespace
{
// ReadAndFilter of P pairs with `stages` stages each.
template <int P, bool Keep> void ReadStages(PairRead* r, int stages)
{
    if (stages == 2)
        ReadAndFilter<2, P, Keep>(r);
    else if (stages == 1)
        ReadAndFilter<1, P, Keep>(r);
    else
        ReadAndFilter<0, P, Keep>(r);
}

// A read of P matched pairs whose loops run the same stages.
template <int P> void ReadMatched(PairRead* r, LoopFilters* f)
{
    bool history = false;
    for (int p = 0; p < P; ++p)
    {
        r[p].secL = f[p].secL;
        r[p].secR = f[p].secR;
        r[p].inL = f[p].inL;
        r[p].inR = f[p].inR;
        history = history || f[p].history;
    }
    const int stages = LoopStages(f[0]);
    if constexpr (P == 2)
        if (!history && WideLanes())
        {
            if (stages == 2)
                ReadTwoPairsWide<2>(r);
            else if (stages == 1)
                ReadTwoPairsWide<1>(r);
            else
                ReadTwoPairsWide<0>(r);
            return;
        }
    if (history)
        ReadStages<P, true>(r, stages);
    else
        ReadStages<P, false>(r, stages);
}
} // namespace

// One pair's read on its own: stages both lines run inside its loop, other filters one pass each
// after it.
void ReadPairAlone(PairRead& r, LoopFilters& f, QLMMultiDelay& left, QLMMultiDelay& right)
{
    if (f.matched)
    {
        ReadMatched<1>(&r, &f);
        return;
    }
    ReadAndFilter<0, 1>(&r);
    double* outL = r.outL;
    double* outR = r.outR;
    const auto filterPair = [outL, outR](IppBiquad& fl, bool onL, IppBiquad& fr, bool onR)
    {
        const bool runL = onL && !fl.mBypass;
        const bool runR = onR && !fr.mBypass;
        if (runL)
        {
            fl.mIn1 = outL;
            fl.mOut1 = outL;
        }
        if (runR)
        {
            fr.mIn1 = outR;
            fr.mOut1 = outR;
        }
        if (runL && runR)
            IppBiquad::ProcessPair(fl, fr);
        else if (runL)
            fl.Process();
        else if (runR)
            fr.Process();
    };
    filterPair(left.mHighPass, left.mHighOn, right.mHighPass, right.mHighOn);
    filterPair(left.mLowPass, left.mLowOn, right.mLowPass, right.mLowOn);
}

void ReadUnfiltered(PairRead* r, int pairs)
{
    if (pairs == 2)
        ReadAndFilter<0, 2>(r);
    else
        ReadAndFilter<0, 1>(r);
}

void ReadTwoMatched(PairRead* r, LoopFilters* f)
{
    ReadMatched<2>(r, f);
}
} // namespace pairread
