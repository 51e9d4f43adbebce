#include "editor/IFilePromptOverlay.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "editor/ColorSets.h"
#include "editor/IRaster.h"
#include "editor/OverlayLook.h"

using namespace overlaylook;

namespace
{
constexpr int kPanelW = 480;
constexpr int kSide = 16;
constexpr int kButtonW = 96, kButtonH = 26;
// A folder tree deeper or larger than this is not a preset library: the list stops there.
constexpr int kMaxDepth = 8;
constexpr size_t kMaxFolders = 1000;

std::string Lower(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string Trim(const std::string& s)
{
    const size_t a = s.find_first_not_of(" \t");
    if (a == std::string::npos) return {};
    return s.substr(a, s.find_last_not_of(" \t") - a + 1);
}

IText LabelStyle()
{
    static constexpr IColor kLabel = IColor::FromRGB(0x8A93A3);
    IText t;
    t.mSize = 10;
    t.mStyle = IText::kStyleBold;
    t.mColor = &kLabel;
    t.mAlign = IText::kAlignNear;
    return t;
}
} // namespace

std::vector<IFilePromptOverlay::Folder> IFilePromptOverlay::ScanFolders(const std::string& dir)
{
    namespace fs = std::filesystem;
    std::vector<Folder> folders;
    const fs::path top(dir);
    std::string topName = top.filename().string();
    if (topName.empty()) topName = top.parent_path().filename().string();
    folders.push_back({"", topName.empty() ? dir : topName, 0});
    std::error_code ec;
    fs::recursive_directory_iterator it(top, fs::directory_options::skip_permission_denied, ec), end;
    for (; !ec && it != end && folders.size() < kMaxFolders; it.increment(ec))
    {
        const fs::directory_entry& entry = *it;
        const std::string name = entry.path().filename().string();
        std::error_code typeError;
        if (!entry.is_directory(typeError)) continue;
        if (name.empty() || name[0] == '.' || it.depth() >= kMaxDepth)
        {
            it.disable_recursion_pending();
            continue;
        }
        folders.push_back(
            {fs::relative(entry.path(), top, typeError).generic_string(), name, it.depth() + 1});
    }
    std::sort(folders.begin() + 1, folders.end(),
              [](const Folder& a, const Folder& b) { return Lower(a.mRelative) < Lower(b.mRelative); });
    return folders;
}

std::string IFilePromptOverlay::PathFor(const std::string& dir, const std::string& relative,
                                        const std::string& name, const std::string& extension)
{
    std::string file = Trim(name);
    if (file.empty()) return {};
    for (char& c : file)
        if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 32) c = '-';
    const std::string dotExt = "." + extension;
    if (extension.empty() || file.size() <= dotExt.size() ||
        Lower(file.substr(file.size() - dotExt.size())) != Lower(dotExt))
        file += extension.empty() ? "" : dotExt;
    std::string path = dir;
    if (!path.empty() && path.back() != '/') path += '/';
    if (!relative.empty()) path += relative + "/";
    return path + file;
}

IFilePromptOverlay::IFilePromptOverlay(std::string caption, const std::string& fileName, std::string dir,
                                       std::string extension, int windowW, int windowH, IRaster& measure,
                                       const ColorRoles& colors, Done done)
    : mCaption(std::move(caption)), mDir(std::move(dir)), mExtension(std::move(extension)),
      mFolders(ScanFolders(mDir)), mName(fileName), mMeasure(measure), mColors(colors), mDone(std::move(done))
{
    mStyle.mSize = 13;
    mStyle.mColor = colors.BrightText();
    mStyle.mAlign = IText::kAlignNear;
    mStyle.mFont = "Arial";

    const int listH = kVisibleRows * kRowH + 4;
    const int h = 36 + 18 + listH + 14 + 18 + 26 + 18 + kButtonH + 16;
    const int l = (windowW - kPanelW) / 2, t = std::max(4, (windowH - h) / 2);
    mRect = IRECT::FromSize(l, t, kPanelW, h);
    int y = t + 36 + 18;
    mListRect = IRECT(l + kSide, y, mRect.R - kSide, y + listH);
    y = mListRect.B + 14 + 18;
    mNameRect = IRECT(l + kSide, y, mRect.R - kSide, y + 26);
    y = mNameRect.B + 18;
    mSaveRect = IRECT::FromSize(mRect.R - kSide - kButtonW, y, kButtonW, kButtonH);
    mCancelRect = mSaveRect.Shift(-kButtonW - 10, 0);
}

IRECT IFilePromptOverlay::FolderRect(int i) const
{
    const int row = i - mFirst;
    if (i < 0 || i >= static_cast<int>(mFolders.size()) || row < 0 || row >= kVisibleRows) return IRECT();
    const int top = mListRect.T + 2 + row * kRowH;
    return IRECT(mListRect.L + 2, top, mListRect.R - 2, top + kRowH);
}

