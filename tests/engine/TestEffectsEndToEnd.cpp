#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "EngineRig.h"
#include "QuorvexProbe.h"
#include "delay/DelayMode.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

// Effects heard through the whole plug-in at 48 kHz: spectra of sines through a position, the
// per-tap POST effect of TAPPED mode, and the master reverb's tail.

namespace
{
constexpr double kFs = 48000.0;
constexpr int kPreMenuFreqShift = 1; // "FREQ SHIFT" in the PRE and POST menus
constexpr int kMasterReverb = 2;     // "REVERB" in the MasterFX list (OFF first)

class Rig
{
  public:
    Rig() : mPlug(new Quorvex(), [](Quorvex* q) { q->release(); })
    {
        mPlug->SetSampleRate(kFs);
        Set(kDryLevel, 0.0);
        Set(kWetLevel, 100.0);
        Set(kLevel1, 0.0);
        Set(kModulation1, 0.0);
    }
    Quorvex& Plug() { return *mPlug; }
    void Set(int id, double value)
    {
        mPlug->GetParam(id)->value = value;
        mPlug->OnParamChange(id);
    }
    double Get(int id) { return mPlug->GetParam(id)->value; }
    void Service() { QuorvexProbe::Effects(*mPlug).ServicePending(); }
    // A type from a menu, built at once.
    void Type(int id, int menu)
    {
        Set(id, menu);
        Service();
    }
    // FREQ SHIFT by +100 Hz: shift 100 % on the x100 scale, no feedback, centred spread.
    void ShiftUp100(int firstParamId)
    {
        const int stride = kFXParam2PR1 - kFXParam1PR1;
        Set(firstParamId, 100.0);
        Set(firstParamId + stride, 100.0);
        Set(firstParamId + 2 * stride, 0.0);
        Set(firstParamId + 3 * stride, 50.0);
        Set(firstParamId + 4 * stride, 100.0);
    }
    std::vector<double> Run(const std::vector<double>& in)
    {
        std::vector<double> outL(in.size()), outR(in.size()), sc(512, 0.0);
        for (std::size_t done = 0; done < in.size(); done += 512)
        {
            const int n = static_cast<int>(std::min<std::size_t>(512, in.size() - done));
            double* ins[4] = {const_cast<double*>(in.data()) + done, const_cast<double*>(in.data()) + done,
                              sc.data(), sc.data()};
            double* outs[2] = {outL.data() + done, outR.data() + done};
            mPlug->ProcessDoubleReplacing(ins, outs, n);
        }
        return outL;
    }

  private:
    std::unique_ptr<Quorvex, void (*)(Quorvex*)> mPlug;
};

std::vector<double> Sine(double hz, double seconds, double from = 0.0, double to = 1e9)
{
    std::vector<double> x(static_cast<std::size_t>(seconds * kFs));
    for (std::size_t i = 0; i < x.size(); ++i)
    {
        const double t = static_cast<double>(i) / kFs;
        if (t >= from && t < to) x[i] = 0.5 * std::sin(2.0 * std::numbers::pi * hz * t);
    }
    return x;
}

// Amplitude of the component at `hz` in x[from, to) seconds (Hann window, so neighbours 100 Hz
// away leak nothing measurable over 50 ms or more).
double Amplitude(const std::vector<double>& x, double hz, double from, double to)
{
    const auto a = static_cast<std::size_t>(from * kFs);
    const auto b = static_cast<std::size_t>(to * kFs);
    double re = 0.0, im = 0.0, wsum = 0.0;
    for (std::size_t i = a; i < b; ++i)
    {
        const double w = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i - a) / (b - a));
        const double ph = 2.0 * std::numbers::pi * hz * static_cast<double>(i) / kFs;
        re += w * x[i] * std::cos(ph);
        im += w * x[i] * std::sin(ph);
        wsum += w;
    }
    return 2.0 * std::hypot(re, im) / wsum;
}

