#pragma once
// Holder of a direct low-pass whose design does not move with the controls: Butterworth order 4
// at 0.49 of the sample rate when built; the master band limit redesigns it at each sample-rate
// reset (order 12 at 15 kHz). It overrides no slot: the owner designs and runs it.
// Threads: constructor and destructor on the set-up thread (the only allocation); Design while
// audio is held off; RunI on the audio thread.

#include "dsp/Iir.h"
#include "dsp/QLMFilter.h"
#include "dsp/Vec.h"

class IppFixBiquad : public QLMFilter
{
  public:
    explicit IppFixBiquad(bool isRight = false);
    ~IppFixBiquad() override;

    // Butterworth low-pass of the given order (1..12) at relFreq (fraction of the sample rate,
    // below 0.5). The memory is cleared: it belonged to the previous design and rate.
    void Design(int order, double relFreq);
    // Forgets the signal it has seen: the next block passes as if the signal began there.
    void ClearMemory();

    // Filters a block in place, the memory kept in the state between blocks (no copies in and
    // out: the design never moves while it runs).
    void RunI(double* block, int n);
    // The same for a left and a right filter at once, the pair as the lanes of one vector; each
    // side comes out exactly as its own RunI would give it.
    static void RunPairI(IppFixBiquad& left, IppFixBiquad& right, double* blockL, double* blockR, int n);

    IirState* mState = nullptr;
    unsigned char* mWork = nullptr;
    double mTaps[2 * (kIirMaxOrder + 1)] = {};
    int mOrder = 4;
};
