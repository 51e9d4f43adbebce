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

TransportCache Stopped()
{
    TransportCache t;
    t.quarterPos = 123.0; // ignored while stopped
    return t;
}
} // namespace

TEST(TempoCache, SlowTemposClampOnlyTheDerivedValues)
{
    SetTimeBase(48000.0);
    TempoCache cache;
    EXPECT_DOUBLE_EQ(cache.secPerBeat, 0.5);
    EXPECT_DOUBLE_EQ(cache.beatsPerSample, 1.0 / 24000.0);
    EXPECT_FALSE(cache.Update(120.0));
    EXPECT_FALSE(cache.changed);

    EXPECT_TRUE(cache.Update(20.0));
    EXPECT_TRUE(cache.changed);
    EXPECT_DOUBLE_EQ(cache.tempo, 20.0);
    EXPECT_DOUBLE_EQ(cache.secPerBeat, 2.0);
    EXPECT_DOUBLE_EQ(cache.beatsPerSample, 1.0 / 96000.0);
    EXPECT_TRUE(cache.Update(30.0));
    EXPECT_DOUBLE_EQ(cache.secPerBeat, 2.0);
    EXPECT_FALSE(cache.Update(30.0));
    EXPECT_FALSE(cache.changed);

    EXPECT_TRUE(cache.Update(90.0));
    EXPECT_DOUBLE_EQ(cache.secPerBeat, 60.0 / 90.0);
    // A new sample rate re-derives the per-sample value only.
    SetTimeBase(96000.0);
    cache.Derive();
    EXPECT_DOUBLE_EQ(cache.beatsPerSample, 90.0 / 60.0 / 96000.0);
    SetTimeBase(44100.0);
}

TEST(SongPosition, HostPositionWhilePlayingNegativeCountsAsZero)
{
    SetTimeBase(44100.0);
    SongPosition pos;
    pos.Advance(Playing(-3.5), 0.0);
    EXPECT_EQ(pos.mSongPos, 0.0);
    pos.Advance(Playing(17.25), 0.0);
    EXPECT_EQ(pos.mSongPos, 17.25);
    EXPECT_EQ(pos.mFreeSamples, 0.0);
}

// Stopped, the position runs from 0 at tempo, 32 samples a block; each stop restarts it.
TEST(SongPosition, StoppedTransportCountsAtTempoFromZero)
{
    SetTimeBase(48000.0);
    TempoCache tempo;
    tempo.Update(90.0);
    SongPosition pos;
    pos.Advance(Playing(40.0), tempo.beatsPerSample);
    for (int block = 1; block <= 3000; ++block)
    {
        pos.Advance(Stopped(), tempo.beatsPerSample);
        ASSERT_NEAR(pos.mSongPos, block * 32.0 * 1.5 / 48000.0, 1e-12) << block;
    }
    // 3000 blocks of 32 samples are 2 s: three beats at 90 BPM.
    EXPECT_NEAR(pos.mSongPos, 3.0, 1e-12);

    pos.Advance(Playing(8.0), tempo.beatsPerSample);
    EXPECT_EQ(pos.mFreeSamples, 0.0);
    pos.Advance(Stopped(), tempo.beatsPerSample);
    EXPECT_NEAR(pos.mSongPos, 32.0 * 1.5 / 48000.0, 1e-15);
    SetTimeBase(44100.0);
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
        {0.0, 3, false, false, false},
        {0.5, 3, false, false, false},
        {1.0, 3, true, false, false},
        {2.99, 3, true, false, false},
        {3.0, 3, true, true, true},
        {3.7, 3, false, false, false},
        {6.2, 3, true, true, false},
        {6.9, 3, false, false, false},
        {9.0, 3, true, true, true},
        {13.0, 3, true, true, false},
        {13.5, 3, false, false, false},
        {2.0, 3, true, true, false},
        // Four beats a bar from here: beat 8 is bar 2.
        {8.0, 4, true, true, false},
        {12.0, 4, true, true, true},
        {12.1, 4, false, false, false},
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
}

TEST(SongPosition, NumeratorZeroGivesNoBarChanges)
{
    SongPosition pos;
    int beats = 0;
    int bars = 0;
    for (int i = 0; i < 256; ++i)
    {
        pos.Advance(Playing(i * 0.25, 0), 0.0);
        beats += pos.mFlags.beatChanged;
        bars += pos.mFlags.barChanged;
    }
    EXPECT_EQ(beats, 63);
    EXPECT_EQ(bars, 0);
    // The same run in 4/4 has 15 bar edges.
    SongPosition four;
    bars = 0;
    for (int i = 0; i < 256; ++i)
    {
        four.Advance(Playing(i * 0.25, 4), 0.0);
        bars += four.mFlags.barChanged;
    }
    EXPECT_EQ(bars, 15);
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
    EXPECT_STREQ(kNoteTable[10].label, "1/32t");
}

