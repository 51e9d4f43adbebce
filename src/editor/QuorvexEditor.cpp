#include "editor/QuorvexEditor.h"

#include <dlfcn.h>

#include <filesystem>

#include "editor/BitmapList.h"
#include "editor/DelayPageControls.h"
#include "editor/FocusPanelControl.h"
#include "editor/FxPanelControls.h"
#include "editor/IGraphicsX11.h"
#include "editor/MainLayout.h"
#include "editor/ModPageControls.h"
#include "editor/PageLayouts.h"
#include "editor/PresetRowControls.h"
#include "editor/TimeHighlightControl.h"
#include "editor/ValuePopUpControl.h"
#include "fx/EffectTable.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

namespace
{
// Labels drawn live look like the background's knob labels.
constexpr IColor kKnobLabel = IColor::FromRGB(0xB8BFCC);

IText LiveLabelStyle()
{
    IText text;
    text.mSize = 10;
    text.mStyle = IText::kStyleBold;
    text.mColor = &kKnobLabel;
    return text;
}
} // namespace

QuorvexEditor::QuorvexEditor(IPlugBase* plug, const std::string& resourceDir)
    : IGraphics(plug, kEditorWidth, kEditorHeight, kEditorFPS), mBitmaps(kNumBitmaps),
      mBitmapLoaded(kNumBitmaps, false), mDelay(std::make_unique<DelayPages>(*this))
{
    SetResourceDir(resourceDir);
    SetPlatform(kX11PlatformType, MakeX11WindowFactory());
    AttachBackground(LoadIBitmap(-1, kBackgroundName, 1));

    // Pages first, so that the always-visible part (and its overlays) stays on top of them.
    for (const PageLayout& page : kPageLayouts)
        for (int instance = 0; instance < page.mInstances; ++instance)
        {
            const auto list = static_cast<EPageList>(page.mFirstList + instance);
            IBitmap art = LoadIBitmap(-1, page.mArtName, 1);
            art.W = kStageRect.W();
            art.H = kStageRect.H();
            mLists[list].push_back(AttachControl(new IBitmapControl(plug, kStageRect, -1, art)));
            for (const LayoutRow& row : page.mRows)
            {
                IControl* control = BuildRowControl(row, ParamOfRow(row, page, instance), instance);
                const int idx = control ? AttachControl(control) : -1;
                mListRowControl[list].push_back(idx);
                if (idx >= 0) mLists[list].push_back(idx);
            }
            if (page.mRows.data() == kEffectsLayout.data())
                for (int slot = 0; slot < 4; ++slot)
                    for (int k = 0; k < 5; ++k)
                    {
                        const int first = layout::FxKnobFirstRow(slot, k);
                        const std::vector<int>& at = mListRowControl[list];
                        const IRECT panel = layout::FxPanelRect(slot);
                        const int cover = AttachControl(
                            new IFxRowCoverControl(plug, layout::FxKnobRowArea(slot, k), panel.T, panel.B));
                        mLists[list].push_back(cover);
                        mFxGroups.push_back({list,
                                             k,
                                             at[first + 1],
                                             {at[first], at[first + 1], at[first + 2], at[first + 3]},
                                             cover});
                    }
        }

    // Over the overview's slots, the frames that mark their delay times after a timebase change:
    // around every time and factor knob of the slot.
    for (int slot = 0; slot < 4; ++slot)
    {
        IRECT around;
        for (const LayoutRow& row : kDelayLayout)
            for (int id : {kDelayTimeL1, kDelayTimeR1, kDelayFactorL1, kDelayFactorR1})
                if (row.mParam == id + slot && row.mKind != ELayoutKind::kPanel)
                    around = around.Union(row.mRect);
        if (around.Empty()) continue;
        mTimeHighlight[slot] =
            new ITimeHighlightControl(plug, around.Inset(-4), Colors().Role(layout::kSlotRole[slot]), FPS());
        mLists[kListDelay].push_back(AttachControl(mTimeHighlight[slot]));
    }

    for (const LayoutRow& row : kMainLayout)
    {
        IControl* control = nullptr;
        switch (row.mKind)
        {
        case ELayoutKind::kPageSelect:
            mPageTabs =
                new IRadioButtonsControl(plug, row.mRect, -1, kNumSelectablePages, Bitmap(row.mBitmap));
            mPageTabs->SetAction(
                [this](IControl&)
                {
                    const int page = mPageTabs->SelectedButton();
                    if (mActions.showPage)
                        mActions.showPage(page);
                    else
                        ShowPage(page, false);
                });
            control = mPageTabs;
            break;
        case ELayoutKind::kPageButton:
            mOptions = new ISwitchControl(plug, row.mRect, -1, Bitmap(row.mBitmap));
            mOptions->SetAction(
                [this](IControl&)
                {
                    if (mActions.toggleOptionsPage)
                        mActions.toggleOptionsPage();
                    else
                        ToggleOptionsPage(false);
                });
            control = mOptions;
            break;
        case ELayoutKind::kPresetName:
            mPresetName = new IPresetMenuControl(plug, row.mRect, Colors().Role(row.mColorRole),
                                                 [this]
                                                 {
                                                     if (mPresetActions.openMenu) mPresetActions.openMenu();
                                                 });
            control = mPresetName;
            break;
        case ELayoutKind::kPresetPrev:
        case ELayoutKind::kPresetNext:
        {
            const bool forward = row.mKind == ELayoutKind::kPresetNext;
            control = new IPresetButtonControl(plug, row.mRect,
                                               forward ? IPresetButtonControl::EGlyph::kNext
                                                       : IPresetButtonControl::EGlyph::kPrevious,
                                               Colors().Role(row.mColorRole),
                                               [this, forward]
                                               {
                                                   if (mPresetActions.step) mPresetActions.step(forward);
                                               });
            break;
        }
        case ELayoutKind::kFocus:
            mFocus = new IFocusPanelControl(plug, row.mRect, Colors().Role(row.mColorRole));
            control = mFocus;
            break;
        case ELayoutKind::kPresetSave:
            control = new IPresetButtonControl(plug, row.mRect, IPresetButtonControl::EGlyph::kSave,
                                               Colors().Role(row.mColorRole),
                                               [this]
                                               {
                                                   if (mPresetActions.save) mPresetActions.save();
                                               });
            break;
        default:
            control = BuildRowControl(row, row.mParam);
            break;
        }
        mRowControl.push_back(control ? AttachControl(control) : -1);
    }
    ShowLists(mPages.Shown());
}

