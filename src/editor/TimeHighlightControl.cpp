#include "editor/TimeHighlightControl.h"

#include "editor/IGraphics.h"

ITimeHighlightControl::ITimeHighlightControl(IPlugBase* plug, const IRECT& rect, const IColor* accent,
                                             int fps)
    : IControl(plug, rect, -1), mAccent(accent), mFps(fps > 0 ? fps : 1)
{
    SetTargetArea(IRECT());
}

void ITimeHighlightControl::Start()
{
    mFramesLeft = kSeconds * mFps;
}

bool ITimeHighlightControl::Lit() const
{
    if (mFramesLeft <= 0) return false;
    const int elapsed = kSeconds * mFps - mFramesLeft;
    return elapsed % mFps >= mFps / 2;
}

void ITimeHighlightControl::Tick()
{
    if (mFramesLeft > 0) --mFramesLeft;
    const bool lit = Lit();
    if (lit != mShown)
    {
        mShown = lit;
        mDirty = true;
    }
}

void ITimeHighlightControl::Draw(IGraphics* graphics)
{
    if (!mShown || !mAccent) return;
    IRaster& raster = graphics->Raster();
    raster.DrawRect(*mAccent, mRect);
    raster.DrawRect(mAccent->WithAlpha(120), mRect.Inset(1));
}
