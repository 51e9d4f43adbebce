#include "editor/IOverlay.h"

#include <algorithm>

#include "editor/ColorSets.h"
#include "editor/IRaster.h"
#include "editor/OverlayLook.h"

using namespace overlaylook;

namespace
{
IText MenuStyle(const ColorRoles& colors)
{
    IText t;
    t.mSize = 13;
    t.mColor = colors.BrightText();
    t.mAlign = IText::kAlignNear;
    return t;
}
} // namespace

// ---- Popup menu -------------------------------------------------------------------------------

IPopupOverlay::IPopupOverlay(std::shared_ptr<IPopupMenu> menu, const IRECT& anchor, int windowW, int windowH,
                             IRaster& measure, const ColorRoles& colors, Done done)
    : mRoot(std::move(menu)), mMeasure(measure), mColors(colors), mDone(std::move(done)), mWindowW(windowW),
      mWindowH(windowH)
{
    OpenLevel(mRoot.get(), anchor.L, anchor.B, -1, anchor.W());
    // Keep the current item in view: scroll the first checked one to the middle.
    Level& first = mLevels.front();
    for (int i = 0; i < first.mMenu->NItems(); ++i)
        if (first.mMenu->GetItem(i)->Checked() && first.mScrolls) Scroll(first, i - first.mRows / 2);
}

void IPopupOverlay::OpenLevel(IPopupMenu* menu, int x, int y, int parentL, int minW)
{
    const IText style = MenuStyle(mColors);
    int textW = 60;
    for (int i = 0; i < menu->NItems(); ++i)
        textW = std::max(textW, mMeasure.MeasureText(style, menu->ItemDisplayText(i).c_str()).W());
    // Check mark column left, sub-menu arrow column right.
    const int w = std::max(minW, textW + 2 * kPad + 22 + 18);
    const int n = std::max(1, menu->NItems());
    const int room = mWindowH - 2 * kMargin;
    Level level{menu, IRECT(), 0, n, false, -1};
    int h = n * kRowH + 2 * kPad;
    if (h > room)
    {
        level.mScrolls = true;
        level.mRows = std::max(1, (room - 2 * kPad - 2 * kArrowH) / kRowH);
        h = level.mRows * kRowH + 2 * kPad + 2 * kArrowH;
    }
    int l = x;
    if (l + w > mWindowW - kMargin) l = parentL >= 0 ? parentL - w + 2 : mWindowW - kMargin - w;
    l = std::max(kMargin, l);
    int t = std::clamp(y, kMargin, std::max(kMargin, mWindowH - kMargin - h));
    level.mRect = IRECT(l, t, l + w, t + h);
    mLevels.push_back(level);
    mDirty = true;
}

IRECT IPopupOverlay::Bounds() const
{
    IRECT r;
    for (const Level& level : mLevels)
        r = r.Union(level.mRect);
    return r;
}

IRECT IPopupOverlay::ItemRect(int levelIdx, int index) const
{
    if (levelIdx < 0 || levelIdx >= NLevels()) return IRECT();
    const Level& level = mLevels[levelIdx];
    const int row = index - level.mFirst;
    if (row < 0 || row >= level.mRows || index >= level.mMenu->NItems()) return IRECT();
    const int top = level.mRect.T + kPad + (level.mScrolls ? kArrowH : 0) + row * kRowH;
    return IRECT(level.mRect.L + 1, top, level.mRect.R - 1, top + kRowH);
}

void IPopupOverlay::HitTest(int x, int y, int& levelIdx, int& index) const
{
    levelIdx = -1;
    index = -1;
    for (int l = NLevels() - 1; l >= 0; --l)
    {
        const Level& level = mLevels[l];
        if (!level.mRect.Contains(x, y)) continue;
        levelIdx = l;
        if (level.mScrolls && y < level.mRect.T + kPad + kArrowH)
            index = -2;
        else if (level.mScrolls && y >= level.mRect.B - kPad - kArrowH)
            index = -3;
        else
            for (int i = level.mFirst; i < level.mFirst + level.mRows; ++i)
                if (ItemRect(l, i).Contains(x, y)) index = i;
        return;
    }
}

