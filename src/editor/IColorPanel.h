#pragma once
// The colour set chooser of the options page: a field with the name of the set in use and a
// strip of its accents; a click pops up the names of all sets, and the pick goes back through
// the callback (the plug-in applies the set and moves the selection here).
// UI thread only.

#include <functional>
#include <string>

#include "editor/IControl.h"

class IColorPanel : public IControl
{
  public:
    IColorPanel(IPlugBase* plug, const IRECT& rect, const IText& style,
                std::function<void(int index)> onChoose);
    // The set shown; an index outside the table shows the default set.
    void SetSelection(int index);
    int Selection() const { return mSelection; }
    const char* Name() const;

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    IText mStyle;
    std::function<void(int)> mOnChoose;
    int mSelection = 0;
};
