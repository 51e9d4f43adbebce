#pragma once
// Controls that call into the plug-in instead of setting a parameter: page switches, preset
// steps, copy and paste, pattern presets. The editor layer doesn't know the engine's class, so
// each takes the call it makes as a function object that the page code binds. None of them has
// a parameter, so none makes a host gesture. They call on the user's actions only: a value the
// plug-in sets (to show its state) calls nothing back.
// UI thread only; the functions they call run there too.

#include <functional>
#include <vector>

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

// A switch that calls its function with the new value at every change the user makes.
class IVoidSwitchControl : public ISwitchControl, public IBlendControl
{
  public:
    IVoidSwitchControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                       std::function<void(double value)> call, const IColor* color = nullptr);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    std::function<void(double)> mCall;
};

// A push button: calls its function on the press, shows frame 2 while held, back to 0 on release.
class IVoidContactControl : public ISwitchControl, public IBlendControl
{
  public:
    IVoidContactControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap, std::function<void()> call,
                        const IColor* color = nullptr);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseUp(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    std::function<void()> mCall;
};

// The same push button with nothing drawn: the background shows it.
class IVoidInvContactControl : public IInvisibleSwitchControl
{
  public:
    IVoidInvContactControl(IPlugBase* plug, const IRECT& rect, std::function<void()> call);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseUp(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override;

  private:
    std::function<void()> mCall;
};

// A switch over a strip of any number of frames; each press steps to the next frame (wrapping)
// and calls its function with the frame index (0 for the first frame). Further marks are drawn on
// top: each in its colour, always or only while its frame is shown.
class IVoidFramesControl : public ISwitchControl
{
  public:
    struct Mark
    {
        IRECT mRect;
        const IColor* mColor;
        int mFrame; // 1-based frame it belongs to; 0 for every frame
    };

    IVoidFramesControl(IPlugBase* plug, const IRECT& rect, const IBitmap& bitmap,
                       std::function<void(int frameIndex)> call);
    // With n frames: 1 + floor((n - 1) x value + 0.5), cut to 1..n.
    static int FrameFor(double value, int frames);
    int Frame() const { return FrameFor(mValue, mBitmap.N); }
    void AddMark(const IRECT& rect, const IColor* color, int frame = 0);
    const std::vector<Mark>& Marks() const { return mMarks; }

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    std::function<void(int)> mCall;
    std::vector<Mark> mMarks;
};

// The editor's idle tick. Attached last, never hidden and always dirty, so every redraw pass
// reaches it; its Draw calls the plug-in's idle function, which pushes the engine's readouts
// into the other controls once per editor frame. It covers one pixel (the least area a redraw
// pass visits) and takes no mouse.
class DrawDummy : public IControl
{
  public:
    DrawDummy(IPlugBase* plug, std::function<void()> tick, int x = 0, int y = 0);
    bool IsDirty() override { return true; }
    void Hide(bool hide) override {}
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    std::function<void()> mTick;
};
