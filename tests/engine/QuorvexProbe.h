#pragma once
// Reaches the engine's private state that no host call shows; shared by the engine tests.

#include "engine/Quorvex.h"

class QuorvexProbe
{
  public:
    static void SetConstructing(Quorvex& plug, bool on) { plug.mConstructing = on; }
    static const double* WetBlockL(const Quorvex& plug) { return plug.mBlockL; }
    static Slot& SlotAt(Quorvex& plug, int index) { return plug.mSlots[index]; }
    // A modulator's buffer in the source bank, for tests that stand in for the modulator.
    static double* SourceBuffer(Quorvex& plug, int index) { return plug.mModBank.Buffer(index); }
    static ModulatorBank& Modulators(Quorvex& plug) { return plug.mModulators; }
    static const double* SidechainBlock(const Quorvex& plug) { return plug.mBlockSC; }
    static EffectRack& Effects(Quorvex& plug) { return plug.mEffects; }
    // Parameter changes made inside the returned scope count as the audio thread's.
    static ThreadMark::Scope AsAudioThread(Quorvex& plug) { return ThreadMark::Scope(plug.ProcessThread()); }
};
