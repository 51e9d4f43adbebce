#include "fx/FxFactory.h"

#include <iterator>

#include "fx/Comb.h"
#include "fx/CompressorFx.h"
#include "fx/EQ_ST.h"
#include "fx/EffectTable.h"
#include "fx/FilterFx.h"
#include "fx/HilbertShifter.h"
#include "fx/LPHP.h"
#include "fx/Lofi.h"
#include "fx/MVPitchShifter.h"
#include "fx/PhaseFilter.h"
#include "fx/PhaserC.h"
#include "fx/RingMod.h"
#include "fx/Shaper.h"
#include "reverb/AFdnReverb.h"
#include "reverb/Ambience.h"

namespace
{
// One maker per module class, in the order of FxModuleClass; several types share a class and tell
// it which one they are.
using Maker = std::unique_ptr<DSPShell> (*)(int type, bool isRight, const DSPShell* left);
constexpr Maker kMakers[] = {
    [](int, bool, const DSPShell*) -> std::unique_ptr<DSPShell> { return nullptr; },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<HilbertShifter>(r); },
    // A right ring modulator follows its left partner's phase.
    [](int, bool r, const DSPShell* left) -> std::unique_ptr<DSPShell>
    {
        if (r && left != nullptr) return std::make_unique<RingMod>(true, static_cast<const RingMod*>(left));
        return std::make_unique<RingMod>(r);
    },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell> { return std::make_unique<PhaserC>(r); },
    [](int t, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<MVPitchShifter>(t == 5, r); },
    [](int t, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<Shaper>(t, r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell> { return std::make_unique<Lofi>(r); },
    [](int t, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<FilterFx>(t, r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<PhaseFilter>(r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell> { return std::make_unique<Comb>(r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell>
    { return std::make_unique<CompressorFx>(r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell> { return std::make_unique<LPHP>(r); },
    [](int, bool r, const DSPShell*) -> std::unique_ptr<DSPShell> { return std::make_unique<VARILPHP>(r); },
};
static_assert(std::size(kMakers) == static_cast<std::size_t>(FxModuleClass::kCount));

// The master effect types 39 to 45 in order.
using MasterMaker = std::unique_ptr<DSPShell> (*)();
constexpr int kFirstMasterType = 39;
constexpr MasterMaker kMasterMakers[] = {
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<Ambience>(); },
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<AFdnReverb>(16, 7, 1); }, // hall
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<AFdnReverb>(10, 2, 4); }, // room
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<EQ_ST>(0); },
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<EQ_ST>(1); },
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<EQ_ST>(2); },
    []() -> std::unique_ptr<DSPShell> { return std::make_unique<LPHP_ST>(); },
};
} // namespace

std::unique_ptr<DSPShell> CreateFxModule(int type, bool isRight, const DSPShell* left)
{
    const FxTypeInfo* info = FindFxType(type);
    if (info == nullptr) return nullptr;
    return kMakers[static_cast<std::size_t>(info->module)](type, isRight, left);
}

std::unique_ptr<DSPShell> CreateMasterFxModule(int type)
{
    const int k = type - kFirstMasterType;
    if (k < 0 || k >= static_cast<int>(std::size(kMasterMakers))) return nullptr;
    return kMasterMakers[k]();
}
