#include "core/Tempo.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace
{
TransportCache Playing(double quarterPos, int numerator = 4)
{
    TransportCache t;
    t.quarterPos = quarterPos;
    t.numerator = numerator;
    t.transportRunning = true;
    return t;
}

struct RateGuard
{
    explicit RateGuard(double rate) { SetTimeBase(rate); }
    ~RateGuard() { SetTimeBase(44100.0); }
};
} // namespace

TEST(TempoCache, SlowTemposClampOnlyTheDerivedValues)
{
    RateGuard rate(48000.0);
    TempoCache cache;
    // {host tempo, changed, seconds a beat}: below 30 BPM the derived values stop at 2 s a beat.
    for (const auto& [tempo, changed, secPerBeat] : {std::tuple{120.0, false, 0.5},
                                                     {20.0, true, 2.0},
                                                     {30.0, true, 2.0},
                                                     {30.0, false, 2.0},
                                                     {90.0, true, 60.0 / 90.0}})
    {
        EXPECT_EQ(cache.Update(tempo), changed) << tempo;
        EXPECT_EQ(bool(cache.changed), changed) << tempo;
        EXPECT_DOUBLE_EQ(cache.secPerBeat, secPerBeat) << tempo;
        EXPECT_DOUBLE_EQ(cache.beatsPerSample, 1.0 / secPerBeat / 48000.0) << tempo;
    }
    // A new sample rate re-derives the per-sample value only.
    SetTimeBase(96000.0);
    cache.Derive();
    EXPECT_DOUBLE_EQ(cache.beatsPerSample, 90.0 / 60.0 / 96000.0);
}

// Playing, the host's position counts (a negative one as zero); stopped, the position runs from 0
// at tempo, 32 samples a block, and each stop restarts it.
TEST(SongPosition, HostPositionWhilePlayingAndTempoCountWhileStopped)
{
    RateGuard rate(48000.0);
    TempoCache tempo;
    tempo.Update(90.0);
    SongPosition pos;
    pos.Advance(Playing(-3.5), tempo.beatsPerSample);
    EXPECT_EQ(pos.mSongPos, 0.0);
    pos.Advance(Playing(40.0), tempo.beatsPerSample);
    EXPECT_EQ(pos.mSongPos, 40.0);
    for (int round = 0; round < 2; ++round)
    {
        for (int block = 1; block <= 3000; ++block)
        {
            pos.Advance(TransportCache{}, tempo.beatsPerSample);
            ASSERT_NEAR(pos.mSongPos, block * 32.0 * 1.5 / 48000.0, 1e-12) << block;
        }
        // 3000 blocks of 32 samples are 2 s: three beats at 90 BPM.
        EXPECT_NEAR(pos.mSongPos, 3.0, 1e-12);
        pos.Advance(Playing(8.0), tempo.beatsPerSample);
        EXPECT_EQ(pos.mFreeSamples, 0.0);
    }
}

TEST(SongPosition, BeatBarAndOddBarEdges)
{
    // {host position, numerator, beat, bar, odd bar}. Bars of 3 beats: bar 1 starts at beat 3, bar 2
    // at beat 6, bar 3 at beat 9.
    const std::vector<std::tuple<double, int, bool, bool, bool>> steps{
        {0.0, 3, false, false, false}, {0.5, 3, false, false, false},  {1.0, 3, true, false, false},
        {2.99, 3, true, false, false}, {3.0, 3, true, true, true},     {3.7, 3, false, false, false},
        {6.2, 3, true, true, false},   {6.9, 3, false, false, false},  {9.0, 3, true, true, true},
        {13.0, 3, true, true, false},  {13.5, 3, false, false, false}, {2.0, 3, true, true, false},
        {8.0, 4, true, true, false},   {12.0, 4, true, true, true},    {12.1, 4, false, false, false},
    };
    SongPosition pos;
    for (const auto& [at, numerator, beat, bar, odd] : steps)
    {
        pos.Advance(Playing(at, numerator), 0.0);
        EXPECT_EQ(pos.mFlags.beatChanged, beat) << at;
        EXPECT_EQ(pos.mFlags.barChanged, bar) << at;
        EXPECT_EQ(pos.mFlags.oddBar, odd) << at;
    }
    // Without a numerator there are beats but no bars.
    SongPosition free;
    int beats = 0, bars = 0;
    for (int i = 0; i < 256; ++i)
    {
        free.Advance(Playing(i * 0.25, 0), 0.0);
        beats += free.mFlags.beatChanged;
        bars += free.mFlags.barChanged;
    }
    EXPECT_EQ(beats, 63);
    EXPECT_EQ(bars, 0);
}

// Slot times in samples: free times in seconds, synced ones as count x note value in beats, both
// scaled by 2^(scale / 100); the tap step alike, and leaving sync gives the free times back.
TEST(SlotTiming, NoteValuesFreeTimesTimeScaleAndTapStep)
{
    RateGuard guard(96000.0);
    TempoCache tempo;
    tempo.Update(100.0); // 0.6 s a beat
    const double scale = DelayTimeScale(-100.0);
    EXPECT_DOUBLE_EQ(scale, 0.5);
    // Beats of each note value: 1/8 .. 1/64, dotted, triplets.
    const double beats[] = {0.5, 0.25, 0.125, 0.0625, 0.75, 0.375, 0.1875, 1.0 / 3.0, 1.0 / 6.0, 1.0 / 12.0};
    SlotTiming slot;
    slot.SetFreeTimeMs(0, 250.0);
    slot.SetFreeTimeMs(1, 1000.0);
    slot.SetDelayFactor(0, 3);
    slot.SetDelayFactor(1, 2);
    slot.SetTapTimeMs(125.0);
    for (int k = 1; k <= 11; ++k)
    {
        const int timebase = k % 11; // free last, after the synced ones
        const double beat = timebase == 0 ? 0.0 : beats[timebase - 1] * 0.6;
        slot.SetTimebase(timebase);
        slot.SetTapTimebase(timebase);
        EXPECT_EQ(slot.Synced(), timebase != 0);
        const double unit = slot.Unit(tempo.secPerBeat, scale), samples = 96000.0 * scale;
        EXPECT_NEAR(unit * slot.Time(0), (timebase == 0 ? 0.25 : 3 * beat) * samples, 1e-9) << timebase;
        EXPECT_NEAR(unit * slot.Time(1), (timebase == 0 ? 1.0 : 2 * beat) * samples, 1e-9) << timebase;
        EXPECT_NEAR(slot.TapStepSamples(tempo.secPerBeat, scale), (timebase == 0 ? 0.125 : beat) * samples,
                    1e-9)
            << timebase;
    }
}
