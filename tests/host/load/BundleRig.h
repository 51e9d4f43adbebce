#pragma once
// The shipped bundle as a host holds it: loaded once with dlopen from its place in the bundle,
// instances with every side a host asks for, stereo renders through them, and the few offsets of
// the state chunk the tests read and write.

#include "common/HostDoubles.h"
#include "common/Measure.h"

#include "pluginterfaces/vst/ivstunits.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace bundlerig
{
using namespace hostdoubles;
using testmeasure::Peak;

constexpr ParamID kBypassId = 0x62706173; // "bpas"
constexpr ParamID kPresetId = 0x70727374; // "prst"
constexpr int kNumParams = 1095;
// Parameters used by name, by id as the catalogue fixes them.
constexpr ParamID kSlotOn1 = 0, kDirectIn1 = 16, kFeedback1 = 68, kFxPost1 = 112, kFxOnPost1 = 304,
                  kDelayMode1 = 308, kDelayTaps1 = 316, kTimebase1 = 328, kDelayTimeL1 = 344,
                  kDelayTimeR1 = 356, kDelayLopass1 = 776, kLfoRate1 = 864, kMasterFx = 1052,
                  kMasterFxP1 = 1054, kMasterFxP2 = 1055, kMasterFxLevel = 1062, kLimiterOn = 1063,
                  kDryLevel = 1066;
// Master effect types by their place in the list, and the fastest limiter.
constexpr double kQuorvexHall = 1.0, kReverb = 2.0, kFast = 3.0;

inline std::u16string Text(const char16* s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s));
}

// The bundle under test: the one just built, or an installed one named by QUORVEX_BUNDLE.
inline std::string BundleDir()
{
    const char* installed = std::getenv("QUORVEX_BUNDLE");
    return installed != nullptr && *installed != '\0' ? installed : QUORVEX_BUNDLE_DIR;
}

// The module, loaded once for the whole run, as a host keeps it loaded.
struct Module
{
    void* handle = nullptr;
    bool (*entry)(void*) = nullptr;
    bool (*exit)() = nullptr;
    IPluginFactory* (*getFactory)() = nullptr;
    bool entered = false;
    IPluginFactory* factory = nullptr;
};
inline Module gModule;

