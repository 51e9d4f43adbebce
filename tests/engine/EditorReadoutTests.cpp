// The editor's readouts from the running engine: meters follow the audio while a window is open,
// rest at zero in silence, cost nothing with the window closed, and modulator positions arrive;
// and the focus panel's texts.
#include <gtest/gtest.h>

#include <cmath>

#include "EngineRig.h"
#include "core/EditorReadouts.h"
#include "editor/DelayPageControls.h"
#include "editor/FocusPanelControl.h"
#include "editor/LayoutDelay.h"
#include "editor/LayoutEffects.h"
#include "editor/LayoutOptions.h"
#include "editor/MainLayout.h"
#include "editor/ModPageControls.h"
#include "editor/QuorvexEditor.h"
#include "editor/TimeHighlightControl.h"
#include "editor/WaveDraw.h"
#include "state/InputAttenuator.h"

using namespace engine_rig;

namespace
{
constexpr int kFrameSamples = static_cast<int>(kRate / 25); // one editor frame of audio

IControl* OutputMeter(QuorvexEditor& editor, int channel)
{
    int row = 0;
    for (const LayoutRow& r : kMainLayout)
    {
        if (r.mKind == ELayoutKind::kMeter && r.mIndex == channel) return editor.ControlOfRow(row);
        ++row;
    }
    return nullptr;
}

// One editor frame of a 1 kHz sine: every block holds a peak of nearly the amplitude.
Stereo Sine(double amplitude)
{
    Stereo s(static_cast<std::size_t>(kFrameSamples));
    for (int i = 0; i < kFrameSamples; ++i)
        s.l[i] = s.r[i] = amplitude * std::sin(2.0 * M_PI * 1000.0 * i / kRate);
    return s;
}

// A meter strip of 64 frames that a page would hold.
IBitmapControl* AddStrip(QuorvexEditor& editor, IPlugBase* plug, int meter)
{
    IBitmap strip;
    strip.W = 10;
    strip.H = 640;
    strip.N = 64;
    auto* c = new IBitmapControl(plug, IRECT(0, 0, 10, 10), -1, strip);
    editor.AttachControl(c);
    editor.AddMeterControl(meter, c);
    return c;
}
} // namespace

TEST(EditorReadouts, MetersFollowTheAudioWhileTheWindowIsOpenAndRestInSilence)
{
    Rig rig;
    auto* editor = dynamic_cast<QuorvexEditor*>(rig.Plug().GetGUI());
    ASSERT_NE(editor, nullptr);
    IPlugBase& base = rig.Plug();
    IControl* outL = OutputMeter(*editor, EditorReadouts::kOutL);
    IControl* outR = OutputMeter(*editor, EditorReadouts::kOutR);
    ASSERT_TRUE(outL && outR);
    IBitmapControl* slot1 = AddStrip(*editor, &base, EditorReadouts::kSlot1);
    IBitmapControl* slot2 = AddStrip(*editor, &base, EditorReadouts::kSlot1 + 1);
    auto frames = [&](int n, double amplitude)
    {
        for (int f = 0; f < n; ++f)
        {
            rig.Run(Sine(amplitude));
            editor->OnTimerTick();
        }
    };

    // Closed: the audio thread publishes nothing, so nothing moves.
    frames(10, 0.5);
    EXPECT_EQ(outL->GetValue(), 0.0);
    EXPECT_EQ(slot1->GetValue(), 0.0);

    base.OnGUIOpen();
    frames(30, 0.5);
    // Peaks of 0.5 (-6 dB) read 0.9 on the 60 dB scale once the needle has settled (30 frames
    // of a one-pole at exp(-2 pi / 40) per frame leave 1 %).
    EXPECT_NEAR(outL->GetValue(), 0.9, 0.015);
    EXPECT_NEAR(outR->GetValue(), 0.9, 0.015);
    // The slot's shaping saturates: 0.5 x 1.5 = 0.75 gives 3 / 3.25, about 0.92.
    EXPECT_NEAR(slot1->GetValue(), 0.923, 0.015);
    EXPECT_EQ(slot2->GetValue(), 0.0); // slot 2 is off

    // In silence every meter falls to its empty picture (and stops redrawing there).
    frames(100, 0.0);
    EXPECT_EQ(dynamic_cast<IBitmapControl*>(outL)->CurrentFrame(), 1);
    EXPECT_EQ(dynamic_cast<IBitmapControl*>(outR)->CurrentFrame(), 1);
    EXPECT_EQ(slot1->CurrentFrame(), 1);
    base.OnGUIClose();
}

