// The page switch rules without a display: the last page kept for the session, the remembered
// large delay view and the options page's way back.
#include <gtest/gtest.h>

#include "editor/EditorPages.h"

TEST(PageState, TheDelayTabReopensTheRememberedLargeView)
{
    PageState pages;
    pages.Show(kPageLargeSteps + 2, false); // slot 3, effect steps
    EXPECT_EQ(pages.SelectedSlot(), 2);
    EXPECT_TRUE(pages.LargeViewShowsSteps(2));
    pages.Show(kPageLfo, false);
    EXPECT_EQ(pages.Show(kPageDelay, false), 16);
    EXPECT_EQ(pages.LastPage(), 16); // the view, not the bare delay tab
    // The options page leaves the memory alone and leads back to where it was opened.
    EXPECT_EQ(pages.ToggleOptions(false), kPageOptions);
    EXPECT_EQ(pages.ToggleOptions(false), 16);
    // From a large view the toggle goes to the overview itself, and then the overview is remembered,
    // and back into the selected slot's view as that slot last showed it.
    EXPECT_EQ(pages.ToggleLargeDelayView(false), kPageDelay);
    EXPECT_EQ(pages.Show(kPageDelay, false), kPageDelay);
    EXPECT_EQ(pages.ToggleLargeDelayView(false), 16);
    pages.SelectSlot(0);
    pages.ToggleLargeDelayView(false);
    EXPECT_EQ(pages.ToggleLargeDelayView(false), kPageLargeLevels);

    // Loading shows a page without storing it; bad pages read as the overview; a stored large view
    // (from a session or a preset) comes back as that slot's view.
    pages.Show(kPageGates, false);
    pages.Show(kPageLogic, true);
    EXPECT_EQ(pages.Shown(), kPageLogic);
    EXPECT_EQ(pages.LastPage(), kPageGates);
    for (int bad : {-1, 18, 1000})
        EXPECT_EQ(PageState().Show(bad, false), kPageDelay) << bad;
    PageState restored;
    restored.SetLastPage(13);
    EXPECT_EQ(restored.Show(restored.LastPage(), true), 13);
    EXPECT_EQ(restored.SelectedSlot(), 3);
    EXPECT_EQ(restored.Show(kPageDelay, false), 13);
}
