#pragma once
// The all-pass read of FORWARD and TAPPED line pairs as lanes of one vector, with the loop filters
// of a FORWARD pair inside the read's own loop: a read's pace is set by its recursions, which
// overlap when they run side by side. Each side comes out exactly as its own read gives it.
// Audio thread; no allocation.

#include "delay/QLMMultiDelay.h"
#include "dsp/LanePair.h"

namespace pairread
{
// One line pair's block for ReadAndFilter: the all-pass terms and state of each side, its
// sections, and where the sections' inputs (their history) and the last one's output go.
struct PairRead
{
    const double* uL;
    const double* cL;
    const double* uR;
    const double* cR;
    LanePair s;
    double* outL;
    double* outR;
    IirSingleSection* secL = nullptr;
    IirSingleSection* secR = nullptr;
    double (*inL)[gBlockLen] = nullptr;
    double (*inR)[gBlockLen] = nullptr;
};

// A pair's read of terms u and c from the recursion states of its two sides into outL and outR.
inline PairRead StartRead(const double* uL, const double* cL, const double* uR, const double* cR,
                          double stateL, double stateR, double* outL, double* outR)
{
    return PairRead{uL, cL, uR, cR, LanePair{stateL, stateR}, outL, outR};
}

// The loop filters of a FORWARD line pair for one block, high-pass first. `matched`: both lines
// run the same stages; `single`: every stage is one section that the read's loop can run.
struct LoopFilters
{
    IppBiquad* stagesL[2] = {nullptr, nullptr};
    IppBiquad* stagesR[2] = {nullptr, nullptr};
    int stages = 0;
    bool runL[2] = {false, false};
    bool runR[2] = {false, false};
    IirSingleSection secL[2], secR[2];
    bool matched = false;
    bool single = false;
    bool history = false; // some stage keeps its input
    double inL[2][gBlockLen], inR[2][gBlockLen];
};

// Starts the block of a pair's loop filters where both lines run the same ones.
void BeginLoopFilters(QLMMultiDelay& left, QLMMultiDelay& right, LoopFilters& f);
// The stages a read's loop can run for a matched pair: 0 when they run after it.
inline int LoopStages(const LoopFilters& f)
{
    return f.single ? f.stages : 0;
}
// Ends the block of a matched pair's loop filters after the read, running those its loop did not.
void EndLoopFilters(LoopFilters& f, double* outL, double* outR);
// The all-pass recursions of `pairs` (1 or 2) pairs without filters, side by side.
void ReadUnfiltered(PairRead* r, int pairs);
// A read of two matched pairs (r[0], f[0] and r[1], f[1]) whose loops run the same stages, side
// by side.
void ReadTwoMatched(PairRead* r, LoopFilters* f);
// One pair's read on its own: stages both lines run inside its loop, other filters one pass each
// after it.
void ReadPairAlone(PairRead& r, LoopFilters& f, QLMMultiDelay& left, QLMMultiDelay& right);
} // namespace pairread
