#pragma once
// The editor's message box: a caption, a text of one or more lines ('\n' breaks them) and an OK
// button, centred in the window. It stays until the user acknowledges it (the button, Enter,
// Escape or space); a click beside it changes nothing. A new message while it shows replaces
// the text and keeps the box. UI thread only.

#include <functional>
#include <string>
#include <vector>

#include "editor/IOverlay.h"

class IMessageBoxOverlay final : public IOverlay
{
  public:
    using Done = std::function<void()>;

    IMessageBoxOverlay(std::string text, std::string caption, int windowW, int windowH, IRaster& measure,
                       const ColorRoles& colors, Done done);

    // New text (and caption) in the open box; its size follows.
    void SetText(std::string text, std::string caption);
    const std::string& Text() const { return mText; }

    IRECT Bounds() const override { return mRect.Union(mRect.Shift(3, 4)); } // with its shadow
    void Draw(IRaster& raster) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseMove(int x, int y) override;
    bool OnKeyDown(int key) override;

    IRECT ButtonRect() const;

  private:
    void Layout();
    void Close();

    std::string mText, mCaption;
    std::vector<std::string> mLines;
    int mWindowW, mWindowH;
    IRaster& mMeasure;
    const ColorRoles& mColors;
    Done mDone;
    IText mStyle;
    IRECT mRect;
    bool mHover = false;
};