void IPopupOverlay::CloseLevelsAbove(int level)
{
    if (NLevels() > level + 1)
    {
        mLevels.resize(level + 1);
        mDirty = true;
    }
}

void IPopupOverlay::Scroll(Level& level, int first)
{
    const int maxFirst = std::max(0, level.mMenu->NItems() - level.mRows);
    const int clamped = std::clamp(first, 0, maxFirst);
    if (clamped != level.mFirst)
    {
        level.mFirst = clamped;
        mDirty = true;
    }
}

void IPopupOverlay::OnMouseMove(int x, int y)
{
    int l, i;
    HitTest(x, y, l, i);
    if (l < 0) return;
    Level& level = mLevels[l];
    if (i == -2 || i == -3)
    {
        Scroll(level, level.mFirst + (i == -2 ? -1 : 1));
        return;
    }
    if (level.mHover != i)
    {
        level.mHover = i;
        mDirty = true;
        CloseLevelsAbove(l);
        const IPopupMenu::Item* item = level.mMenu->GetItem(i);
        if (item && item->mSubmenu && item->Enabled())
        {
            const IRECT row = ItemRect(l, i);
            OpenLevel(item->mSubmenu.get(), level.mRect.R - 2, row.T - kPad, level.mRect.L);
        }
    }
}

void IPopupOverlay::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    int l, i;
    HitTest(x, y, l, i);
    if (l < 0)
    {
        Dismiss();
        return;
    }
    OnMouseMove(x, y);
    if (i < 0) return;
    const IPopupMenu::Item* item = mLevels[l].mMenu->GetItem(i);
    if (item && item->Enabled() && !item->mSubmenu) Choose(l, i);
}

void IPopupOverlay::OnMouseWheel(int x, int y, int d)
{
    int l, i;
    HitTest(x, y, l, i);
    Level& level = l >= 0 ? mLevels[l] : mLevels.back();
    Scroll(level, level.mFirst - d * 3);
}

bool IPopupOverlay::OnKeyDown(int key)
{
    Level& level = mLevels.back();
    const int n = level.mMenu->NItems();
    auto move = [&](int dir)
    {
        int i = level.mHover;
        for (int step = 0; step < n; ++step)
        {
            i = i < 0 ? (dir > 0 ? 0 : n - 1) : (i + dir + n) % n;
            if (level.mMenu->GetItem(i)->Enabled()) break;
        }
        level.mHover = i;
        if (i < level.mFirst) Scroll(level, i);
        if (i >= level.mFirst + level.mRows) Scroll(level, i - level.mRows + 1);
        mDirty = true;
    };
    switch (key)
    {
    case kKeyEscape:
        Dismiss();
        return true;
    case kKeyDown:
        move(1);
        return true;
    case kKeyUp:
        move(-1);
        return true;
    case kKeyLeft:
        if (NLevels() > 1) CloseLevelsAbove(NLevels() - 2);
        return true;
    case kKeyRight:
    case kKeyEnter:
    {
        const IPopupMenu::Item* item = level.mMenu->GetItem(level.mHover);
        if (!item || !item->Enabled()) return true;
        if (item->mSubmenu)
        {
            const IRECT row = ItemRect(NLevels() - 1, level.mHover);
            const IRECT parent = level.mRect;
            OpenLevel(item->mSubmenu.get(), parent.R - 2, row.T - kPad, parent.L);
        }
        else if (key == kKeyEnter)
            Choose(NLevels() - 1, level.mHover);
        return true;
    }
    default:
        return true;
    }
}

void IPopupOverlay::Choose(int level, int index)
{
    IPopupMenu* menu = mLevels[level].mMenu;
    menu->SetChosenItemIdx(index);
    mClosed = true;
    mDirty = true;
    if (mDone) mDone(menu, index);
}

void IPopupOverlay::Dismiss()
{
    mClosed = true;
    mDirty = true;
    if (mDone) mDone(nullptr, -1);
}

