// The effect pages built from their table: one panel per slot on each of the pre, feedback and
// post pages, on that position's parameters, with knob names and knobs that follow the type.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "CatalogueEditor.h"
#include "editor/FxPanelControls.h"
#include "editor/PageLayouts.h"

using namespace editortest;

namespace
{
struct EffectPages : CatalogueEditor
{
    // The entry of a type parameter's menu that carries `label`.
    int MenuIndex(int param, const char* label)
    {
        const IParamRecord* p = plug.GetParam(param);
        for (int i = 0; i < static_cast<int>(p->displayTexts.size()); ++i)
            if (std::strcmp(p->displayTexts[i].text, label) == 0) return i;
        return -1;
    }
    IControl* Row(EPageList list, int slot, int knob, int part)
    {
        return editor.ControlOfPageRow(list, layout::FxKnobFirstRow(slot, knob) + part);
    }
    std::vector<std::string> Names(EPageList list, int slot)
    {
        std::vector<std::string> names;
        for (int k = 0; k < 5; ++k)
        {
            auto* label = dynamic_cast<IFxKnobLabelControl*>(Row(list, slot, k, 1));
            names.push_back(label && !label->IsHidden() ? label->Text() : "-");
        }
        return names;
    }
};
} // namespace

TEST_F(EffectPages, KnobNamesAndKnobsFollowTheType)
{
    // {page shown while the type is set, type, slot, effect, knob names}. The feedback menu is a
    // list of its own (its pitch shifter has one side); a type set on a page not shown shows later.
    const std::tuple<int, int, int, const char*, std::vector<std::string>> cases[] = {
        {kPagePreFx, kFX2PR, 1, "COMPRESSOR", {"THRESH", "RATIO", "ATTACK", "RELEASE", "GAIN"}},
        {kPagePreFx, kFX2PR, 1, "PITCH SHIFT ST", {"COARSE L", "COARSE R", "SIZE", "DETUNE", "MIX"}},
        {kPageFeedbackFx, kFX1FB, 0, "PITCH SHIFT", {"COARSE", "FINE", "SIZE", "DETUNE", "MIX"}},
        {kPageLfo, kFX4PO, 3, "VOWEL", {"VOWEL POS", "MODE", "SPREAD", "GAIN", "DIM"}}};
    for (const auto& [page, type, slot, effect, names] : cases)
    {
        editor.ShowPage(page, false);
        SetIndex(type, MenuIndex(type, effect));
        const int shown = page == kPageLfo ? kPagePostFx : page;
        editor.ShowPage(shown, false);
        EXPECT_EQ(Names(ListOfPage(shown), slot), names) << effect;
    }
    // OFF shows no knob at all.
    editor.ShowPage(kPagePreFx, false);
    SetIndex(kFX2PR, 0);
    for (int k = 0; k < 5; ++k)
        for (int part = 0; part < 4; ++part)
            EXPECT_TRUE(Row(kListPreFx, 1, k, part)->IsHidden());
}

// A knob that a type leaves out leaves no printed scale or "DEPTH" behind: its row draws as the
// plain panel (each pixel line one colour), and comes back with a type that has the knob.
TEST_F(EffectPages, ARowWithoutItsKnobShowsThePlainPanel)
{
    editor.ShowPage(kPagePostFx, false);
    const auto rowIsPlain = [&](int knob)
    {
        editor.OnTimerTick();
        IRaster& raster = editor.Raster();
        const IRECT knobRect = Row(kListPostFx, 0, knob, 0)->GetRECT();
        // The knob with its scale and name, and the depth knob with its "DEPTH".
        const IRECT area(knobRect.L - 4, knobRect.T - 4, knobRect.L + 110, knobRect.B + 14);
        const int stride = raster.Stride() / 4;
        for (int y = area.T; y < area.B; ++y)
            for (int x = area.L; x < area.R; ++x)
                if (raster.Pixels()[y * stride + x] != raster.Pixels()[y * stride + area.L]) return false;
        return true;
    };
    SetIndex(kFX1PO, MenuIndex(kFX1PO, "MULTI SVF")); // no second knob
    ASSERT_TRUE(Row(kListPostFx, 0, 1, 0)->IsHidden());
    EXPECT_TRUE(rowIsPlain(1));
    EXPECT_FALSE(rowIsPlain(0)) << "a knob that is there draws";
    SetIndex(kFX1PO, MenuIndex(kFX1PO, "VOWEL"));
    EXPECT_FALSE(rowIsPlain(1));
}
