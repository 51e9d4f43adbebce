#pragma once
// A knob drawn from a bitmap strip, with no text of its own: the focus display shows its value.
// Around it a ring in its colour role, filled or as an outline, at its rectangle grown by a
// margin. A press notes its parameter in the plug-in's "last touched" word, which the focus
// display and the modulation assignment read. A knob may be limited to a number of steps (a
// stepped control shows only the step positions of its strip), and may jump to the pointer.
// The draw rectangle includes the ring, so that a redraw repaints it; the knob itself and its hit
// area are the rectangle given.
// UI thread only.

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

class IKnobMultiControlNoText : public IKnobControl, public IBlendControl
{
  public:
    // lastTouched: the plug-in's word that hears the parameter of the knob pressed last; may be null.
    IKnobMultiControlNoText(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                            const IColor* ringColor = nullptr, int* lastTouched = nullptr,
                            EDirection direction = kVertical);

    // 1-based frame for a value. Plain: 1 + (frames - 1) x value, rounded. With 1 <= steps <= frames:
    // the value is first brought to floor(steps x value^shape) / steps. Other step counts are plain.
    static int FrameFor(double value, int frames, int steps = 0, double shape = 1.0);
    int CurrentFrame() const { return FrameFor(mValue, mBitmap.N, mSteps, mShape); }

    void SetSteps(int steps, double shape = 1.0);
    void SetRing(bool filled, int margin);
    // A left press sets the value from the pointer's place along the drag direction.
    void SetJumpToClick(bool jump) { mJumpToClick = jump; }
    void SetLastTouched(int* word) { mLastTouched = word; }
    // The value a press at (x, y) jumps to: bottom (or left) edge 0, top (or right) edge 1.
    double ValueAt(int x, int y) const;
    // Where the ring is drawn (the draw rectangle) and where the knob is.
    IRECT RingRect() const { return mKnobRect.Inset(-mRingMargin); }
    const IRECT& KnobRect() const { return mKnobRect; }

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    IRECT mKnobRect;
    IBitmap mBitmap;
    int* mLastTouched;
    int mSteps = 0;
    double mShape = 1.0;
    bool mRingFilled = false;
    int mRingMargin = 2;
    bool mJumpToClick = false;
};
