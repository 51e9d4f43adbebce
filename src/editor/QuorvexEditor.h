#pragma once
// The Quorvex editor: the always-visible part built from the main layout table and every page
// built from its own table (PageLayouts.h), each page a list of controls shown together. Page
// switches follow PageState's rules. The page tabs and buttons ask the plug-in through its page
// actions (so it can keep `LastPage`); without them the editor switches by itself. UI thread only.

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/EditorReadouts.h"
#include "editor/EditorPages.h"
#include "editor/IGraphics.h"
#include "editor/IMyControls.h"

class IFocusPanelControl;
class ITimeHighlightControl;
class IPresetMenuControl;
class DelayPages;
struct StepMaskActions;
class IRadioButtonsControl;
class ISwitchControl;
struct LayoutRow;

class QuorvexEditor : public IGraphics
{
  public:
    // What the page controls ask of the plug-in.
    struct PageActions
    {
        std::function<void(int page)> showPage;
        std::function<void()> toggleOptionsPage;
        std::function<void()> toggleLargeDelayView;
    };

    // resourceDir: the folder of the bitmaps (the bundle's Resources/img).
    QuorvexEditor(IPlugBase* plug, const std::string& resourceDir);
    ~QuorvexEditor() override;

    void SetPageActions(PageActions actions) { mActions = std::move(actions); }
    // Told the colour set the user picks on the options page, after the editor applied it, so the
    // plug-in can store it.
    void SetColorSetHandler(std::function<void(int set)> handler) { mColorSetHandler = std::move(handler); }
    // A colour set picked by the user: applied, then told to the handler.
    void PickColorSet(int index);

    // What the preset row asks of the plug-in.
    struct PresetActions
    {
        std::function<void()> openMenu;
        std::function<void(bool forward)> step;
        std::function<void()> save;
    };
    void SetPresetActions(PresetActions actions) { mPresetActions = std::move(actions); }
    // The name and folder label the preset row shows (redrawn only when they change).
    void SetPresetTexts(const std::string& name, const std::string& folderLabel);
    // Where the preset menu opens: under the name field.
    IRECT PresetMenuAnchor() const;
    IPresetMenuControl* PresetName() const { return mPresetName; }
    IFocusPanelControl* FocusPanel() const { return mFocus; }

    // Readouts of the idle tick (meter ids of EditorReadouts): every meter control of the id
    // follows, redrawn only when its picture changes.
    void SetMeter(int id, double value);
    // The step a gate plays now, for the controls that light it.
    void SetPlayingStep(int gate, int step);
    int PlayingStep(int gate) const { return mPlayingStep[static_cast<unsigned>(gate) % 4]; }
    // The blinking frame over slot `slot`'s delay times after its timebase changed.
    void HighlightTimes(int slot);
    // One editor frame of the highlights.
    void TickHighlights();
    // Labels that show a notice for a while (IMyTextControl::SetTimedText): each idle tick counts
    // them down; a preset or state load ends every notice at once.
    void AddTimedLabel(IMyTextControl* label) { mTimedLabels.push_back(label); }
    void TickTimedLabels();
    void FlushTimedLabels();
    ITimeHighlightControl* TimeHighlight(int slot) const
    {
        return mTimeHighlight[static_cast<unsigned>(slot) % 4];
    }
    // Controls that show meter `id` (layout rows of kind kMeter name theirs in mIndex).
    void AddMeterControl(int id, IControl* control);
    const PageActions& Actions() const { return mActions; }
    // The delay pages' tap and step masks and the actions that tell the plug-in of their presses.
    DelayPages& Delay() { return *mDelay; }
    void SetStepMaskActions(StepMaskActions actions);
    // Bitmap `id` of the list, loaded on first use.
    const IBitmap& BitmapOf(int id) { return Bitmap(id); }

    // The page switches; each answers the page shown. presetLoading keeps `LastPage` as it was.
    int ShowPage(int page, bool presetLoading);
    int ToggleOptionsPage(bool presetLoading);
    int ToggleLargeDelayView(bool presetLoading);
    const PageState& Pages() const { return mPages; }
    PageState& Pages() { return mPages; }

    // Control built for a row of the main layout, null for rows that are background only.
    IControl* ControlOfRow(int row) const;
    // Control built for row `row` of the page table that fills `list`, or null.
    IControl* ControlOfPageRow(EPageList list, int row) const;
    // Indices of the controls of a page list (its stage art first).
    const std::vector<int>& ListControls(EPageList list) const { return mLists[list]; }

    // Plug-in values reach the controls; an effect type change also shows the type's knobs.
    void SetParameterFromPlug(int id, double value, bool normalized) override;

  private:
    IControl* BuildRowControl(const LayoutRow& row, int param, int instance = 0);
    // The knobs an effect panel shows: those its type has, on the page shown.
    void RefreshFxKnobs();
    const IBitmap& Bitmap(int id);
    void ShowLists(int page);

    std::vector<IBitmap> mBitmaps;
    std::vector<bool> mBitmapLoaded;
    std::vector<int> mRowControl; // control index per main layout row, -1 for none
    std::array<std::vector<int>, kNumPageLists> mLists;
    std::array<std::vector<int>, kNumPageLists> mListRowControl; // per page row, -1 for none
    IRadioButtonsControl* mPageTabs = nullptr;
    ISwitchControl* mOptions = nullptr;
    PageState mPages;
    PageActions mActions;
    PresetActions mPresetActions;
    std::array<std::vector<IControl*>, EditorReadouts::kNumMeters> mMeterControls;
    std::array<int, 4> mPlayingStep{-1, -1, -1, -1}; // none shown yet
    IPresetMenuControl* mPresetName = nullptr;
    IFocusPanelControl* mFocus = nullptr;
    std::array<ITimeHighlightControl*, 4> mTimeHighlight{};
    std::unique_ptr<DelayPages> mDelay;
    // One knob of an effect panel with its name, depth and source, shown or hidden together.
    struct FxKnobGroup
    {
        EPageList list;
        int knob;
        int label; // the name control, which holds the type's value
        std::array<int, 4> controls;
        int cover; // over the row's printed marks while the knob is hidden
    };
    std::vector<FxKnobGroup> mFxGroups;
    std::vector<IMyTextControl*> mTimedLabels;
    std::function<void(int)> mColorSetHandler;
};

// The bitmap folder of the bundle this code was loaded from: <bundle>/Contents/Resources/img,
// found from the loaded module's own path. Empty when it can't be found.
std::string BundleResourceDir();
