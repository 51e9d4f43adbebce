#pragma once
// dst = base + src[0] x gain[0] + src[1] x gain[1] + ... over one block, added in that order for
// every sample: the sum of many scaled reads of a ring (the pre-echoes of a tap). The loop runs
// with four-lane vectors where the processor has them and with two-lane ones elsewhere; both add
// the same terms in the same order, without fused multiply-adds, so they give the same bits.

#include "dsp/TimeBase.h"

using ScaledSumFn = void (*)(const double* base, const double* const* src, const double* gain, int count,
                             double* dst);

// The form for this processor, chosen once when the library loads.
void SumScaledBlocks(const double* base, const double* const* src, const double* gain, int count,
                     double* dst);

// Each form on its own, so that a test can hold them side by side. The wide one is null where the
// processor lacks it.
ScaledSumFn ScaledSumBaseline();
ScaledSumFn ScaledSumWide();
