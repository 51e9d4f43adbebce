// Colour sets as the editor applies them to its role slots.
#include <gtest/gtest.h>

#include <tuple>

#include "editor/ColorSets.h"
#include "editor/IGraphics.h"

TEST(ColorSetTest, ApplyingFillsTheSlotsControlsPointAt)
{
    ColorRoles roles;
    const IColor* accent = roles.Role(1);
    // {index asked, index applied, role 1 then}: the default first; outside the table, the default.
    const std::tuple<int, int, std::uint32_t> cases[] = {
        {0, 0, 0x6176FF}, {4, 4, 0xFD6275}, {11, 0, 0x6176FF}, {-3, 0, 0x6176FF}, {10, 10, 0xEAAEFF}};
    for (const auto& [index, applied, role1] : cases)
    {
        EXPECT_EQ(roles.Apply(index), applied);
        EXPECT_EQ(roles.Role(1), accent); // same slot, new colour
        EXPECT_EQ(*accent, IColor::FromRGB(role1));
        EXPECT_EQ(*roles.Role1Follower(), *accent);
        EXPECT_EQ(*roles.DarkText(), ColorRoles::kDarkText);
        EXPECT_EQ(*roles.BrightText(), ColorRoles::kBrightText);
    }
    roles.Apply(7); // "WHITE"
    for (int role = 0; role < kNumColorRoles; ++role)
        EXPECT_EQ(*roles.Role(role), IColor(255, 255, 255, 255));
}