double Energy(const std::vector<double>& x, double from, double to)
{
    double e = 0.0;
    for (auto i = static_cast<std::size_t>(from * kFs); i < static_cast<std::size_t>(to * kFs); ++i)
        e += x[i] * x[i];
    return e;
}
} // namespace

// PRE "FREQ SHIFT" moves a 1 kHz sine to 1.1 kHz; off, or at mix 0, the sine passes as it came; at
// mix 50 % both lines stand at half the level each.
TEST(EffectsEndToEnd, FrequencyShiftAtPreMovesTheSpectrum)
{
    Rig rig;
    rig.Set(kDelayOn1, 0.0); // the slot passes its PRE stage straight on
    rig.Type(kFX1PR, kPreMenuFreqShift);
    ASSERT_EQ(QuorvexProbe::SlotAt(rig.Plug(), 0).mFxType[Slot::kFxPre], 1);
    rig.ShiftUp100(kFXParam1PR1);
    rig.Set(kFXOnPR1, 1.0);

    const auto measure = [&]
    {
        const std::vector<double> out = rig.Run(Sine(1000.0, 0.6));
        return std::pair{Amplitude(out, 1000.0, 0.3, 0.6), Amplitude(out, 1100.0, 0.3, 0.6)};
    };
    auto [at1000, at1100] = measure();
    EXPECT_GT(at1100, 0.3);
    EXPECT_LT(at1000, at1100 * 0.01) << "the unshifted line is below -40 dB";

    rig.Set(kFXOnPR1, 0.0);
    std::tie(at1000, at1100) = measure();
    EXPECT_GT(at1000, 0.3);
    EXPECT_LT(at1100, at1000 * 0.001);

    rig.Set(kFXOnPR1, 1.0);
    rig.Set(kFXParam5PR1, 0.0);
    std::tie(at1000, at1100) = measure();
    EXPECT_GT(at1000, 0.3);
    EXPECT_LT(at1100, at1000 * 0.001);

    rig.Set(kFXParam5PR1, 50.0);
    const double full = at1000;
    std::tie(at1000, at1100) = measure();
    EXPECT_NEAR(at1000, 0.5 * full, 0.03 * full);
    EXPECT_NEAR(at1100, 0.5 * full, 0.03 * full);
}

// The mix of a position follows its source: mix 0 with LFO 1 held at +1 and depth 100 % gives the
// shifter's full output, depth -100 % leaves the mix at 0 (it is clamped), and at 50 % depth the
// mix is 0 + 0.5^3.
TEST(EffectsEndToEnd, ModulatedMixFollowsItsSource)
{
    Rig rig;
    rig.Set(kDelayOn1, 0.0);
    rig.Type(kFX1PR, kPreMenuFreqShift);
    rig.ShiftUp100(kFXParam1PR1);
    rig.Set(kFXOnPR1, 1.0);
    rig.Set(kFXParam5PR1, 0.0);
    engine_rig::HoldLfo(rig, 0, 100.0);  // LFO 1 held at +1
    rig.Set(kFXParam5ModSourcePR1, 1.0); // LFO1
    for (const double depth : {100.0, -100.0, 50.0})
    {
        rig.Set(kFXParam5ModDepthPR1, depth);
        const std::vector<double> out = rig.Run(Sine(1000.0, 0.6));
        const double at1000 = Amplitude(out, 1000.0, 0.3, 0.6);
        const double at1100 = Amplitude(out, 1100.0, 0.3, 0.6);
        const double mix = std::clamp(std::pow(depth / 100.0, 3.0), 0.0, 1.0);
        const double full = at1000 + at1100; // both lines add to the full level
        EXPECT_NEAR(at1100 / full, mix, 0.02) << depth;
    }
}

