#include "core/EffectRack.h"

#include "dsp/BlockingAllowed.h"

EffectRack::EffectRack(Slot* slots, const FxCatalog& catalog) : mSlots(slots), mCatalog(catalog)
{
    for (TapRows& rows : mTaps)
        for (std::atomic<double>& d : rows.depth)
            d.store(1.0);
}

EffectRack::~EffectRack()
{
    if (mWorker.joinable())
    {
        mWorker.request_stop();
        mWake.release();
        mWorker.join();
    }
}

void EffectRack::StartWorker()
{
    if (!mWorker.joinable()) mWorker = std::jthread([this](std::stop_token stop) { WorkerLoop(stop); });
}

// Sleeps until a deferred request (or the destructor) wakes it: an idle instance never wakes.
void EffectRack::WorkerLoop(std::stop_token stop)
{
    while (true)
    {
        mWake.acquire();
        if (stop.stop_requested()) return;
        if (mPending.load()) ServicePending(true);
    }
}

template <typename F> bool EffectRack::WithModules(int position, F&& f)
{
    FxModuleList& list = SlotOf(position).FxList(KindOf(position));
    if (!list.Enter()) return false;
    const int n = list.Count();
    for (int k = 0; k < n; ++k)
        if (DSPShell* module = list.Module(k)) f(*module, k);
    list.Leave();
    return true;
}

// ---- requests and values ----

void EffectRack::RequestType(int position, int type, bool byUser, bool deferred)
{
    mPos[position].byUser.store(byUser);
    mPos[position].deferred.store(deferred);
    mPos[position].wanted.store(type);
    // Only the first request of a batch wakes the worker; it clears the flag once awake, before
    // it builds, so a later request wakes it again and none is missed.
    if (deferred && !mPending.exchange(true))
    {
        // A futex wake: it never waits, so it may come from the audio thread.
        const BlockingAllowed wake;
        mWake.release();
    }
}

void EffectRack::SetOn(int position, bool on)
{
    mPos[position].on.store(on);
    Slot& slot = SlotOf(position);
    const int kind = KindOf(position);
    slot.mFxOn[kind] = on;
    WithModules(position, [on](DSPShell& module, int) { module.mBypass = !on; });
    // The block resets them: their memories belong to the audio thread.
    slot.RequestFxReset(kind);
}

void EffectRack::SetValue(int position, int p, double percent)
{
    mPos[position].value[p].store(percent);
    ApplyValue(position, p);
}

void EffectRack::SetModRoute(int position, int p, const double* source, const double* depth)
{
    Route& route = mPos[position].route[p];
    route.depth.store(depth);
    route.source.store(source);
    ApplyRoute(position, p);
}

void EffectRack::SetTapSelection(int slot, int row, int param)
{
    const int before = mTaps[slot].selection[row].exchange(param);
    const int position = Position(slot, Slot::kFxPost);
    // The parameter left by the row returns to its plain value, the new one takes the steps.
    if (before >= 1 && before <= kParams) ApplyValue(position, before - 1);
    if (param >= 1 && param <= kParams && param != before) ApplyValue(position, param - 1);
}

void EffectRack::SetTapStep(int slot, int row, int tap, double percent)
{
    mTaps[slot].step[row][tap].store(percent * 0.01);
    const int q = mTaps[slot].selection[row].load();
    if (q >= 1 && q <= kParams) ApplyValue(Position(slot, Slot::kFxPost), q - 1);
}

void EffectRack::SetTapDepth(int slot, int row, double percent)
{
    mTaps[slot].depth[row].store(percent * 0.01);
    const int q = mTaps[slot].selection[row].load();
    if (q >= 1 && q <= kParams) ApplyValue(Position(slot, Slot::kFxPost), q - 1);
}

void EffectRack::SetTapStepMask(int slot, int row, std::uint32_t mask)
{
    mTaps[slot].mask[row].store(mask);
    const int q = mTaps[slot].selection[row].load();
    if (q >= 1 && q <= kParams) ApplyValue(Position(slot, Slot::kFxPost), q - 1);
}

void EffectRack::SetTapped(int slot, bool tapped)
{
    if (mTaps[slot].tapped.exchange(tapped) != tapped) ApplyAllValues(Position(slot, Slot::kFxPost));
}

// Tap law: in TAPPED mode a POST pair k whose step bit is set takes
// base x ((1 - depth) + depth x step_k): at depth 0 the base, at depth 1 the base scaled by the
// step. Both rows may select the same parameter; their factors then multiply.
double EffectRack::PairPercent(int position, int pair, int p) const
{
    double percent = mPos[position].value[p].load();
    if (KindOf(position) != Slot::kFxPost || pair >= kNumTaps) return percent;
    const TapRows& rows = mTaps[position % kSlots];
    if (!rows.tapped.load()) return percent;
    for (int row = 0; row < kStepRows; ++row)
    {
        if (rows.selection[row].load() != p + 1 || ((rows.mask[row].load() >> pair) & 1u) == 0) continue;
        const double depth = rows.depth[row].load();
        percent *= (1.0 - depth) + depth * rows.step[row][pair].load();
    }
    return percent;
}

