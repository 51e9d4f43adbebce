#pragma once
// The frame that marks a slot's delay times after its timebase changed: the times were just
// rewritten in another unit, so the eye is led to them. It blinks for five seconds, hidden in the
// first half and shown in the second half of each second, then goes. It takes no mouse.

#include "editor/IControl.h"

class ITimeHighlightControl : public IControl
{
  public:
    static constexpr int kSeconds = 5;

    ITimeHighlightControl(IPlugBase* plug, const IRECT& rect, const IColor* accent, int fps);
    // Starts (or restarts) the five seconds.
    void Start();
    // One editor frame; redraws only when the frame appears or goes.
    void Tick();
    bool Active() const { return mFramesLeft > 0; }
    bool Lit() const;
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mAccent;
    int mFps;
    int mFramesLeft = 0;
    bool mShown = false;
};
