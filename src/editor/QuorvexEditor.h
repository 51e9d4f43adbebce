#pragma once
// The Quorvex editor: the toolkit built from the main layout table with real controls on the
// plug-in's parameters. It knows pages only as numbers: the page tabs and the options button
// report the page asked for through a handler the plug-in sets; without one the tabs just move.
// UI thread only.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/IGraphics.h"

class IRadioButtonsControl;
class ISwitchControl;

class QuorvexEditor : public IGraphics
{
  public:
    // resourceDir: the folder of the bitmaps (the bundle's Resources/img).
    QuorvexEditor(IPlugBase* plug, const std::string& resourceDir);

    void SetPageHandler(std::function<void(int page)> handler) { mPageHandler = std::move(handler); }
    // Shows page as the selected tab (9: the options button lit).
    void SelectPage(int page);
    int SelectedPage() const { return mPage; }

    // Control built for a layout row, null for rows that are background only.
    IControl* ControlOfRow(int row) const;

  private:
    void PageAsked(int page);

    std::vector<int> mRowControl; // control index per layout row, -1 for none
    IRadioButtonsControl* mPageTabs = nullptr;
    ISwitchControl* mOptions = nullptr;
    int mPage = 2;
    int mPageBeforeOptions = 2;
    std::function<void(int)> mPageHandler;
};

// The bitmap folder of the bundle this code was loaded from: <bundle>/Contents/Resources/img,
// found from the loaded module's own path. Empty when it can't be found.
std::string BundleResourceDir();
