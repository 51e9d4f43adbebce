#pragma once
// One-pole filter in single precision with explicit coefficients: y = mIn * x - mFb * mState.
// mFb keeps its sign, so a negative mFb is a low-pass with DC gain mIn / (1 + mFb). The owner sets
// the coefficients and runs Run (or the fields) in its own sample loop; no virtual call per sample.
// Clear zeroes the state and keeps the coefficients.

#include "dsp/DSPShell.h"

class MLPF1a : public Module
{
  public:
    void Clear() override { mState = 0.0f; }

    float Run(float x)
    {
        mState = mIn * x - mFb * mState;
        return mState;
    }

    float mState = 0.0f; // previous output
    float mIn = 1.0f;    // input gain b
    float mFb = 0.0f;    // feedback a, with its sign
};
