#pragma once
// Marks, for RealtimeSanitizer, work on the audio thread that is allowed to block: building
// effects while the host renders offline (no deadline then), and the futex wake of a sleeping
// worker (it never waits). Outside sanitizer builds it is nothing.

#if defined(__has_feature)
#if __has_feature(realtime_sanitizer)
#include <sanitizer/rtsan_interface.h>
#define QUORVEX_RTSAN_BUILD 1
#endif
#endif

class BlockingAllowed
{
  public:
#if defined(QUORVEX_RTSAN_BUILD)
    BlockingAllowed()
    {
        __rtsan_disable();
    }
    ~BlockingAllowed()
    {
        __rtsan_enable();
    }
#else
    BlockingAllowed() noexcept {}
#endif
    BlockingAllowed(const BlockingAllowed&) = delete;
    BlockingAllowed& operator=(const BlockingAllowed&) = delete;
};
