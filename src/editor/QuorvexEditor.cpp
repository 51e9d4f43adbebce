#include "editor/QuorvexEditor.h"

#include <dlfcn.h>

#include <filesystem>

#include "editor/BitmapList.h"
#include "editor/IGraphicsX11.h"
#include "editor/MainLayout.h"
#include "editor/ValuePopUpControl.h"
#include "params/IParamRecord.h"

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
    : IGraphics(plug, kEditorWidth, kEditorHeight, kEditorFPS)
{
    SetResourceDir(resourceDir);
    SetPlatform(kX11PlatformType, MakeX11WindowFactory());
    AttachBackground(LoadIBitmap(-1, kBackgroundName, 1));
    std::vector<IBitmap> bitmaps(kNumBitmaps);
    std::vector<bool> loaded(kNumBitmaps, false);
    auto bitmap = [&](int id) -> const IBitmap&
    {
        if (!loaded[id])
        {
            bitmaps[id] = LoadIBitmap(id, kBitmapRows[id].mName, kBitmapRows[id].mFrames);
            // A missing file keeps the table's size, so the control still has its place.
            if (!bitmaps[id].mRaster)
            {
                bitmaps[id].W = kBitmapRows[id].mW;
                bitmaps[id].H = kBitmapRows[id].mH * kBitmapRows[id].mFrames;
            }
            loaded[id] = true;
        }
        return bitmaps[id];
    };
    auto tooltip = [&](IControl* c)
    {
        if (const IParamRecord* p = plug ? plug->GetParam(c->ParamIdx()) : nullptr) c->SetTooltip(p->name);
    };

    for (const LayoutRow& row : kMainLayout)
    {
        IControl* control = nullptr;
        const IColor* accent = row.mColorRole >= 0 ? Colors().Role(row.mColorRole) : nullptr;
        switch (row.mKind)
        {
        case ELayoutKind::kLogo:
        case ELayoutKind::kMeter:
            control = new IBitmapControl(plug, row.mRect, -1, bitmap(row.mBitmap));
            break;
        case ELayoutKind::kKnob:
        {
            const EArt art = kBitmapRows[row.mBitmap].mArt;
            const bool bipolar = art == EArt::kKnobBipolar || art == EArt::kKnobSoftBipolar;
            control = new IBitmapKnobControl(plug, row.mRect.L, row.mRect.T, row.mParam, bitmap(row.mBitmap),
                                             accent, bipolar);
            tooltip(control);
            break;
        }
        case ELayoutKind::kSwitch:
            control = new ISwitchControl(plug, row.mRect, row.mParam, bitmap(row.mBitmap));
            tooltip(control);
            break;
        case ELayoutKind::kPopup:
            control = new ISwitchPopUpControl(plug, row.mRect, row.mParam, bitmap(row.mBitmap));
            tooltip(control);
            break;
        case ELayoutKind::kValuePopup:
            control = new IValuePopUpControl(plug, row.mRect, row.mParam, accent);
            tooltip(control);
            break;
        case ELayoutKind::kLiveLabel:
            control = new ISelectorLabelControl(plug, row.mRect, row.mParam, LiveLabelStyle(),
                                                kMasterFxKnobLabels.data(),
                                                static_cast<int>(kMasterFxKnobLabels.size()), row.mIndex);
            break;
        case ELayoutKind::kPageSelect:
            mPageTabs =
                new IRadioButtonsControl(plug, row.mRect, -1, kNumSelectablePages, bitmap(row.mBitmap));
            mPageTabs->SetAction([this](IControl&) { PageAsked(mPageTabs->SelectedButton()); });
            control = mPageTabs;
            break;
        case ELayoutKind::kPageButton:
            mOptions = new ISwitchControl(plug, row.mRect, -1, bitmap(row.mBitmap));
            mOptions->SetAction([this](IControl&)
                                { PageAsked(mPage == kOptionsPage ? mPageBeforeOptions : kOptionsPage); });
            control = mOptions;
            break;
        default:
            break;
        }
        mRowControl.push_back(control ? AttachControl(control) : -1);
    }
    SelectPage(mPage);
}

IControl* QuorvexEditor::ControlOfRow(int row) const
{
    return row >= 0 && row < static_cast<int>(mRowControl.size()) ? GetControl(mRowControl[row]) : nullptr;
}

void QuorvexEditor::PageAsked(int page)
{
    SelectPage(page);
    if (mPageHandler) mPageHandler(page);
}

void QuorvexEditor::SelectPage(int page)
{
    if (page == kOptionsPage && mPage != kOptionsPage) mPageBeforeOptions = mPage;
    mPage = page;
    if (mPageTabs)
    {
        // The large delay views light the delay tab; the options page leaves the tab it came from.
        const int shown = page == kOptionsPage ? mPageBeforeOptions : page;
        const int tab = shown < kNumSelectablePages ? shown : kDelayTab;
        mPageTabs->SetValueFromPlug(static_cast<double>(tab) / (kNumSelectablePages - 1));
    }
    if (mOptions) mOptions->SetValueFromPlug(page == kOptionsPage ? 1.0 : 0.0);
}

std::string BundleResourceDir()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(&BundleResourceDir), &info) || !info.dli_fname) return {};
    // <bundle>/Contents/x86_64-linux/Quorvex.so -> <bundle>/Contents/Resources/img
    const std::filesystem::path module(info.dli_fname);
    return (module.parent_path().parent_path() / "Resources" / "img").string();
}
