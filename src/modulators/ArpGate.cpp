#include "modulators/ArpGate.h"

#include "dsp/Vec.h"
#include "modulators/StepPresets.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
// Steps per quarter note of the note-value timebases: straight, dotted, triplet.
constexpr std::array<double, ArpGate::kFirstClockTimebase> kTimebaseRates{
    1.0, 2.0, 4.0, 8.0, 16.0, 2.0 / 3.0, 4.0 / 3.0, 8.0 / 3.0, 16.0 / 3.0, 1.5, 3.0, 6.0};

// Glide times are stretched by half again before they become a smoother time.
constexpr double kGlideStretch = 1.5;

// a mod m into 0..m-1, also for a position before the song start.
int WrapInto(int a, int m)
{
    const int r = static_cast<int>(std::fmod(static_cast<double>(a), static_cast<double>(m)));
    return r < 0 ? r + m : r;
}
} // namespace

ArpGate::ArpGate()
{
    for (auto& level : mStepLevel)
        level = 0.0;
    setGlide(0.0);
}

double ArpGate::TimebaseRate(int index)
{
    if (index < 0 || index >= kFirstClockTimebase) return 0.0;
    return kTimebaseRates[static_cast<std::size_t>(index)];
}

void ArpGate::setStepLevel(int step, double value)
{
    if (step >= 0 && step < kMaxSteps) mStepLevel[step] = value;
}

void ArpGate::setLength(int n)
{
    mLength = std::clamp(n, 1, kMaxSteps);
}

void ArpGate::setDirection(int d)
{
    mDirection = std::clamp(d, static_cast<int>(kForward), static_cast<int>(kRandom));
}

void ArpGate::setRate(double stepsPerBeat)
{
    mRate = stepsPerBeat;
}

void ArpGate::setClock(const std::uint8_t* flag)
{
    mClock = flag;
}

void ArpGate::setSyncMode(int m)
{
    mSyncMode = m != 0 ? 1 : 0;
}

void ArpGate::setDepth(double d)
{
    mDepth = d;
}

void ArpGate::setGlide(double ms)
{
    mGlideMs = std::max(0.0, ms);
    mGlideChanged = true;
}

void ArpGate::setPolarity(int p)
{
    switch (p)
    {
    case kNegative:
        mPolScale = -1.0;
        mPolOffset = 0.0;
        break;
    case kBipolar:
        mPolScale = 2.0;
        mPolOffset = -1.0;
        break;
    default:
        p = kPositive;
        mPolScale = 1.0;
        mPolOffset = 0.0;
        break;
    }
    mPolarity = p;
}

void ArpGate::setTimebase(int index, const std::uint8_t* clockFlag)
{
    mTimebase = std::clamp(index, 0, kNumTimebases - 1);
    if (mTimebase < kFirstClockTimebase)
    {
        setRate(TimebaseRate(mTimebase));
        setClock(nullptr);
    }
    else
    {
        setClock(clockFlag);
    }
    deriveSync();
}

void ArpGate::setSyncSwitch(bool on)
{
    mSyncSwitch = on;
    deriveSync();
}

void ArpGate::deriveSync()
{
    // A clocked gate always runs free.
    setSyncMode(mSyncSwitch && mTimebase < kFirstClockTimebase ? 1 : 0);
}

void ArpGate::Reset()
{
    DSPShell::Reset();
    mPhaseAcc = 0.0;
    mGlideChanged = true;
}

int ArpGate::nextRandomStep(int length)
{
    const float r = static_cast<float>(NextRand15(mRandState)) / static_cast<float>(kRand15Max);
    // r may be exactly 1: keep the step inside the sequence.
    return std::min(static_cast<int>(static_cast<float>(length) * r), length - 1);
}

void ArpGate::setStepFromCounter(int length)
{
    switch (mDirection)
    {
    case kBackward:
        if (mCounter >= length) mCounter = 0;
        mStep = length - mCounter - 1;
        break;
    case kForwardBackward:
        // Runs up and back down, so both end steps sound twice in a row.
        if (mCounter >= 2 * length) mCounter = 0;
        mStep = mCounter < length ? mCounter : 2 * length - mCounter - 1;
        break;
    case kRandom:
        // The counter is left to grow: every tick draws a step, possibly the same one.
        mStep = nextRandomStep(length);
        break;
    default:
        if (mCounter >= length) mCounter = 0;
        mStep = mCounter;
        break;
    }
}

void ArpGate::processBlock(double beatPosition, float tempo)
{
    if (mGlideChanged)
    {
        mGlideChanged = false;
        mGlide.SetTime(mGlideMs * kGlideStretch);
    }
    const int length = mLength;
    const int direction = mDirection;
    const int previousStep = mStep;

    if (mSyncMode == 0)
    {
        const std::uint8_t* clock = mClock;
        if (clock == nullptr)
        {
            mPhaseAcc += mRate * gBlockLen * static_cast<double>(tempo) / gSampleRate / 60.0;
            mCounter += static_cast<int>(mPhaseAcc);
        }
        else
        {
            const bool high = *clock != 0;
            if (high && mLastClock < 1.0) ++mCounter;
            mLastClock = high ? 1.0 : 0.0;
        }
        if (mCounter != mLastCounter) setStepFromCounter(length);
        mLastCounter = mCounter;
    }
    else
    {
        mCounter = static_cast<int>(mRate * beatPosition);
        if (mCounter != mLastCounter)
        {
            // Wrap first, so that a change of length moves the step at once.
            if (direction == kForwardBackward)
                mCounter = WrapInto(mCounter, 2 * length);
            else if (direction != kRandom)
                mCounter = WrapInto(mCounter, length);
            setStepFromCounter(length);
        }
        mLastCounter = mCounter;
    }
    if (mPhaseAcc >= 1.0) mPhaseAcc -= 1.0;

    const double level = mStepLevel[mStep];
    const double v = level * mPolScale + mPolOffset;
    const double* w = mGlide.RunD(v, gBlockLen);
    VecScale(w, mDepth, mOut, gBlockLen);

    mLevelPulse = (mPrevOut < 1.0 && level >= 1.0) ? 1 : 0;
    mStartPulse = (previousStep != 0 && mStep == 0) ? 1 : 0;
    mPrevOut = std::clamp(mOut[0], -1.0, 1.0);
}
