#pragma once
// The editor's pages as the plug-in stores them in `LastPage`, and the rules of switching between
// them. Page numbers are saved in sessions and presets, so the assignment below never changes:
//   0 routing, 1 pre effects, 2 delay overview, 3 feedback effects, 4 post effects, 5 LFOs,
//   6 step gates, 7 envelope followers, 8 logic modules and the feedback matrix, 9 options,
//   10..13 the large view of slot 1..4 with its level taps, 14..17 the same with its effect steps.
// Pure logic: the editor shows the lists this names. UI thread only.

inline constexpr int kPageRouting = 0;
inline constexpr int kPagePreFx = 1;
inline constexpr int kPageDelay = 2;
inline constexpr int kPageFeedbackFx = 3;
inline constexpr int kPagePostFx = 4;
inline constexpr int kPageLfo = 5;
inline constexpr int kPageGates = 6;
inline constexpr int kPageEnvelope = 7;
inline constexpr int kPageLogic = 8;
inline constexpr int kPageOptions = 9;
inline constexpr int kPageLargeLevels = 10; // + slot
inline constexpr int kPageLargeSteps = 14;  // + slot
inline constexpr int kNumPages = 18;

// The control lists pages show. The three effect pages share one layout with a list each; the
// large views have one list per slot.
enum EPageList : int
{
    kListRouting,
    kListPreFx,
    kListFeedbackFx,
    kListPostFx,
    kListDelay,
    kListLfo,
    kListGates,
    kListEnvelope,
    kListLogic,
    kListOptions,
    kListLarge1,
    kListLarge2,
    kListLarge3,
    kListLarge4,
    kNumPageLists
};

// The list page p shows (p already resolved: never the bare 2 when a large view is remembered).
constexpr EPageList ListOfPage(int page)
{
    switch (page)
    {
    case kPageRouting:
        return kListRouting;
    case kPagePreFx:
        return kListPreFx;
    case kPageDelay:
        return kListDelay;
    case kPageFeedbackFx:
        return kListFeedbackFx;
    case kPagePostFx:
        return kListPostFx;
    case kPageLfo:
        return kListLfo;
    case kPageGates:
        return kListGates;
    case kPageEnvelope:
        return kListEnvelope;
    case kPageLogic:
        return kListLogic;
    case kPageOptions:
        return kListOptions;
    default:
        return static_cast<EPageList>(kListLarge1 + (page - kPageLargeLevels) % 4);
    }
}

// A stored page outside 0..17 reads as the delay overview.
constexpr int ValidPage(int page)
{
    return page >= 0 && page < kNumPages ? page : kPageDelay;
}

class PageState
{
  public:
    // Switches to `page`: the delay overview gives way to a remembered large view, a large view is
    // remembered, and the page shown is stored as the last page unless a preset is loading.
    // Answers the page shown.
    int Show(int page, bool presetLoading);
    // From any page to the options and from the options back to the page left.
    int ToggleOptions(bool presetLoading);
    // From the delay overview to the selected slot's large view (level taps or effect steps, as
    // that slot's view was last), and from a large view back to the overview.
    int ToggleLargeDelayView(bool presetLoading);

    int Shown() const { return mShown; }
    int LastPage() const { return mLastPage; }
    int DelayPage() const { return mDelayPage; }
    // Seeds the last page from a state or preset without showing anything yet.
    void SetLastPage(int page) { mLastPage = ValidPage(page); }

    // The slot the overview has selected, and whether a slot's large view shows its effect steps.
    void SelectSlot(int slot) { mSelectedSlot = slot & 3; }
    int SelectedSlot() const { return mSelectedSlot; }
    bool LargeViewShowsSteps(int slot) const { return mStepsView[slot & 3]; }
    // The step view control and the large-view selector are shown on these pages.
    static bool ShowsStepView(int page) { return page == kPageDelay || page > kPageOptions; }
    static bool IsLargeView(int page) { return page >= kPageLargeLevels && page < kNumPages; }
    static int SlotOfLargeView(int page) { return (page - kPageLargeLevels) % 4; }

  private:
    int mShown = kPageDelay;
    int mLastPage = kPageDelay;
    int mDelayPage = kPageDelay;
    int mPageBeforeOptions = kPageDelay;
    int mSelectedSlot = 0;
    bool mStepsView[4] = {false, false, false, false};
};