void EffectRack::ApplyValue(int position, int p)
{
    const int kind = KindOf(position);
    Slot& slot = SlotOf(position);
    WithModules(position,
                [&](DSPShell& module, int k)
                {
                    const int type = slot.mFxType[kind];
                    module.SetParam(p, mCatalog.ModuleValue(type, p, PairPercent(position, k / 2, p)));
                });
}

void EffectRack::ApplyAllValues(int position)
{
    for (int p = 0; p < kParams; ++p)
        ApplyValue(position, p);
}

void EffectRack::ApplyRoute(int position, int p)
{
    const Route& route = mPos[position].route[p];
    const double* depth = route.depth.load();
    const double* source = route.source.load();
    WithModules(position,
                [&](DSPShell& module, int)
                {
                    module.SetModDepth(p, depth);
                    module.SetModSource(p, source);
                });
    if (p == kParams - 1) ApplyMixRoute(position, SlotOf(position).mFxType[KindOf(position)]);
}

void EffectRack::ApplyMixRoute(int position, int type)
{
    const Route& route = mPos[position].route[kParams - 1];
    const bool mix = type != 0 && mCatalog.P5IsMix(type);
    SlotOf(position).SetFxMixMod(KindOf(position), mix ? route.source.load() : nullptr, route.depth.load());
}

void EffectRack::ClearAll()
{
    for (int position = 0; position < kPositions; ++position)
        WithModules(position,
                    [&](DSPShell& module, int)
                    {
                        module.Init();
                        // Init unwires the module: the stored routes go back in.
                        for (int p = 0; p < kParams; ++p)
                        {
                            const Route& route = mPos[position].route[p];
                            module.SetModDepth(p, route.depth.load());
                            module.SetModSource(p, route.source.load());
                        }
                    });
}

// ---- building ----

void EffectRack::ServicePending(bool deferredOnly)
{
    if (deferredOnly) mPending.store(false);
    std::array<int, kPositions> built{};
    std::array<bool, kPositions> byUser{};
    std::array<bool, kPositions> changed{};
    {
        std::lock_guard lock(mBuildMutex);
        for (int position = 0; position < kPositions; ++position)
        {
            if (deferredOnly && !mPos[position].deferred.load()) continue;
            byUser[position] = mPos[position].byUser.load();
            changed[position] = Rebuild(position);
            built[position] = mBuiltType[position].load();
        }
    }
    if (!mListener) return;
    for (int position = 0; position < kPositions; ++position)
        if (changed[position]) mListener(position, built[position], byUser[position]);
}

void EffectRack::Configure(int position, int type, DSPShell& module, int index) const
{
    const PositionState& state = mPos[position];
    for (int p = 0; p < kParams; ++p)
        module.SetParam(p, mCatalog.ModuleValue(type, p, PairPercent(position, index / 2, p)));
    module.mBypass = !state.on.load();
    module.Reset();
    // A new module starts unwired; the position's stored routes are sent to it last, so that its
    // Reset here reads no source buffer that the audio thread is writing.
    for (int p = 0; p < kParams; ++p)
    {
        const double* source = state.route[p].source.load();
        module.SetModDepth(p, state.route[p].depth.load());
        if (source != nullptr) module.SetModSource(p, source);
    }
}

bool EffectRack::Rebuild(int position)
{
    const int wanted = mPos[position].wanted.load();
    if (wanted == mBuiltType[position].load()) return false;
    const int kind = KindOf(position);
    Slot& slot = SlotOf(position);

    FxModuleList::Modules fresh;
    int count = wanted == 0 ? 0 : (kind == Slot::kFxPost ? Slot::kFxModules : 2);
    for (int k = 0; k < count; ++k)
    {
        const bool right = k % 2 == 1;
        fresh[k] = mCatalog.Create(wanted, right, right ? fresh[k - 1].get() : nullptr);
        if (!fresh[k])
        {
            // A type no branch knows: nothing runs at this position.
            count = 0;
            break;
        }
    }
    const int type = count > 0 ? wanted : 0;
    for (int k = 0; k < count; ++k)
        Configure(position, type, *fresh[k], k);

    slot.FxList(kind).Replace(std::move(fresh), count,
                              [&]
                              {
                                  slot.mFxType[kind] = type;
                                  ApplyMixRoute(position, type);
                                  mBuiltType[position].store(wanted);
                              });
    // Writes that met the mark are caught here.
    ApplyAllValues(position);
    for (int p = 0; p < kParams; ++p)
        ApplyRoute(position, p);
    const bool on = mPos[position].on.load();
    WithModules(position, [on](DSPShell& module, int) { module.mBypass = !on; });
    return true;
}
