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

void DrawValueField(IGraphics* graphics, const IRECT& rect, const IColor* accent, const char* text)
{
    static constexpr IColor kField = IColor::FromRGB(0x0F1217);
    static constexpr IColor kBorder = IColor::FromRGB(0x2F3541);
    static constexpr IColor kText = IColor::FromRGB(0xE8EBF0);
    static constexpr IColor kArrow = IColor::FromRGB(0x8A93A4);
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, rect, 3.0);
    raster.FillRoundRect(kField, rect.Inset(1), 2.5);
    if (accent) raster.FillRect(*accent, IRECT(rect.L + 1, rect.T + 4, rect.L + 3, rect.B - 4));
    IText style;
    style.mSize = 12;
    style.mColor = &kText;
    style.mAlign = IText::kAlignNear;
    raster.DrawText(style, text, IRECT(rect.L + 9, rect.T, rect.R - 18, rect.B));
    const double ax = rect.R - 10.5, ay = (rect.T + rect.B) / 2.0;
    raster.DrawLine(kArrow, ax - 3.5, ay - 1.5, ax, ay + 2.0, 1.5);
    raster.DrawLine(kArrow, ax, ay + 2.0, ax + 3.5, ay - 1.5, 1.5);
}

void IValuePopUpControl::Draw(IGraphics* graphics)
{
    DrawValueField(graphics, mRect, mAccent, ValueText().c_str());
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
