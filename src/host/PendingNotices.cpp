#include "host/PendingNotices.h"

#include <algorithm>

void PendingNotices::Resize(int nParams)
{
    const int n = std::max(nParams, 0);
    mFlags = std::make_unique<std::atomic<std::uint8_t>[]>(static_cast<std::size_t>(n));
    for (int id = 0; id < n; ++id)
        mFlags[id].store(0, std::memory_order_relaxed);
    mSize = n;
    mAny = false;
    mAnyHostEdit = false;
}

void PendingNotices::Mark(int id, Kind kind) noexcept
{
    if (id < 0 || id >= mSize) return;
    mFlags[id].fetch_or(kind, std::memory_order_release);
    // Set after the flag, so a taker that sees mAny also sees the flag.
    mAny.store(true, std::memory_order_release);
    if (kind == kHostEdit) mAnyHostEdit.store(true, std::memory_order_release);
}
