#include "core/Tempo.h"
#include "dsp/TimeBase.h"

#include <gtest/gtest.h>

#include <cmath>
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
    struct Row
    {
        double tempo;
        bool changed;
        double secPerBeat;
    };
    for (const Row r : {Row{120.0, false, 0.5}, Row{20.0, true, 2.0}, Row{30.0, true, 2.0},
                        Row{30.0, false, 2.0}, Row{90.0, true, 60.0 / 90.0}})
    {
        EXPECT_EQ(cache.Update(r.tempo), r.changed) << r.tempo;
        EXPECT_EQ(bool(cache.changed), r.changed) << r.tempo;
        EXPECT_DOUBLE_EQ(cache.tempo, r.tempo);
        EXPECT_DOUBLE_EQ(cache.secPerBeat, r.secPerBeat) << r.tempo;
        EXPECT_DOUBLE_EQ(cache.beatsPerSample, 1.0 / r.secPerBeat / 48000.0) << r.tempo;
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
    struct Step
    {
        double pos;
        int numerator;
        bool beat, bar, odd;
    };
    // Bars of 3 beats: bar 1 starts at beat 3, bar 2 at beat 6, bar 3 at beat 9.
    const std::vector<Step> steps{
        {0.0, 3, false, false, false}, {0.5, 3, false, false, false},  {1.0, 3, true, false, false},
        {2.99, 3, true, false, false}, {3.0, 3, true, true, true},     {3.7, 3, false, false, false},
        {6.2, 3, true, true, false},   {6.9, 3, false, false, false},  {9.0, 3, true, true, true},
        {13.0, 3, true, true, false},  {13.5, 3, false, false, false}, {2.0, 3, true, true, false},
        {8.0, 4, true, true, false},   {12.0, 4, true, true, true},    {12.1, 4, false, false, false},
    };
    SongPosition pos;
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        SCOPED_TRACE(i);
        pos.Advance(Playing(steps[i].pos, steps[i].numerator), 0.0);
        EXPECT_EQ(pos.mFlags.beatChanged, steps[i].beat);
        EXPECT_EQ(pos.mFlags.barChanged, steps[i].bar);
        EXPECT_EQ(pos.mFlags.oddBar, steps[i].odd);
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

TEST(NoteTable, FactorsAndFreeEntries)
{
    EXPECT_EQ(DelayTimeFactor(0), 1.0);
    EXPECT_EQ(TapTimeFactor(0), 0.0);
    const double factors[] = {0.5,   0.25,   0.125,     0.0625,    0.75,
                              0.375, 0.1875, 1.0 / 3.0, 1.0 / 6.0, 1.0 / 12.0};
    for (int i = 1; i <= 10; ++i)
    {
        EXPECT_DOUBLE_EQ(DelayTimeFactor(i), factors[i - 1]) << i;
        EXPECT_DOUBLE_EQ(TapTimeFactor(i), factors[i - 1]) << i;
    }
}

// Slot times in samples: free times in seconds, synced ones as count x note value in beats, both
// scaled by 2^(scale / 100); the tap step alike.
TEST(SlotTiming, FreeAndSyncedTimesInSamplesWithTimeScale)
{
    TempoCache tempo;
    tempo.Update(100.0); // 0.6 s a beat
    EXPECT_DOUBLE_EQ(DelayTimeScale(-100.0), 0.5);
    EXPECT_DOUBLE_EQ(DelayTimeScale(50.0), std::sqrt(2.0));
    // {timebase, expected seconds left, right} with 250 / 1000 ms free and counts 3 / 2.
    struct Row
    {
        int timebase;
        double left, right;
    };
    const Row rows[] = {
        {0, 0.25, 1.0}, {5, 3 * 0.75 * 0.6, 2 * 0.75 * 0.6}, {10, 3 * 0.6 / 12, 2 * 0.6 / 12}};
    for (double rate : {44100.0, 96000.0})
        for (double scalePercent : {-100.0, 50.0})
        {
            RateGuard guard(rate);
            const double scale = DelayTimeScale(scalePercent);
            SlotTiming slot;
            slot.SetFreeTimeMs(0, 250.0);
            slot.SetFreeTimeMs(1, 1000.0);
            slot.SetDelayFactor(0, 3);
            slot.SetDelayFactor(1, 2);
            for (const Row& r : rows)
            {
                SCOPED_TRACE(testing::Message()
                             << rate << " Hz, scale " << scalePercent << ", " << r.timebase);
                slot.SetTimebase(r.timebase);
                EXPECT_EQ(slot.Synced(), r.timebase != 0);
                const double unit = slot.Unit(tempo.secPerBeat, scale);
                EXPECT_NEAR(unit * slot.Time(0), r.left * rate * scale, 1e-9);
                EXPECT_NEAR(unit * slot.Time(1), r.right * rate * scale, 1e-9);
            }
            slot.SetTimebase(0); // back to free: the free times come back unchanged
            EXPECT_EQ(slot.Time(1), 1.0);
            slot.SetTapTimeMs(125.0);
            EXPECT_NEAR(slot.TapStepSamples(tempo.secPerBeat, scale), 0.125 * rate * scale, 1e-9);
            slot.SetTapTimebase(2); // 1/16
            EXPECT_NEAR(slot.TapStepSamples(tempo.secPerBeat, scale), 0.25 * 0.6 * rate * scale, 1e-9);
        }
    EXPECT_NEAR(SyncedBeatsToFreeMs(1.0 / 12.0, 0.5), 41.6667, 1e-4);
}
