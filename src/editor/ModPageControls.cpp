#include "editor/ModPageControls.h"

#include <algorithm>

#include "editor/IGraphics.h"
#include "editor/MainLayout.h"

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

void IStepFaderControl::Draw(IGraphics* graphics)
{
    graphics->DrawBitmap(mBitmap, mRect, IBitmapControl::FrameForValue(mValue, mBitmap.N), &mBlend);
    // The level's edge in the page's accent, so the steps read as one curve.
    if (!mAccent || mValue <= 0.0) return;
    const int top = mRect.B - kInset - static_cast<int>(mValue * (mRect.H() - 2 * kInset) + 0.5);
    graphics->FillIRect(*mAccent, IRECT(mRect.L + kInset, top, mRect.R - kInset, top + 2));
}

IControl* BuildModPageControl(IPlugBase* plug, const LayoutRow& row, int param, const IBitmap* bitmap,
                              const IColor* accent)
{
    switch (row.mKind)
    {
    case ELayoutKind::kStepFader:
        return bitmap ? new IStepFaderControl(plug, row.mRect, param, *bitmap, accent) : nullptr;
    default:
        return nullptr;
    }
}
