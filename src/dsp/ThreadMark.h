#pragma once
// Marks one thread as the one inside a call, such as the audio thread inside processing, so that
// code reached from several threads can tell whether it runs there. A thread id rather than a
// thread_local: in a module the host loads with dlopen, a thread's first touch of thread-local
// storage may allocate, which the audio thread must never do.

#include <atomic>
#include <thread>

class ThreadMark
{
  public:
    // Marks the calling thread for the scope's life; nested scopes restore the outer mark.
    class Scope
    {
      public:
        explicit Scope(ThreadMark& mark)
            : mMark(mark), mOuter(mark.mThread.exchange(std::this_thread::get_id()))
        {
        }
        ~Scope() { mMark.mThread.store(mOuter); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

      private:
        ThreadMark& mMark;
        std::thread::id mOuter;
    };

    bool IsCurrent() const { return mThread.load() == std::this_thread::get_id(); }
    // Some thread is inside the marked call.
    bool IsHeld() const { return mThread.load() != std::thread::id{}; }

  private:
    static_assert(std::atomic<std::thread::id>::is_always_lock_free);
    std::atomic<std::thread::id> mThread{};
};
