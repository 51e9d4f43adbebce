#include "core/Tempo.h"

#include "dsp/TimeBase.h"

#include <algorithm>
#include <cmath>

namespace
{
double NoteFactor(int index, double offValue)
{
    if (index <= 0 || index >= static_cast<int>(kNoteTable.size())) return offValue;
    return kNoteTable[index].factor;
}
} // namespace

double DelayTimeFactor(int index)
{
    return NoteFactor(index, kFreeTimeFactor);
}

double TapTimeFactor(int index)
{
    return NoteFactor(index, 0.0);
}

double DelayTimeScale(double percent)
{
    return std::pow(2.0, percent * 0.01);
}

bool TempoCache::Update(double hostTempo)
{
    if (hostTempo == tempo)
    {
        changed = false;
        return false;
    }
    tempo = hostTempo;
    changed = true;
    Derive();
    return true;
}

void TempoCache::Derive()
{
    const double t = std::max(static_cast<double>(tempo), kMinTempo);
    secPerBeat = 60.0 / t;
    beatsPerSample = 1.0 / (secPerBeat * gSampleRate);
}

TransportCache TransportCache::From(const TransportInfo& info)
{
    return {info.mTempo, info.mQuarterPos, info.mNumerator, info.mDenominator, info.mPlaying};
}

void SongPosition::Advance(const TransportCache& transport, double beatsPerSample)
{
    if (transport.transportRunning)
    {
        mFreeSamples = 0.0;
        mSongPos = std::max(transport.quarterPos, 0.0);
    }
    else
    {
        mFreeSamples += gBlockLen;
        mSongPos = mFreeSamples * beatsPerSample;
    }

    const double beat = std::floor(mSongPos);
    // A numerator below 1 pins the quotient, so such a signature has no bar edges.
    const double q = transport.numerator < 1 ? 1.0 : beat / transport.numerator;
    const int barIndex = static_cast<int>(q);
    const double bar = barIndex;

    mFlags.beatChanged = mPrimed && beat != mBeat;
    mFlags.barChanged = mPrimed && bar != mBar;
    mFlags.oddBar = mFlags.barChanged && (barIndex % 2) != 0;
    mBeat = beat;
    mBar = bar;
    mPrimed = true;
}

void SongPosition::Reset()
{
    mSongPos = 0.0;
    mFreeSamples = 0.0;
    mFlags = {};
    mBeat = 0.0;
    mBar = 0.0;
    mPrimed = false;
}

SlotTiming::SlotTiming()
{
    for (int side = 0; side < 2; ++side)
    {
        freeTime[side] = 0.5;
        syncTime[side] = mCount[side] * timeFactor;
        timeSource[side] = &freeTime[side];
    }
}

void SlotTiming::SetFreeTimeMs(int side, double ms)
{
    freeTime[side] = ms * 0.001;
}

void SlotTiming::SetDelayFactor(int side, int count)
{
    mCount[side] = count;
    syncTime[side] = count * timeFactor;
}

void SlotTiming::SetTimebase(int index)
{
    timeFactor = DelayTimeFactor(index);
    for (int side = 0; side < 2; ++side)
    {
        syncTime[side] = mCount[side] * timeFactor;
        timeSource[side] = Synced() ? &syncTime[side] : &freeTime[side];
    }
}

void SlotTiming::SetTapTimebase(int index)
{
    tapFactor = TapTimeFactor(index);
}

void SlotTiming::SetTapTimeMs(double ms)
{
    tapFreeTime = ms * 0.001;
}

double SlotTiming::Unit(double secPerBeat, double timeScale) const
{
    return gSampleRate * (Synced() ? secPerBeat : 1.0) * timeScale;
}

double SlotTiming::TapSeconds(double secPerBeat) const
{
    return tapFactor == 0.0 ? static_cast<double>(tapFreeTime) : tapFactor * secPerBeat;
}

double SlotTiming::TapStepSamples(double secPerBeat, double timeScale) const
{
    return TapSeconds(secPerBeat) * gSampleRate * timeScale;
}
