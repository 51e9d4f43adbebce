// Colour sets as the editor applies them to its role slots. (The colours of the sets reach the
// pixels in the control tests and the window suite.)
#include <gtest/gtest.h>

#include "editor/ColorSets.h"
#include "editor/IGraphics.h"

TEST(ColorSetTest, ApplyingFillsTheSlotsControlsPointAt)
{
    ColorRoles roles;
    const IColor* accent = roles.Role(1);
    // Outside the table (a stored index from elsewhere), the default; the slots stay where they are.
    for (const auto& [index, applied] : {std::pair{4, 4}, {11, 0}, {-3, 0}, {10, 10}})
    {
        EXPECT_EQ(roles.Apply(index), applied);
        EXPECT_EQ(roles.Role(1), accent);
        for (int role = 0; role < kNumColorRoles; ++role)
            EXPECT_EQ(*roles.Role(role), IColor::FromRGB(kColorSets[applied].mRGB[role])) << role;
        EXPECT_EQ(*roles.Role1Follower(), *accent);
        EXPECT_EQ(*roles.DarkText(), ColorRoles::kDarkText);
        EXPECT_EQ(*roles.BrightText(), ColorRoles::kBrightText);
    }
}
