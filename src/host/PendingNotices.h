#pragma once
// What the audio thread owes the UI thread: per parameter, an editor refresh and a host edit
// (begin, perform, end), plus a preset change. `process` only marks (lock-free, no allocation);
// the UI thread takes the marks and does the work, except the host edits that `process` could hand
// the host itself through its output parameter changes (TakeHostEdits). Sized once with Resize on the UI
// thread before any processing; a mark for an id beyond the size is dropped.

#include <atomic>
#include <cstdint>
#include <memory>

class PendingNotices
{
  public:
    enum Kind : std::uint8_t
    {
        kEditor = 1,  // move the editor's controls to the parameter's value
        kHostEdit = 2 // tell the host the parameter changed (a linked twin, for instance)
    };
    static constexpr int kNoPreset = -1;

    // UI thread, never while processing.
    void Resize(int nParams);
    int Size() const { return mSize; }

    // Any thread.
    void Mark(int id, Kind kind) noexcept;
    void MarkPreset(int idx) noexcept { mPreset.store(idx, std::memory_order_release); }

    // UI thread: calls f(id, kinds) for every marked id in id order, clearing each mark first.
    template <typename F> void TakeParams(F&& f)
    {
        if (!mAny.exchange(false, std::memory_order_acquire)) return;
        for (int id = 0; id < mSize; ++id)
            if (const std::uint8_t kinds = mFlags[id].exchange(0, std::memory_order_acquire)) f(id, kinds);
    }
    // Audio thread: calls f(id) for every id marked kHostEdit, clearing that mark first (the
    // editor's mark stays for the UI thread). Cheap when nothing is marked.
    template <typename F> void TakeHostEdits(F&& f)
    {
        if (!mAnyHostEdit.exchange(false, std::memory_order_acquire)) return;
        for (int id = 0; id < mSize; ++id)
            if ((mFlags[id].fetch_and(static_cast<std::uint8_t>(~kHostEdit), std::memory_order_acquire) &
                 kHostEdit) != 0)
                f(id);
    }
    // UI thread: the preset asked for last, or kNoPreset.
    int TakePreset() noexcept { return mPreset.exchange(kNoPreset, std::memory_order_acquire); }

  private:
    std::unique_ptr<std::atomic<std::uint8_t>[]> mFlags;
    int mSize = 0;
    std::atomic<bool> mAny{false};
    std::atomic<bool> mAnyHostEdit{false};
    std::atomic<int> mPreset{kNoPreset};
};