TEST(EditorReadouts, ModulatorPositionsReachTheEditor)
{
    Rig rig;
    auto* editor = dynamic_cast<QuorvexEditor*>(rig.Plug().GetGUI());
    ASSERT_NE(editor, nullptr);
    IPlugBase& base = rig.Plug();
    IBitmapControl* lfo1 = AddStrip(*editor, &base, EditorReadouts::kMod1);
    HoldLfo(rig, 0, 100.0);
    base.OnGUIOpen();
    rig.Run(Stereo(kFrameSamples));
    editor->OnTimerTick();
    const double last = rig.Source(kModSourceLFO1)[kBlock - 1];
    EXPECT_GT(std::abs(last), 0.1);
    EXPECT_NEAR(lfo1->GetValue(), last, 1e-12); // the block before the tick may differ by rounding
    base.OnGUIClose();
}

// The focus panel names a touched control the way the producer thinks of it: an effect knob by
// its effect's name for it, a list knob by the entry it picks, anything else by its parameter.
TEST(EditorFocus, ThePanelFollowsTheTouchedControlAndItsValue)
{
    Rig rig;
    Quorvex& plug = rig.Plug();
    auto* editor = dynamic_cast<QuorvexEditor*>(plug.GetGUI());
    ASSERT_NE(editor, nullptr);
    auto setType = [&](int param, const char* label)
    {
        IParamRecord* p = plug.GetParam(param);
        double index = -1;
        ASSERT_TRUE(p->GetValueFromDisplayText(label, index)) << label;
        rig.Set(param, index);
        editor->SetParameterFromPlug(param, p->GetNormalized(), true);
    };
    auto touch = [&](IControl* c)
    {
        ASSERT_NE(c, nullptr);
        ASSERT_FALSE(c->IsHidden());
        const IRECT r = c->GetRECT();
        IMouseMod left;
        left.L = true;
        editor->OnMouseDown((r.L + r.R) / 2, (r.T + r.B) / 2, left);
        editor->OnMouseUp((r.L + r.R) / 2, (r.T + r.B) / 2, left);
        editor->OnTimerTick();
    };
    IFocusPanelControl* panel = editor->FocusPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->Label(), "");

    editor->ShowPage(kPagePreFx, false);
    setType(kFX1PR, "COMPRESSOR");
    rig.Set(kFXParam1PR1, 62.5);
    touch(editor->ControlOfPageRow(kListPreFx, layout::FxKnobFirstRow(0, 0)));
    EXPECT_EQ(panel->Label(), "COMP THRESHOLD");
    EXPECT_EQ(panel->Value(), "62.50 %");
    // It follows the value however it changes (automation here).
    rig.Set(kFXParam1PR1, 10.0);
    editor->OnTimerTick();
    EXPECT_EQ(panel->Value(), "10.00 %");

    setType(kFX2PR, "FREQ SHIFT");
    rig.Set(kFXParam2PR2, 100.0);
    touch(editor->ControlOfPageRow(kListPreFx, layout::FxKnobFirstRow(1, 1)));
    EXPECT_EQ(panel->Label(), "FREQSHIFT SCALE");
    EXPECT_EQ(panel->Value(), "x100");

    editor->ShowPage(kPageDelay, false);
    IControl* wet = nullptr;
    int row = 0;
    for (const LayoutRow& r : kMainLayout)
    {
        if (r.mKind == ELayoutKind::kKnob && r.mParam == kWetLevel) wet = editor->ControlOfRow(row);
        ++row;
    }
    touch(wet);
    EXPECT_EQ(panel->Label(), plug.GetParam(kWetLevel)->name);
    EXPECT_EQ(plug.Fields().mFocusedParam, kWetLevel);
}

