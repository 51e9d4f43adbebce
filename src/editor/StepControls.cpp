#include "editor/StepControls.h"

#include <algorithm>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

namespace
{
// The strip's frame, or a drawn cell: darker when off, lifted when on.
void DrawCell(IGraphics* graphics, const IBitmap& bitmap, const IRECT& rect, int frame,
              const IChannelBlend* blend)
{
    if (bitmap.mRaster)
    {
        graphics->DrawBitmap(bitmap, rect, frame, blend);
        return;
    }
    graphics->Raster().FillRoundRect(frame > 1 ? controllook::kFaceEdge : controllook::kFace, rect, 2.0);
}

void DrawNumber(IGraphics* graphics, const IText& style, const IColor& color, const std::string& text,
                const IRECT& rect)
{
    IText s = style;
    s.mColor = &color;
    graphics->DrawIText(s, text.c_str(), rect);
}
} // namespace

// ---- StepLengthControl ------------------------------------------------------------------------

StepLengthControl::StepLengthControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                                     const IColor* color, const IText& style, int number, int margin)
    : IBitmapControl(plug, rect, -1, bitmap), IBlendControl(color), mStyle(style), mNumber(number),
      mMargin(margin)
{
}

void StepLengthControl::SetCurrent(bool current)
{
    if (current == mCurrent) return;
    mCurrent = current;
    mDirty = true;
}

void StepLengthControl::SetNumber(int number)
{
    if (number == mNumber) return;
    mNumber = number;
    mDirty = true;
}

void StepLengthControl::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    DrawCell(graphics, mBitmap, mRect, mCurrent ? 2 : 1, &mBlend);
    const IColor frame = BlendColor(gray * (mCurrent ? 1.0f : 0.55f));
    controllook::DrawFrame(graphics, mRect, frame, 1);
    DrawNumber(graphics, mStyle, mCurrent ? BlendColor(gray) : controllook::Faded(controllook::kText, gray),
               std::to_string(mNumber), mRect.Inset(mMargin));
}

// ---- NumberLabel ------------------------------------------------------------------------------

NumberLabel::NumberLabel(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap, const IColor* color,
                         const IText& style, int margin, bool round)
    : IBitmapControl(plug, rect, -1, bitmap), IBlendControl(color), mStyle(style), mMargin(margin),
      mRound(round)
{
}

void NumberLabel::SetText(const std::string& text)
{
    if (text == mStr) return;
    mStr = text;
    mDirty = true;
}

void NumberLabel::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    if (mBitmap.mRaster) graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &mBlend);
    const IColor color = BlendColor(gray);
    if (mRound)
        controllook::DrawRing(graphics, mRect, color, 1.5f);
    else
        controllook::DrawFrame(graphics, mRect, color, 1);
    DrawNumber(graphics, mStyle, controllook::Faded(controllook::kText, gray), mStr, mRect.Inset(mMargin));
}

// ---- TapSelector ------------------------------------------------------------------------------

TapSelector::TapSelector(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                         const IColor* color, const IText& style, int number, int margin)
    : ISwitchControl(plug, rect, paramIdx, bitmap), IBlendControl(color), mStyle(style), mNumber(number),
      mMargin(margin)
{
}

void TapSelector::SetSelected(bool selected)
{
    if (selected == mSelected) return;
    mSelected = selected;
    mValue = selected ? 1.0 : 0.0;
    mDirty = true;
}

void TapSelector::SetPlaying(bool playing)
{
    if (playing == mPlaying) return;
    mPlaying = playing;
    mDirty = true;
}

void TapSelector::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    mSelected = true;
    mValue = 1.0;
    SetDirty(true);
}

void TapSelector::SetValueFromPlug(double value)
{
    ISwitchControl::SetValueFromPlug(value);
    if ((mValue > 0.5) != mSelected)
    {
        mSelected = mValue > 0.5;
        mDirty = true;
    }
}

void TapSelector::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    DrawCell(graphics, mBitmap, mRect, Frame(), &mBlend);
    // The playing tap glows in its colour; the selected one has the full frame.
    if (mPlaying) graphics->FillIRect(BlendColor(0.35f * gray), mRect.Inset(1));
    controllook::DrawFrame(graphics, mRect, BlendColor(gray * (mSelected ? 1.0f : 0.5f)), mSelected ? 2 : 1);
    DrawNumber(graphics, mStyle, controllook::Faded(controllook::kText, gray), std::to_string(mNumber),
               mRect.Inset(mMargin));
}
