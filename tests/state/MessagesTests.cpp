// The message texts the user is shown.

#include <gtest/gtest.h>

#include "state/Messages.h"

// The last message shown waits until dismissed; a code outside the table gives the lookup's
// failure text, as the user has always seen it.
TEST(PendingMessage, KeepsTheLastMessageUntilDismissed)
{
    PendingMessage message;
    message.Show(kMsgNoPresetFolder);
    message.Show(kMsgStateTooNew);
    EXPECT_TRUE(message.IsPending());
    EXPECT_EQ(message.Text(),
              "Saved data is newer than the actual QUORVEX version!\nCan't restore saved state!");
    message.Dismiss();
    EXPECT_FALSE(message.IsPending());
    for (int code : {2, -1, 1000})
    {
        message.Show(code);
        EXPECT_EQ(message.Text(), "invalid map<K, T> key") << code;
    }
}
