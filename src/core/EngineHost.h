#pragma once
// What the engine needs of its host, and nothing more: the tempo once per host call and the
// transport once per block. The plug-in base implements it from the host's process context; tests
// and tools can stand in for it without a plug-in binding.
// Threads: both calls come from the audio thread, inside processing.

// Host transport for the current call.
struct TransportInfo
{
    double mSamplePos = 0.0;
    double mTempo = 120.0;
    double mQuarterPos = 0.0;   // position in quarter notes
    double mLastBarStart = 0.0; // in quarter notes
    double mCycleStart = 0.0;
    double mCycleEnd = 0.0;
    int mNumerator = 4;
    int mDenominator = 4;
    bool mPlaying = false;
    bool mCycleActive = false;
};

class IEngineHost
{
  public:
    virtual ~IEngineHost() = default;
    // Beats per minute; 120 when the host tells none.
    virtual double GetTempo() = 0;
    // Position, bar, loop and play state; the defaults when the host tells none.
    virtual void GetTime(TransportInfo& info) = 0;
};
