#pragma once
// A value written by one thread (parameter, editor, set-up) and read by another (audio) without a
// lock. It reads and writes like a plain scalar; every access is a relaxed atomic operation, which
// costs nothing on x86-64 and tells the compiler and ThreadSanitizer that the sharing is intended.
// Read-modify-write sequences are not atomic as a whole: a value has one writer at a time.

#include <atomic>

template <typename T> class Relaxed
{
  public:
    constexpr Relaxed() noexcept : mValue(T{}) {}
    constexpr Relaxed(T value) noexcept : mValue(value) {}
    Relaxed(const Relaxed& other) noexcept : mValue(other.Load()) {}
    Relaxed& operator=(const Relaxed& other) noexcept
    {
        Store(other.Load());
        return *this;
    }
    Relaxed& operator=(T value) noexcept
    {
        Store(value);
        return *this;
    }

    operator T() const noexcept { return Load(); }
    T Load() const noexcept { return mValue.load(std::memory_order_relaxed); }
    void Store(T value) noexcept { mValue.store(value, std::memory_order_relaxed); }

  private:
    std::atomic<T> mValue;
};
