#include "editor/IGridOverlayControl.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

IGridOverlayControl::IGridOverlayControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap,
                                         int columns, int rows, int cellWidth, int cellHeight,
                                         const IColor* color)
    : ISwitchControl(plug,
                     IRECT::FromSize(x, y, std::max(1, columns) * std::max(1, cellWidth),
                                     std::max(1, rows) * std::max(1, cellHeight)),
                     paramIdx, bitmap),
      IBlendControl(color), mColumns(std::max(1, columns)), mRows(std::max(1, rows)),
      mCellW(std::max(1, cellWidth)), mCellH(std::max(1, cellHeight))
{
}

int IGridOverlayControl::CellAt(int x, int y) const
{
    const int column = std::clamp((x - mRect.L) / mCellW, 0, mColumns - 1);
    const int row = std::clamp((y - mRect.T) / mCellH, 0, mRows - 1);
    return row * mColumns + column;
}

IRECT IGridOverlayControl::CellRect(int index) const
{
    const int row = index / mColumns, column = index % mColumns;
    return IRECT::FromSize(mRect.L + column * mCellW, mRect.T + row * mCellH, mCellW, mCellH);
}

int IGridOverlayControl::SelectedCell() const
{
    const int cells = Cells();
    return cells > 1 ? std::clamp(static_cast<int>(std::lround(mValue * (cells - 1))), 0, cells - 1) : 0;
}

void IGridOverlayControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    const int cells = Cells();
    mValue = cells > 1 ? static_cast<double>(CellAt(x, y)) / (cells - 1) : 0.0;
    SetDirty(true);
}

void IGridOverlayControl::OnMouseOver(int x, int y, const IMouseMod& mod)
{
    const int cell = CellAt(x, y);
    if (cell == mMarker) return;
    mMarker = cell;
    mDirty = true;
}

void IGridOverlayControl::OnMouseOut()
{
    if (mMarker < 0) return;
    mMarker = -1;
    mDirty = true;
}

void IGridOverlayControl::Draw(IGraphics* graphics)
{
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mRect, 1, &mBlend);
    else
        for (int i = 0; i < Cells(); ++i)
            graphics->DrawRect(controllook::kFaceEdge, CellRect(i).Inset(1));
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    if (mMarker >= 0) graphics->FillIRect(BlendColor(0.18f * gray), CellRect(mMarker).Inset(1));
    const IRECT selection = CellRect(SelectedCell()).Inset(kSelectionInset);
    if (!selection.Empty()) graphics->DrawRect(BlendColor(gray), selection);
}
