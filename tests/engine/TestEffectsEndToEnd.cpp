#include <gtest/gtest.h>

#include "EngineRig.h"
#include "common/Measure.h"
#include "delay/DelayMode.h"
#include "params/ModRouting.h"

// Effects heard through the whole plug-in at 48 kHz: spectra of sines through a position, the
// per-tap POST effect of TAPPED mode, and the master reverb's tail. Which type a menu entry names
// is tested with the effect table, the type's knob defaults with the host notices.

using namespace engine_rig;

namespace
{
constexpr int kPreMenuFreqShift = 1; // "FREQ SHIFT" in the PRE and POST menus
constexpr int kMasterReverb = 2;     // "REVERB" in the MasterFX list (OFF first)

class FxRig : public Engine
{
  public:
    FxRig() { Set({{kDryLevel, 0.0}, {kWetLevel, 100.0}, {kLevel1, 0.0}, {kModulation1, 0.0}}); }
    // A type from a menu, built at once.
    void Type(int id, int menu)
    {
        Set(id, menu);
        QuorvexProbe::Effects(Plug()).ServicePending();
    }
    // FREQ SHIFT by +100 Hz: shift 100 % on the x100 scale, no feedback, centred spread.
    void ShiftUp100(int firstParamId)
    {
        const int stride = kFXParam2PR1 - kFXParam1PR1;
        for (int p = 0; p < 5; ++p)
            Set(firstParamId + p * stride, p == 2 ? 0.0 : (p == 3 ? 50.0 : 100.0));
    }
    // The left output for `in` on both inputs.
    std::vector<double> Run(const std::vector<double>& in)
    {
        Stereo both;
        both.l = both.r = in;
        return Engine::Run(both, 512).l;
    }
};

// A 0.5 sine of `hz` over [from, to) seconds of `seconds`.
std::vector<double> Tone(double hz, double seconds, double from = 0.0, double to = 1e9)
{
    std::vector<double> x(static_cast<std::size_t>(seconds * kRate));
    for (std::size_t i = 0; i < x.size(); ++i)
    {
        const double t = static_cast<double>(i) / kRate;
        if (t >= from && t < to) x[i] = 0.5 * std::sin(2.0 * std::numbers::pi * hz * t);
    }
    return x;
}

std::size_t At(double seconds)
{
    return static_cast<std::size_t>(seconds * kRate);
}

// Amplitude of the component at `hz` in x[from, to) seconds (Hann window, so neighbours 100 Hz
// away leak nothing measurable over 50 ms or more; the window's sum is half its length).
double Amplitude(const std::vector<double>& x, double hz, double from, double to)
{
    const std::vector<double> w = testmeasure::Windowed(x, At(from), At(to));
    return 4.0 * testmeasure::Goertzel(w, hz, kRate) / static_cast<double>(w.size());
}

double Energy(const std::vector<double>& x, double from, double to)
{
    return std::pow(testmeasure::Rms(x, At(from), At(to)), 2.0) * static_cast<double>(At(to) - At(from));
}
} // namespace

// PRE "FREQ SHIFT" moves a 1 kHz sine to 1.1 kHz in the share its mix gives, the level kept: off
// or at mix 0 the sine passes as it came, at mix 50 % both lines stand at half the level. A mix
// modulated by LFO 1 held at +1 adds depth^3 and is clamped to 0..1.
TEST(EffectsEndToEnd, FrequencyShiftAtPreMovesItsMixOfTheSpectrum)
{
    constexpr double kUnrouted = NAN;
    FxRig rig;
    rig.Set(kDelayOn1, 0.0); // the slot passes its PRE stage straight on
    rig.Type(kFX1PR, kPreMenuFreqShift);
    ASSERT_EQ(QuorvexProbe::SlotAt(rig.Plug(), 0).mFxType[Slot::kFxPre], 1);
    rig.ShiftUp100(kFXParam1PR1);
    HoldLfo(rig, 0, 100.0);
    double level = 0.0; // of the sine as it passes with the effect off
    // Each row: on, mix, depth, shifted share, tolerance.
    for (const auto& [on, mix, depth, shifted, tolerance] : {std::tuple{false, 100.0, kUnrouted, 0.0, 0.001},
                                                             {true, 100.0, kUnrouted, 1.0, 0.01},
                                                             {true, 0.0, kUnrouted, 0.0, 0.001},
                                                             {true, 50.0, kUnrouted, 0.5, 0.03},
                                                             {true, 0.0, 100.0, 1.0, 0.02},
                                                             {true, 0.0, -100.0, 0.0, 0.02},
                                                             {true, 0.0, 50.0, 0.125, 0.02}})
    {
        SCOPED_TRACE(::testing::Message() << "on " << on << ", mix " << mix << ", depth " << depth);
        rig.Set({{kFXOnPR1, on ? 1.0 : 0.0}, {kFXParam5PR1, mix}});
        rig.Set(kFXParam5ModSourcePR1, std::isnan(depth) ? kModSourceOff : kModSourceLFO1);
        rig.Set(kFXParam5ModDepthPR1, std::isnan(depth) ? 0.0 : depth);
        const std::vector<double> out = rig.Run(Tone(1000.0, 0.6));
        const double at1000 = Amplitude(out, 1000.0, 0.3, 0.6);
        const double at1100 = Amplitude(out, 1100.0, 0.3, 0.6);
        if (!on) level = at1000;
        ASSERT_GT(level, 0.3);
        EXPECT_NEAR(at1000 + at1100, level, 0.03 * level) << "both lines add to the full level";
        EXPECT_NEAR(at1100 / (at1000 + at1100), shifted, tolerance);
    }
}

