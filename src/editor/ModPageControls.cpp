#include "editor/ModPageControls.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "editor/IGraphics.h"
#include "editor/MainLayout.h"
#include "editor/ValuePopUpControl.h"
#include "editor/WaveDraw.h"
#include "params/IParamRecord.h"

IStepFaderControl::IStepFaderControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                                     const IColor* accent)
    : IControl(plug, rect, paramIdx), mBitmap(bitmap), mAccent(accent)
{
}

double IStepFaderControl::ValueAtY(int y) const
{
    const double span = mRect.H() - 2 * kInset;
    if (span <= 0.0) return 0.0;
    return std::clamp((mRect.B - kInset - y) / span, 0.0, 1.0);
}

void IStepFaderControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    mValue = ValueAtY(y);
    SetDirty(true);
}

void IStepFaderControl::OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod)
{
    const double value = ValueAtY(y);
    if (value == mValue) return;
    mValue = value;
    SetDirty(true);
}

void IStepFaderControl::SetPlaying(bool playing)
{
    if (playing == mPlaying) return;
    mPlaying = playing;
    mDirty = true;
}

void IStepFaderControl::Draw(IGraphics* graphics)
{
    graphics->DrawBitmap(mBitmap, mRect, IBitmapControl::FrameForValue(mValue, mBitmap.N), &mBlend);
    // The playing step: its frame lit in the accent.
    if (mPlaying && mAccent) graphics->DrawRect(*mAccent, mRect);
    // The level's edge in the page's accent, so the steps read as one curve.
    if (!mAccent || mValue <= 0.0) return;
    const int top = mRect.B - kInset - static_cast<int>(mValue * (mRect.H() - 2 * kInset) + 0.5);
    graphics->FillIRect(*mAccent, IRECT(mRect.L + kInset, top, mRect.R - kInset, top + 2));
}

IColorSetPopUpControl::IColorSetPopUpControl(IPlugBase* plug, const IRECT& rect, const IColor* accent,
                                             std::function<void(int)> pick)
    : IControl(plug, rect), mAccent(accent), mPick(std::move(pick))
{
}

const char* IColorSetPopUpControl::SetName() const
{
    const int current = mGraphics ? ValidColorSet(mGraphics->Colors().Current()) : 0;
    return kColorSets[current].mName;
}

void IColorSetPopUpControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mGraphics) return;
    auto menu = std::make_shared<IPopupMenu>();
    for (const ColorSetRow& set : kColorSets)
        menu->AddItem(set.mName);
    menu->CheckItemAlone(ValidColorSet(mGraphics->Colors().Current()));
    mGraphics->CreateIPopupMenu(menu, mRect,
                                [this](IPopupMenu*, int index)
                                {
                                    if (index < 0 || index >= kNumColorSets) return;
                                    if (mPick) mPick(index);
                                    mDirty = true;
                                });
}

void IColorSetPopUpControl::Draw(IGraphics* graphics)
{
    // Drawn as the pages' value fields are, so the options read like the rest of the editor.
    DrawValueField(graphics, mRect, mAccent, SetName());
}

IStepArrowControl::IStepArrowControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                                     int step)
    : IBitmapControl(plug, rect, paramIdx, bitmap), mStep(step)
{
}

void IStepArrowControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    const IParamRecord* param = mPlug ? mPlug->GetParam(mParamIdx) : nullptr;
    if (!param) return;
    const int entries = static_cast<int>(std::lround(param->max - param->min)) + 1;
    const int current = static_cast<int>(std::lround(param->QuantizedFromNormalized(mValue) - param->min));
    const int next = ((current + mStep) % entries + entries) % entries;
    mValue = param->GetNormalized(param->min + next);
    SetDirty(true);
}

void IStepArrowControl::Draw(IGraphics* graphics)
{
    // The arrow shows no value of its own: always its resting frame.
    graphics->DrawBitmap(mBitmap, mRect, 1, &mBlend);
}

namespace
{
IText ReadoutStyle()
{
    static constexpr IColor kReadoutText = IColor::FromRGB(0xE8EBF0);
    IText text;
    text.mSize = 12;
    text.mStyle = IText::kStyleBold;
    text.mColor = &kReadoutText;
    text.mAlign = IText::kAlignNear;
    return text;
}
} // namespace

IControl* BuildModPageControl(IPlugBase* plug, const LayoutRow& row, int param, const IBitmap* bitmap,
                              const IColor* accent, const ModPageHooks& hooks)
{
    switch (row.mKind)
    {
    case ELayoutKind::kStepFader:
        return bitmap ? new IStepFaderControl(plug, row.mRect, param, *bitmap, accent) : nullptr;
    case ELayoutKind::kColorSetPopup:
        return new IColorSetPopUpControl(plug, row.mRect, accent, hooks.pickColorSet);
    case ELayoutKind::kInputAttenuator:
    {
        if (!bitmap) return nullptr;
        // A fresh attenuator stands at 0 dB, the top of its travel.
        auto* knob = new IBitmapKnobControl(plug, row.mRect.L, row.mRect.T, -1, *bitmap, accent);
        knob->SetValueFromPlug(1.0);
        return knob;
    }
    case ELayoutKind::kReadout:
        return new ITextControl(plug, row.mRect, ReadoutStyle(), row.mLabel);
    case ELayoutKind::kSwatch:
    {
        auto* swatch = new IPanelControl(plug, row.mRect, accent);
        swatch->SetTargetArea(IRECT());
        return swatch;
    }
    case ELayoutKind::kStepArrow:
        return bitmap ? new IStepArrowControl(plug, row.mRect, param, *bitmap, row.mIndex) : nullptr;
    case ELayoutKind::kDryKill:
        return bitmap ? new ISwitchControl(plug, row.mRect, -1, *bitmap) : nullptr;
    case ELayoutKind::kWaveDraw:
        return new WaveDraw(plug, row.mRect, accent);
    default:
        return nullptr;
    }
}
