#pragma once
// Recursive filters whose only signal memory is the caller's delay array, so that a filter can be
// redesigned at a block boundary and go on with its old memory: design taps, IirInit (or
// IirInitBiquad) into the same working memory with the same delay array, IirSetDelay, IirRun,
// IirGetDelay. The caller owns taps, delay and work; an IirState lives inside work and has no
// destructor of its own.
//
// Cascade: six taps per section, b0 b1 b2 a0 a1 a2 (a0 need not be 1), two delay doubles per section.
// Direct filter of order N: b0..bN then a0..aN, N delay doubles. Zeros in delay mean silence.

inline constexpr int kIirMaxOrder = 12;

struct IirState;

void IirStateSize(int order, int* sizeOut);
void IirBiquadStateSize(int sections, int* sizeOut);
void IirInit(IirState** stateOut, const double* taps, int order, const double* delay, unsigned char* work);
void IirInitBiquad(IirState** stateOut, const double* taps, int sections, const double* delay,
                   unsigned char* work);
void IirRun(const double* src, double* dst, int n, IirState* state);
void IirRunI(double* srcDst, int n, IirState* state);
// A left and a right filter over their blocks in place, the pair as the two lanes of one vector,
// each lane rounding exactly as IirRunI would. Filters of different structure (section count,
// first-order start) fall back to IirRunI one after the other.
void IirRunPairI(double* left, double* right, int n, IirState* stateL, IirState* stateR);
// IirRunPairI with `first` and then with `then`, as one cascade of both filters' sections, whose
// recursions then overlap; the same bits as the two runs in turn.
void IirRunPairChainI(double* left, double* right, int n, IirState* firstL, IirState* firstR, IirState* thenL,
                      IirState* thenR);
// The one second-order section (a0 = 1) of a filter that runs as exactly one, and its two
// states, for a caller that runs it inside a loop of its own with the operations of IirRun:
// y = b0 x + z[0], z[0] = b1 x - a1 y + z[1], z[1] = b2 x - a2 y. False for any other filter.
struct IirSingleSection
{
    double b0, b1, b2, a1, a2;
    double* z;
};
bool IirGetSingleSection(IirState* state, IirSingleSection& out);
void IirSetDelay(IirState* state, const double* delay);
void IirGetDelay(const IirState* state, double* delay);
// Flushes a denormal first delay double to zero, in the state itself: for a holder that keeps its
// memory there between blocks instead of in a delay array.
void IirFlushFirstDelay(IirState* state);

// Butterworth (kind 0, ripple ignored) or Chebyshev type I (kind 1, ripple = passband ripple in dB)
// by an analogue prototype and the bilinear transform with pre-warping. relFreq is the corner as a
// fraction of the sample rate, in 0..0.5; order 1..12. Fills the 2 * (order + 1) taps of a direct filter.
void IirDesignLowpass(double relFreq, double ripple, int order, double* taps, int kind, unsigned char* work);
void IirDesignHighpass(double relFreq, double ripple, int order, double* taps, int kind, unsigned char* work);