// The options page's own controls act on the engine and show what a loaded state holds.
TEST(EditorOptions, AttenuatorDryKillAndColourSetReachTheEngineAndBack)
{
    Rig rig;
    Quorvex& plug = rig.Plug();
    auto* editor = dynamic_cast<QuorvexEditor*>(plug.GetGUI());
    ASSERT_NE(editor, nullptr);
    editor->ShowPage(kPageOptions, false);
    IControl* att = editor->ControlOfPageRow(kListOptions, kOptionsAttenuatorRow);
    IControl* kill = editor->ControlOfPageRow(kListOptions, kOptionsDryKillRow);
    auto* readout = dynamic_cast<ITextControl*>(editor->ControlOfPageRow(kListOptions, kOptionsReadoutRow));
    ASSERT_TRUE(att && kill && readout);
    editor->OnTimerTick();
    EXPECT_EQ(readout->GetText(), "0 dB");

    // A drag down the attenuator lowers the engine's input gain and the readout says by how much.
    const IRECT r = att->GetRECT();
    IMouseMod left;
    left.L = true;
    editor->OnMouseDown((r.L + r.R) / 2, (r.T + r.B) / 2, left);
    editor->OnMouseDrag((r.L + r.R) / 2, (r.T + r.B) / 2 + 60, left);
    editor->OnMouseUp((r.L + r.R) / 2, (r.T + r.B) / 2 + 60, left);
    editor->OnTimerTick();
    const double position = plug.Fields().mInputAttenuator;
    EXPECT_LT(position, 1.0);
    EXPECT_DOUBLE_EQ(plug.Fields().mAttenuation, InputAttenuatorGain(position));
    EXPECT_EQ(readout->GetText(), std::to_string(InputAttenuatorDb(position)) + " dB");
    EXPECT_LT(InputAttenuatorDb(position), 0);

    // Dry kill: on takes the dry path out whatever "Dry Level" says.
    const IRECT k = kill->GetRECT();
    editor->OnMouseDown((k.L + k.R) / 2, (k.T + k.B) / 2, left);
    editor->OnMouseUp((k.L + k.R) / 2, (k.T + k.B) / 2, left);
    EXPECT_TRUE(plug.Fields().mDryKill);
    EXPECT_EQ(plug.Fields().mDryLevel, 0.0);

    // A colour set picked on the page is kept for the state.
    editor->PickColorSet(4);
    EXPECT_EQ(plug.Fields().mColorSet, 4);

    // A state saved now and loaded into a fresh instance shows the same options.
    ByteChunk chunk;
    ASSERT_TRUE(plug.SerializeState(chunk));
    Rig other;
    auto* otherEditor = dynamic_cast<QuorvexEditor*>(other.Plug().GetGUI());
    other.Plug().UnserializeState(chunk, 0);
    otherEditor->OnTimerTick();
    EXPECT_DOUBLE_EQ(otherEditor->ControlOfPageRow(kListOptions, kOptionsAttenuatorRow)->GetValue(),
                     position);
    EXPECT_EQ(otherEditor->ControlOfPageRow(kListOptions, kOptionsDryKillRow)->GetValue(), 1.0);
    EXPECT_EQ(otherEditor->Colors().Current(), 4);
}

// Each LFO's wave display draws the wave its choice names, as the LFO plays it.
TEST(EditorLfoWaves, TheDisplayFollowsTheWaveAndItsPolarity)
{
    Rig rig;
    auto* editor = dynamic_cast<QuorvexEditor*>(rig.Plug().GetGUI());
    ASSERT_NE(editor, nullptr);
    std::vector<WaveDraw*> waves;
    for (int idx : editor->ListControls(kListLfo))
        if (auto* w = dynamic_cast<WaveDraw*>(editor->GetControl(idx))) waves.push_back(w);
    ASSERT_EQ(waves.size(), 4u);
    editor->OnTimerTick();
    for (WaveDraw* w : waves)
        EXPECT_TRUE(w->HasWave());
    // LFO 2 on "SIN1" against "TRIANGLE": the shapes differ at an eighth of the cycle.
    const double sine = waves[1]->ValueAt(0.125);
    IParamRecord* wave = rig.Plug().GetParam(kLFOWave2);
    double triangle = -1;
    ASSERT_TRUE(wave->GetValueFromDisplayText("TRIANGLE", triangle));
    rig.Set(kLFOWave2, triangle);
    editor->OnTimerTick();
    EXPECT_GT(std::abs(waves[1]->ValueAt(0.125) - sine), 0.05);
    // Negative polarity draws the wave upside down.
    const double up = waves[1]->ValueAt(0.125);
    rig.Set(kLFOPol2, 1.0);
    editor->OnTimerTick();
    EXPECT_NE(waves[1]->ValueAt(0.125), up);
    EXPECT_EQ(waves[0]->ValueAt(0.125), waves[2]->ValueAt(0.125)); // the others untouched, alike
}

