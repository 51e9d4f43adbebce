#include "editor/X11ErrorTrap.h"

#include <X11/Xlib.h>

#include <array>
#include <atomic>

namespace
{
// A handful of editors open at once is plenty; a connection beyond that is simply not trapped.
constexpr int kMaxWatched = 32;

struct Slot
{
    std::atomic<Display*> display{nullptr};
    std::atomic<int> errors{0};
};
std::array<Slot, kMaxWatched> gSlots;
std::atomic<XErrorHandler> gPrevious{nullptr};
int gWatching = 0; // UI thread only

Slot* SlotOf(Display* display)
{
    for (Slot& s : gSlots)
        if (s.display.load(std::memory_order_relaxed) == display) return &s;
    return nullptr;
}

int TrapError(Display* display, XErrorEvent* event)
{
    if (Slot* slot = display ? SlotOf(display) : nullptr)
    {
        slot->errors.fetch_add(1, std::memory_order_relaxed);
        return 0;
    }
    const XErrorHandler previous = gPrevious.load(std::memory_order_relaxed);
    return previous ? previous(display, event) : 0;
}
} // namespace

namespace x11trap
{
void Watch(_XDisplay* display)
{
    if (!display || SlotOf(display)) return;
    bool placed = false;
    for (Slot& s : gSlots)
    {
        Display* empty = nullptr;
        if (s.display.compare_exchange_strong(empty, display))
        {
            s.errors.store(0, std::memory_order_relaxed);
            placed = true;
            break;
        }
    }
    if (!placed) return;
    // Installed again whenever it is not current: a host may have replaced it meanwhile.
    const XErrorHandler previous = XSetErrorHandler(TrapError);
    if (previous != TrapError) gPrevious.store(previous, std::memory_order_relaxed);
    ++gWatching;
}

void Unwatch(_XDisplay* display)
{
    Slot* slot = display ? SlotOf(display) : nullptr;
    if (!slot) return;
    slot->display.store(nullptr, std::memory_order_relaxed);
    if (--gWatching > 0) return;
    const XErrorHandler current = XSetErrorHandler(gPrevious.load(std::memory_order_relaxed));
    if (current != TrapError) XSetErrorHandler(current); // the host's own stays
}

int ErrorCount(_XDisplay* display)
{
    const Slot* slot = display ? SlotOf(display) : nullptr;
    return slot ? slot->errors.load(std::memory_order_relaxed) : 0;
}
} // namespace x11trap
