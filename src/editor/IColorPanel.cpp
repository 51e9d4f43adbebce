#include "editor/IColorPanel.h"

#include <algorithm>

#include "editor/ColorSets.h"
#include "editor/ControlLook.h"
#include "editor/IGraphics.h"

IColorPanel::IColorPanel(IPlugBase* plug, const IRECT& rect, const IText& style,
                         std::function<void(int index)> onChoose)
    : IControl(plug, rect), mStyle(style), mOnChoose(std::move(onChoose))
{
}

void IColorPanel::SetSelection(int index)
{
    const int valid = ValidColorSet(index);
    if (valid == mSelection) return;
    mSelection = valid;
    mDirty = true;
}

const char* IColorPanel::Name() const
{
    return kColorSets[ValidColorSet(mSelection)].mName;
}

void IColorPanel::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mGraphics) return;
    auto menu = std::make_shared<IPopupMenu>();
    for (const ColorSetRow& set : kColorSets)
        menu->AddItem(set.mName);
    menu->SetItemChecked(mSelection, true);
    mGraphics->CreateIPopupMenu(menu, mRect,
                                [this](IPopupMenu* chosen, int index)
                                {
                                    if (!chosen || index < 0 || index >= kNumColorSets) return;
                                    SetSelection(index);
                                    if (mOnChoose) mOnChoose(index);
                                });
}

void IColorPanel::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(controllook::kFaceEdge, mRect, 3.0);
    raster.FillRoundRect(controllook::kWell, mRect.Inset(1), 2.5);
    // A strip of the set's own accents (roles 1 to 11) along the right end.
    const ColorSetRow& set = kColorSets[ValidColorSet(mSelection)];
    const int swatch = std::max(2, std::min(6, (mRect.H() - 8) / 2));
    const int n = kNumColorRoles - 1;
    const int strip = mRect.R - 6 - n * swatch;
    int textRight = mRect.R - 6;
    if (strip > mRect.L + mRect.W() / 2)
    {
        const int y = (mRect.T + mRect.B) / 2 - swatch / 2;
        for (int role = 1; role <= n; ++role)
            raster.FillRect(IColor::FromRGB(set.mRGB[role]),
                            IRECT::FromSize(strip + (role - 1) * swatch, y, swatch, swatch));
        textRight = strip - 4;
    }
    IText style = mStyle;
    style.mAlign = IText::kAlignNear;
    if (!style.mColor) style.mColor = &controllook::kText;
    raster.DrawText(style, set.mName, IRECT(mRect.L + 6, mRect.T, textRight, mRect.B));
}