QuorvexEditor::~QuorvexEditor() = default;

void QuorvexEditor::SetStepMaskActions(StepMaskActions actions)
{
    mDelay->SetActions(std::move(actions));
}

const IBitmap& QuorvexEditor::Bitmap(int id)
{
    if (!mBitmapLoaded[id])
    {
        mBitmaps[id] = LoadIBitmap(id, kBitmapRows[id].mName, kBitmapRows[id].mFrames);
        // A missing file keeps the table's size, so the control still has its place.
        if (!mBitmaps[id].mRaster)
        {
            mBitmaps[id].W = kBitmapRows[id].mW;
            mBitmaps[id].H = kBitmapRows[id].mH * kBitmapRows[id].mFrames;
        }
        mBitmapLoaded[id] = true;
    }
    return mBitmaps[id];
}

IControl* QuorvexEditor::BuildRowControl(const LayoutRow& row, int param, int instance)
{
    IPlugBase* plug = Plug();
    IControl* control = nullptr;
    const IColor* accent = row.mColorRole >= 0 ? Colors().Role(row.mColorRole) : nullptr;
    bool tip = true;
    switch (row.mKind)
    {
    case ELayoutKind::kLogo:
        control = new IBitmapControl(plug, row.mRect, -1, Bitmap(row.mBitmap));
        tip = false;
        break;
    case ELayoutKind::kMeter:
        control = new IBitmapControl(plug, row.mRect, -1, Bitmap(row.mBitmap));
        AddMeterControl(row.mIndex, control);
        tip = false;
        break;
    case ELayoutKind::kKnob:
    {
        const EArt art = kBitmapRows[row.mBitmap].mArt;
        const bool bipolar =
            art == EArt::kKnobBipolar || art == EArt::kKnobSoftBipolar || art == EArt::kModKnob;
        control = new IBitmapKnobControl(plug, row.mRect.L, row.mRect.T, param, Bitmap(row.mBitmap), accent,
                                         bipolar);
        break;
    }
    case ELayoutKind::kSwitch:
        control = new ISwitchControl(plug, row.mRect, param, Bitmap(row.mBitmap));
        break;
    case ELayoutKind::kPopup:
        control = new ISwitchPopUpControl(plug, row.mRect, param, Bitmap(row.mBitmap));
        break;
    case ELayoutKind::kValuePopup:
        control = new IValuePopUpControl(plug, row.mRect, param, accent);
        break;
    case ELayoutKind::kFxKnobLabel:
        control = new IFxKnobLabelControl(plug, row.mRect, param, LiveLabelStyle(), row.mIndex);
        tip = false;
        break;
    case ELayoutKind::kFxIcon:
    {
        std::array<IBitmap, kFxIcons.size()> icons;
        for (size_t i = 0; i < kFxIcons.size(); ++i)
            icons[i] = Bitmap(BitmapId(kFxIcons[i].mIcon));
        control = new IFxIconControl(plug, row.mRect, param, icons);
        tip = false;
        break;
    }
    case ELayoutKind::kLiveLabel:
        control =
            new ISelectorLabelControl(plug, row.mRect, param, LiveLabelStyle(), kMasterFxKnobLabels.data(),
                                      static_cast<int>(kMasterFxKnobLabels.size()), row.mIndex);
        tip = false;
        break;
    default:
        control = BuildModPageControl(plug, row, param, row.mBitmap >= 0 ? &Bitmap(row.mBitmap) : nullptr,
                                      accent, {[this](int set) { PickColorSet(set); }});
        if (!control) return BuildDelayPageControl(*this, row, param, instance);
        break;
    }
    if (tip)
        if (const IParamRecord* p = plug ? plug->GetParam(control->ParamIdx()) : nullptr)
            control->SetTooltip(p->name);
    return control;
}