// The large view's tap buttons show the masks the engine plays and write them back.
TEST(EditorStepMasks, TapButtonsShowAndWriteTheMasks)
{
    Rig rig;
    Quorvex& plug = rig.Plug();
    auto* editor = dynamic_cast<QuorvexEditor*>(plug.GetGUI());
    ASSERT_NE(editor, nullptr);
    rig.Set(kDelayTaps1, 7.0); // eight taps
    editor->ShowPage(kPageLargeLevels, false);
    editor->OnTimerTick();
    // A fresh instance plays every tap, and its buttons say so.
    EXPECT_EQ(editor->Delay().TapOnMask(0, 0), 0xFFFF);
    EXPECT_EQ(editor->Delay().TapOnMask(0, 1), 0xFFFF);

    // Tap 3's left button.
    IControl* button = nullptr;
    int row = 0;
    for (const LayoutRow& r : kLargeDelayLayout)
    {
        if (r.mKind == ELayoutKind::kStepMaskButton && r.mIndex == kMaskTapOnL * 16 + 2)
            button = editor->ControlOfPageRow(kListLarge1, row);
        ++row;
    }
    ASSERT_NE(button, nullptr);
    ASSERT_FALSE(button->IsHidden());
    const IRECT b = button->GetRECT();
    IMouseMod left;
    left.L = true;
    editor->OnMouseDown((b.L + b.R) / 2, (b.T + b.B) / 2, left);
    editor->OnMouseUp((b.L + b.R) / 2, (b.T + b.B) / 2, left);
    EXPECT_EQ(plug.Fields().mTapOnMask[0], 0xFFFF & ~(1 << 2));
    EXPECT_EQ(plug.Fields().mTapOnMask[1], 0xFFFF);

    // A loaded state's masks reach the buttons.
    plug.Fields().mTapOnMask[3] = 0x00F0;
    editor->OnTimerTick();
    EXPECT_EQ(editor->Delay().TapOnMask(1, 1), 0x00F0);
}

// After a timebase change the slot's delay times blink for five seconds: hidden in the first half
// of each second, shown in the second half; a state or preset load is no such change.
TEST(EditorTimeHighlight, BlinksFiveSecondsAfterATimebaseChange)
{
    Rig rig;
    auto* editor = dynamic_cast<QuorvexEditor*>(rig.Plug().GetGUI());
    ASSERT_NE(editor, nullptr);
    ITimeHighlightControl* h = editor->TimeHighlight(1);
    ASSERT_NE(h, nullptr);
    const int fps = editor->FPS();
    rig.Set(kTimebase2, 3.0);
    int lit = 0, firstLit = -1, ticks = 0;
    for (; ticks < 10 * fps; ++ticks)
    {
        editor->OnTimerTick();
        if (h->Lit())
        {
            ++lit;
            if (firstLit < 0) firstLit = ticks;
        }
        if (!h->Active()) break;
    }
    EXPECT_EQ(ticks, 5 * fps - 1); // gone after five seconds
    EXPECT_EQ(lit, 5 * (fps - fps / 2));
    EXPECT_EQ(firstLit, fps / 2 - 1);
    EXPECT_FALSE(editor->TimeHighlight(0)->Active()); // only the slot that changed

    // A state restored is not a change the user made.
    ByteChunk chunk;
    ASSERT_TRUE(rig.Plug().SerializeState(chunk));
    rig.Plug().UnserializeState(chunk, 0);
    editor->OnTimerTick();
    EXPECT_FALSE(h->Active());
}

// The step a gate plays is marked on its column, and the mark moves with the gate.
TEST(EditorGateSteps, ThePlayingStepIsMarked)
{
    Rig rig;
    auto* editor = dynamic_cast<QuorvexEditor*>(rig.Plug().GetGUI());
    ASSERT_NE(editor, nullptr);
    IPlugBase& base = rig.Plug();
    rig.Set(kGate1On, 1.0);
    base.OnGUIOpen();
    auto litSteps = [&]
    {
        std::vector<int> lit;
        for (int idx : editor->ListControls(kListGates))
            if (auto* f = dynamic_cast<IStepFaderControl*>(editor->GetControl(idx)))
                if (f->Playing()) lit.push_back(f->ParamIdx());
        return lit;
    };
    std::vector<int> seen;
    for (int frame = 0; frame < 60; ++frame)
    {
        rig.Run(Stereo(kFrameSamples));
        editor->OnTimerTick();
        const std::vector<int> lit = litSteps();
        // One column per gate, of that gate; gate 1 on the step the engine plays.
        ASSERT_EQ(lit.size(), 4u);
        EXPECT_EQ(lit[0], kGate1Step1 + editor->PlayingStep(0));
        if (seen.empty() || seen.back() != lit[0]) seen.push_back(lit[0]);
    }
    EXPECT_GT(seen.size(), 2u); // the mark moved along
    base.OnGUIClose();
}

