#include <gtest/gtest.h>

#include "state/Messages.h"

namespace
{
TEST(Messages, TextsAreTheUsersOwnSpellingIncluded)
{
    EXPECT_EQ(MessageText(0), "No Error");
    EXPECT_EQ(MessageText(1),
              "Could not allocate enough memory!\nPlease close and restart QUORVEX after freeing up space!");
    EXPECT_EQ(MessageText(3),
              "Preset was not saved to USER PRESET Folder!\nPreset won't be visible in the Preset Menu.");
    EXPECT_EQ(MessageText(4), "Could not find the Presets folder!\nPlease re-install QUORVEX!");
    EXPECT_EQ(MessageText(5), "Could not write Preset file!\nPlease re-install QUORVEX!");
    EXPECT_EQ(MessageText(6), "Can't write into Fatory Preset Folder!\nPlease save to User Preset Folder!");
    EXPECT_EQ(MessageText(7),
              "Saved data is newer than the actual QUORVEX version!\nCan't restore saved state!");
}

TEST(Messages, CodesOutsideTheTableGiveTheLookupFailureText)
{
    for (int code : {2, -1, 8, 1000})
        EXPECT_EQ(MessageText(code), "invalid map<K, T> key") << code;
}

TEST(PendingMessage, KeepsTheLastMessageUntilDismissed)
{
    PendingMessage message;
    EXPECT_FALSE(message.IsPending());
    message.Show(kMsgNoPresetFolder);
    message.Show(kMsgStateTooNew);
    EXPECT_TRUE(message.IsPending());
    EXPECT_EQ(message.Code(), 7);
    EXPECT_EQ(message.Text(), MessageText(7));
    message.Dismiss();
    EXPECT_FALSE(message.IsPending());

    message.Show(2);
    EXPECT_TRUE(message.IsPending());
    EXPECT_EQ(message.Text(), "invalid map<K, T> key");
}
} // namespace
