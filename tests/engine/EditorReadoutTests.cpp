// The editor on the running engine: meters and modulator positions while a window is open, the
// focus panel's texts, the options page, and the marks that follow what the engine plays.
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

// The main page's control of the first layout row that `match` accepts.
template <typename Match> IControl* MainControl(QuorvexEditor& editor, Match match)
{
    const LayoutRow* row = std::find_if(std::begin(kMainLayout), std::end(kMainLayout), match);
    return row == std::end(kMainLayout) ? nullptr : editor.ControlOfRow(static_cast<int>(row - kMainLayout));
}

// A left click in the middle of `c`, dragged `dy` pixels down before the release, then a tick.
void Click(QuorvexEditor& editor, IControl* c, int dy = 0)
{
    ASSERT_NE(c, nullptr);
    ASSERT_FALSE(c->IsHidden());
    const IRECT r = c->GetRECT();
    const IMouseMod left{true, false, false, false, false};
    editor.OnMouseDown((r.L + r.R) / 2, (r.T + r.B) / 2, left);
    if (dy != 0) editor.OnMouseDrag((r.L + r.R) / 2, (r.T + r.B) / 2 + dy, left);
    editor.OnMouseUp((r.L + r.R) / 2, (r.T + r.B) / 2 + dy, left);
    editor.OnTimerTick();
}

// A meter strip of 64 frames that a page would hold.
IBitmapControl* AddStrip(QuorvexEditor& editor, IPlugBase* plug, int meter)
{
    auto* c = new IBitmapControl(plug, IRECT(0, 0, 10, 10), -1,
                                 IBitmap{.mRaster = nullptr, .W = 10, .H = 640, .N = 64});
    editor.AttachControl(c);
    editor.AddMeterControl(meter, c);
    return c;
}

// Slot 1 alone (the engine rig) with its editor; the window is closed until Open().
class EditorOnEngine : public ::testing::Test
{
  protected:
    void SetUp() override { ASSERT_NE(editor, nullptr); }
    void Open(bool open)
    {
        IPlugBase& base = plug;
        open ? base.OnGUIOpen() : base.OnGUIClose();
    }
    Rig rig;
    Quorvex& plug = rig.Plug();
    QuorvexEditor* editor = dynamic_cast<QuorvexEditor*>(plug.GetGUI());
};
} // namespace

// Meters and modulator positions reach the editor while its window is open.
TEST_F(EditorOnEngine, MetersFollowTheAudioWhileTheWindowIsOpenAndRestInSilence)
{
    const auto output = [&](int channel)
    {
        return dynamic_cast<IBitmapControl*>(
            MainControl(*editor, [&](const LayoutRow& r)
                        { return r.mKind == ELayoutKind::kMeter && r.mIndex == channel; }));
    };
    IBitmapControl *outL = output(EditorReadouts::kOutL), *outR = output(EditorReadouts::kOutR);
    ASSERT_TRUE(outL && outR);
    IBitmapControl* slot1 = AddStrip(*editor, &plug, EditorReadouts::kSlot1);
    IBitmapControl* slot2 = AddStrip(*editor, &plug, EditorReadouts::kSlot1 + 1);
    IBitmapControl* lfo1 = AddStrip(*editor, &plug, EditorReadouts::kMod1);
    HoldLfo(rig, 0, 100.0);
    auto frames = [&](int n, double amplitude)
    {
        for (int f = 0; f < n; ++f)
        {
            rig.Run(Sine(kFrameSamples, 1000.0, amplitude));
            editor->OnTimerTick();
        }
    };

    // Closed: the audio thread publishes nothing, so nothing moves.
    frames(10, 0.5);
    EXPECT_EQ(outL->GetValue(), 0.0);
    EXPECT_EQ(slot1->GetValue(), 0.0);

    Open(true);
    frames(30, 0.5);
    // Peaks of 0.5 (-6 dB) read 0.9 on the 60 dB scale once the needle has settled (30 frames
    // of a one-pole at exp(-2 pi / 40) per frame leave 1 %).
    for (IBitmapControl* meter : {outL, outR})
        EXPECT_NEAR(meter->GetValue(), 0.9, 0.015);
    // The slot's shaping saturates: 0.5 x 1.5 = 0.75 gives 3 / 3.25, about 0.92.
    EXPECT_NEAR(slot1->GetValue(), 0.923, 0.015);
    EXPECT_EQ(slot2->GetValue(), 0.0); // slot 2 is off
    const double last = rig.Source(kModSourceLFO1)[kBlock - 1];
    EXPECT_GT(std::abs(last), 0.1);
    EXPECT_NEAR(lfo1->GetValue(), last, 1e-12); // the block before the tick may differ by rounding

    // In silence every meter falls to its empty picture (and stops redrawing there).
    frames(100, 0.0);
    for (IBitmapControl* meter : {outL, outR, slot1})
        EXPECT_EQ(meter->CurrentFrame(), 1);
    Open(false);
}

