#include "editor/IKnobMultiRemoteControl.h"

#include "host/IPlugBase.h"

IKnobMultiRemoteControl::IKnobMultiRemoteControl(IPlugBase* plug, const IRECT& rect, IControl* inner,
                                                 IControl* outer, double innerRadius)
    : IKnobControl(plug, rect, -1), mInner(inner), mOuter(outer), mInnerRadius(innerRadius)
{
}

IControl* IKnobMultiRemoteControl::Route(int x, int y) const
{
    const double halfW = mRect.W() / 2.0, halfH = mRect.H() / 2.0;
    if (halfW <= 0.0 || halfH <= 0.0) return mOuter;
    const double dx = (x - (mRect.L + halfW)) / halfW;
    const double dy = (y - (mRect.T + halfH)) / halfH;
    // Squares compared, so that a point on the radius isn't lost to a rounded square root.
    return dx * dx + dy * dy <= mInnerRadius * mInnerRadius ? mInner : mOuter;
}

void IKnobMultiRemoteControl::BeginGesture(IControl* knob)
{
    EndGesture();
    if (!knob || knob->ParamIdx() < 0 || !mPlug) return;
    mGestureParam = knob->ParamIdx();
    mPlug->BeginInformHostOfParamChange(mGestureParam);
}

void IKnobMultiRemoteControl::EndGesture()
{
    if (mGestureParam >= 0 && mPlug) mPlug->EndInformHostOfParamChange(mGestureParam);
    mGestureParam = -1;
}

void IKnobMultiRemoteControl::Grab(int x, int y, const IMouseMod& mod)
{
    mActive = Route(x, y);
    // A right press opens a value prompt, which makes its own gesture.
    if (!mod.R) BeginGesture(mActive);
}

void IKnobMultiRemoteControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    Grab(x, y, mod);
    if (mActive) mActive->OnMouseDown(x, y, mod);
}

void IKnobMultiRemoteControl::OnMouseDblClick(int x, int y, const IMouseMod& mod)
{
    Grab(x, y, mod);
    if (mActive) mActive->OnMouseDblClick(x, y, mod);
}

void IKnobMultiRemoteControl::OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod)
{
    if (mActive) mActive->OnMouseDrag(x, y, dX, dY, mod);
}

void IKnobMultiRemoteControl::OnMouseUp(int x, int y, const IMouseMod& mod)
{
    if (mActive) mActive->OnMouseUp(x, y, mod);
    mActive = nullptr;
    EndGesture();
}

void IKnobMultiRemoteControl::OnMouseWheel(int x, int y, const IMouseMod& mod, int d)
{
    IControl* knob = Route(x, y);
    if (!knob) return;
    BeginGesture(knob);
    knob->OnMouseWheel(x, y, mod, d);
    EndGesture();
}