void IPopupOverlay::Draw(IRaster& raster)
{
    const IText style = MenuStyle(mColors);
    IText disabled = style;
    disabled.mColor = &kDisabledText;
    const IColor accent = *mColors.Role(1);
    for (int l = 0; l < NLevels(); ++l)
    {
        const Level& level = mLevels[l];
        raster.FillRect(kShadow, level.mRect.Shift(2, 3));
        raster.FillRect(kPanel, level.mRect);
        raster.DrawRect(kBorder, level.mRect);
        raster.FillRect(accent, IRECT(level.mRect.L, level.mRect.T, level.mRect.R, level.mRect.T + 2));
        if (level.mScrolls)
        {
            const int cx = (level.mRect.L + level.mRect.R) / 2;
            const double up = level.mRect.T + kPad + kArrowH / 2.0;
            const double dn = level.mRect.B - kPad - kArrowH / 2.0;
            const IColor on = *mColors.BrightText(), off = kDisabledText;
            const IColor& ucol = level.mFirst > 0 ? on : off;
            const IColor& dcol = level.mFirst + level.mRows < level.mMenu->NItems() ? on : off;
            raster.DrawLine(ucol, cx - 5, up + 2, cx, up - 3, 1.5);
            raster.DrawLine(ucol, cx, up - 3, cx + 5, up + 2, 1.5);
            raster.DrawLine(dcol, cx - 5, dn - 2, cx, dn + 3, 1.5);
            raster.DrawLine(dcol, cx, dn + 3, cx + 5, dn - 2, 1.5);
        }
        for (int i = level.mFirst; i < level.mFirst + level.mRows && i < level.mMenu->NItems(); ++i)
        {
            const IPopupMenu::Item* item = level.mMenu->GetItem(i);
            const IRECT row = ItemRect(l, i);
            if (item->IsSeparator())
            {
                const int y = (row.T + row.B) / 2;
                raster.DrawLine(kBorder, row.L + 8, y + 0.5, row.R - 8, y + 0.5, 1.0);
                continue;
            }
            const bool hover = i == level.mHover && item->Enabled();
            if (hover) raster.FillRect(accent.WithAlpha(70), row);
            if (item->Checked())
            {
                const double y = (row.T + row.B) / 2.0;
                raster.DrawLine(accent, row.L + 7, y, row.L + 10, y + 3.5, 2.0);
                raster.DrawLine(accent, row.L + 10, y + 3.5, row.L + 16, y - 4, 2.0);
            }
            const IRECT textRect(row.L + kPad + 20, row.T, row.R - 18, row.B);
            raster.DrawText(item->Enabled() ? style : disabled, level.mMenu->ItemDisplayText(i).c_str(),
                            textRect);
            if (item->mSubmenu)
            {
                const double y = (row.T + row.B) / 2.0;
                raster.DrawLine(*style.mColor, row.R - 12, y - 4, row.R - 8, y, 1.5);
                raster.DrawLine(*style.mColor, row.R - 8, y, row.R - 12, y + 4, 1.5);
            }
        }
    }
}

// ---- Text box ---------------------------------------------------------------------------------

namespace
{
constexpr int kFieldTextInset = 5;
} // namespace

int CaretIndexAt(IRaster& measure, const IText& style, const IRECT& rect, const std::string& text, int x)
{
    int best = 0, bestDist = 1 << 30;
    for (int i = 0; i <= static_cast<int>(text.size()); ++i)
    {
        const int px = rect.L + kFieldTextInset + measure.MeasureText(style, text.substr(0, i).c_str()).W();
        if (std::abs(px - x) < bestDist) bestDist = std::abs(px - x), best = i;
    }
    return best;
}

void DrawTextEditField(IRaster& raster, const IText& style, const ColorRoles& colors, const IRECT& rect,
                       const TextEditLine& line, bool focused)
{
    const IColor accent = *colors.Role(1);
    const std::string& text = line.Text();
    const int textX = rect.L + kFieldTextInset;
    raster.FillRect(kFieldBg, rect);
    raster.DrawRect(focused ? accent : kBorder, rect);
    auto xAt = [&](int i) { return textX + raster.MeasureText(style, text.substr(0, i).c_str()).W(); };
    raster.PushClip(rect.Inset(1));
    if (focused && line.SelStart() != line.SelEnd())
        raster.FillRect(accent.WithAlpha(110),
                        IRECT(xAt(line.SelStart()), rect.T + 3, xAt(line.SelEnd()), rect.B - 3));
    raster.DrawText(style, text.c_str(), IRECT(textX, rect.T, rect.R - 4, rect.B));
    if (focused)
    {
        const double cx = xAt(line.Caret()) + 0.5;
        raster.DrawLine(*colors.BrightText(), cx, rect.T + 4, cx, rect.B - 4, 1.0);
    }
    raster.PopClip();
}

