#include <gtest/gtest.h>

#include "EngineRig.h"
#include "common/Measure.h"
#include "delay/DelayMode.h"
#include "params/ModRouting.h"

// Effects heard through the whole plug-in at 48 kHz: spectra of sines through a position, and the
// routes of a position's knobs. Which type a menu entry names is tested with the effect table, the
// type's knob defaults with the host notices; the effects in the feedback path and the master
// effects are heard in the golden summaries.

using namespace engine_rig;

namespace
{
constexpr int kPreMenuFreqShift = 1; // "FREQ SHIFT" in the PRE and POST menus

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
};

// Amplitude of the component at `hz` in x[from, to) seconds (Hann window, so neighbours 100 Hz
// away leak nothing measurable over 50 ms or more; the window's sum is half its length).
double Amplitude(const std::vector<double>& x, double hz, double from, double to)
{
    const auto at = [](double seconds) { return static_cast<std::size_t>(seconds * kRate); };
    const std::vector<double> w = testmeasure::Windowed(x, at(from), at(to));
    return 4.0 * testmeasure::Goertzel(w, hz, kRate) / static_cast<double>(w.size());
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
    for (int p = 0; p < 5; ++p) // +100 Hz: shift 100 % on the x100 scale, no feedback, centred spread
        rig.Set(kFXParam1PR1 + p * (kFXParam2PR1 - kFXParam1PR1), p == 2 ? 0.0 : (p == 3 ? 50.0 : 100.0));
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
        const std::vector<double> out = rig.Run(Sine(static_cast<int>(0.6 * kRate), 1000.0, 0.5), 512).l;
        const double at1000 = Amplitude(out, 1000.0, 0.3, 0.6);
        const double at1100 = Amplitude(out, 1100.0, 0.3, 0.6);
        if (!on) level = at1000;
        ASSERT_GT(level, 0.3);
        EXPECT_NEAR(at1000 + at1100, level, 0.03 * level) << "both lines add to the full level";
        EXPECT_NEAR(at1100 / (at1000 + at1100), shifted, tolerance);
    }
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
