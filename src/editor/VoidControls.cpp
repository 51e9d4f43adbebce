#include "editor/VoidControls.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

namespace
{
constexpr IColor kDefaultAccent = IColor::FromRGB(0x6176FF);
} // namespace

// ---- IVoidSwitchControl -----------------------------------------------------------------------

IVoidSwitchControl::IVoidSwitchControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                                       std::function<void(double value)> call, const IColor* color)
    : ISwitchControl(plug, rect, -1, bitmap), IBlendControl(color), mCall(std::move(call))
{
}

void IVoidSwitchControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R) return;
    const double before = mValue;
    mValue = NextValue(mValue, mBitmap.N);
    SetDirty(true);
    if (mValue != before && mCall) mCall(mValue);
}

void IVoidSwitchControl::Draw(IGraphics* graphics)
{
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &mBlend);
    else
        controllook::DrawButtonFace(graphics, mRect, CurrentFrame() > 1,
                                    BlendColor(mGrayed ? controllook::kGrayedWeight : 1.0f, kDefaultAccent));
}

// ---- Contacts ---------------------------------------------------------------------------------

IVoidContactControl::IVoidContactControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                                         std::function<void()> call, const IColor* color)
    : ISwitchControl(plug, rect, -1, bitmap), IBlendControl(color), mCall(std::move(call))
{
}

void IVoidContactControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R) return;
    mValue = 1.0;
    SetDirty(false);
    if (mCall) mCall();
}

void IVoidContactControl::OnMouseDblClick(int x, int y, const IMouseMod& mod)
{
    // The second press of a quick pair is a press like the first.
    OnMouseDown(x, y, mod);
}

void IVoidContactControl::OnMouseUp(int x, int y, const IMouseMod& mod)
{
    if (mValue == 0.0) return;
    mValue = 0.0;
    SetDirty(false);
}

void IVoidContactControl::Draw(IGraphics* graphics)
{
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &mBlend);
    else
        controllook::DrawButtonFace(graphics, mRect, mValue > 0.5,
                                    BlendColor(mGrayed ? controllook::kGrayedWeight : 1.0f, kDefaultAccent));
}

IVoidInvContactControl::IVoidInvContactControl(IPlugBase* plug, const IRECT& rect, std::function<void()> call)
    : IInvisibleSwitchControl(plug, rect, -1, 2), mCall(std::move(call))
{
}

void IVoidInvContactControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R) return;
    mValue = 1.0;
    if (mCall) mCall();
}

void IVoidInvContactControl::OnMouseDblClick(int x, int y, const IMouseMod& mod)
{
    OnMouseDown(x, y, mod);
}

void IVoidInvContactControl::OnMouseUp(int x, int y, const IMouseMod& mod)
{
    mValue = 0.0;
}

// ---- IVoidFramesControl -----------------------------------------------------------------------

IVoidFramesControl::IVoidFramesControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                                       std::function<void(int frameIndex)> call)
    : ISwitchControl(plug, rect, -1, bitmap), mCall(std::move(call))
{
}

int IVoidFramesControl::FrameFor(double value, int frames)
{
    if (frames <= 1) return 1;
    const double f = 1.0 + std::floor((frames - 1) * value + 0.5);
    return static_cast<int>(std::clamp(f, 1.0, static_cast<double>(frames)));
}

void IVoidFramesControl::AddMark(const IRECT& rect, const IColor* color, int frame)
{
    mMarks.push_back({rect, color, frame});
    mDirty = true;
}

void IVoidFramesControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R) return;
    mValue = NextValue(mValue, mBitmap.N);
    SetDirty(true);
    if (mCall) mCall(Frame() - 1);
}

void IVoidFramesControl::Draw(IGraphics* graphics)
{
    const int frame = Frame();
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mRect, frame, &mBlend);
    else
    {
        // One segment per frame, the present one lit.
        const int n = std::max(1, mBitmap.N);
        for (int i = 0; i < n; ++i)
        {
            const IRECT cell(mRect.L + mRect.W() * i / n, mRect.T, mRect.L + mRect.W() * (i + 1) / n,
                             mRect.B);
            controllook::DrawButtonFace(graphics, cell.Inset(1), i + 1 == frame, kDefaultAccent);
        }
    }
    for (const Mark& mark : mMarks)
        if (mark.mColor && (mark.mFrame == 0 || mark.mFrame == frame))
            graphics->FillIRect(controllook::Faded(*mark.mColor, mGrayed ? controllook::kGrayedWeight : 1.0f),
                                mark.mRect);
}

// ---- DrawDummy --------------------------------------------------------------------------------

DrawDummy::DrawDummy(IPlugBase* plug, std::function<void()> tick, int x, int y)
    : IControl(plug, IRECT::FromSize(x, y, 1, 1)), mTick(std::move(tick))
{
}

void DrawDummy::Draw(IGraphics* graphics)
{
    if (mTick) mTick();
}