// The focus panel names a touched control the way the producer thinks of it: an effect knob by
// its effect's name for it, anything else by its parameter; it follows the value however it
// changes (automation here).
TEST_F(EditorOnEngine, FocusPanelFollowsTheTouchedControlAndItsValue)
{
    IFocusPanelControl* panel = editor->FocusPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->Label(), "");
    editor->ShowPage(kPagePreFx, false);
    // Each row: whether the knob is touched (else its value moves under the touched knob), the
    // effect's type and its name, the knob and its parameter, the value, the label and the text.
    for (const auto& [touch, type, typeName, knob, param, value, label, shown] :
         {std::tuple{true, kFX1PR, "COMPRESSOR", 0, kFXParam1PR1, 62.5, "COMP THRESHOLD", "62.50 %"},
          {false, kFX1PR, "COMPRESSOR", 0, kFXParam1PR1, 10.0, "COMP THRESHOLD", "10.00 %"},
          {true, kFX2PR, "FREQ SHIFT", 1, kFXParam2PR2, 100.0, "FREQSHIFT SCALE", "x100"}})
    {
        SCOPED_TRACE(shown);
        rig.Set(param, value);
        if (touch)
        {
            IParamRecord* record = plug.GetParam(type);
            double index = -1;
            ASSERT_TRUE(record->GetValueFromDisplayText(typeName, index));
            rig.Set({{type, index}, {param, value}}); // the value after the type's defaults
            editor->SetParameterFromPlug(type, record->GetNormalized(), true);
            Click(*editor, editor->ControlOfPageRow(kListPreFx, layout::FxKnobFirstRow(knob, knob)));
        }
        editor->OnTimerTick();
        EXPECT_EQ(panel->Label(), label);
        EXPECT_EQ(panel->Value(), shown);
    }
    editor->ShowPage(kPageDelay, false);
    Click(*editor, MainControl(*editor, [](const LayoutRow& r)
                               { return r.mKind == ELayoutKind::kKnob && r.mParam == kWetLevel; }));
    EXPECT_EQ(panel->Label(), plug.GetParam(kWetLevel)->name);
    EXPECT_EQ(plug.Fields().mFocusedParam, kWetLevel);
}

// The options page's own controls act on the engine, and a state saved with them shows the same
// options in a fresh instance's editor.
TEST_F(EditorOnEngine, OptionsAttenuatorDryKillAndColourSetReachTheEngineAndBack)
{
    editor->ShowPage(kPageOptions, false);
    auto* readout = dynamic_cast<ITextControl*>(editor->ControlOfPageRow(kListOptions, kOptionsReadoutRow));
    ASSERT_NE(readout, nullptr);
    editor->OnTimerTick();
    EXPECT_EQ(readout->GetText(), "0 dB");

    // A drag down the attenuator lowers the engine's input gain and the readout says by how much.
    Click(*editor, editor->ControlOfPageRow(kListOptions, kOptionsAttenuatorRow), 60);
    const double position = plug.Fields().mInputAttenuator;
    EXPECT_LT(InputAttenuatorDb(position), 0);
    EXPECT_DOUBLE_EQ(plug.Fields().mAttenuation, InputAttenuatorGain(position));
    EXPECT_EQ(readout->GetText(), std::to_string(InputAttenuatorDb(position)) + " dB");
    // Dry kill takes the dry path out whatever "Dry Level" says.
    Click(*editor, editor->ControlOfPageRow(kListOptions, kOptionsDryKillRow));
    EXPECT_TRUE(plug.Fields().mDryKill);
    EXPECT_EQ(plug.Fields().mDryLevel, 0.0);
    editor->PickColorSet(4);
    EXPECT_EQ(plug.Fields().mColorSet, 4);

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
    // Restored, dry kill holds the dry gain at 0 whatever "Dry Level" is turned to.
    EXPECT_EQ(other.Plug().Fields().mDryLevel, 0.0);
    other.Plug().SetParameterFromGUI(kDryLevel, 0.9);
    EXPECT_EQ(other.Plug().Fields().mDryLevel, 0.0);
    EXPECT_NEAR(other.Get(kDryLevel), 90.0, 1e-9);
}