class ModuleEnvironment : public ::testing::Environment
{
  public:
    void SetUp() override
    {
        const std::string binary = BundleDir() + "/Contents/x86_64-linux/Quorvex.so";
        gModule.handle = dlopen(binary.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(gModule.handle, nullptr) << dlerror();
        gModule.entry = reinterpret_cast<bool (*)(void*)>(dlsym(gModule.handle, "ModuleEntry"));
        gModule.exit = reinterpret_cast<bool (*)()>(dlsym(gModule.handle, "ModuleExit"));
        gModule.getFactory =
            reinterpret_cast<IPluginFactory* (*)()>(dlsym(gModule.handle, "GetPluginFactory"));
        ASSERT_TRUE(gModule.entry && gModule.exit && gModule.getFactory);
        gModule.entered = gModule.entry(gModule.handle);
        gModule.factory = gModule.getFactory();
    }
    void TearDown() override
    {
        if (gModule.factory) gModule.factory->release();
        if (gModule.exit) gModule.exit();
        if (gModule.handle) dlclose(gModule.handle);
    }
};
inline const auto* const gEnvironment = ::testing::AddGlobalTestEnvironment(new ModuleEnvironment);

template <typename I> I* Query(FUnknown* object)
{
    void* obj = nullptr;
    if (!object || object->queryInterface(I::iid, &obj) != kResultOk) return nullptr;
    return static_cast<I*>(obj);
}

// One plug-in instance with every side a host asks for; closed as a host closes it, processing
// stopped and deactivated before it is terminated.
class Instance
{
  public:
    explicit Instance(bool initialize = true)
    {
        PClassInfo info;
        gModule.factory->getClassInfo(0, &info);
        void* obj = nullptr;
        EXPECT_EQ(gModule.factory->createInstance(info.cid, IComponent::iid, &obj), kResultOk);
        component = static_cast<IComponent*>(obj);
        processor = Query<IAudioProcessor>(component);
        controller = Query<IEditController>(component);
        units = Query<IUnitInfo>(component);
        if (initialize)
        {
            EXPECT_EQ(component->initialize(&host), kResultOk);
            controller->setComponentHandler(&handler);
        }
    }
    // Started at once, as most tests want it.
    Instance(double rate, int32 maxBlock, int32 sampleSize, ProcessModes mode = kRealtime) : Instance()
    {
        Start(rate, maxBlock, sampleSize, mode);
    }
    ~Instance()
    {
        Stop();
        controller->setComponentHandler(nullptr);
        component->terminate();
        units->release();
        controller->release();
        processor->release();
        component->release();
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    // The usual host start: buses, set-up, activation, processing on.
    void Start(double rate, int32 maxBlock, int32 sampleSize, ProcessModes mode = kRealtime,
               bool sidechain = true)
    {
        component->activateBus(kAudio, kInput, 0, true);
        component->activateBus(kAudio, kInput, 1, sidechain);
        component->activateBus(kAudio, kOutput, 0, true);
        ProcessSetup setup{mode, sampleSize, maxBlock, rate};
        ASSERT_EQ(processor->setupProcessing(setup), kResultOk);
        ASSERT_EQ(component->setActive(true), kResultOk);
        processor->setProcessing(true);
    }
    void Stop()
    {
        processor->setProcessing(false);
        component->setActive(false);
    }
    std::vector<std::uint8_t> ComponentState() { return StateOf(component); }
    std::vector<std::uint8_t> ControllerState() { return StateOf(controller); }
    template <typename Side> static std::vector<std::uint8_t> StateOf(Side* side)
    {
        MemoryStream stream;
        EXPECT_EQ(side->getState(&stream), kResultOk);
        return stream.Bytes();
    }
    tresult LoadState(const std::vector<std::uint8_t>& bytes)
    {
        MemoryStream stream(bytes);
        return component->setState(&stream);
    }
    // The plain value (in the parameter's unit) the controller holds.
    double Plain(ParamID id)
    {
        return controller->normalizedParamToPlain(id, controller->getParamNormalized(id));
    }
    // The normalised value of a text as the host's text entry parses it; -1 when refused.
    ParamValue FromText(ParamID id, const std::u16string& text)
    {
        String128 wide{};
        std::copy_n(text.begin(), std::min<std::size_t>(text.size(), 127), wide);
        ParamValue normalized = -1.0;
        return controller->getParamValueByString(id, wide, normalized) == kResultTrue ? normalized : -1.0;
    }
    // Plain value of a list entry, through the plug-in's own texts.
    double ListValue(ParamID id, const std::u16string& text)
    {
        EXPECT_GE(FromText(id, text), 0.0) << "no entry " << std::string(text.begin(), text.end());
        return controller->normalizedParamToPlain(id, FromText(id, text));
    }

    HostApplication host;
    ComponentHandler handler;
    IComponent* component = nullptr;
    IAudioProcessor* processor = nullptr;
    IEditController* controller = nullptr;
    IUnitInfo* units = nullptr;
};

template <typename Sample> bool IsClean(Sample v)
{
    return std::isfinite(v) && std::fpclassify(v) != FP_SUBNORMAL;
}

// Runs one block of noise on both input buses and reports whether every output sample is clean.
template <typename Sample>
::testing::AssertionResult ProcessNoise(Instance& plug, int frames, std::mt19937& rng,
                                        IParameterChanges* changes = nullptr)
{
    AudioRig<Sample> rig(frames, {2, 2}, {2});
    std::uniform_real_distribution<double> noise(-1.0, 1.0);
    for (int b = 0; b < 2; ++b)
        for (int ch = 0; ch < 2; ++ch)
            for (auto& v : rig.In(b, ch))
                v = static_cast<Sample>(noise(rng));
    rig.data.inputParameterChanges = changes;
    if (plug.processor->process(rig.data) != kResultOk)
        return ::testing::AssertionFailure() << "process refused a block of " << frames;
    for (int ch = 0; ch < 2; ++ch)
        for (int i = 0; i < frames; ++i)
            if (!IsClean(rig.Out(0, ch)[i]))
                return ::testing::AssertionFailure()
                       << "output " << ch << "[" << i << "] = " << rig.Out(0, ch)[i];
    return ::testing::AssertionSuccess();
}

// Stereo audio as one run of samples per channel; silence when made from a length.
struct Take
{
    explicit Take(std::size_t n = 0) : l(n), r(n) {}
    std::vector<double> l, r;
    std::size_t Size() const { return l.size(); }
};

// Silence with a full-scale click on both channels at sample `at`.
inline Take Click(std::size_t n, std::size_t at)
{
    Take t(n);
    t.l[at] = t.r[at] = 1.0;
    return t;
}

inline Take NoiseTake(std::size_t n, double amplitude, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> noise(-amplitude, amplitude);
    Take t(n);
    for (std::size_t i = 0; i < n; ++i)
        std::tie(t.l[i], t.r[i]) = std::tuple(noise(rng), noise(rng));
    return t;
}

// Runs `in` through the plug-in in calls of `block` frames of 64-bit samples (32-bit with
// Sample = float), the sidechain silent; call k carries changesFor(k), which may be null.
template <typename Sample = double>
Take RenderWith(Instance& plug, const Take& in, int block,
                const std::function<IParameterChanges*(int)>& changesFor, ProcessModes mode = kRealtime)
{
    Take out(in.Size());
    for (std::size_t done = 0, k = 0; done < in.Size(); done += static_cast<std::size_t>(block), ++k)
    {
        const std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(block), in.Size() - done);
        AudioRig<Sample> rig(static_cast<int>(n), {2, 2}, {2});
        std::transform(in.l.begin() + done, in.l.begin() + done + n, rig.In(0, 0).begin(),
                       [](double v) { return static_cast<Sample>(v); });
        std::transform(in.r.begin() + done, in.r.begin() + done + n, rig.In(0, 1).begin(),
                       [](double v) { return static_cast<Sample>(v); });
        rig.data.processMode = mode;
        rig.data.inputParameterChanges = changesFor(static_cast<int>(k));
        EXPECT_EQ(plug.processor->process(rig.data), kResultOk);
        std::copy_n(rig.Out(0, 0).begin(), n, out.l.begin() + done);
        std::copy_n(rig.Out(0, 1).begin(), n, out.r.begin() + done);
    }
    return out;
}

// As RenderWith, with `first` going with the first call only.
template <typename Sample = double>
Take Render(Instance& plug, const Take& in, int block, IParameterChanges* first = nullptr,
            ProcessModes mode = kRealtime)
{
    return RenderWith<Sample>(
        plug, in, block, [&](int k) { return k == 0 ? first : nullptr; }, mode);
}

using PlainValues = std::initializer_list<std::pair<ParamID, double>>;

// Normalised points {id, offset, value}, as a host queues automation.
inline void AddPoints(ParameterChanges& changes,
                      std::initializer_list<std::tuple<ParamID, int32, double>> points)
{
    for (const auto& [id, at, value] : points)
        changes.Add(id, at, value);
}

// Plain values (in the parameters' units) as one point each at offset 0.
inline void AddPlain(Instance& plug, ParameterChanges& changes, PlainValues values)
{
    for (const auto& [id, plain] : values)
        changes.Add(id, 0, plug.controller->plainParamToNormalized(id, plain));
}

// One silent block of `block` frames carrying the plain values, as a host sends automation.
inline void Apply(Instance& plug, PlainValues values, int block = 256)
{
    ParameterChanges changes;
    AddPlain(plug, changes, values);
    Render(plug, Take(static_cast<std::size_t>(block)), block, &changes);
}

// Index of the first output sample that is not finite, or -1.
inline long FirstNonFinite(const Take& t)
{
    const auto bad = [](double v) { return !std::isfinite(v); };
    const auto at = std::min(std::find_if(t.l.begin(), t.l.end(), bad) - t.l.begin(),
                             std::find_if(t.r.begin(), t.r.end(), bad) - t.r.begin());
    return at == static_cast<long>(t.Size()) ? -1 : at;
}

// Sample for sample the same render, or where the two first part.
inline ::testing::AssertionResult Same(const Take& got, const Take& expected)
{
    for (std::size_t i = 0; i < std::min(got.Size(), expected.Size()); ++i)
        if (got.l[i] != expected.l[i] || got.r[i] != expected.r[i])
            return ::testing::AssertionFailure()
                   << "the renders part at sample " << i << ": " << got.l[i] << " " << got.r[i] << " against "
                   << expected.l[i] << " " << expected.r[i];
    if (got.Size() != expected.Size()) return ::testing::AssertionFailure() << "the renders differ in length";
    return ::testing::AssertionSuccess();
}

// The preset name's length word in a state chunk: behind version, colour set, page and attenuator.
constexpr std::size_t kPresetNameAt = 4 + 4 + 4 + 8;

inline std::int32_t ReadInt(const std::vector<std::uint8_t>& b, std::size_t at)
{
    std::int32_t v = 0;
    return *static_cast<std::int32_t*>(std::memcpy(&v, b.data() + at, sizeof v));
}

// The parameter values close the state chunk, as 64-bit values in their own units in id order.
inline std::size_t ValueOffset(const std::vector<std::uint8_t>& state, ParamID id)
{
    return state.size() - static_cast<std::size_t>(kNumParams - static_cast<int>(id)) * sizeof(double);
}
inline double SavedValue(const std::vector<std::uint8_t>& state, ParamID id)
{
    double v = 0.0;
    return *static_cast<double*>(std::memcpy(&v, state.data() + ValueOffset(state, id), sizeof v));
}
inline void PutValue(std::vector<std::uint8_t>& state, ParamID id, double v)
{
    std::memcpy(state.data() + ValueOffset(state, id), &v, sizeof v);
}

} // namespace bundlerig
