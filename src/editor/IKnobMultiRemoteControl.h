#pragma once
// Two concentric knobs under one rectangle: a press inside the inner radius works the inner knob,
// one outside it the outer knob, and everything until the release goes to that one. The knobs
// are attached to the editor before this control (they draw and hear their parameters as any
// knob); this control lies over them, takes the mouse and makes the host gesture of the knob it
// passes events to, since the editor only sees this control, which has no parameter.
// UI thread only.

#include "editor/IControl.h"

class IKnobMultiRemoteControl : public IKnobControl
{
  public:
    // innerRadius: 0..1, as a fraction of half the width (across) and half the height (down); a
    // point exactly on it belongs to the inner knob. The knobs are not owned.
    IKnobMultiRemoteControl(IPlugBase* plug, const IRECT& rect, IControl* inner, IControl* outer,
                            double innerRadius);

    // The knob a press at (x, y) reaches.
    IControl* Route(int x, int y) const;
    // The knob that took the present press; null between presses.
    IControl* Active() const { return mActive; }
    IControl* Inner() const { return mInner; }
    IControl* Outer() const { return mOuter; }

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseUp(int x, int y, const IMouseMod& mod) override;
    void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override;
    void OnMouseWheel(int x, int y, const IMouseMod& mod, int d) override;
    void Draw(IGraphics* graphics) override {}

  private:
    void Grab(int x, int y, const IMouseMod& mod);
    void BeginGesture(IControl* knob);
    void EndGesture();

    IControl* mInner;
    IControl* mOuter;
    double mInnerRadius;
    IControl* mActive = nullptr;
    int mGestureParam = -1;
};