void IFilePromptOverlay::Select(int i)
{
    mSelected = std::clamp(i, 0, static_cast<int>(mFolders.size()) - 1);
    if (mSelected < mFirst) mFirst = mSelected;
    if (mSelected >= mFirst + kVisibleRows) mFirst = mSelected - kVisibleRows + 1;
    mDirty = true;
}

void IFilePromptOverlay::Finish(bool save)
{
    mClosed = true;
    mDirty = true;
    const std::string path =
        save ? PathFor(mDir, mFolders[static_cast<size_t>(mSelected)].mRelative, mName.Text(), mExtension)
             : std::string();
    if (mDone) mDone(path);
}

void IFilePromptOverlay::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mod.L) return;
    if (mSaveRect.Contains(x, y))
        Finish(true);
    else if (mCancelRect.Contains(x, y))
        Finish(false);
    else if (mNameRect.Contains(x, y))
    {
        mName.PlaceCaret(CaretIndexAt(mMeasure, mStyle, mNameRect, mName.Text(), x), mod.S);
        mDirty = true;
    }
    else
        for (int i = mFirst; i < mFirst + kVisibleRows; ++i)
            if (FolderRect(i).Contains(x, y)) Select(i);
}

void IFilePromptOverlay::OnMouseMove(int x, int y)
{
    const int hover = mSaveRect.Contains(x, y) ? 1 : mCancelRect.Contains(x, y) ? 2 : 0;
    if (hover != mHoverButton)
    {
        mHoverButton = hover;
        mDirty = true;
    }
}

void IFilePromptOverlay::OnMouseWheel(int x, int y, int d)
{
    const int maxFirst = std::max(0, static_cast<int>(mFolders.size()) - kVisibleRows);
    const int first = std::clamp(mFirst - d * 3, 0, maxFirst);
    if (first != mFirst)
    {
        mFirst = first;
        mDirty = true;
    }
}

bool IFilePromptOverlay::OnKeyDown(int key)
{
    switch (key)
    {
    case kKeyUp:
        Select(mSelected - 1);
        return true;
    case kKeyDown:
        Select(mSelected + 1);
        return true;
    case kKeyPageUp:
        Select(mSelected - kVisibleRows);
        return true;
    case kKeyPageDown:
        Select(mSelected + kVisibleRows);
        return true;
    default:
        break;
    }
    switch (mName.OnKey(key))
    {
    case TextEditLine::EResult::kAccept:
        Finish(true);
        break;
    case TextEditLine::EResult::kCancel:
        Finish(false);
        break;
    case TextEditLine::EResult::kEdited:
        mDirty = true;
        break;
    case TextEditLine::EResult::kIgnored:
        break;
    }
    return true;
}

void IFilePromptOverlay::Draw(IRaster& raster)
{
    const IColor accent = *mColors.Role(1);
    DrawDialogPanel(raster, mColors, mRect, mCaption.c_str());
    const IText label = LabelStyle();
    raster.DrawText(label, "FOLDER", IRECT(mListRect.L, mListRect.T - 18, mListRect.R, mListRect.T - 2));
    raster.DrawText(label, "NAME", IRECT(mNameRect.L, mNameRect.T - 18, mNameRect.R, mNameRect.T - 2));

    raster.FillRect(kFieldBg, mListRect);
    raster.DrawRect(kBorder, mListRect);
    raster.PushClip(mListRect.Inset(1));
    for (int i = mFirst; i < mFirst + kVisibleRows && i < static_cast<int>(mFolders.size()); ++i)
    {
        const IRECT row = FolderRect(i);
        if (i == mSelected) raster.FillRect(accent.WithAlpha(80), row);
        const Folder& f = mFolders[static_cast<size_t>(i)];
        // A small folder mark before the name, indented by depth.
        const int gx = row.L + 8 + f.mDepth * kIndent, gy = row.T + 6;
        const IColor& mark = i == mSelected ? accent : kDisabledText;
        raster.FillRect(mark, IRECT(gx, gy, gx + 6, gy + 2));
        raster.FillRect(mark, IRECT(gx, gy + 2, gx + 13, gy + 10));
        raster.DrawText(mStyle, f.mName.c_str(), IRECT(gx + 20, row.T, row.R - 4, row.B));
    }
    raster.PopClip();
    // A scroll mark at the right edge when the list is longer than its box.
    const int n = static_cast<int>(mFolders.size());
    if (n > kVisibleRows)
    {
        const int trackH = mListRect.H() - 4;
        const int barH = std::max(12, trackH * kVisibleRows / n);
        const int barT = mListRect.T + 2 + (trackH - barH) * mFirst / (n - kVisibleRows);
        raster.FillRect(kBorder, IRECT(mListRect.R - 6, barT, mListRect.R - 3, barT + barH));
    }

    DrawTextEditField(raster, mStyle, mColors, mNameRect, mName, true);
    DrawDialogButton(raster, mColors, mCancelRect, "CANCEL", false, mHoverButton == 2);
    DrawDialogButton(raster, mColors, mSaveRect, "SAVE", true, mHoverButton == 1);
}
