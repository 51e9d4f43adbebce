#pragma once
// dst = base + src[0] x gain[0] + src[1] x gain[1] + ... over one block, added in that order for
// every sample: the sum of many scaled reads of a ring (the pre-echoes of a tap). Four lanes wide
// where WideLanes() holds, two elsewhere, with the same bits.

void SumScaledBlocks(const double* base, const double* const* src, const double* gain, int count,
                     double* dst);
