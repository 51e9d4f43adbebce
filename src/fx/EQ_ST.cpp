#include "fx/EQ_ST.h"

EQ_ST::EQ_ST(int layout) : DSPShell(false), mLeft(layout, false), mRight(layout, true) {}

void EQ_ST::SetParam(int id, double value)
{
    mLeft.SetParam(id, value);
    mRight.SetParam(id, value);
}

void EQ_ST::Reset()
{
    DSPShell::Reset();
    mLeft.Reset();
    mRight.Reset();
}

void EQ_ST::Process()
{
    if (!mLeft.mBypass)
    {
        mLeft.mBlockLen = mBlockLen;
        mLeft.mIn1 = mIn1;
        mLeft.mOut1 = mOut1;
        mLeft.Process();
    }
    if (!mRight.mBypass)
    {
        mRight.mBlockLen = mBlockLen;
        mRight.mIn1 = mIn2;
        mRight.mOut1 = mOut2;
        mRight.Process();
    }
}