// The same shifter in the feedback path: each repeat is shifted once more (1.1 kHz, then 1.2 kHz).
TEST(EffectsEndToEnd, FrequencyShiftInFeedbackShiftsEachRepeat)
{
    Rig rig;
    rig.Set(kDirectIn1, 100.0); // delay only
    rig.Set(kTimebase1, 0.0);
    rig.Set(kDelayTimeL1, 200.0);
    rig.Set(kDelayTimeR1, 200.0);
    rig.Set(kFeedback1, 100.0);
    rig.Type(kFX1FB, kPreMenuFreqShift); // "FREQ SHIFT" is entry 1 of the FB menu too
    rig.ShiftUp100(kFXParam1FB1);
    rig.Set(kFXOnFB1, 1.0);
    const std::vector<double> out = rig.Run(Sine(1000.0, 1.7, 1.0, 1.15));
    // Echoes at 1.2 s and 1.4 s (burst of 150 ms).
    EXPECT_GT(Amplitude(out, 1100.0, 1.23, 1.33), 10.0 * Amplitude(out, 1000.0, 1.23, 1.33));
    EXPECT_GT(Amplitude(out, 1200.0, 1.43, 1.53), 10.0 * Amplitude(out, 1100.0, 1.43, 1.53));
}

// Entry 0 of the FB menu is OFF; a user's type change loads the type's defaults.
TEST(EffectsEndToEnd, MenuChoicesAndDefaults)
{
    Rig rig;
    Slot& slot = QuorvexProbe::SlotAt(rig.Plug(), 1);
    rig.Type(kFX1FB + 1, kPreMenuFreqShift);
    EXPECT_EQ(slot.mFxType[Slot::kFxFeedback], 1);
    EXPECT_DOUBLE_EQ(rig.Get(kFXParam1FB2), FindFxType(1)->defaults[0] * 100.0);
    rig.Type(kFX1FB + 1, 0);
    EXPECT_EQ(slot.mFxType[Slot::kFxFeedback], 0);
    EXPECT_EQ(slot.FxList(Slot::kFxFeedback).Count(), 0);
    // The last FB label reaches id 57, not 37.
    rig.Type(kFX1FB + 1, 13);
    EXPECT_EQ(slot.mFxType[Slot::kFxFeedback], 57);
}

// The routes of a position survive a type change (a new module is unwired, then takes them) and a
// cleared engine (Init unwires every module).
TEST(EffectsEndToEnd, ModSourcesFollowTheStoredRoutes)
{
    Rig rig;
    const int position = 8 + 2;                     // slot 3 POST
    rig.Set(kFXParam2ModSourcePR1 + position, 1.0); // LFO1
    rig.Set(kFXParam2ModDepthPR1 + position, 50.0);
    const double* lfo1 = QuorvexProbe::SourceBuffer(rig.Plug(), 1);
    Slot& slot = QuorvexProbe::SlotAt(rig.Plug(), 2);
    for (int menu : {kPreMenuFreqShift, 2, -1})
    {
        if (menu < 0)
            rig.Plug().Reset();
        else
            rig.Type(kFX1PO + 2, menu);
        ASSERT_EQ(slot.FxList(Slot::kFxPost).Count(), Slot::kFxModules);
        for (int k : {0, 1, 31})
        {
            const DSPShell* m = slot.FxList(Slot::kFxPost).Module(k);
            for (int p = 0; p < 5; ++p)
                EXPECT_EQ(m->mModSource[p].Load(), p == 1 ? lfo1 : nullptr);
            EXPECT_DOUBLE_EQ(*m->mModDepth[1].Load(), 0.125); // cubed depth
        }
    }
}