TEST(SlotTiming, TripletThirtySecondAtOneCountIsATwelfthBeat)
{
    SetTimeBase(44100.0);
    TempoCache tempo;
    SlotTiming slot;
    slot.SetDelayFactor(0, 1);
    slot.SetTimebase(10);
    ASSERT_TRUE(slot.Synced());
    EXPECT_DOUBLE_EQ(slot.Time(0), 1.0 / 12.0);
    const double samples = slot.Unit(tempo.secPerBeat, DelayTimeScale(0.0)) * slot.Time(0);
    EXPECT_NEAR(samples / 44.1, 41.6667, 1e-4);
    EXPECT_NEAR(SyncedBeatsToFreeMs(slot.Time(0), tempo.secPerBeat), 41.6667, 1e-4);
    // The right side keeps its own count: 4 x 1/12 beat.
    EXPECT_DOUBLE_EQ(slot.Time(1), 4.0 / 12.0);
    // A tempo change retimes it at once.
    tempo.Update(60.0);
    EXPECT_NEAR(slot.Unit(tempo.secPerBeat, 1.0) * slot.Time(0) / 44.1, 83.3333, 1e-4);
}

// Slot units in samples per stored time unit, free (seconds) and synced (beats), scaled by
// 2^(value / 100).
TEST(SlotTiming, UnitsAtSeveralRatesWithTimeScale)
{
    TempoCache tempo;
    tempo.Update(100.0); // 0.6 s a beat
    for (double rate : {44100.0, 48000.0, 96000.0})
    {
        SCOPED_TRACE(rate);
        SetTimeBase(rate);
        for (double scalePercent : {-100.0, 0.0, 50.0, 100.0})
        {
            const double scale = DelayTimeScale(scalePercent);
            SlotTiming slot;
            slot.SetFreeTimeMs(0, 250.0);
            slot.SetFreeTimeMs(1, 1000.0);
            slot.SetDelayFactor(0, 3);
            slot.SetDelayFactor(1, 2);
            ASSERT_FALSE(slot.Synced());
            EXPECT_NEAR(slot.Unit(tempo.secPerBeat, scale) * slot.Time(0), 0.25 * rate * scale, 1e-9);
            EXPECT_NEAR(slot.Unit(tempo.secPerBeat, scale) * slot.Time(1), rate * scale, 1e-9);

            slot.SetTimebase(5); // 1/8d: 0.75 beat; left 2.25 beats, right 1.5 beats
            EXPECT_NEAR(slot.Unit(tempo.secPerBeat, scale) * slot.Time(0), 2.25 * 0.6 * rate * scale, 1e-9);
            EXPECT_NEAR(slot.Unit(tempo.secPerBeat, scale) * slot.Time(1), 1.5 * 0.6 * rate * scale, 1e-9);

            // Back to free: the free times come back unchanged.
            slot.SetTimebase(0);
            EXPECT_EQ(slot.Time(1), 1.0);
        }
    }
    EXPECT_DOUBLE_EQ(DelayTimeScale(-100.0), 0.5);
    EXPECT_DOUBLE_EQ(DelayTimeScale(100.0), 2.0);
    EXPECT_DOUBLE_EQ(DelayTimeScale(50.0), std::sqrt(2.0));
    SetTimeBase(44100.0);
}

TEST(SlotTiming, TapStepFreeAndSynced)
{
    SetTimeBase(48000.0);
    TempoCache tempo;
    tempo.Update(150.0); // 0.4 s a beat
    SlotTiming slot;
    slot.SetTapTimeMs(125.0);
    EXPECT_NEAR(slot.TapStepSamples(tempo.secPerBeat, DelayTimeScale(100.0)), 0.125 * 48000.0 * 2.0, 1e-9);
    slot.SetTapTimebase(2); // 1/16
    EXPECT_NEAR(slot.TapStepSamples(tempo.secPerBeat, DelayTimeScale(-100.0)), 0.25 * 0.4 * 48000.0 * 0.5,
                1e-9);
    slot.SetTapTimebase(0);
    EXPECT_NEAR(slot.TapSeconds(tempo.secPerBeat), 0.125, 1e-15);
    SetTimeBase(44100.0);
}
