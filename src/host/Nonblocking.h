#pragma once
// QUORVEX_NONBLOCKING marks a function that runs on the audio thread and must never allocate, lock
// or make a system call. Under clang it is the nonblocking function-effect attribute, which
// RealtimeSanitizer (-fsanitize=realtime) turns into a checked real-time context; other compilers
// see nothing. It goes where a function type's attributes go: after the parameter list and any
// noexcept, before `override`.

#if defined(__clang__) && defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::nonblocking)
#define QUORVEX_NONBLOCKING [[clang::nonblocking]]
#endif
#endif

#ifndef QUORVEX_NONBLOCKING
#define QUORVEX_NONBLOCKING
#endif
