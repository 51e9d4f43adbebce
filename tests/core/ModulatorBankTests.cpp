#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "core/ModulatorBank.h"
#include "dsp/TimeBase.h"

// The modulator bank's tick: the pulses it raises and routes, and the order in which sources
// become visible.

namespace
{
struct Bank
{
    Bank()
    {
        SetTimeBase(48000.0);
        sources = std::make_unique<ModSourceBank>();
        mods = std::make_unique<ModulatorBank>(*sources);
    }
    std::unique_ptr<ModSourceBank> sources;
    std::unique_ptr<ModulatorBank> mods;
};
} // namespace

// A one-shot ramp that has run to its end restarts from its first point in the tick whose block
// holds a beat edge, and holds its end otherwise.
TEST(ModulatorBank, QuarterPulseRestartsAOneShotLfo)
{
    Bank b;
    TableLFO& lfo = b.mods->mLfo[0];
    lfo.setWave(b.mods->Wave(11)); // RAMP: -1 .. +1
    lfo.setMode(TableLFO::kOneShot);
    lfo.setRate(400.0);
    lfo.setDepth(1.0);
    lfo.setGlide(1.0);
    lfo.setTrigger(b.mods->Trigger(ModulatorBank::kTrigQuarter));
    ModulatorTickContext ctx;
    for (int k = 0; k < 50; ++k)
        b.mods->Tick(ctx);
    EXPECT_NEAR(lfo.getPhasePoints(), 4096.0, 1e-9); // held at the end
    ctx.beatChanged = true;
    b.mods->Tick(ctx);
    EXPECT_LT(lfo.getPhasePoints(), 32 * lfo.getIncrement() + 1e-9); // restarted in this block
    ctx.beatChanged = false;
    b.mods->Tick(ctx);
    EXPECT_GT(lfo.getPhasePoints(), 32 * lfo.getIncrement());
}

// Gate 2 steps on the START pulse of gate 1: one step per full cycle of gate 1 (four steps).
TEST(ModulatorBank, GateClockedByAnotherGatesStartPulse)
{
    Bank b;
    ArpGate& clock = b.mods->mGate[0];
    ArpGate& follower = b.mods->mGate[1];
    clock.setTimebase(4, nullptr); // 1/64: 16 steps a beat, free running
    clock.setLength(4);
    const int startOfGate1 = 18; // "GATE1 START"
    follower.setTimebase(startOfGate1, b.mods->GateClock(startOfGate1));
    follower.setLength(16);
    b.mods->mGateOn[0] = true;
    b.mods->mGateOn[1] = true;
    ModulatorTickContext ctx;
    int starts = 0;
    int lastStep = follower.Step();
    int moves = 0;
    for (int k = 0; k < 3000; ++k)
    {
        b.mods->Tick(ctx);
        starts += *clock.StartPulse();
        moves += follower.Step() != lastStep;
        lastStep = follower.Step();
    }
    EXPECT_GT(starts, 10);
    // Each pulse moves the follower in the tick after it (the pulse is of the previous block).
    EXPECT_NEAR(moves, starts, 1);
}

// LOGIC1 passes LFO1 through: its buffer is LFO1's of one block before, as for every reader.
TEST(ModulatorBank, EverySourceIsSeenOneBlockLate)
{
    Bank b;
    TableLFO& lfo = b.mods->mLfo[0];
    lfo.setWave(b.mods->Wave(11));
    lfo.setRate(20.0);
    lfo.setDepth(1.0);
    lfo.setGlide(1.0);
    LogicModule& logic = b.mods->mLogic[0];
    logic.SetSource1(b.sources->SourceBuffer(kModSourceLFO1));
    logic.SetSource1Depth(100.0);
    logic.SetDepth(100.0);
    b.mods->mLogicOn[0] = true;
    ModulatorTickContext ctx;
    double previous[gBlockLen] = {};
    for (int k = 0; k < 40; ++k)
    {
        b.mods->Tick(ctx);
        const double* lfoOut = b.sources->SourceBuffer(kModSourceLFO1);
        const double* logicOut = b.sources->SourceBuffer(kModSourceLogic1);
        for (int i = 0; i < gBlockLen; ++i)
            ASSERT_NEAR(logicOut[i], previous[i], 1e-12) << "block " << k << " sample " << i;
        std::copy_n(lfoOut, gBlockLen, previous);
    }
    EXPECT_NE(previous[0], previous[gBlockLen - 1]); // the LFO moved within a block
}
