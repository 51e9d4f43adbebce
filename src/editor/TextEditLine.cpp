#include "editor/TextEditLine.h"

#include <algorithm>

#include "editor/IGraphicsTypes.h"

namespace
{
bool IsPrintable(int key)
{
    return key >= 32 && key < 127;
}
} // namespace

TextEditLine::TextEditLine(std::string text) : mText(std::move(text)), mCaret(static_cast<int>(mText.size()))
{
}

void TextEditLine::DeleteSelection()
{
    const int a = SelStart(), b = SelEnd();
    mText.erase(static_cast<size_t>(a), static_cast<size_t>(b - a));
    mCaret = mAnchor = a;
}

void TextEditLine::PlaceCaret(int i, bool extend)
{
    mCaret = std::clamp(i, 0, static_cast<int>(mText.size()));
    if (!extend) mAnchor = mCaret;
}

TextEditLine::EResult TextEditLine::OnKey(int key)
{
    const int n = static_cast<int>(mText.size());
    switch (key)
    {
    case kKeyEnter:
        return EResult::kAccept;
    case kKeyEscape:
        return EResult::kCancel;
    case kKeyBackspace:
        if (SelStart() == SelEnd() && mCaret > 0) mAnchor = mCaret - 1;
        DeleteSelection();
        break;
    case kKeyDelete:
        if (SelStart() == SelEnd() && mCaret < n) mAnchor = mCaret + 1;
        DeleteSelection();
        break;
    case kKeyLeft:
        mCaret = SelStart() != SelEnd() ? SelStart() : std::max(0, mCaret - 1);
        mAnchor = mCaret;
        break;
    case kKeyRight:
        mCaret = SelStart() != SelEnd() ? SelEnd() : std::min(n, mCaret + 1);
        mAnchor = mCaret;
        break;
    case kKeyHome:
        mCaret = mAnchor = 0;
        break;
    case kKeyEnd:
        mCaret = mAnchor = n;
        break;
    default:
        if (!IsPrintable(key)) return EResult::kIgnored;
        DeleteSelection();
        mText.insert(mText.begin() + mCaret, static_cast<char>(key));
        mAnchor = ++mCaret;
        break;
    }
    return EResult::kEdited;
}
