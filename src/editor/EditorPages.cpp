#include "editor/EditorPages.h"

int PageState::Show(int page, bool presetLoading)
{
    page = ValidPage(page);
    if (page == kPageDelay) page = mDelayPage;
    if (IsLargeView(page))
    {
        mDelayPage = page;
        mStepsView[SlotOfLargeView(page)] = page >= kPageLargeSteps;
        mSelectedSlot = SlotOfLargeView(page);
    }
    else if (page == kPageDelay)
        mDelayPage = kPageDelay;
    if (page != kPageOptions) mPageBeforeOptions = page;
    mShown = page;
    if (!presetLoading) mLastPage = page;
    return page;
}

int PageState::ToggleOptions(bool presetLoading)
{
    return Show(mShown == kPageOptions ? mPageBeforeOptions : kPageOptions, presetLoading);
}

int PageState::ToggleLargeDelayView(bool presetLoading)
{
    if (IsLargeView(mShown))
    {
        // Back to the overview itself, not to the view it would remember.
        mDelayPage = kPageDelay;
        return Show(kPageDelay, presetLoading);
    }
    const int base = mStepsView[mSelectedSlot] ? kPageLargeSteps : kPageLargeLevels;
    return Show(base + mSelectedSlot, presetLoading);
}
