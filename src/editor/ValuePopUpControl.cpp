#include "editor/ValuePopUpControl.h"

#include <algorithm>
#include <cmath>

#include "editor/IGraphics.h"
#include "params/IParamRecord.h"

IValuePopUpControl::IValuePopUpControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IColor* accent)
    : IControl(plug, rect, paramIdx), mAccent(accent)
{
}

void IValuePopUpControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
        IControl::OnMouseDown(x, y, mod);
    else if (mGraphics)
        mGraphics->PromptUserInput(this, mRect);
}

std::string IValuePopUpControl::ValueText() const
{
    const IParamRecord* param = mPlug ? mPlug->GetParam(mParamIdx) : nullptr;
    if (!param) return {};
    return param->GetDisplayForHost(param->QuantizedFromNormalized(mValue), false);
}

void IValuePopUpControl::Draw(IGraphics* graphics)
{
    static constexpr IColor kField = IColor::FromRGB(0x0F1217);
    static constexpr IColor kBorder = IColor::FromRGB(0x2F3541);
    static constexpr IColor kText = IColor::FromRGB(0xE8EBF0);
    static constexpr IColor kArrow = IColor::FromRGB(0x8A93A4);
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, mRect, 3.0);
    raster.FillRoundRect(kField, mRect.Inset(1), 2.5);
    if (mAccent) raster.FillRect(*mAccent, IRECT(mRect.L + 1, mRect.T + 4, mRect.L + 3, mRect.B - 4));
    IText text;
    text.mSize = 12;
    text.mColor = &kText;
    text.mAlign = IText::kAlignNear;
    const std::string value = ValueText();
    raster.DrawText(text, value.c_str(), IRECT(mRect.L + 9, mRect.T, mRect.R - 18, mRect.B));
    const double ax = mRect.R - 10.5, ay = (mRect.T + mRect.B) / 2.0;
    raster.DrawLine(kArrow, ax - 3.5, ay - 1.5, ax, ay + 2.0, 1.5);
    raster.DrawLine(kArrow, ax, ay + 2.0, ax + 3.5, ay - 1.5, 1.5);
}

ISelectorLabelControl::ISelectorLabelControl(IPlugBase* plug, const IRECT& rect, int selectorParam,
                                             const IText& text, const std::array<const char*, 4>* names,
                                             int count, int knob)
    : IControl(plug, rect, selectorParam), mText(text), mNames(names), mCount(count), mKnob(knob)
{
    SetTargetArea(IRECT());
}

void ISelectorLabelControl::SetValueFromPlug(double value)
{
    const char* before = Text();
    IControl::SetValueFromPlug(value);
    if (Text() != before) mDirty = true;
}

const char* ISelectorLabelControl::Text() const
{
    if (mCount <= 0) return "";
    const int index = std::clamp(static_cast<int>(std::lround(mValue * (mCount - 1))), 0, mCount - 1);
    return mNames[index][mKnob];
}

void ISelectorLabelControl::Draw(IGraphics* graphics)
{
    graphics->DrawIText(mText, Text(), mRect);
}
