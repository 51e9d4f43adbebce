#pragma once
// Horizontal guide lines across a rectangle, at equal distance: a rectangle of height h with
// distance d holds n = h / d bands and so n - 1 lines between them. Distance 0 draws nothing.
// UI thread only.

#include "editor/IControl.h"

class HLines : public IControl
{
  public:
    HLines(IPlugBase* plug, const IRECT& rect, const IColor* color, int distance, float width = 1.0f);
    // Marks for redraw only on a change.
    void SetDistance(int distance);
    int Distance() const { return mDistance; }
    int NLines() const;
    // Centre line of line k (1 .. NLines()) in layout pixels.
    float LineY(int k) const;
    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mColor;
    int mDistance;
    float mWidth;
};
