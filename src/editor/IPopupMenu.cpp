#include "editor/IPopupMenu.h"

#include <cstdio>

int IPopupMenu::AddItem(const std::string& text, int flags)
{
    mItems.push_back(Item{text, flags, nullptr});
    return NItems() - 1;
}

int IPopupMenu::AddItem(const std::string& text, std::shared_ptr<IPopupMenu> submenu)
{
    mItems.push_back(Item{text, kNoFlags, std::move(submenu)});
    return NItems() - 1;
}

int IPopupMenu::AddSeparator()
{
    mItems.push_back(Item{"", kSeparator, nullptr});
    return NItems() - 1;
}

const IPopupMenu::Item* IPopupMenu::GetItem(int index) const
{
    return index >= 0 && index < NItems() ? &mItems[index] : nullptr;
}

IPopupMenu::Item* IPopupMenu::GetItem(int index)
{
    return index >= 0 && index < NItems() ? &mItems[index] : nullptr;
}

void IPopupMenu::SetItemChecked(int index, bool checked)
{
    if (Item* item = GetItem(index))
        item->mFlags = checked ? (item->mFlags | kChecked) : (item->mFlags & ~kChecked);
}

void IPopupMenu::CheckItemAlone(int index)
{
    for (int i = 0; i < NItems(); ++i)
        SetItemChecked(i, i == index);
}

void IPopupMenu::SetItemEnabled(int index, bool enabled)
{
    if (Item* item = GetItem(index))
        item->mFlags = enabled ? (item->mFlags & ~kDisabled) : (item->mFlags | kDisabled);
}

std::string IPopupMenu::ItemDisplayText(int index) const
{
    const Item* item = GetItem(index);
    if (!item) return {};
    static constexpr const char* kFormats[] = {nullptr, "%1d: %s", "%02d: %s", "%03d: %s"};
    if (mPrefix == kPrefixNone || item->IsSeparator()) return item->mText;
    char buf[512];
    std::snprintf(buf, sizeof buf, kFormats[mPrefix], index + 1, item->mText.c_str());
    return buf;
}
