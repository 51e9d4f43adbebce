#pragma once
// Things the toolkit draws above the controls in the editor's own look: popup menus, the one-line
// text box, tooltips. At most one modal overlay is open; while it is, it takes the mouse (except
// the release of a press a control took) and the keyboard. UI thread only.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/IGraphicsTypes.h"
#include "editor/IPopupMenu.h"
#include "editor/TextEditLine.h"

class IRaster;
class ColorRoles;

class IOverlay
{
  public:
    virtual ~IOverlay() = default;
    // The area it covers now, in layout pixels.
    virtual IRECT Bounds() const = 0;
    virtual void Draw(IRaster& raster) = 0;
    virtual void OnMouseDown(int x, int y, const IMouseMod& mod) = 0;
    virtual void OnMouseMove(int x, int y) {}
    virtual void OnMouseWheel(int x, int y, int d) {}
    virtual bool OnKeyDown(int key) { return false; }
    bool Closed() const { return mClosed; }
    // Reads and clears the flag.
    bool TakeDirty()
    {
        const bool d = mDirty;
        mDirty = false;
        return d;
    }

  protected:
    bool mClosed = false;
    bool mDirty = true;
};

// A popup menu with cascading sub-menus; a menu taller than the window scrolls (wheel, the arrow
// rows, keys). A pick sets the chosen index of the (sub-)menu it was in and reports both; a click
// outside or Escape reports a null menu.
class IPopupOverlay final : public IOverlay
{
  public:
    using Done = std::function<void(IPopupMenu* menu, int index)>;
    static constexpr int kRowH = 20;
    static constexpr int kArrowH = 14;
    static constexpr int kPad = 4;
    static constexpr int kMargin = 4; // kept free at the window's edges

    IPopupOverlay(std::shared_ptr<IPopupMenu> menu, const IRECT& anchor, int windowW, int windowH,
                  IRaster& measure, const ColorRoles& colors, Done done);

    IRECT Bounds() const override;
    void Draw(IRaster& raster) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseMove(int x, int y) override;
    void OnMouseWheel(int x, int y, int d) override;
    bool OnKeyDown(int key) override;

    // Geometry for tests and the host-side test driver: the row rectangle of item `index` of open
    // level `level` (empty when scrolled out of view), and the number of open levels.
    IRECT ItemRect(int level, int index) const;
    int NLevels() const { return static_cast<int>(mLevels.size()); }
    // The menu open at `level`, null past the last.
    const IPopupMenu* MenuAt(int level) const
    {
        return level >= 0 && level < NLevels() ? mLevels[static_cast<size_t>(level)].mMenu : nullptr;
    }

  private:
    struct Level
    {
        IPopupMenu* mMenu;
        IRECT mRect;
        int mFirst = 0; // first item in view
        int mRows = 0;  // items in view
        bool mScrolls = false;
        int mHover = -1;
    };

    void OpenLevel(IPopupMenu* menu, int x, int y, int parentL, int minW = 0);
    void CloseLevelsAbove(int level);
    void Scroll(Level& level, int rows);
    void Choose(int level, int index);
    void Dismiss();
    // Level and item under a point; -1s when none (an arrow row gives item -2 up, -3 down).
    void HitTest(int x, int y, int& level, int& index) const;

    std::shared_ptr<IPopupMenu> mRoot;
    std::vector<Level> mLevels;
    IRaster& mMeasure;
    const ColorRoles& mColors;
    Done mDone;
    int mWindowW, mWindowH;
};

// A one-line text box with caret and selection. Enter or a click outside accepts, Escape drops.
class ITextEntryOverlay final : public IOverlay
{
  public:
    using Done = std::function<void(const std::string& text)>;

    ITextEntryOverlay(const IRECT& rect, std::string text, IRaster& measure, const ColorRoles& colors,
                      Done done);

    IRECT Bounds() const override { return mRect; }
    void Draw(IRaster& raster) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    bool OnKeyDown(int key) override;

    const std::string& Text() const { return mLine.Text(); }
    int Caret() const { return mLine.Caret(); }
    // Start and end of the selection (equal when nothing is selected).
    int SelStart() const { return mLine.SelStart(); }
    int SelEnd() const { return mLine.SelEnd(); }

  private:
    void Accept();

    IRECT mRect;
    TextEditLine mLine;
    IRaster& mMeasure;
    const ColorRoles& mColors;
    Done mDone;
    IText mStyle;
};

// Drawing shared by the text fields of the overlays: the field, its selection, its text and,
// when it has the keyboard, the caret. CaretIndexAt is the character boundary nearest to x.
void DrawTextEditField(IRaster& raster, const IText& style, const ColorRoles& colors, const IRECT& rect,
                       const TextEditLine& line, bool focused);
int CaretIndexAt(IRaster& measure, const IText& style, const IRECT& rect, const std::string& text, int x);
// A dialog's panel: shadow, body, frame, the accent line along the top and the caption in it.
void DrawDialogPanel(IRaster& raster, const ColorRoles& colors, const IRECT& rect, const char* caption);
// A push button of the dialogs; the default button carries the accent.
void DrawDialogButton(IRaster& raster, const ColorRoles& colors, const IRECT& rect, const char* label,
                      bool isDefault, bool hover);

// A tooltip beside the mouse.
class ITooltipOverlay final : public IOverlay
{
  public:
    ITooltipOverlay(int x, int y, std::string text, int windowW, int windowH, IRaster& measure,
                    const ColorRoles& colors);
    IRECT Bounds() const override { return mRect; }
    void Draw(IRaster& raster) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override { mClosed = true; }

  private:
    IRECT mRect;
    std::string mText;
    const ColorRoles& mColors;
    IText mStyle;
};
