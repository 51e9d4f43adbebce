#include "state/Messages.h"

#include <algorithm>

namespace
{
constexpr bool CodesAscend()
{
    for (std::size_t i = 1; i < std::size(kMessageTable); ++i)
        if (kMessageTable[i - 1].code >= kMessageTable[i].code) return false;
    return true;
}
static_assert(CodesAscend(), "message codes must be unique and ascending");
} // namespace

std::string_view MessageText(int code)
{
    const auto row = std::find_if(std::begin(kMessageTable), std::end(kMessageTable),
                                  [code](const MessageRow& r) { return r.code == code; });
    return row != std::end(kMessageTable) ? row->text : kInvalidMessageKey;
}

void PendingMessage::Show(int code)
{
    mCode = code;
    mText = MessageText(code);
    mPending = true;
    ++mSerial;
}

void PendingMessage::ShowText(std::string_view text)
{
    mCode = -1;
    mText = text;
    mPending = true;
    ++mSerial;
}
