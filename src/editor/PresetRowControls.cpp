#include "editor/PresetRowControls.h"

#include "editor/IGraphics.h"

namespace
{
constexpr IColor kField = IColor::FromRGB(0x0F1217);
constexpr IColor kBorder = IColor::FromRGB(0x2F3541);
constexpr IColor kText = IColor::FromRGB(0xE8EBF0);
constexpr IColor kDim = IColor::FromRGB(0x7F8898);
constexpr IColor kButton = IColor::FromRGB(0x232832);
constexpr IColor kButtonDown = IColor::FromRGB(0x2E3542);
} // namespace

IPresetMenuControl::IPresetMenuControl(IPlugBase* plug, const IRECT& rect, const IColor* accent,
                                       std::function<void()> open)
    : IControl(plug, rect, -1), mAccent(accent), mOpen(std::move(open))
{
    SetTooltip("Presets");
}

void IPresetMenuControl::SetTexts(const std::string& name, const std::string& folderLabel)
{
    if (name == mName && folderLabel == mFolder) return;
    mName = name;
    mFolder = folderLabel;
    mDirty = true;
}

void IPresetMenuControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.L && mOpen) mOpen();
}

void IPresetMenuControl::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, mRect, 4.0);
    raster.FillRoundRect(kField, mRect.Inset(1), 3.5);
    if (mAccent) raster.FillRect(*mAccent, IRECT(mRect.L + 1, mRect.T + 6, mRect.L + 3, mRect.B - 6));
    IText folder;
    folder.mSize = 10;
    folder.mStyle = IText::kStyleBold;
    folder.mColor = &kDim;
    folder.mAlign = IText::kAlignNear;
    const int folderW = mFolder.empty() ? 0 : raster.MeasureText(folder, mFolder.c_str()).W() + 12;
    raster.DrawText(folder, mFolder.c_str(), IRECT(mRect.L + 12, mRect.T, mRect.L + 12 + folderW, mRect.B));
    IText name;
    name.mSize = 14;
    name.mColor = &kText;
    name.mAlign = IText::kAlignNear;
    name.mFont = "Arial";
    raster.PushClip(IRECT(mRect.L + 12 + folderW, mRect.T, mRect.R - 24, mRect.B));
    raster.DrawText(name, mName.c_str(), IRECT(mRect.L + 12 + folderW, mRect.T, mRect.R - 24, mRect.B));
    raster.PopClip();
    const double ax = mRect.R - 13.5, ay = (mRect.T + mRect.B) / 2.0;
    raster.DrawLine(kDim, ax - 4, ay - 2, ax, ay + 2.5, 1.6);
    raster.DrawLine(kDim, ax, ay + 2.5, ax + 4, ay - 2, 1.6);
}

IPresetButtonControl::IPresetButtonControl(IPlugBase* plug, const IRECT& rect, EGlyph glyph,
                                           const IColor* accent, std::function<void()> press)
    : IControl(plug, rect, -1), mGlyph(glyph), mAccent(accent), mPress(std::move(press))
{
    SetTooltip(glyph == EGlyph::kPrevious ? "Previous preset"
               : glyph == EGlyph::kNext   ? "Next preset"
                                          : "Save preset");
}

void IPresetButtonControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mod.L) return;
    mDown = true;
    mDirty = true;
    if (mPress) mPress();
}

void IPresetButtonControl::OnMouseUp(int x, int y, const IMouseMod& mod)
{
    mDown = false;
    mDirty = true;
}

void IPresetButtonControl::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, mRect, 4.0);
    raster.FillRoundRect(mDown ? kButtonDown : kButton, mRect.Inset(1), 3.5);
    const IColor& ink = mDown && mAccent ? *mAccent : kText;
    const double cx = (mRect.L + mRect.R) / 2.0, cy = (mRect.T + mRect.B) / 2.0;
    switch (mGlyph)
    {
    case EGlyph::kPrevious:
        raster.DrawLine(ink, cx + 2.5, cy - 5, cx - 2.5, cy, 1.8);
        raster.DrawLine(ink, cx - 2.5, cy, cx + 2.5, cy + 5, 1.8);
        break;
    case EGlyph::kNext:
        raster.DrawLine(ink, cx - 2.5, cy - 5, cx + 2.5, cy, 1.8);
        raster.DrawLine(ink, cx + 2.5, cy, cx - 2.5, cy + 5, 1.8);
        break;
    case EGlyph::kSave:
    {
        IText text;
        text.mSize = 11;
        text.mStyle = IText::kStyleBold;
        text.mColor = &ink;
        raster.DrawText(text, "SAVE", mRect);
        break;
    }
    }
}