void QuorvexEditor::HighlightTimes(int slot)
{
    if (ITimeHighlightControl* h = TimeHighlight(slot)) h->Start();
}

void QuorvexEditor::TickHighlights()
{
    for (ITimeHighlightControl* h : mTimeHighlight)
        if (h) h->Tick();
}

void QuorvexEditor::TickTimedLabels()
{
    for (IMyTextControl* label : mTimedLabels)
        label->TimedTick();
}

void QuorvexEditor::FlushTimedLabels()
{
    for (IMyTextControl* label : mTimedLabels)
        while (label->TimedTextShowing())
            label->TimedTick();
}

void QuorvexEditor::AddMeterControl(int id, IControl* control)
{
    if (id >= 0 && id < EditorReadouts::kNumMeters && control) mMeterControls[id].push_back(control);
}

void QuorvexEditor::SetMeter(int id, double value)
{
    if (id < 0 || id >= EditorReadouts::kNumMeters) return;
    for (IControl* c : mMeterControls[id])
    {
        auto* strip = dynamic_cast<IBitmapControl*>(c);
        const int frames = strip ? std::max(1, strip->Bitmap().N) : 0;
        if (strip && IBitmapControl::FrameForValue(value, frames) == strip->CurrentFrame()) continue;
        c->SetValueFromPlug(value);
    }
}

void QuorvexEditor::SetPlayingStep(int gate, int step)
{
    const auto g = static_cast<unsigned>(gate) % 4;
    if (mPlayingStep[g] == step) return;
    mPlayingStep[g] = step;
    const int first = kGate1Step1 + static_cast<int>(g) * 16;
    for (int idx : mLists[kListGates])
        if (auto* fader = dynamic_cast<IStepFaderControl*>(GetControl(idx)))
            if (fader->ParamIdx() >= first && fader->ParamIdx() < first + 16)
                fader->SetPlaying(fader->ParamIdx() - first == step);
}