// After a timebase change the slot's delay times blink for five seconds: hidden in the first half
// of each second, shown in the second half; a state or preset load is no such change.
TEST_F(EditorOnEngine, TimeHighlightBlinksFiveSecondsAfterATimebaseChange)
{
    ITimeHighlightControl* h = editor->TimeHighlight(1);
    ASSERT_NE(h, nullptr);
    const int fps = editor->FPS();
    rig.Set(kTimebase2, 3.0);
    int lit = 0, firstLit = -1, ticks = 0;
    for (; ticks < 10 * fps; ++ticks)
    {
        editor->OnTimerTick();
        if (h->Lit() && lit++ == 0) firstLit = ticks;
        if (!h->Active()) break;
    }
    EXPECT_EQ(ticks, 5 * fps - 1); // gone after five seconds
    EXPECT_EQ(lit, 5 * (fps - fps / 2));
    EXPECT_EQ(firstLit, fps / 2 - 1);
    EXPECT_FALSE(editor->TimeHighlight(0)->Active()); // only the slot that changed

    // A state restored is not a change the user made.
    ByteChunk chunk;
    ASSERT_TRUE(plug.SerializeState(chunk));
    plug.UnserializeState(chunk, 0);
    editor->OnTimerTick();
    EXPECT_FALSE(h->Active());
}

// In TAPPED mode the slot's lines are read by the tap engine: four taps of 100 ms steps give
// four echoes 100 ms apart and none after them. The large view's tap numbers light as the taps
// sound: each in the block where its echo leaves the slot, and none once the echoes have passed.
TEST_F(EditorOnEngine, TapPlayingEachTapLightsWhereItsEchoSounds)
{
    rig.Set({{kDelayOn1, 1.0}, {kDelayMode1, DelayTapped}, {kDelayTaps1, 3.0}}); // four taps
    rig.Set({{kTimebase1, 0.0}, {kDelayTapsTime1, 100.0}, {kDirectIn1, 100.0}, {kFeedback1, 0.0}});
    Open(true);

    Stereo in(static_cast<std::size_t>(kRate)); // one second, a click after the fade-in
    const int clickAt = static_cast<int>(kRate / 4) / kBlock * kBlock;
    in.l[clickAt] = in.r[clickAt] = 1.0;
    std::vector<int> firstLit(4, -1);
    int shown = 0; // the tap shown after the last block
    const auto watch = [&](int start)
    {
        editor->OnTimerTick();
        shown = editor->Delay().PlayingTap(0);
        if (shown >= 0 && shown < 4 && firstLit[shown] < 0) firstLit[shown] = start;
    };
    const Stereo out = Stream(plug, in, kBlock, false, nullptr, watch);
    // The echoes in the output: the first sample of each above half the loudest.
    std::vector<int> echoes;
    const double loudest = Peak(out);
    ASSERT_GT(loudest, 0.01);
    for (int i = 0; i < out.Size(); ++i)
        if (std::abs(out.l[i]) > 0.5 * loudest && (echoes.empty() || i - echoes.back() > 2 * kBlock))
            echoes.push_back(i);
    ASSERT_EQ(echoes.size(), 4u);
    // The first echo 100 ms behind the click's way through the plug-in (two blocks and 1 ms).
    EXPECT_NEAR(echoes[0] - clickAt, 100 * kMs + 2 * kBlock + kMs, 3);
    // Each tap lights in the block that reads its echo; the output has it after the engine's path
    // delay (under 3 ms, far below one editor frame), the same for every tap.
    for (int t = 0; t < 4; ++t)
    {
        SCOPED_TRACE(t + 1);
        EXPECT_NEAR(echoes[t] - echoes[0], t * 100 * kMs, 4);
        ASSERT_GE(firstLit[t], 0) << "never lit";
        const int lead = echoes[t] - firstLit[t];
        EXPECT_TRUE(lead >= 0 && lead <= 4 * kBlock) << lead;
        EXPECT_NEAR(lead, echoes[0] - firstLit[0], kBlock);
    }
    EXPECT_EQ(shown, -1) << "the echoes have passed";

    // Closed, the taps aren't watched.
    Open(false);
    rig.Run(in);
    editor->OnTimerTick();
    EXPECT_EQ(editor->Delay().PlayingTap(0), -1);
}

