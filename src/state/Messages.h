#pragma once
// The messages that preset and state code shows to the user, and the one pending message that the
// editor's alert panel picks up. A message arriving while another is pending replaces its text.
// UI thread only.

#include <string>
#include <string_view>

enum EMessageCode : int
{
    kMsgNoError = 0,
    kMsgOutOfMemory = 1,
    kMsgNotInUserFolder = 3,
    kMsgNoPresetFolder = 4,
    kMsgCannotWritePreset = 5,
    kMsgFactoryFolderReadOnly = 6,
    kMsgStateTooNew = 7,
};

struct MessageRow
{
    int code;
    std::string_view text;
};

// Texts as the user sees them, spelling included. Code 2 is not used.
inline constexpr MessageRow kMessageTable[] = {
    {kMsgNoError, "No Error"},
    {kMsgOutOfMemory,
     "Could not allocate enough memory!\nPlease close and restart QUORVEX after freeing up space!"},
    {kMsgNotInUserFolder,
     "Preset was not saved to USER PRESET Folder!\nPreset won't be visible in the Preset Menu."},
    {kMsgNoPresetFolder, "Could not find the Presets folder!\nPlease re-install QUORVEX!"},
    {kMsgCannotWritePreset, "Could not write Preset file!\nPlease re-install QUORVEX!"},
    {kMsgFactoryFolderReadOnly, "Can't write into Fatory Preset Folder!\nPlease save to User Preset Folder!"},
    {kMsgStateTooNew, "Saved data is newer than the actual QUORVEX version!\nCan't restore saved state!"},
};

// What a lookup of a code outside the table yields; asking for one is a programming error.
inline constexpr std::string_view kInvalidMessageKey = "invalid map<K, T> key";

std::string_view MessageText(int code);

class PendingMessage
{
  public:
    // Keeps code and text for the editor; replaces a message still pending.
    void Show(int code);
    // A text of the plug-in's own that the table doesn't hold (code -1), for a refusal that has no
    // entry there.
    void ShowText(std::string_view text);
    // The editor closed the panel.
    void Dismiss() { mPending = false; }
    bool IsPending() const { return mPending; }
    // Goes up with every message, so the editor can tell a new one from the one it shows.
    int Serial() const { return mSerial; }
    int Code() const { return mCode; }
    const std::string& Text() const { return mText; }

  private:
    bool mPending = false;
    int mSerial = 0;
    int mCode = kMsgNoError;
    std::string mText;
};
