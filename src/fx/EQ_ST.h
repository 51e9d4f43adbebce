#pragma once
// Stereo master equaliser: two EQ_M of one layout, the left on (mIn1, mOut1), the right on
// (mIn2, mOut2); a null output means in place, and a bypassed channel is skipped. Reset and
// SetParam go to both channels (see EQ_M.h for what each id takes).
// Threads: as EQ_M.

#include "fx/EQ_M.h"

class EQ_ST : public DSPShell
{
  public:
    explicit EQ_ST(int layout);

    void SetParam(int id, double value) override;
    void Reset() override;
    void Process() override;

    EQ_M mLeft;
    EQ_M mRight;
};