// The gate page marks the step each gate plays: one column per gate, of that gate, and gate 1's
// mark on the step the engine plays, moving along as it plays.
TEST_F(EditorOnEngine, GateStepsThePlayingStepIsMarked)
{
    rig.Set(kGate1On, 1.0);
    Open(true);
    std::vector<int> seen;
    for (int frame = 0; frame < 60; ++frame)
    {
        rig.Run(Stereo(kFrameSamples));
        editor->OnTimerTick();
        std::vector<int> lit;
        for (int idx : editor->ListControls(kListGates))
            if (auto* f = dynamic_cast<IStepFaderControl*>(editor->GetControl(idx)); f && f->Playing())
                lit.push_back(f->ParamIdx());
        ASSERT_EQ(lit.size(), 4u);
        EXPECT_EQ(lit[0], kGate1Step1 + editor->PlayingStep(0));
        if (seen.empty() || seen.back() != lit[0]) seen.push_back(lit[0]);
    }
    EXPECT_GT(seen.size(), 2u);
    Open(false);
}

// Each LFO's wave display draws the wave its choice names, as the LFO plays it.
TEST_F(EditorOnEngine, LfoWaveDisplayFollowsTheWaveAndItsPolarity)
{
    std::vector<WaveDraw*> waves;
    for (int idx : editor->ListControls(kListLfo))
        if (auto* w = dynamic_cast<WaveDraw*>(editor->GetControl(idx))) waves.push_back(w);
    ASSERT_EQ(waves.size(), 4u);
    editor->OnTimerTick();
    for (WaveDraw* w : waves)
        EXPECT_TRUE(w->HasWave());
    // LFO 2 on "SIN1" against "TRIANGLE": the shapes differ at an eighth of the cycle.
    double triangle = -1;
    ASSERT_TRUE(plug.GetParam(kLFOWave2)->GetValueFromDisplayText("TRIANGLE", triangle));
    // Then negative polarity draws the wave upside down.
    for (const auto& [id, value] : {std::pair{kLFOWave2, triangle}, {kLFOPol2, 1.0}})
    {
        const double before = waves[1]->ValueAt(0.125);
        rig.Set(id, value);
        editor->OnTimerTick();
        EXPECT_GT(std::abs(waves[1]->ValueAt(0.125) - before), 0.05) << id;
    }
    EXPECT_EQ(waves[0]->ValueAt(0.125), waves[2]->ValueAt(0.125)); // the others untouched, alike
}

// The large view's tap buttons show the masks the engine plays and write them back.
TEST_F(EditorOnEngine, StepMaskTapButtonsShowAndWriteTheMasks)
{
    rig.Set(kDelayTaps1, 7.0); // eight taps
    editor->ShowPage(kPageLargeLevels, false);
    editor->OnTimerTick();
    // A fresh instance plays every tap, and its buttons say so.
    for (int side : {0, 1})
        EXPECT_EQ(editor->Delay().TapOnMask(0, side), 0xFFFF);

    // Tap 3's left button, in the first step row ("TAP L").
    Click(*editor, editor->ControlOfPageRow(kListLarge1, layout::StepRowControl(0, 2)));
    EXPECT_EQ(plug.Fields().mTapOnMask[0], 0xFFFF & ~(1 << 2));
    EXPECT_EQ(plug.Fields().mTapOnMask[1], 0xFFFF);

    // A loaded state's masks reach the buttons.
    plug.Fields().mTapOnMask[3] = 0x00F0;
    editor->OnTimerTick();
    EXPECT_EQ(editor->Delay().TapOnMask(1, 1), 0x00F0);
}
