#pragma once
// The end of the engine's block: the dry copy, the master effect bus and its return, global width,
// the limiter, the wet/dry sum and the 1 ms output delay, plus the readouts the editor's tick
// takes from them. Wet and dry leave aligned in every limiter state: with the limiter running its
// look-ahead delays the wet and the output delay the dry by the same gLookAhead samples; otherwise
// the sum goes through the output delay. Every buffer is a member: nothing allocates.
// Threads: the Set... calls on the parameter path (they store single values); Prepare and Clear on
// the reset path; the block steps on the audio thread; the meters on the UI thread.

#include "core/LevelMeter.h"
#include "core/OutputDelay.h"
#include "dsp/DSPShell.h"
#include "dsp/MasterLimiter.h"
#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"
#include "state/StateFields.h"

class MasterSection
{
  public:
    static constexpr int kBlockSize = gBlockLen;
    // Master effect types: 38 is OFF, 39..45 the effects, element type - 39 of the module list.
    static constexpr int kMasterFxOff = 38;
    static constexpr int kFirstMasterFx = 39;
    static constexpr int kMasterFxCount = 7;

    // The dry gain, the dry-kill flag and the input attenuation live in the plug-in's state fields,
    // which the state reader writes too.
    explicit MasterSection(StateFields& fields);

    // Parameter path, in the parameters' display units.
    void SetWetLevel(double percent);
    // Not taken while dry-kill holds the dry path at zero; remembered for when it is released.
    void SetDryLevel(double percent);
    void SetDryKill(bool on);
    void SetOutputLevel(double dB);
    // Position 0..1 of the input attenuator control: whole dB from -12 to 0.
    void SetAttenuator(double position);
    void SetMasterFxLevel(double percent);
    // A new type clears the effect's return and resets its module at the next block.
    void SetMasterFxType(int type);
    void SetMasterFxBypass(bool bypass);
    // Seam for the master effect modules: the module that serves `type` (null for none).
    void SetMasterFxModule(int type, DSPShell* module);
    // The module of the present type, for its parameters; null for OFF or when none is set.
    DSPShell* ActiveMasterFx() const;
    void SetGlobalWidth(double width);
    // 0 off, 1 SLOW I, 2 SLOW II, 3 FAST. The limiter hears only of changes: between two running
    // modes it fades through silence; coming from off it starts cleared, at once.
    void SetLimiterMode(int mode);
    void SetLimiterBoost(double dB);

    // Reset path, after the time base is set: meter ballistics for the editor's refresh rate.
    void Prepare(double editorFrameRate = kEditorFrameRate);
    // Clears buses, returns, the output delays, the limiter and the master effect modules.
    void Clear();

    // Block steps, audio thread, in this order within a block.
    // Clears the wet sum and the master effect bus, which the slots then add into.
    void ClearBuses();
    // The dry copy of the block: input times Dry Level x Output Level x attenuation.
    void ScaleDry(const double* inL, const double* inR);
    // The master effect in place on its bus, copied to the return, scaled into the wet sum.
    void RunMasterFx();
    void RunWidth();
    // Limiter, wet gain Wet Level x Output Level x fade, sum with the dry, output delay; writes
    // the block's 32 output samples.
    void RunOutput(double fade, double* outL, double* outR);

    // Editor tick, UI thread. n samples (up to 32) of the host's output channel, null for none.
    double TickOutputMeter(int channel, const double* hostOut, int n);
    double TickMasterFxMeter();

    double WetGain(double fade) const { return mWetLevel * mOutputLevel * fade; }
    double DryGain() const { return mFields.mDryLevel * mOutputLevel * mFields.mAttenuation; }
    double WidthMid() const { return mWidthMid; }
    double WidthSide() const { return mWidthSide; }
    bool WidthOn() const { return mWidthOn; }
    int LimiterMode() const { return mLimiterMode; }
    int MasterFxType() const { return mMasterFxType; }

    // Buses: the slots add into the wet sum and the effect bus, and those fed by the master effect
    // read its return of the previous block.
    double mWetL[kBlockSize] = {};
    double mWetR[kBlockSize] = {};
    double mMfxInL[kBlockSize] = {};
    double mMfxInR[kBlockSize] = {};
    double mMfxOutL[kBlockSize] = {};
    double mMfxOutR[kBlockSize] = {};
    double mDryL[kBlockSize] = {};
    double mDryR[kBlockSize] = {};

    MasterLimiter mLimiter;

  private:
    StateFields& mFields;

    double mLimitL[kBlockSize] = {};
    double mLimitR[kBlockSize] = {};
    OutputDelay mOutputDelayL;
    OutputDelay mOutputDelayR;
    Relaxed<DSPShell*> mMasterFx[kMasterFxCount] = {};

    Relaxed<double> mWetLevel{0.0};
    Relaxed<double> mOutputLevel{1.0};
    Relaxed<double> mMasterFxLevel{0.0};
    Relaxed<double> mWidthMid{0.5};
    Relaxed<double> mWidthSide{0.5};
    Relaxed<bool> mWidthOn{false};
    Relaxed<int> mLimiterMode{kLimiterOff};
    Relaxed<bool> mLimiterRestart{false};
    Relaxed<int> mMasterFxType{kMasterFxOff};
    Relaxed<bool> mMasterFxBypass{false};
    Relaxed<bool> mMasterFxChanged{false};
    double mDryPercent = 0.0;

    LevelMeter mOutputMeter[2];
    LevelMeter mMasterFxMeter;
};