// The large view's tap numbers light as the taps sound: after a click each tap lights in turn,
// in the block where its echo leaves the slot, and none once the echoes have passed.
TEST(EditorTapPlaying, EachTapLightsWhereItsEchoSounds)
{
    Rig rig;
    Quorvex& plug = rig.Plug();
    auto* editor = dynamic_cast<QuorvexEditor*>(plug.GetGUI());
    ASSERT_NE(editor, nullptr);
    rig.Set(kDelayOn1, 1.0);
    rig.Set(kDelayMode1, DelayTapped);
    rig.Set(kDelayTaps1, 3.0); // four taps, 100 ms apart
    rig.Set(kTimebase1, 0.0);
    rig.Set(kDelayTapsTime1, 100.0);
    rig.Set(kDirectIn1, 100.0);
    rig.Set(kFeedback1, 0.0);
    IPlugBase& base = plug;
    base.OnGUIOpen();

    const int n = static_cast<int>(kRate);                             // one second
    const int clickAt = static_cast<int>(kRate / 4) / kBlock * kBlock; // after the fade-in
    std::vector<int> firstLit(4, -1);
    std::vector<int> lights; // the tap shown after each block
    Stereo click(kBlock);
    click.l[0] = click.r[0] = 1.0;
    Stereo out(static_cast<std::size_t>(n));
    for (int start = 0; start < n; start += kBlock)
    {
        const Stereo block = rig.Run(start == clickAt ? click : Stereo(kBlock));
        for (int i = 0; i < kBlock; ++i)
        {
            out.l[static_cast<std::size_t>(start + i)] = block.l[static_cast<std::size_t>(i)];
            out.r[static_cast<std::size_t>(start + i)] = block.r[static_cast<std::size_t>(i)];
        }
        editor->OnTimerTick();
        const int tap = editor->Delay().PlayingTap(0);
        lights.push_back(tap);
        if (tap >= 0 && tap < 4 && firstLit[static_cast<std::size_t>(tap)] < 0)
            firstLit[static_cast<std::size_t>(tap)] = start;
    }
    // The echoes in the output, one per tap: the first sample of each above half the loudest.
    std::vector<int> echoes;
    double loudest = 0.0;
    for (double v : out.l)
        loudest = std::max(loudest, std::abs(v));
    ASSERT_GT(loudest, 0.01);
    for (int i = 0; i < n; ++i)
        if (std::abs(out.l[static_cast<std::size_t>(i)]) > 0.5 * loudest &&
            (echoes.empty() || i - echoes.back() > 2 * kBlock))
            echoes.push_back(i);
    ASSERT_EQ(echoes.size(), 4u);
    // Each tap lights in the block that reads its echo; the output has it after the engine's path
    // delay (under 3 ms, far below one editor frame), the same for every tap.
    for (int t = 0; t < 4; ++t)
    {
        ASSERT_GE(firstLit[static_cast<std::size_t>(t)], 0) << "tap " << t + 1 << " never lit";
        const int lead = echoes[static_cast<std::size_t>(t)] - firstLit[static_cast<std::size_t>(t)];
        EXPECT_GE(lead, 0) << "tap " << t + 1;
        EXPECT_LE(lead, 4 * kBlock) << "tap " << t + 1;
        EXPECT_NEAR(lead, echoes[0] - firstLit[0], kBlock) << "tap " << t + 1;
    }
    EXPECT_EQ(lights.back(), -1) << "the echoes have passed";

    // Closed, the taps aren't watched.
    base.OnGUIClose();
    rig.Run(click);
    editor->OnTimerTick();
    EXPECT_EQ(editor->Delay().PlayingTap(0), -1);
}
