#pragma once
// A grid of cells over a bitmap, to pick one of the stored step patterns: the cell under the mouse
// carries a marker, a click selects the cell row x columns + column and sets the value to
// index / (cells - 1). The selected cell is framed in a colour role, 4 pixels inside the cell.
// UI thread only.

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

class IGridOverlayControl : public ISwitchControl, public IBlendControl
{
  public:
    static constexpr int kSelectionInset = 4;

    // The control covers columns x cellWidth by rows x cellHeight from (x, y).
    IGridOverlayControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap, int columns,
                        int rows, int cellWidth, int cellHeight, const IColor* color);

    int Cells() const { return mColumns * mRows; }
    // Cell index under a point (clamped into the grid).
    int CellAt(int x, int y) const;
    IRECT CellRect(int index) const;
    // The cell the value selects.
    int SelectedCell() const;
    // The cell the marker is on, -1 when the mouse is away.
    int MarkerCell() const { return mMarker; }

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseOver(int x, int y, const IMouseMod& mod) override;
    void OnMouseOut() override;
    void Draw(IGraphics* graphics) override;

  private:
    int mColumns, mRows, mCellW, mCellH;
    int mMarker = -1;
};
