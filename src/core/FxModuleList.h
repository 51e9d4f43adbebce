#pragma once
// The published modules of one effect position, and the one protocol that replaces them while
// audio runs without a lock on the audio thread.
//
// - Every user of the list (the block, and parameter writes from any thread, the audio thread's
//   automation included) enters first and leaves after: in-use count up, then the mark is read; if
//   it stands the user counts down again and stays out, otherwise it uses the list and counts down
//   when done. All these operations are sequentially consistent.
// - The builder (one at a time, never the audio thread while real-time) hands Replace modules it
//   has configured completely while nobody could see them. Replace sets the mark, waits until the
//   count is 0, publishes the new list, runs the caller's step that must change with the list (the
//   slot's type, the mix route), clears the mark and only then frees the modules it replaced.
// Why it is safe: either a user's increment comes first, and the builder waits for it, or the mark
// comes first, and the user sees it and stays out. A user that enters after the clear sees the new
// modules fully built. The wait is bounded by one block of the audio thread.
// Threads: Enter/Leave/Count/Module/Swapping on any thread, real-time safe; Replace off the audio
// thread while real-time (offline, the audio thread itself may replace: nobody else runs the block).

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "core/TapEngine.h"
#include "dsp/DSPShell.h"
#include "dsp/Relaxed.h"

class FxModuleList
{
  public:
    // A pair per tap for POST; PRE and FB use the first pair. Left modules even, right odd.
    static constexpr int kCapacity = 2 * kNumTaps;
    using Modules = std::array<std::unique_ptr<DSPShell>, kCapacity>;

    FxModuleList() = default;
    FxModuleList(const FxModuleList&) = delete;
    FxModuleList& operator=(const FxModuleList&) = delete;

    bool Enter()
    {
        mInUse.fetch_add(1);
        if (mSwapping.load() == 0) return true;
        mInUse.fetch_sub(1);
        return false;
    }
    void Leave() { mInUse.fetch_sub(1); }
    // Between Enter and Leave only.
    int Count() const { return mCount; }
    DSPShell* Module(int k) const { return mModules[static_cast<std::size_t>(k)]; }
    // True while a replacement holds the list; the block passes the position dry then.
    bool Swapping() const { return mSwapping.load() != 0; }
    int Users() const { return mInUse.load(); }

    // Publishes the first `count` of `fresh` in place of the present list, running
    // `withList()` while the mark still stands; frees the replaced modules last.
    template <typename F> void Replace(Modules fresh, int count, F&& withList)
    {
        mSwapping.store(1);
        while (mInUse.load() != 0)
            std::this_thread::yield();
        mCount = 0;
        for (int k = 0; k < kCapacity; ++k)
            mModules[static_cast<std::size_t>(k)] =
                k < count ? fresh[static_cast<std::size_t>(k)].get() : nullptr;
        mCount = count;
        withList();
        mSwapping.store(0);
        mOwned.swap(fresh);
    }

  private:
    std::array<Relaxed<DSPShell*>, kCapacity> mModules{};
    Relaxed<int> mCount{0};
    std::atomic<std::uint8_t> mSwapping{0};
    std::atomic<int> mInUse{0};
    // Touched by the builder only.
    Modules mOwned;
};