// The same shifter in the feedback path: each repeat is shifted once more (1.1 kHz, then 1.2 kHz).
TEST(EffectsEndToEnd, FrequencyShiftInFeedbackShiftsEachRepeat)
{
    FxRig rig; // delay only
    rig.Set({{kDirectIn1, 100.0},
             {kTimebase1, 0.0},
             {kDelayTimeL1, 200.0},
             {kDelayTimeR1, 200.0},
             {kFeedback1, 100.0}});
    rig.Type(kFX1FB, kPreMenuFreqShift); // "FREQ SHIFT" is entry 1 of the FB menu too
    rig.ShiftUp100(kFXParam1FB1);
    rig.Set(kFXOnFB1, 1.0);
    const std::vector<double> out = rig.Run(Tone(1000.0, 1.7, 1.0, 1.15));
    // Echoes at 1.2 s and 1.4 s (burst of 150 ms).
    EXPECT_GT(Amplitude(out, 1100.0, 1.23, 1.33), 10.0 * Amplitude(out, 1000.0, 1.23, 1.33));
    EXPECT_GT(Amplitude(out, 1200.0, 1.43, 1.53), 10.0 * Amplitude(out, 1100.0, 1.43, 1.53));
}

// The routes of a position survive a type change (a new module is unwired, then takes them) and a
// cleared engine (Init unwires every module).
TEST(EffectsEndToEnd, ModSourcesFollowTheStoredRoutes)
{
    FxRig rig;
    const int position = 8 + 2; // slot 3 POST
    rig.Set({{kFXParam2ModSourcePR1 + position, 1.0}, {kFXParam2ModDepthPR1 + position, 50.0}}); // LFO1
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

// "REVERB" on the master effect leaves a tail behind a click that decays at the set time; OFF
// leaves nothing.
TEST(EffectsEndToEnd, MasterReverbAddsADecayingTail)
{
    FxRig rig;
    rig.Set({{kDelayOn1, 0.0}, {kMFXSend1, 100.0}, {kMasterFXLevel, 100.0}});
    std::vector<double> click(static_cast<std::size_t>(1.6 * kRate), 0.0);
    click[static_cast<std::size_t>(0.2 * kRate)] = 1.0;

    const std::vector<double> dry = rig.Run(click);
    EXPECT_LT(Energy(dry, 0.4, 0.6), 1e-12);

    // P1 20 %: (0.2)^2 x 29 + 1 = 2.16 s.
    rig.Set({{kMasterFX, kMasterReverb},
             {kMasterFXP1, 20.0},
             {kMasterFXP2, 0.0},
             {kMasterFXP3, 0.0},
             {kMasterFXP4, 30.0}});
    const std::vector<double> wet = rig.Run(click);
    const double early = Energy(wet, 0.4, 0.6);
    const double late = Energy(wet, 1.2, 1.4);
    EXPECT_GT(early, 1e-2);
    EXPECT_GT(late, 1e-5);
    // 60 dB over the time the energy takes to fall by that much: about the 2.16 s asked for.
    const double rt60 = 60.0 * 0.8 / (10.0 * std::log10(early / late));
    EXPECT_NEAR(rt60, 2.16, 0.6);
}
