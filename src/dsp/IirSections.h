#pragma once
// Internal to the recursive filter core (Iir.cpp, IirFactor.cpp, IirDesign.cpp): the sections a
// direct filter runs as, and the two ways to get them, by factoring the taps or from roots that a
// design knows exactly. Not for use outside the core.

#include "dsp/Iir.h"

// One second-order section, normalised so that a0 = 1.
struct IirSection
{
    double b0, b1, b2, a1, a2;
};

// A root in z; `infinite` stands for a factor 1/z (a delay).
struct IirRoot
{
    long double re, im;
    bool infinite;
};

// Sections of the direct filter `taps` of `order` (0..kIirMaxOrder): at most kIirMaxOrder of them,
// the first of first order when halfFirst (an odd order). False for taps that give no usable
// filter (a0 = 0, a value that is not finite, a numerator of zeros).
bool IirSectionsFromTaps(const double* taps, int order, IirSection* out, int& sections, bool& halfFirst);

// The same from `order` poles and `order` zeros (conjugate pairs given both ways) and the gain
// b0 / a0, in the form gain * prod(1 - q/z) / prod(1 - p/z).
void IirSectionsFromRoots(const IirRoot* poles, const IirRoot* zeros, int order, long double gain,
                          IirSection* out, int& sections, bool& halfFirst);

// Leaves a design's roots, as sections, in the working memory beside a copy of the taps it wrote;
// IirInit takes them when it is handed the very same taps. work: as for IirInit (sized by
// IirStateSize); null stores nothing.
void IirStoreDesign(unsigned char* work, const double* taps, int order, const IirRoot* poles,
                    const IirRoot* zeros, long double gain);
