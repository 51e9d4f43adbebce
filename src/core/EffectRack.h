#pragma once
// The modules of the twelve effect positions (slot s, kind PRE 0, FB 1, POST 2; position =
// s + 4 x kind) and everything a position's modules take: the five FX values in percent, their
// modulation routes, the "FXOn" state and, for POST, the tap step rows. Built modules are handed
// to the slots with Slot::SetFxList; the rack keeps ownership. POST holds 16 pairs (one per tap),
// PRE and FB one pair; left modules sit at even indexes, right ones at odd.
//
// Replacing a position's modules: RequestType stores the wanted type in an atomic (real-time safe,
// any thread). Building happens off the audio thread: ServicePending does it on its caller
// (parameter thread, constructor, state restore, tests) and a small worker, asleep until a
// request raised on the audio thread (`deferred`) wakes it, builds those. The built modules are configured
// completely (values through the law, depths and sources, bypass, Reset) and handed to the position's
// FxModuleList, which publishes them and frees the old ones; the stored values are then applied once more,
// which catches a write that met the list's mark.
//
// Threads: Request..., Set... and ClearAll are real-time safe on any thread. ServicePending and
// the destructor off the audio thread. The type listener runs on the thread that serviced the
// request, with the build mutex released.

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>

#include "core/FxCatalog.h"
#include "core/Slot.h"
#include "dsp/DSPShell.h"

class EffectRack
{
  public:
    static constexpr int kSlots = 4;
    static constexpr int kKinds = Slot::kNumFxPositions;
    static constexpr int kPositions = kSlots * kKinds;
    static constexpr int kParams = 5;
    static constexpr int kStepRows = 2;
    using TypeListener = std::function<void(int position, int type, bool byUser)>;

    // `slots` are the engine's four slots; both they and `catalog` outlive the rack.
    EffectRack(Slot* slots, const FxCatalog& catalog);
    ~EffectRack();
    EffectRack(const EffectRack&) = delete;
    EffectRack& operator=(const EffectRack&) = delete;

    static int Position(int slot, int kind) { return slot + kSlots * kind; }

    // Called after a position got its new modules. Set it before StartWorker.
    void SetTypeListener(TypeListener listener) { mListener = std::move(listener); }
    // Starts the worker that services requests raised where building is not allowed.
    void StartWorker();

    // Any thread, real-time safe.
    // `deferred`: raised where nothing may be built (the audio thread); the worker builds it.
    void RequestType(int position, int type, bool byUser, bool deferred);
    void SetOn(int position, bool on);
    void SetValue(int position, int p, double percent);
    void SetModRoute(int position, int p, const double* source, const double* depth);
    // Tap step rows of a slot's POST position: row 0/1 is "Tap FX Param1/2".
    void SetTapSelection(int slot, int row, int param); // 0 none, 1..5 the FX parameter
    void SetTapStep(int slot, int row, int tap, double percent);
    void SetTapDepth(int slot, int row, double percent);
    void SetTapStepMask(int slot, int row, std::uint32_t mask); // bit t: tap t follows the row
    void SetTapped(int slot, bool tapped);
    // Inits every module of every position (memories and wiring cleared), then wires the stored
    // routes again. Audio thread, or with audio held off.
    void ClearAll();

    // Off the audio thread: builds every position whose wanted type differs from its built one
    // (with `deferredOnly`, only those whose last request was deferred).
    void ServicePending(bool deferredOnly = false);

    // The type a position was last built for (the slot's mFxType follows at the swap).
    int BuiltType(int position) const { return mBuiltType[position].load(); }
    // Percent a POST module pair `pair` gets for parameter p, the tap step law included.
    double PairPercent(int position, int pair, int p) const;

  private:
    struct Route
    {
        std::atomic<const double*> source{nullptr};
        std::atomic<const double*> depth{nullptr};
    };
    struct PositionState
    {
        std::atomic<int> wanted{0};
        std::atomic<bool> byUser{false};
        std::atomic<bool> deferred{false};
        std::atomic<bool> on{false};
        std::array<std::atomic<double>, kParams> value{};
        std::array<Route, kParams> route;
    };
    struct TapRows
    {
        std::array<std::atomic<int>, kStepRows> selection{};
        std::array<std::atomic<double>, kStepRows> depth{};
        std::array<std::atomic<std::uint32_t>, kStepRows> mask{};
        std::array<std::array<std::atomic<double>, kNumTaps>, kStepRows> step{};
        std::atomic<bool> tapped{false};
    };

    Slot& SlotOf(int position) const { return mSlots[position % kSlots]; }
    static int KindOf(int position) { return position / kSlots; }
    // Runs f(module, index) over the published modules under the in-use protocol; false when the
    // position was marked.
    template <typename F> bool WithModules(int position, F&& f);
    void ApplyValue(int position, int p);
    void ApplyAllValues(int position);
    void ApplyRoute(int position, int p);
    void ApplyMixRoute(int position, int type);
    // Builder steps; the build mutex is held.
    bool Rebuild(int position);
    void Configure(int position, int type, DSPShell& module, int index) const;
    void WorkerLoop(std::stop_token stop);

    Slot* mSlots;
    const FxCatalog& mCatalog;
    std::array<PositionState, kPositions> mPos;
    std::array<std::atomic<int>, kPositions> mBuiltType{};
    std::array<TapRows, kSlots> mTaps;
    std::atomic<bool> mPending{false};
    // The worker sleeps on it; a deferred request and the destructor release it.
    std::counting_semaphore<4> mWake{0};

    // One builder at a time.
    std::mutex mBuildMutex;
    TypeListener mListener;
    std::jthread mWorker;
};
