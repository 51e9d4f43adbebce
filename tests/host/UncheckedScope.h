#pragma once
// Test doubles record what the audio thread hands them, in vectors that grow. That bookkeeping is
// the test's, not the plug-in's: under RealtimeSanitizer it runs with the checks paused for the
// scope of an UncheckedScope; elsewhere the scope does nothing.

#ifdef QUORVEX_RTSAN
#include <sanitizer/rtsan_interface.h>
using UncheckedScope = __rtsan::ScopedDisabler;
#else
struct UncheckedScope
{
    UncheckedScope() {}
    ~UncheckedScope() {}
    UncheckedScope(const UncheckedScope&) = delete;
    UncheckedScope& operator=(const UncheckedScope&) = delete;
};
#endif