void QuorvexEditor::SetPresetTexts(const std::string& name, const std::string& folderLabel)
{
    if (mPresetName) mPresetName->SetTexts(name, folderLabel);
}

IRECT QuorvexEditor::PresetMenuAnchor() const
{
    return mPresetName ? mPresetName->GetRECT() : IRECT();
}

IControl* QuorvexEditor::ControlOfRow(int row) const
{
    return row >= 0 && row < static_cast<int>(mRowControl.size()) ? GetControl(mRowControl[row]) : nullptr;
}

IControl* QuorvexEditor::ControlOfPageRow(EPageList list, int row) const
{
    const std::vector<int>& rows = mListRowControl[list];
    return row >= 0 && row < static_cast<int>(rows.size()) ? GetControl(rows[row]) : nullptr;
}

void QuorvexEditor::ShowLists(int page)
{
    SetAllControlsDirty();
    const EPageList shown = ListOfPage(page);
    for (int list = 0; list < kNumPageLists; ++list)
        for (int idx : mLists[list])
            GetControl(idx)->Hide(list != shown);
    if (mPageTabs)
    {
        // The large views light the delay tab; the options page leaves the tab it came from lit.
        int tab = page;
        if (PageState::IsLargeView(page)) tab = kPageDelay;
        if (page == kPageOptions) tab = mPageTabs->SelectedButton();
        mPageTabs->SetValueFromPlug(static_cast<double>(tab) / (kNumSelectablePages - 1));
    }
    if (mOptions) mOptions->SetValueFromPlug(page == kPageOptions ? 1.0 : 0.0);
    RefreshFxKnobs();
    mDelay->Refresh();
}

void QuorvexEditor::RefreshFxKnobs()
{
    const EPageList shown = ListOfPage(mPages.Shown());
    for (const FxKnobGroup& group : mFxGroups)
    {
        const IControl* label = GetControl(group.label);
        const FxTypeInfo* type = group.list == shown && label
                                     ? FxTypeOfParam(Plug(), label->ParamIdx(), label->GetValue())
                                     : nullptr;
        const bool hide = !type || type->hidden[group.knob];
        for (int idx : group.controls)
            if (IControl* c = GetControl(idx)) c->Hide(hide);
        // The cover shows on its own page only, wherever the knob is out (OFF leaves out all five).
        GetControl(group.cover)->Hide(!(group.list == shown && hide));
    }
}

void QuorvexEditor::SetParameterFromPlug(int id, double value, bool normalized)
{
    IGraphics::SetParameterFromPlug(id, value, normalized);
    if (id >= kFX1PR && id <= kFX4PO) RefreshFxKnobs();
    mDelay->OnParam(id);
}

void QuorvexEditor::PickColorSet(int index)
{
    const int applied = SetColorSet(index);
    if (mColorSetHandler) mColorSetHandler(applied);
}

int QuorvexEditor::ShowPage(int page, bool presetLoading)
{
    const int shown = mPages.Show(page, presetLoading);
    ShowLists(shown);
    return shown;
}

int QuorvexEditor::ToggleOptionsPage(bool presetLoading)
{
    const int shown = mPages.ToggleOptions(presetLoading);
    ShowLists(shown);
    return shown;
}

int QuorvexEditor::ToggleLargeDelayView(bool presetLoading)
{
    const int shown = mPages.ToggleLargeDelayView(presetLoading);
    ShowLists(shown);
    return shown;
}

std::string BundleResourceDir()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(&BundleResourceDir), &info) || !info.dli_fname) return {};
    // <bundle>/Contents/x86_64-linux/Quorvex.so -> <bundle>/Contents/Resources/img
    const std::filesystem::path module(info.dli_fname);
    return (module.parent_path().parent_path() / "Resources" / "img").string();
}