// TAPPED with the POST shifter: tap 1's step keeps the full shift, tap 2's step halves the shift
// knob (50 % is no shift), so the first echo is moved by 100 Hz and the second not at all.
TEST(EffectsEndToEnd, PostEffectPerTapFollowsTheStepRow)
{
    Rig rig;
    rig.Set(kDelayMode1, DelayTapped);
    rig.Set(kDirectIn1, 100.0);
    rig.Set(kFeedback1, 0.0);
    rig.Set(kTapTimebase1, 0.0);
    rig.Set(kDelayTapsTime1, 250.0);
    rig.Set(kDelayTaps1, 1.0); // two taps
    rig.Set(kTapTimeStepDepth1, 0.0);
    rig.Set(kTapLevelStepDepth1, 0.0);
    rig.Set(kTapPanWidth1, 0.0);
    rig.Type(kFX1PO, kPreMenuFreqShift);
    rig.ShiftUp100(kFXParam1PO1);
    rig.Set(kFXOnPO1, 1.0);
    rig.Set(kTapFXParam1_1, 1.0); // row 1 drives P1
    // The rows' lists name the POST type's parameters.
    const IParamRecord& row2 = *rig.Plug().GetParam(kTapFXParam2_1);
    EXPECT_EQ(row2.GetDisplayForHost(1.0, false), "FREQ SHIFT");
    EXPECT_EQ(row2.GetDisplayForHost(4.0, false), "FRQ SHIFT SPREAD");
    EXPECT_EQ(row2.GetDisplayForHost(0.0, false), "OFF");
    rig.Set(kTapFXP1StepDepth1, 100.0);
    rig.Set(kTapDelay1Step1FXP1, 100.0);
    rig.Set(kTapDelay1Step1FXP1 + 1, 50.0);
    rig.Plug().Fields().mStepFxMask[0] = 0b11;
    rig.Plug().Fields().mStepModMask[0][0] = 0b11;
    rig.Plug().SyncTapFxMasks();

    const std::vector<double> out = rig.Run(Sine(1000.0, 1.8, 1.0, 1.1));
    // Echoes of the 100 ms burst at 1.25 s and 1.5 s.
    const double tap1At1100 = Amplitude(out, 1100.0, 1.27, 1.33);
    const double tap1At1000 = Amplitude(out, 1000.0, 1.27, 1.33);
    const double tap2At1100 = Amplitude(out, 1100.0, 1.52, 1.58);
    const double tap2At1000 = Amplitude(out, 1000.0, 1.52, 1.58);
    EXPECT_GT(tap1At1100, 0.2);
    EXPECT_GT(tap1At1100, 1000.0 * tap1At1000);
    EXPECT_GT(tap2At1000, 0.2);
    EXPECT_GT(tap2At1000, 1000.0 * tap2At1100);
}

// "REVERB" on the master effect leaves a tail behind a click that decays at the set time; OFF
// leaves nothing.
TEST(EffectsEndToEnd, MasterReverbAddsADecayingTail)
{
    Rig rig;
    rig.Set(kDelayOn1, 0.0);
    rig.Set(kMFXSend1, 100.0);
    rig.Set(kMasterFXLevel, 100.0);
    std::vector<double> click(static_cast<std::size_t>(1.6 * kFs), 0.0);
    click[static_cast<std::size_t>(0.2 * kFs)] = 1.0;

    const std::vector<double> dry = rig.Run(click);
    EXPECT_LT(Energy(dry, 0.4, 0.6), 1e-12);

    rig.Set(kMasterFX, kMasterReverb);
    rig.Set(kMasterFXP1, 20.0); // (0.2)^2 x 29 + 1 = 2.16 s
    rig.Set(kMasterFXP2, 0.0);
    rig.Set(kMasterFXP3, 0.0);
    rig.Set(kMasterFXP4, 30.0);
    const std::vector<double> wet = rig.Run(click);
    const double early = Energy(wet, 0.4, 0.6);
    const double late = Energy(wet, 1.2, 1.4);
    EXPECT_GT(early, 1e-2);
    EXPECT_GT(late, 1e-5);
    // 60 dB over the time the energy takes to fall by that much: about the 2.16 s asked for.
    const double rt60 = 60.0 * 0.8 / (10.0 * std::log10(early / late));
    EXPECT_NEAR(rt60, 2.16, 0.6);
}
