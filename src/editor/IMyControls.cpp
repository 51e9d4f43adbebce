#include "editor/IMyControls.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

namespace
{
constexpr IColor kDefaultAccent = IColor::FromRGB(0x6176FF);

// Buttons of a radio control that has no bitmap size: n cells across (or down) the rectangle,
// with a 2-pixel gap.
IBitmap SizedForCells(const IBitmap& bitmap, const IRECT& rect, int n, IRadioButtonsControl::EDirection dir)
{
    if (bitmap.W > 0 && bitmap.FrameH() > 0) return bitmap;
    IBitmap sized = bitmap;
    n = std::max(1, n);
    const int gap = n > 1 ? 2 : 0;
    sized.N = 2;
    if (dir == IRadioButtonsControl::kHorizontal)
    {
        sized.W = std::max(1, (rect.W() - gap * (n - 1)) / n);
        sized.H = std::max(1, rect.H()) * 2;
    }
    else
    {
        sized.W = std::max(1, rect.W());
        sized.H = std::max(1, (rect.H() - gap * (n - 1)) / n) * 2;
    }
    return sized;
}
} // namespace

// ---- IMySwitchControl -------------------------------------------------------------------------

IMySwitchControl::IMySwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                                   const IColor* accent)
    : ISwitchControl(plug, rect, paramIdx, bitmap), mAccent(accent)
{
    DisablePrompt(true);
}

void IMySwitchControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mod.R) ISwitchControl::OnMouseDown(x, y, mod);
}

void IMySwitchControl::Draw(IGraphics* graphics)
{
    if (mBitmap.mRaster)
    {
        ISwitchControl::Draw(graphics);
        return;
    }
    const IColor accent =
        controllook::Faded(mAccent ? *mAccent : kDefaultAccent, mGrayed ? controllook::kGrayedWeight : 1.0f);
    controllook::DrawButtonFace(graphics, mRect, CurrentFrame() > 1, accent);
}

// ---- IMyRadioControl --------------------------------------------------------------------------

IMyRadioControl::IMyRadioControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int nButtons,
                                 const IBitmap& bitmap, EDirection direction, const IColor* accent)
    : IRadioButtonsControl(plug, rect, paramIdx, nButtons, SizedForCells(bitmap, rect, nButtons, direction),
                           direction),
      mBitmap(bitmap), mAccent(accent)
{
}

void IMyRadioControl::SetValueFromPlug(double value)
{
    if (!mSelectionOn) mDirty = true;
    mSelectionOn = true;
    IRadioButtonsControl::SetValueFromPlug(value);
}

void IMyRadioControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    const int n = NButtons();
    for (int i = 0; i < n; ++i)
    {
        if (!ButtonRect(i).Contains(x, y)) continue;
        if (mSelectionOn && i == SelectedButton())
            mSelectionOn = false;
        else
        {
            mSelectionOn = true;
            mValue = n > 1 ? static_cast<double>(i) / (n - 1) : 0.0;
        }
        SetDirty(true);
        return;
    }
}

void IMyRadioControl::Draw(IGraphics* graphics)
{
    const int selected = Selection();
    const IColor accent =
        controllook::Faded(mAccent ? *mAccent : kDefaultAccent, mGrayed ? controllook::kGrayedWeight : 1.0f);
    for (int i = 0; i < NButtons(); ++i)
    {
        if (mBitmap.mRaster)
            graphics->DrawBitmap(mBitmap, ButtonRect(i), i == selected ? 2 : 1, &mBlend);
        else
            controllook::DrawButtonFace(graphics, ButtonRect(i), i == selected, accent);
    }
}

// ---- IMyTextControl ---------------------------------------------------------------------------

IMyTextControl::IMyTextControl(IPlugBase* plug, const IRECT& rect, const IText& style, const IColor* color,
                               bool alignRight, std::string format, std::string unit)
    : IControl(plug, rect), IBlendControl(color), mStyle(style), mFormat(std::move(format)),
      mUnit(std::move(unit))
{
    mStyle.mAlign = alignRight ? IText::kAlignFar : IText::kAlignNear;
}

std::string IMyTextControl::FormatValue(const std::string& format, const std::string& unit, double value)
{
    // Exactly one conversion is allowed, checked here, so that a format of a table never reaches
    // snprintf with a conversion that would read an argument it wasn't given.
    char conversion = 0;
    for (size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%') continue;
        if (i + 1 < format.size() && format[i + 1] == '%')
        {
            ++i;
            continue;
        }
        size_t j = i + 1;
        while (j < format.size() && std::strchr("-+ 0#", format[j]))
            ++j;
        while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j])))
            ++j;
        if (j < format.size() && format[j] == '.')
        {
            ++j;
            while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j])))
                ++j;
        }
        if (conversion || j >= format.size() || !std::strchr("fFeEgGdi", format[j]))
        {
            conversion = 0;
            break;
        }
        conversion = format[j];
        i = j;
    }
    char buf[128];
    if (conversion == 'd' || conversion == 'i')
    {
        const double r = std::isfinite(value) ? std::clamp(std::round(value), -2.0e9, 2.0e9) : 0.0;
        std::snprintf(buf, sizeof buf, format.c_str(), static_cast<int>(r));
    }
    else if (conversion)
        std::snprintf(buf, sizeof buf, format.c_str(), value);
    else
        std::snprintf(buf, sizeof buf, "%g", value);
    return buf + unit;
}

void IMyTextControl::SetFormat(std::string format, std::string unit)
{
    mFormat = std::move(format);
    mUnit = std::move(unit);
}

void IMyTextControl::SetValueText(double value)
{
    SetText(FormatValue(mFormat, mUnit, value));
}

void IMyTextControl::SetText(const std::string& text)
{
    if (mTimedTicks > 0)
    {
        mKeptStr = text;
        return;
    }
    if (text == mStr) return;
    mStr = text;
    mDirty = true;
}

void IMyTextControl::SetTimedText(const std::string& text, int ticks)
{
    if (ticks <= 0) return;
    if (mTimedTicks == 0) mKeptStr = mStr;
    mTimedTicks = ticks;
    if (text == mStr) return;
    mStr = text;
    mDirty = true;
}

bool IMyTextControl::TimedTick()
{
    if (mTimedTicks == 0 || --mTimedTicks > 0) return false;
    SetText(mKeptStr);
    return true;
}

void IMyTextControl::Draw(IGraphics* graphics)
{
    const IColor color = BlendColor(mGrayed ? controllook::kGrayedWeight : 1.0f);
    IText style = mStyle;
    style.mColor = &color;
    graphics->DrawIText(style, mStr.c_str(), mRect);
}

// ---- IMyPanelControl --------------------------------------------------------------------------

IMyPanelControl::IMyPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* color, double cornerRadius)
    : IControl(plug, rect), mColor(color), mCornerRadius(cornerRadius)
{
}

void IMyPanelControl::Draw(IGraphics* graphics)
{
    if (!mColor) return;
    const IColor color = controllook::Faded(*mColor, mGrayed ? controllook::kGrayedWeight : 1.0f);
    if (mCornerRadius > 0.0)
        graphics->Raster().FillRoundRect(color, mRect, mCornerRadius);
    else
        graphics->FillIRect(color, mRect);
}
