#include "editor/MenuControls.h"

#include <algorithm>
#include <cmath>

#include "editor/ControlLook.h"
#include "editor/IGraphics.h"
#include "params/IParamRecord.h"

namespace
{
// A field of a menu control: dark well, frame, the text and the little down arrow.
void DrawMenuField(IGraphics* graphics, const IRECT& rect, const IText& style, const IColor& textColor,
                   const IColor& arrowColor, const std::string& text, bool field)
{
    IRaster& raster = graphics->Raster();
    if (field)
    {
        raster.FillRoundRect(controllook::kFaceEdge, rect, 3.0);
        raster.FillRoundRect(controllook::kWell, rect.Inset(1), 2.5);
    }
    IText s = style;
    s.mColor = &textColor;
    const int arrowRoom = rect.W() > 30 ? 14 : 0;
    raster.DrawText(s, text.c_str(), IRECT(rect.L + 5, rect.T, rect.R - arrowRoom, rect.B));
    if (!arrowRoom) return;
    const double ax = rect.R - 8.5, ay = (rect.T + rect.B) / 2.0;
    raster.DrawLine(arrowColor, ax - 3.0, ay - 1.5, ax, ay + 1.5, 1.5);
    raster.DrawLine(arrowColor, ax, ay + 1.5, ax + 3.0, ay - 1.5, 1.5);
}
} // namespace

// ---- ITextPopupMenu ---------------------------------------------------------------------------

ITextPopupMenu::ITextPopupMenu(IPlugBase* plug, const IRECT& rect, int paramIdx,
                               std::vector<std::string> items, const IText& style, const IColor* color)
    : IInvisibleSwitchControl(plug, rect, paramIdx, std::max<int>(1, static_cast<int>(items.size()))),
      IBlendControl(color), mItems(std::move(items)), mStyle(style)
{
}

void ITextPopupMenu::SetItems(std::vector<std::string> items)
{
    mItems = std::move(items);
    mDirty = true;
}

int ITextPopupMenu::Index() const
{
    const int n = static_cast<int>(mItems.size());
    if (n == 0) return -1;
    return n > 1 ? std::clamp(static_cast<int>(std::lround(mValue * (n - 1))), 0, n - 1) : 0;
}

std::string ITextPopupMenu::Text() const
{
    const int i = Index();
    return i >= 0 ? mItems[i] : std::string();
}

void ITextPopupMenu::Choose(int index)
{
    const int n = static_cast<int>(mItems.size());
    if (index < 0 || index >= n) return;
    const bool gesture = mPlug && mParamIdx >= 0;
    if (gesture) mPlug->BeginInformHostOfParamChange(mParamIdx);
    mValue = n > 1 ? static_cast<double>(index) / (n - 1) : 0.0;
    SetDirty(true);
    if (gesture) mPlug->EndInformHostOfParamChange(mParamIdx);
}

void ITextPopupMenu::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    if (!mGraphics || mItems.empty()) return;
    auto menu = std::make_shared<IPopupMenu>();
    for (const std::string& item : mItems)
        menu->AddItem(item);
    menu->SetItemChecked(Index(), true);
    mGraphics->CreateIPopupMenu(menu, mRect,
                                [this](IPopupMenu* chosen, int index)
                                {
                                    if (chosen) Choose(index);
                                });
}

void ITextPopupMenu::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    const IColor color = BlendColor(gray);
    DrawMenuField(graphics, mRect, mStyle, color, controllook::Faded(controllook::kDimText, gray), Text(),
                  false);
}

// ---- IParamPopupMenu --------------------------------------------------------------------------

IParamPopupMenu::IParamPopupMenu(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                                 const IText* style)
    : ISwitchPopUpControl(plug, rect, paramIdx, bitmap), mShowText(style != nullptr),
      mStyle(style ? *style : IText())
{
}

std::string IParamPopupMenu::ValueText() const
{
    const IParamRecord* param = mPlug ? mPlug->GetParam(mParamIdx) : nullptr;
    if (!param) return {};
    const char* text = param->GetDisplayText(param->QuantizedFromNormalized(mValue));
    return text ? text : "";
}

void IParamPopupMenu::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    if (mBitmap.mRaster)
        graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &mBlend);
    else
        graphics->Raster().FillRoundRect(controllook::kFace, mRect, 3.0);
    if (mShowText || !mBitmap.mRaster)
    {
        const IColor text = controllook::Faded(mStyle.mColor ? *mStyle.mColor : controllook::kText, gray);
        DrawMenuField(graphics, mRect, mStyle, text, controllook::Faded(controllook::kDimText, gray),
                      ValueText(), false);
    }
}

// ---- ISimpleMenu ------------------------------------------------------------------------------

ISimpleMenu::ISimpleMenu(IPlugBase* plug, const IRECT& rect, std::shared_ptr<IPopupMenu> menu,
                         MenuChoice onChoose, const IText& style, std::string text)
    : IControl(plug, rect), mMenu(std::move(menu)), mOnChoose(std::move(onChoose)), mStyle(style),
      mText(std::move(text))
{
}

void ISimpleMenu::SetText(const std::string& text)
{
    if (text == mText) return;
    mText = text;
    mDirty = true;
}

void ISimpleMenu::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mGraphics || !mMenu) return;
    mGraphics->CreateIPopupMenu(mMenu, mRect,
                                [this](IPopupMenu* chosen, int index)
                                {
                                    if (!chosen) return;
                                    if (mCheckChoice && chosen == mMenu.get()) mMenu->CheckItemAlone(index);
                                    if (mOnChoose) mOnChoose(chosen, index);
                                });
}

void ISimpleMenu::Draw(IGraphics* graphics)
{
    const float gray = mGrayed ? controllook::kGrayedWeight : 1.0f;
    const IColor text = controllook::Faded(mStyle.mColor ? *mStyle.mColor : controllook::kText, gray);
    DrawMenuField(graphics, mRect, mStyle, text, controllook::Faded(controllook::kDimText, gray), mText,
                  true);
}

// ---- IEmptyPopupMenu --------------------------------------------------------------------------

IEmptyPopupMenu::IEmptyPopupMenu(IPlugBase* plug, const IRECT& rect, std::shared_ptr<IPopupMenu> menu,
                                 MenuChoice onChoose)
    : IInvisibleSwitchControl(plug, rect, -1, 1), mMenu(std::move(menu)), mOnChoose(std::move(onChoose))
{
}

void IEmptyPopupMenu::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mGraphics || !mMenu) return;
    mGraphics->CreateIPopupMenu(mMenu, mRect,
                                [this](IPopupMenu* chosen, int index)
                                {
                                    if (chosen && mOnChoose) mOnChoose(chosen, index);
                                });
}
