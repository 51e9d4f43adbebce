#pragma once
// Host tempo and position turned into the values that delay times and synced modulators use, and
// the delay time of one slot, held in seconds when free and in beats when synced.
//
// Threads: TempoCache::Update and SongPosition::Advance run on the audio thread (once per host call
// and once per internal block); their values may be read anywhere. SlotTiming setters come from the
// parameter path; its readers run on the audio thread.

#include "core/EngineHost.h"
#include "dsp/Relaxed.h"

#include <array>

// Below this tempo the derived values stop following the host.
inline constexpr double kMinTempo = 30.0;

// One row of the note table of "Timebase " and "TapTimebase ": label and length in quarter notes.
struct NoteValue
{
    const char* label;
    double factor;
};

// Index 0 is OFF, the free time; its factor depends on the list (see the two functions below).
inline constexpr std::array<NoteValue, 11> kNoteTable{{
    {"OFF", 0.0},
    {"1/8", 0.5},
    {"1/16", 0.25},
    {"1/32", 0.125},
    {"1/64", 0.0625},
    {"1/8d", 0.75},
    {"1/16d", 0.375},
    {"1/32d", 0.1875},
    {"1/8t", 1.0 / 3.0},
    {"1/16t", 1.0 / 6.0},
    {"1/32t", 1.0 / 12.0},
}};

// A delay time factor of exactly 1.0 means free: no note value has that length.
inline constexpr double kFreeTimeFactor = 1.0;
static_assert(
    []
    {
        for (std::size_t i = 1; i < kNoteTable.size(); ++i)
            if (kNoteTable[i].factor == kFreeTimeFactor || kNoteTable[i].factor <= 0.0) return false;
        return true;
    }());

// "Timebase " index to `timeFactor`: 1.0 for OFF.
double DelayTimeFactor(int index);
// "TapTimebase " index to `tapFactor`: 0 for OFF.
double TapTimeFactor(int index);

// "Delay Time Scale" in percent to its factor, 2^(value / 100).
double DelayTimeScale(double percent);
// A synced time in beats as free milliseconds at the present tempo.
inline double SyncedBeatsToFreeMs(double beats, double secPerBeat)
{
    return beats * secPerBeat * 1000.0;
}

// Tempo and the values derived from it. The stored tempo is the host's; only the derived values
// are held at 30 beats a minute and above.
struct TempoCache
{
    TempoCache() { Derive(); }

    // Once per host call: stores a new tempo and re-derives; sets `changed` only when it differs.
    bool Update(double hostTempo);
    // Re-derives at the present sample rate without touching `changed`.
    void Derive();

    Relaxed<double> tempo{120.0};
    Relaxed<double> secPerBeat{0.5};
    Relaxed<double> beatsPerSample{0.0};
    Relaxed<bool> changed{false};
};

// The transport of the present host call.
struct TransportCache
{
    static TransportCache From(const TransportInfo& info);

    double tempo = 120.0;
    double quarterPos = 0.0;
    int numerator = 4;
    int denominator = 4;
    bool transportRunning = false;
};

// Beat and bar edges of the last block.
struct BeatFlags
{
    bool beatChanged = false;
    bool barChanged = false;
    bool oddBar = false;
};

// Song position in quarter notes: the host's while it plays, otherwise counted from 0 at tempo in
// 32-sample blocks, so that synced modulators run on a stopped host. The first block after
// construction or Reset only records beat and bar: an edge needs a previous value.
class SongPosition
{
  public:
    void Advance(const TransportCache& transport, double beatsPerSample);
    void Reset();

    double mSongPos = 0.0;
    double mFreeSamples = 0.0;
    BeatFlags mFlags;

  private:
    double mBeat = 0.0;
    double mBar = 0.0;
    bool mPrimed = false;
};

// Delay and tap times of one slot. Free times are seconds, synced times beats ("DelayFactor"
// count x note factor); `timeSource` points at whichever pair the "Timebase " selects.
class SlotTiming
{
  public:
    // Starts free at the catalogue's default times; the engine applies every parameter at start.
    SlotTiming();
    SlotTiming(const SlotTiming&) = delete;
    SlotTiming& operator=(const SlotTiming&) = delete;

    // Parameter path.
    void SetFreeTimeMs(int side, double ms);
    void SetDelayFactor(int side, int count);
    void SetTimebase(int index);
    void SetTapTimebase(int index);
    void SetTapTimeMs(double ms);

    // Audio thread.
    bool Synced() const { return timeFactor != kFreeTimeFactor; }
    // Seconds when free, beats when synced.
    double Time(int side) const { return *timeSource[side].Load(); }
    // Samples per unit of Time(): gSampleRate, x secPerBeat when synced, x the time scale.
    double Unit(double secPerBeat, double timeScale) const;
    // Seconds of one tap step.
    double TapSeconds(double secPerBeat) const;
    double TapStepSamples(double secPerBeat, double timeScale) const;

    Relaxed<double> timeFactor{kFreeTimeFactor};
    std::array<Relaxed<double>, 2> syncTime{};
    std::array<Relaxed<double>, 2> freeTime{};
    std::array<Relaxed<const Relaxed<double>*>, 2> timeSource{};
    Relaxed<double> tapFactor{0.0};
    Relaxed<double> tapFreeTime{0.05};

  private:
    std::array<int, 2> mCount{4, 4};
};