ITextEntryOverlay::ITextEntryOverlay(const IRECT& rect, std::string text, IRaster& measure,
                                     const ColorRoles& colors, Done done)
    : mRect(rect.L, rect.T, rect.L + std::max(rect.W(), 90), rect.T + std::max(rect.H(), 20)),
      mLine(std::move(text)), mMeasure(measure), mColors(colors), mDone(std::move(done))
{
    mStyle.mSize = 13;
    mStyle.mColor = colors.BrightText();
    mStyle.mAlign = IText::kAlignNear;
}

void ITextEntryOverlay::Accept()
{
    mClosed = true;
    mDirty = true;
    if (mDone) mDone(mLine.Text());
}

void ITextEntryOverlay::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mRect.Contains(x, y))
    {
        Accept();
        return;
    }
    mLine.PlaceCaret(CaretIndexAt(mMeasure, mStyle, mRect, mLine.Text(), x), mod.S);
    mDirty = true;
}

bool ITextEntryOverlay::OnKeyDown(int key)
{
    switch (mLine.OnKey(key))
    {
    case TextEditLine::EResult::kAccept:
        Accept();
        break;
    case TextEditLine::EResult::kCancel:
        mClosed = true;
        break;
    case TextEditLine::EResult::kIgnored:
        return true; // the box is modal: no key gets past it
    case TextEditLine::EResult::kEdited:
        break;
    }
    mDirty = true;
    return true;
}

void ITextEntryOverlay::Draw(IRaster& raster)
{
    DrawTextEditField(raster, mStyle, mColors, mRect, mLine, true);
}

void DrawDialogPanel(IRaster& raster, const ColorRoles& colors, const IRECT& rect, const char* caption)
{
    const IColor accent = *colors.Role(1);
    raster.FillRect(kShadow, rect.Shift(3, 4));
    raster.FillRoundRect(kPanel, rect, 4.0);
    raster.DrawRect(kBorder, rect);
    raster.FillRect(accent, IRECT(rect.L, rect.T, rect.R, rect.T + 3));
    IText title;
    title.mSize = 12;
    title.mStyle = IText::kStyleBold;
    title.mColor = &accent;
    title.mAlign = IText::kAlignNear;
    raster.DrawText(title, caption, IRECT(rect.L + 14, rect.T + 8, rect.R - 14, rect.T + 30));
}

void DrawDialogButton(IRaster& raster, const ColorRoles& colors, const IRECT& rect, const char* label,
                      bool isDefault, bool hover)
{
    const IColor accent = *colors.Role(1);
    raster.FillRoundRect(hover ? kButtonHover : kButton, rect, 3.0);
    raster.DrawRect(isDefault ? accent : kBorder, rect);
    IText text;
    text.mSize = 12;
    text.mStyle = IText::kStyleBold;
    text.mColor = colors.BrightText();
    raster.DrawText(text, label, rect);
}

// ---- Tooltip ----------------------------------------------------------------------------------

ITooltipOverlay::ITooltipOverlay(int x, int y, std::string text, int windowW, int windowH, IRaster& measure,
                                 const ColorRoles& colors)
    : mText(std::move(text)), mColors(colors)
{
    mStyle.mSize = 12;
    mStyle.mColor = colors.BrightText();
    const IRECT size = measure.MeasureText(mStyle, mText.c_str());
    const int w = size.W() + 12, h = size.H() + 8;
    int l = std::clamp(x + 12, 2, std::max(2, windowW - w - 2));
    int t = y + 18 + h > windowH - 2 ? y - h - 6 : y + 18;
    mRect = IRECT::FromSize(l, std::max(2, t), w, h);
}

void ITooltipOverlay::Draw(IRaster& raster)
{
    raster.FillRect(kPanel, mRect);
    raster.DrawRect(kBorder, mRect);
    raster.DrawText(mStyle, mText.c_str(), mRect);
}
