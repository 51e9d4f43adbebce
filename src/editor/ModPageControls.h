#pragma once
// Controls of the modulation and options pages that the generic row kinds don't cover, built from
// their layout rows. UI thread only.

#include <functional>

#include "editor/IControl.h"

struct LayoutRow;

// A gate step: a column filled from the bottom to its value. A press sets the value where the
// mouse is and a drag follows it, so a step is drawn the way it is meant to sound.
class IStepFaderControl : public IControl
{
  public:
    IStepFaderControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                      const IColor* accent);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;
    // The value of a press at height y: 0 at the column's floor, 1 at its top.
    double ValueAtY(int y) const;
    // The step the gate plays now is marked under its column.
    void SetPlaying(bool playing);
    bool Playing() const { return mPlaying; }

  private:
    static constexpr int kInset = 2; // the column's frame, as the art draws it
    IBitmap mBitmap;
    const IColor* mAccent;
    bool mPlaying = false;
};

// A field naming the colour set the editor shows. A press lists the sets with the current one
// checked; a pick goes to `pick`, which applies it.
class IColorSetPopUpControl : public IControl
{
  public:
    IColorSetPopUpControl(IPlugBase* plug, const IRECT& rect, const IColor* accent,
                          std::function<void(int)> pick);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;
    // The name of the set in use.
    const char* SetName() const;

  private:
    const IColor* mAccent;
    std::function<void(int)> mPick;
};

// An arrow beside a list field: each press moves the list's parameter one entry by `step`,
// wrapping from the last entry to the first and back.
class IStepArrowControl : public IBitmapControl
{
  public:
    IStepArrowControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap, int step);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    int mStep;
};

// What the pages' own controls ask of the editor.
struct ModPageHooks
{
    std::function<void(int)> pickColorSet;
};

// The control for a row of the pages' own kinds, or null for a kind that has none.
IControl* BuildModPageControl(IPlugBase* plug, const LayoutRow& row, int param, const IBitmap* bitmap,
                              const IColor* accent, const ModPageHooks& hooks);
