#include "editor/IMessageBoxOverlay.h"

#include <algorithm>

#include "editor/ColorSets.h"
#include "editor/IRaster.h"

namespace
{
constexpr int kLineH = 19;
constexpr int kTitleH = 36;
constexpr int kSide = 24;
constexpr int kButtonW = 84, kButtonH = 26;
constexpr int kMinW = 340;

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (;;)
    {
        const size_t nl = text.find('\n', start);
        lines.push_back(text.substr(start, nl == std::string::npos ? std::string::npos : nl - start));
        if (nl == std::string::npos) return lines;
        start = nl + 1;
    }
}
} // namespace

IMessageBoxOverlay::IMessageBoxOverlay(std::string text, std::string caption, int windowW, int windowH,
                                       IRaster& measure, const ColorRoles& colors, Done done)
    : mWindowW(windowW), mWindowH(windowH), mMeasure(measure), mColors(colors), mDone(std::move(done))
{
    mStyle.mSize = 13;
    mStyle.mColor = colors.BrightText();
    mStyle.mFont = "Arial";
    SetText(std::move(text), std::move(caption));
}

void IMessageBoxOverlay::SetText(std::string text, std::string caption)
{
    mText = std::move(text);
    mCaption = std::move(caption);
    mLines = SplitLines(mText);
    Layout();
    mDirty = true;
}

void IMessageBoxOverlay::Layout()
{
    int textW = 0;
    for (const std::string& line : mLines)
        textW = std::max(textW, mMeasure.MeasureText(mStyle, line.c_str()).W());
    const int w = std::min(mWindowW - 8, std::max(kMinW, textW + 2 * kSide));
    const int h = kTitleH + static_cast<int>(mLines.size()) * kLineH + 16 + kButtonH + 16;
    const int l = (mWindowW - w) / 2, t = std::max(4, (mWindowH - h) / 2 - 20);
    mRect = IRECT::FromSize(l, t, w, h);
}

IRECT IMessageBoxOverlay::ButtonRect() const
{
    return IRECT::FromSize(mRect.R - kSide - kButtonW + 8, mRect.B - 16 - kButtonH, kButtonW, kButtonH);
}

void IMessageBoxOverlay::Close()
{
    mClosed = true;
    mDirty = true;
    if (mDone) mDone();
}

void IMessageBoxOverlay::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.L && ButtonRect().Contains(x, y)) Close();
}

void IMessageBoxOverlay::OnMouseMove(int x, int y)
{
    const bool hover = ButtonRect().Contains(x, y);
    if (hover != mHover)
    {
        mHover = hover;
        mDirty = true;
    }
}

bool IMessageBoxOverlay::OnKeyDown(int key)
{
    if (key == kKeyEnter || key == kKeyEscape || key == ' ') Close();
    return true;
}

void IMessageBoxOverlay::Draw(IRaster& raster)
{
    DrawDialogPanel(raster, mColors, mRect, mCaption.c_str());
    IText line = mStyle;
    line.mAlign = IText::kAlignNear;
    int y = mRect.T + kTitleH;
    for (const std::string& text : mLines)
    {
        raster.DrawText(line, text.c_str(), IRECT(mRect.L + kSide, y, mRect.R - kSide, y + kLineH));
        y += kLineH;
    }
    DrawDialogButton(raster, mColors, ButtonRect(), "OK", true, mHover);
}
