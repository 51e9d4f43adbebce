#pragma once
// DC blocker of the master path: y = 0.9999 * y[-1] + x - x[-1], a zero at DC and a pole just
// inside it, so a step decays with a time constant of about 10000 samples.
// RemoveDC works in place on one block and is not a virtual slot; Process stays the base's copy.
// Threads: RemoveDC and Reset on the audio thread or while audio is held off.

#include "dsp/DSPShell.h"

class DCRemover : public DSPShell
{
  public:
    static constexpr double kPole = 0.9999;

    explicit DCRemover(bool isRight = false) : DSPShell(isRight) {}

    void Reset() override;
    // In place on gBlockLen samples.
    void RemoveDC(double* block);

    double mPrev = 0.0;
    double mOut = 0.0;
};
