#pragma once
// A popup menu as data: items with flags and optional sub-menus, the chosen index after a pick,
// and an optional numbering prefix that the menu adds to each item's text when shown.

#include <memory>
#include <string>
#include <vector>

class IPopupMenu
{
  public:
    enum EItemFlags
    {
        kNoFlags = 0,
        kChecked = 1,
        kDisabled = 2,
        kSeparator = 4
    };
    // Automatic numbering of items: none, "%1d: %s", "%02d: %s", "%03d: %s".
    enum EPrefix
    {
        kPrefixNone = 0,
        kPrefix1 = 1,
        kPrefix2 = 2,
        kPrefix3 = 3
    };

    struct Item
    {
        std::string mText;
        int mFlags = kNoFlags;
        std::shared_ptr<IPopupMenu> mSubmenu;

        bool Checked() const { return mFlags & kChecked; }
        bool Enabled() const { return !(mFlags & (kDisabled | kSeparator)); }
        bool IsSeparator() const { return mFlags & kSeparator; }
    };

    int AddItem(const std::string& text, int flags = kNoFlags);
    int AddItem(const std::string& text, std::shared_ptr<IPopupMenu> submenu);
    int AddSeparator();

    int NItems() const { return static_cast<int>(mItems.size()); }
    const Item* GetItem(int index) const;
    Item* GetItem(int index);
    void SetItemChecked(int index, bool checked);
    // Checks index and unchecks all others.
    void CheckItemAlone(int index);
    void SetItemEnabled(int index, bool enabled);

    void SetPrefix(EPrefix prefix) { mPrefix = prefix; }
    EPrefix GetPrefix() const { return mPrefix; }
    // The text as shown: with the numbering prefix (item number = index + 1) when one is set.
    std::string ItemDisplayText(int index) const;

    int GetChosenItemIdx() const { return mChosenItemIdx; }
    void SetChosenItemIdx(int index) { mChosenItemIdx = index; }

  private:
    std::vector<Item> mItems;
    EPrefix mPrefix = kPrefixNone;
    int mChosenItemIdx = -1;
};
