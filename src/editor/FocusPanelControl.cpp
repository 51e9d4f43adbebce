#include "editor/FocusPanelControl.h"

#include "editor/IGraphics.h"

namespace
{
constexpr IColor kField = IColor::FromRGB(0x0C0E12);
constexpr IColor kBorder = IColor::FromRGB(0x262B35);
constexpr IColor kLabel = IColor::FromRGB(0x8A93A3);
constexpr IColor kValue = IColor::FromRGB(0xF1F3F7);
} // namespace

IFocusPanelControl::IFocusPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* accent)
    : IControl(plug, rect, -1), mAccent(accent)
{
    SetTargetArea(IRECT());
}

void IFocusPanelControl::SetTexts(const std::string& label, const std::string& value)
{
    if (label == mLabel && value == mValueText) return;
    mLabel = label;
    mValueText = value;
    mDirty = true;
}

void IFocusPanelControl::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, mRect, 4.0);
    raster.FillRoundRect(kField, mRect.Inset(1), 3.5);
    if (mLabel.empty()) return;
    IText label;
    label.mSize = 10;
    label.mStyle = IText::kStyleBold;
    label.mColor = &kLabel;
    label.mAlign = IText::kAlignNear;
    IText value;
    value.mSize = 13;
    value.mColor = mAccent ? mAccent : &kValue;
    value.mAlign = IText::kAlignFar;
    value.mFont = "Arial";
    const IRECT inner(mRect.L + 10, mRect.T, mRect.R - 10, mRect.B);
    raster.PushClip(inner);
    raster.DrawText(label, mLabel.c_str(), inner);
    raster.DrawText(value, mValueText.c_str(), inner);
    raster.PopClip();
}
