// The shipped bundle, loaded and driven the way hosts and their validators do: module entry points,
// factory and class record, buses and arrangements, parameters and their texts, processing in both
// sample sizes at many rates and block sizes, parameter queues, bypass, state, units, lifecycle
// cycles, threads, and output hygiene (no NaN, infinity or subnormal numbers).

#include "common/HostDoubles.h"

#include "pluginterfaces/vst/ivstunits.h"
#include "pluginterfaces/vst/vstspeaker.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace hostdoubles;

namespace
{
constexpr ParamID kBypassId = 0x62706173; // "bpas"
constexpr ParamID kPresetId = 0x70727374; // "prst"
constexpr int kNumParams = 1095;
// Parameters used by name below, by id as the catalogue fixes them.
constexpr ParamID kSlotOn1 = 0;
constexpr ParamID kDirectIn1 = 16;
constexpr ParamID kDelayMode1 = 308;
constexpr ParamID kDelayTaps1 = 316;
constexpr ParamID kTimebase1 = 328;
constexpr ParamID kDelayTimeL1 = 344;
constexpr ParamID kDelayTimeR1 = 356;
constexpr ParamID kDelayLopass1 = 776;
constexpr ParamID kMasterFx = 1052;
constexpr ParamID kMasterFxP1 = 1054;
constexpr ParamID kMasterFxP2 = 1055;
constexpr ParamID kMasterFxLevel = 1062;
constexpr ParamID kFeedback1 = 68;
constexpr ParamID kLfoRate1 = 864;
constexpr ParamID kLimiterOn = 1063;
constexpr ParamID kDryLevel = 1066;
constexpr double kQuietNaN = std::numeric_limits<double>::quiet_NaN();

using EntryFn = bool (*)(void*);
using ExitFn = bool (*)();
using FactoryFn = IPluginFactory* (*)();

std::u16string Text(const char16* s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s));
}

// The module, loaded once for the whole run, as a host keeps it loaded.
struct Module
{
    void* handle = nullptr;
    EntryFn entry = nullptr;
    ExitFn exit = nullptr;
    FactoryFn getFactory = nullptr;
    bool entered = false;
    IPluginFactory* factory = nullptr;
};
Module gModule;

// The bundle under test: the one just built, or an installed one named by QUORVEX_BUNDLE.
std::string BundleDir()
{
    const char* installed = std::getenv("QUORVEX_BUNDLE");
    return installed != nullptr && *installed != '\0' ? installed : QUORVEX_BUNDLE_DIR;
}
std::string BundleBinary()
{
    return BundleDir() + "/Contents/x86_64-linux/Quorvex.so";
}

class ModuleEnvironment : public ::testing::Environment
{
  public:
    void SetUp() override
    {
        gModule.handle = dlopen(BundleBinary().c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(gModule.handle, nullptr) << dlerror();
        gModule.entry = reinterpret_cast<EntryFn>(dlsym(gModule.handle, "ModuleEntry"));
        gModule.exit = reinterpret_cast<ExitFn>(dlsym(gModule.handle, "ModuleExit"));
        gModule.getFactory = reinterpret_cast<FactoryFn>(dlsym(gModule.handle, "GetPluginFactory"));
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
const auto* const gEnvironment = ::testing::AddGlobalTestEnvironment(new ModuleEnvironment);

template <typename I> I* Query(FUnknown* object)
{
    void* obj = nullptr;
    if (!object || object->queryInterface(I::iid, &obj) != kResultOk) return nullptr;
    return static_cast<I*>(obj);
}

const char8* ClassId()
{
    static PClassInfo info;
    gModule.factory->getClassInfo(0, &info);
    return info.cid;
}

// One plug-in instance with every side a host asks for.
class Instance
{
  public:
    explicit Instance(bool initialize = true)
    {
        void* obj = nullptr;
        EXPECT_EQ(gModule.factory->createInstance(ClassId(), IComponent::iid, &obj), kResultOk);
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
    ~Instance()
    {
        controller->setComponentHandler(nullptr);
        component->terminate();
        units->release();
        controller->release();
        processor->release();
        component->release();
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    void ActivateBuses(bool sidechain = true)
    {
        component->activateBus(kAudio, kInput, 0, true);
        component->activateBus(kAudio, kInput, 1, sidechain);
        component->activateBus(kAudio, kOutput, 0, true);
    }
    // The usual host start: buses, set-up, activation, processing on.
    void Start(double rate, int32 maxBlock, int32 sampleSize)
    {
        ActivateBuses();
        ProcessSetup setup{kRealtime, sampleSize, maxBlock, rate};
        ASSERT_EQ(processor->setupProcessing(setup), kResultOk);
        ASSERT_EQ(component->setActive(true), kResultOk);
        processor->setProcessing(true);
    }
    void Stop()
    {
        processor->setProcessing(false);
        component->setActive(false);
    }
    std::vector<std::uint8_t> ComponentState()
    {
        MemoryStream stream;
        EXPECT_EQ(component->getState(&stream), kResultOk);
        return stream.Bytes();
    }
    std::vector<std::uint8_t> ControllerState()
    {
        MemoryStream stream;
        EXPECT_EQ(controller->getState(&stream), kResultOk);
        return stream.Bytes();
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

template <typename Sample> void FillNoise(AudioRig<Sample>& rig, std::mt19937& rng, int inputBuses)
{
    std::uniform_real_distribution<double> noise(-1.0, 1.0);
    for (int b = 0; b < inputBuses; ++b)
        for (int ch = 0; ch < 2; ++ch)
            for (auto& v : rig.In(b, ch))
                v = static_cast<Sample>(noise(rng));
}

// Runs one block of noise and reports whether every output sample is clean.
template <typename Sample>
::testing::AssertionResult ProcessNoise(Instance& plug, int frames, std::mt19937& rng,
                                        IParameterChanges* changes = nullptr)
{
    AudioRig<Sample> rig(frames, {2, 2}, {2});
    FillNoise(rig, rng, 2);
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

// Stereo audio as one run of samples per channel.
struct Take
{
    std::vector<double> l, r;
    std::size_t Size() const { return l.size(); }
};

Take NoiseTake(std::size_t n, double amplitude, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> noise(-amplitude, amplitude);
    Take t{std::vector<double>(n), std::vector<double>(n)};
    for (std::size_t i = 0; i < n; ++i)
    {
        t.l[i] = noise(rng);
        t.r[i] = noise(rng);
    }
    return t;
}

// Runs `in` through the plug-in in calls of `block` frames of 64-bit samples (32-bit with
// Sample = float), the sidechain silent; `first` goes with the first call.
template <typename Sample = double>
Take Render(Instance& plug, const Take& in, int block, IParameterChanges* first = nullptr,
            ProcessModes mode = kRealtime)
{
    Take out{std::vector<double>(in.Size()), std::vector<double>(in.Size())};
    for (std::size_t done = 0; done < in.Size(); done += static_cast<std::size_t>(block))
    {
        const int n =
            static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(block), in.Size() - done));
        AudioRig<Sample> rig(n, {2, 2}, {2});
        for (int i = 0; i < n; ++i)
        {
            rig.In(0, 0)[i] = static_cast<Sample>(in.l[done + static_cast<std::size_t>(i)]);
            rig.In(0, 1)[i] = static_cast<Sample>(in.r[done + static_cast<std::size_t>(i)]);
        }
        rig.data.processMode = mode;
        rig.data.inputParameterChanges = done == 0 ? first : nullptr;
        EXPECT_EQ(plug.processor->process(rig.data), kResultOk);
        for (int i = 0; i < n; ++i)
        {
            out.l[done + static_cast<std::size_t>(i)] = static_cast<double>(rig.Out(0, 0)[i]);
            out.r[done + static_cast<std::size_t>(i)] = static_cast<double>(rig.Out(0, 1)[i]);
        }
    }
    return out;
}

// Plain values (in the parameters' units) as one point each at offset 0.
void AddPlain(Instance& plug, ParameterChanges& changes,
              std::initializer_list<std::pair<ParamID, double>> values)
{
    for (const auto& [id, plain] : values)
        changes.Add(id, 0, plug.controller->plainParamToNormalized(id, plain));
}

// Index of the first output sample that is not finite, or -1.
long FirstNonFinite(const Take& t)
{
    for (std::size_t i = 0; i < t.Size(); ++i)
        if (!std::isfinite(t.l[i]) || !std::isfinite(t.r[i])) return static_cast<long>(i);
    return -1;
}

TEST(HostLoad, ModuleEntryPointsAndBundleLayout)
{
    EXPECT_TRUE(gModule.entered);
    ASSERT_NE(gModule.factory, nullptr);
    // A second host user of the same module: entry and exit nest.
    EXPECT_TRUE(gModule.entry(gModule.handle));
    EXPECT_TRUE(gModule.exit());
    namespace fs = std::filesystem;
    EXPECT_TRUE(fs::is_directory(fs::path(BundleDir()) / "Contents" / "Resources"));
    EXPECT_TRUE(fs::is_regular_file(fs::path(BundleDir()) / "Contents" / "x86_64-linux" / "Quorvex.so"));
    // Each call hands out a reference to the same factory.
    IPluginFactory* again = gModule.getFactory();
    EXPECT_EQ(again, gModule.factory);
    again->release();
}

TEST(HostLoad, FactoryDescribesOneDelayEffectClass)
{
    IPluginFactory* factory = gModule.factory;
    PFactoryInfo info;
    ASSERT_EQ(factory->getFactoryInfo(&info), kResultOk);
    EXPECT_STREQ(info.vendor, "qelmar-audio");
    EXPECT_EQ(info.flags & PFactoryInfo::kUnicode, PFactoryInfo::kUnicode);
    ASSERT_EQ(factory->countClasses(), 1);

    PClassInfo basic;
    ASSERT_EQ(factory->getClassInfo(0, &basic), kResultOk);
    EXPECT_STREQ(basic.category, "Audio Module Class");
    EXPECT_STREQ(basic.name, "Quorvex");
    EXPECT_EQ(basic.cardinality, 0x7fffffff);
    EXPECT_EQ(std::memcmp(basic.cid + 8, "QlmzQvrz", 8), 0);
    EXPECT_NE(factory->getClassInfo(1, &basic), kResultOk);

    auto* factory2 = Query<IPluginFactory2>(factory);
    ASSERT_NE(factory2, nullptr);
    PClassInfo2 info2;
    ASSERT_EQ(factory2->getClassInfo2(0, &info2), kResultOk);
    EXPECT_EQ(std::memcmp(info2.cid, basic.cid, sizeof(TUID)), 0);
    EXPECT_EQ(info2.classFlags, 2u);
    EXPECT_STREQ(info2.subCategories, "Fx|Delay");
    EXPECT_STREQ(info2.vendor, "qelmar-audio");
    EXPECT_STREQ(info2.version, "1.2.0r14");
    EXPECT_STREQ(info2.sdkVersion, "VST 3.6.0");
    factory2->release();

    auto* factory3 = Query<IPluginFactory3>(factory);
    ASSERT_NE(factory3, nullptr);
    PClassInfoW infoW;
    ASSERT_EQ(factory3->getClassInfoUnicode(0, &infoW), kResultOk);
    EXPECT_EQ(Text(infoW.name), u"Quorvex");
    EXPECT_EQ(Text(infoW.vendor), u"qelmar-audio");
    EXPECT_EQ(Text(infoW.version), u"1.2.0r14");
    EXPECT_EQ(Text(infoW.sdkVersion), u"VST 3.6.0");
    EXPECT_STREQ(infoW.subCategories, "Fx|Delay");
    EXPECT_EQ(factory3->setHostContext(nullptr), kResultOk);
    factory3->release();

    void* obj = reinterpret_cast<void*>(1);
    TUID unknown = {};
    EXPECT_NE(factory->createInstance(unknown, IComponent::iid, &obj), kResultOk);
    EXPECT_EQ(obj, nullptr);
    obj = reinterpret_cast<void*>(1);
    EXPECT_EQ(factory->createInstance(basic.cid, IPluginFactory::iid, &obj), kNoInterface);
    EXPECT_EQ(obj, nullptr);
}

TEST(HostLoad, OneObjectServesEverySide)
{
    Instance plug;
    ASSERT_TRUE(plug.processor && plug.controller && plug.units);
    auto* a = Query<FUnknown>(plug.component);
    auto* b = Query<FUnknown>(plug.controller);
    EXPECT_EQ(a, b);
    a->release();
    b->release();
    auto* needs = Query<IProcessContextRequirements>(plug.processor);
    ASSERT_NE(needs, nullptr);
    const uint32 flags = needs->getProcessContextRequirements();
    EXPECT_NE(flags & IProcessContextRequirements::kNeedTempo, 0u);
    EXPECT_NE(flags & IProcessContextRequirements::kNeedTimeSignature, 0u);
    EXPECT_NE(flags & IProcessContextRequirements::kNeedProjectTimeMusic, 0u);
    EXPECT_NE(flags & IProcessContextRequirements::kNeedTransportState, 0u);
    needs->release();
    TUID controllerClass;
    EXPECT_NE(plug.component->getControllerClassId(controllerClass), kResultOk);
    // The editor's view is made under its name only.
    IPlugView* view = plug.controller->createView("editor");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->isPlatformTypeSupported("X11EmbedWindowID"), kResultTrue);
    view->release();
    EXPECT_EQ(plug.controller->createView("other"), nullptr);
}

TEST(HostLoad, BusesAreConsistentAndCanBeSwitched)
{
    Instance plug;
    IComponent* c = plug.component;
    ASSERT_EQ(c->getBusCount(kAudio, kInput), 2);
    ASSERT_EQ(c->getBusCount(kAudio, kOutput), 1);
    EXPECT_EQ(c->getBusCount(kEvent, kInput), 0);
    EXPECT_EQ(c->getBusCount(kEvent, kOutput), 0);

    const struct
    {
        BusDirection dir;
        int32 index;
        const char16_t* name;
        BusType type;
    } expected[] = {
        {kInput, 0, u"Main Input", kMain}, {kInput, 1, u"Aux Input", kAux}, {kOutput, 0, u"Output", kMain}};
    for (const auto& e : expected)
    {
        for (int repeat = 0; repeat < 3; ++repeat)
        {
            BusInfo info{};
            ASSERT_EQ(c->getBusInfo(kAudio, e.dir, e.index, info), kResultTrue);
            EXPECT_EQ(Text(info.name), e.name);
            EXPECT_EQ(info.busType, e.type);
            EXPECT_EQ(info.mediaType, kAudio);
            EXPECT_EQ(info.direction, e.dir);
            SpeakerArrangement arr = 0;
            ASSERT_EQ(plug.processor->getBusArrangement(e.dir, e.index, arr), kResultTrue);
            EXPECT_EQ(arr, SpeakerArr::kStereo);
            EXPECT_EQ(info.channelCount, SpeakerArr::getChannelCount(arr));
        }
        EXPECT_EQ(c->activateBus(kAudio, e.dir, e.index, true), kResultTrue);
        EXPECT_EQ(c->activateBus(kAudio, e.dir, e.index, false), kResultTrue);
        EXPECT_EQ(c->activateBus(kAudio, e.dir, e.index, true), kResultTrue);
    }

    BusInfo info{};
    EXPECT_NE(c->getBusInfo(kAudio, kInput, 2, info), kResultTrue);
    EXPECT_NE(c->getBusInfo(kAudio, kInput, -1, info), kResultTrue);
    EXPECT_NE(c->getBusInfo(kAudio, kOutput, 1, info), kResultTrue);
    EXPECT_NE(c->getBusInfo(kEvent, kInput, 0, info), kResultTrue);
    EXPECT_NE(c->getBusInfo(7, kInput, 0, info), kResultTrue);
    EXPECT_NE(c->activateBus(kAudio, kInput, 5, true), kResultTrue);
    EXPECT_NE(c->activateBus(kEvent, kOutput, 0, true), kResultTrue);
    SpeakerArrangement arr = 0;
    EXPECT_NE(plug.processor->getBusArrangement(kOutput, 3, arr), kResultTrue);
    EXPECT_NE(plug.processor->getBusArrangement(kInput, -1, arr), kResultTrue);
}

TEST(HostLoad, ArrangementsIncludingTheSidechain)
{
    Instance plug;
    IAudioProcessor* p = plug.processor;
    SpeakerArrangement in[2] = {SpeakerArr::kStereo, SpeakerArr::kStereo};
    SpeakerArrangement out[1] = {SpeakerArr::kStereo};
    EXPECT_EQ(p->setBusArrangements(in, 2, out, 1), kResultTrue);
    EXPECT_EQ(p->setBusArrangements(in, 1, out, 1), kResultTrue);

    // A mono sidechain is taken; what the host reads back matches what it set.
    SpeakerArrangement monoSide[2] = {SpeakerArr::kStereo, SpeakerArr::kMono};
    EXPECT_EQ(p->setBusArrangements(monoSide, 2, out, 1), kResultTrue);
    BusInfo info{};
    ASSERT_EQ(plug.component->getBusInfo(kAudio, kInput, 1, info), kResultTrue);
    EXPECT_EQ(info.channelCount, 1);
    EXPECT_EQ(info.busType, kAux);
    SpeakerArrangement arr = 0;
    ASSERT_EQ(p->getBusArrangement(kInput, 1, arr), kResultTrue);
    EXPECT_EQ(arr, SpeakerArr::kMono);

    // Mono in and out is not one of the plug-in's channel pairs: refused, and nothing changes.
    SpeakerArrangement monoIn[1] = {SpeakerArr::kMono};
    SpeakerArrangement monoOut[1] = {SpeakerArr::kMono};
    EXPECT_EQ(p->setBusArrangements(monoIn, 1, monoOut, 1), kResultFalse);
    ASSERT_EQ(p->getBusArrangement(kOutput, 0, arr), kResultTrue);
    EXPECT_EQ(arr, SpeakerArr::kStereo);
    ASSERT_EQ(p->getBusArrangement(kInput, 0, arr), kResultTrue);
    EXPECT_EQ(arr, SpeakerArr::kStereo);

    // Back to stereo, and the processor runs with a mono sidechain and with the stereo one.
    EXPECT_EQ(p->setBusArrangements(in, 2, out, 1), kResultTrue);
    plug.Start(44100.0, 256, kSample32);
    std::mt19937 rng(7);
    EXPECT_TRUE(ProcessNoise<float>(plug, 256, rng));
    plug.Stop();
}

TEST(HostLoad, ParametersAsTheHostScansThem)
{
    Instance plug;
    IEditController* c = plug.controller;
    ASSERT_EQ(c->getParameterCount(), kNumParams + 2);

    std::set<ParamID> ids;
    int bypassCount = 0;
    for (int32 i = 0; i < c->getParameterCount(); ++i)
    {
        ParameterInfo info{};
        ASSERT_EQ(c->getParameterInfo(i, info), kResultTrue);
        EXPECT_TRUE(ids.insert(info.id).second) << "duplicate id " << info.id;
        EXPECT_GE(info.defaultNormalizedValue, 0.0);
        EXPECT_LE(info.defaultNormalizedValue, 1.0);
        EXPECT_GE(info.stepCount, 0);
        EXPECT_FALSE(Text(info.title).empty()) << info.id;
        if (info.flags & ParameterInfo::kIsBypass)
        {
            ++bypassCount;
            EXPECT_EQ(info.id, kBypassId);
            EXPECT_NE(info.flags & ParameterInfo::kCanAutomate, 0);
            EXPECT_EQ(info.stepCount, 1);
            EXPECT_EQ(Text(info.title), u"Bypass");
        }
        if (info.id == kPresetId)
        {
            EXPECT_EQ(Text(info.title), u"Preset");
            EXPECT_EQ(info.flags, ParameterInfo::kIsProgramChange);
            EXPECT_EQ(info.stepCount, 1);
        }
        // The default the host is told is what the plug-in holds at start.
        if (info.id < static_cast<ParamID>(kNumParams))
        {
            EXPECT_NEAR(c->getParamNormalized(info.id), info.defaultNormalizedValue, 1e-9) << info.id;
        }
    }
    EXPECT_EQ(bypassCount, 1);
    EXPECT_EQ(ids.count(kPresetId), 1u);
    for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
        ASSERT_EQ(ids.count(id), 1u) << id;
    ParameterInfo none{};
    EXPECT_NE(c->getParameterInfo(kNumParams + 2, none), kResultTrue);
    EXPECT_NE(c->getParameterInfo(-1, none), kResultTrue);

    // A sample of the catalogue, as the host lists it (parameter n sits at index n + 2).
    ParameterInfo info{};
    ASSERT_EQ(c->getParameterInfo(2 + kSlotOn1, info), kResultTrue);
    EXPECT_EQ(Text(info.title), u"SlotOn 1");
    EXPECT_EQ(info.stepCount, 1);
    EXPECT_EQ(info.defaultNormalizedValue, 1.0);
    EXPECT_EQ(info.flags, ParameterInfo::kCanAutomate);

    ASSERT_EQ(c->getParameterInfo(2 + kFeedback1, info), kResultTrue);
    EXPECT_EQ(Text(info.title), u"Feedback 1");
    EXPECT_EQ(Text(info.units), u"%");
    EXPECT_EQ(info.stepCount, 0);
    EXPECT_NEAR(info.defaultNormalizedValue, 50.0 / 160.0, 1e-12);
    EXPECT_EQ(info.unitId, kRootUnitId);

    ASSERT_EQ(c->getParameterInfo(2 + kLfoRate1, info), kResultTrue);
    EXPECT_EQ(Text(info.title), u"LFO Rate 1");
    EXPECT_EQ(Text(info.units), u"Hz");
    EXPECT_NEAR(info.defaultNormalizedValue, std::pow((0.5 - 0.001) / (500.0 - 0.001), 0.25), 1e-12);
    EXPECT_EQ(info.unitId, 1);

    ASSERT_EQ(c->getParameterInfo(2 + kLimiterOn, info), kResultTrue);
    EXPECT_EQ(Text(info.title), u"Limiter On");
    EXPECT_EQ(info.stepCount, 3);
}

TEST(HostLoad, ParameterTextsAndValuesConvertBothWays)
{
    Instance plug;
    IEditController* c = plug.controller;
    String128 text{};
    ASSERT_EQ(c->getParamStringByValue(kFeedback1, 0.5, text), kResultTrue);
    EXPECT_EQ(Text(text), u"80.0");
    ASSERT_EQ(c->getParamStringByValue(kLimiterOn, 1.0 / 3.0, text), kResultTrue);
    EXPECT_EQ(Text(text), u"SLOW I");
    ASSERT_EQ(c->getParamStringByValue(kLimiterOn, 1.0, text), kResultTrue);
    EXPECT_EQ(Text(text), u"FAST");
    ASSERT_EQ(c->getParamStringByValue(kBypassId, 0.0, text), kResultTrue);
    EXPECT_EQ(Text(text), u"off");
    EXPECT_NE(c->getParamStringByValue(kNumParams, 0.5, text), kResultTrue);

    ParamValue normalized = -1.0;
    char16 slowTwo[] = u"SLOW II";
    ASSERT_EQ(c->getParamValueByString(kLimiterOn, slowTwo, normalized), kResultTrue);
    EXPECT_NEAR(normalized, 2.0 / 3.0, 1e-12);
    char16 percent[] = u"40.0";
    ASSERT_EQ(c->getParamValueByString(kFeedback1, percent, normalized), kResultTrue);
    EXPECT_NEAR(normalized, 0.25, 1e-12);

    // Every parameter's text at its default reads back to the same value: exactly for steps, and
    // within half a unit of the last digit shown for the others.
    for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
    {
        const ParamValue start = c->getParamNormalized(id);
        ASSERT_EQ(c->getParamStringByValue(id, start, text), kResultTrue) << id;
        ParamValue back = -1.0;
        if (c->getParamValueByString(id, text, back) != kResultTrue)
            continue; // a text that only shows, like the empty "off" of a switch
        ParameterInfo info{};
        ASSERT_EQ(c->getParameterInfo(static_cast<int32>(id) + 2, info), kResultTrue);
        if (info.stepCount > 0)
        {
            EXPECT_NEAR(back, start, 1e-12) << id;
            continue;
        }
        const std::u16string shown = Text(text);
        const auto point = shown.find(u'.');
        const int digits = point == std::u16string::npos ? 0 : static_cast<int>(shown.size() - point - 1);
        EXPECT_NEAR(c->normalizedParamToPlain(id, back), c->normalizedParamToPlain(id, start),
                    0.5 * std::pow(10.0, -digits) + 1e-9)
            << id;
    }

    EXPECT_NEAR(c->plainParamToNormalized(kDryLevel, 75.0), 0.75, 1e-12);
    EXPECT_NEAR(c->normalizedParamToPlain(kDryLevel, 0.75), 75.0, 1e-12);
    EXPECT_EQ(c->normalizedParamToPlain(kNumParams + 7, 0.25), 0.25);
}

TEST(HostLoad, SetupAcceptsEveryRateAndBothSampleSizes)
{
    Instance plug;
    EXPECT_EQ(plug.processor->canProcessSampleSize(kSample32), kResultTrue);
    EXPECT_EQ(plug.processor->canProcessSampleSize(kSample64), kResultTrue);
    EXPECT_NE(plug.processor->canProcessSampleSize(2), kResultTrue);
    ProcessSetup wrong{kRealtime, 2, 512, 44100.0};
    EXPECT_NE(plug.processor->setupProcessing(wrong), kResultOk);

    std::mt19937 rng(11);
    for (double rate : {22050.0, 44100.0, 48000.0, 96000.0, 176400.0, 192000.0, 384000.0, 1234.5678})
    {
        SCOPED_TRACE(rate);
        const uint32 latencyBefore = plug.processor->getLatencySamples();
        const int restartsBefore = plug.handler.mLatencyRestarts;
        plug.Start(rate, 1024, kSample64);
        for (int n : {1, 32, 512, 1000})
        {
            EXPECT_TRUE(ProcessNoise<double>(plug, n, rng));
            EXPECT_TRUE(ProcessNoise<float>(plug, n, rng));
        }
        plug.Stop();
        // A latency that moved with the rate has been told to the host by now.
        plug.controller->getParamNormalized(0);
        if (plug.processor->getLatencySamples() != latencyBefore)
        {
            EXPECT_GT(plug.handler.mLatencyRestarts, restartsBefore);
        }
    }
}

TEST(HostLoad, TheLastPointOfEachQueueIsApplied)
{
    Instance plug;
    plug.Start(48000.0, 512, kSample32);
    ParameterChanges changes;
    changes.Add(kFeedback1, 0, 0.9);
    changes.Add(kFeedback1, 100, 0.2);
    changes.Add(kFeedback1, 511, 0.375);
    changes.Add(kLimiterOn, 3, 1.0);
    changes.Add(kLimiterOn, 300, 0.34);
    std::mt19937 rng(3);
    EXPECT_TRUE(ProcessNoise<float>(plug, 512, rng, &changes));
    EXPECT_NEAR(plug.controller->getParamNormalized(kFeedback1), 0.375, 1e-12);
    EXPECT_NEAR(
        plug.controller->normalizedParamToPlain(kFeedback1, plug.controller->getParamNormalized(kFeedback1)),
        60.0, 1e-9);
    // An integer parameter snaps to its step: 0.34 of 0..3 is 1.
    EXPECT_NEAR(plug.controller->getParamNormalized(kLimiterOn), 1.0 / 3.0, 1e-12);

    // Parameters only, no audio: what hosts send while the transport is stopped.
    changes.Clear();
    changes.Add(kDryLevel, 0, 0.1);
    ProcessData flush;
    flush.symbolicSampleSize = kSample32;
    flush.inputParameterChanges = &changes;
    EXPECT_EQ(plug.processor->process(flush), kResultOk);
    EXPECT_NEAR(plug.controller->getParamNormalized(kDryLevel), 0.1, 1e-12);
    plug.Stop();
}

template <typename Sample> void CheckBypassDelaysByTheLatency(double rate)
{
    Instance plug;
    plug.Start(rate, 1000, sizeof(Sample) == 8 ? kSample64 : kSample32);
    std::mt19937 rng(5);
    std::vector<double> in[2];
    std::vector<double> out[2];
    ParameterChanges bypassOn;
    bypassOn.Add(kBypassId, 0, 1.0);
    for (int n : {1, 32, 511, 1000, 77, 300})
    {
        AudioRig<Sample> rig(n, {2, 2}, {2});
        FillNoise(rig, rng, 2);
        rig.data.inputParameterChanges = in[0].empty() ? &bypassOn : nullptr;
        ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
        for (int ch = 0; ch < 2; ++ch)
            for (int i = 0; i < n; ++i)
            {
                in[ch].push_back(static_cast<double>(rig.In(0, ch)[i]));
                out[ch].push_back(static_cast<double>(rig.Out(0, ch)[i]));
            }
    }
    const int latency = static_cast<int>(plug.processor->getLatencySamples());
    ASSERT_GT(latency, 0);
    ASSERT_LT(latency, 1000);
    for (int ch = 0; ch < 2; ++ch)
        for (size_t i = 0; i < in[ch].size(); ++i)
        {
            const double expected =
                i < static_cast<size_t>(latency) ? 0.0 : in[ch][i - static_cast<size_t>(latency)];
            ASSERT_EQ(out[ch][i], expected)
                << "channel " << ch << ", sample " << i << ", latency " << latency;
        }
    EXPECT_EQ(plug.controller->getParamNormalized(kBypassId), 1.0);
    plug.Stop();
}

TEST(HostLoad, BypassIsTheInputDelayedByTheReportedLatency)
{
    CheckBypassDelaysByTheLatency<float>(44100.0);
    CheckBypassDelaysByTheLatency<double>(96000.0);
}

TEST(HostLoad, StateRoundTripGivesIdenticalBytes)
{
    Instance source;
    source.Start(44100.0, 256, kSample32);
    ParameterChanges changes;
    changes.Add(kFeedback1, 0, 0.6);
    changes.Add(kLimiterOn, 0, 1.0);
    changes.Add(kLfoRate1, 0, 0.3);
    std::mt19937 rng(9);
    EXPECT_TRUE(ProcessNoise<float>(source, 256, rng, &changes));
    const auto state = source.ComponentState();
    ASSERT_FALSE(state.empty());
    source.Stop();

    Instance target;
    const auto fresh = target.ComponentState();
    EXPECT_NE(fresh, state);
    MemoryStream stream(state);
    ASSERT_EQ(target.component->setState(&stream), kResultOk);
    EXPECT_EQ(target.ComponentState(), state);
    for (ParamID id : {kFeedback1, kLimiterOn, kLfoRate1, kDryLevel})
        EXPECT_NEAR(target.controller->getParamNormalized(id), source.controller->getParamNormalized(id),
                    1e-12)
            << id;

    // The controller's state is the component's plus the bypass word, and reads back the same way.
    const auto controllerState = source.ControllerState();
    ASSERT_EQ(controllerState.size(), state.size() + 4);
    MemoryStream controllerStream(controllerState);
    ASSERT_EQ(target.controller->setState(&controllerStream), kResultOk);
    EXPECT_EQ(target.ControllerState(), controllerState);
    // setComponentState on the controller side changes nothing: the component already has it.
    MemoryStream again(fresh);
    target.controller->setComponentState(&again);
    EXPECT_EQ(target.ComponentState(), state);
}

TEST(HostLoad, BypassSetByAutomationSurvivesControllerStateReload)
{
    Instance source;
    source.Start(48000.0, 128, kSample32);
    ParameterChanges changes;
    changes.Add(kBypassId, 0, 1.0);
    std::mt19937 rng(13);
    EXPECT_TRUE(ProcessNoise<float>(source, 128, rng, &changes));
    ASSERT_EQ(source.controller->getParamNormalized(kBypassId), 1.0);
    const auto controllerState = source.ControllerState();
    source.Stop();

    Instance target;
    EXPECT_EQ(target.controller->getParamNormalized(kBypassId), 0.0);
    MemoryStream component(source.ComponentState());
    target.component->setState(&component);
    EXPECT_EQ(target.controller->getParamNormalized(kBypassId), 0.0);
    MemoryStream stream(controllerState);
    ASSERT_EQ(target.controller->setState(&stream), kResultOk);
    EXPECT_EQ(target.controller->getParamNormalized(kBypassId), 1.0);
    // And it really bypasses: the output is the delayed input.
    target.Start(48000.0, 128, kSample32);
    AudioRig<float> rig(128, {2, 2}, {2});
    FillNoise(rig, rng, 2);
    ASSERT_EQ(target.processor->process(rig.data), kResultOk);
    const int latency = static_cast<int>(target.processor->getLatencySamples());
    ASSERT_LT(latency, 128);
    for (int i = latency; i < 128; ++i)
        ASSERT_EQ(rig.Out(0, 0)[i], rig.In(0, 0)[i - latency]) << i;
    target.Stop();
}

TEST(HostLoad, ShortEmptyAndRandomStatesAreSurvived)
{
    Instance plug;
    const auto good = plug.ComponentState();
    std::mt19937 rng(17);
    std::vector<std::vector<std::uint8_t>> states;
    states.emplace_back();
    states.emplace_back(good.begin(), good.begin() + 3);
    states.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(good.size() / 2));
    states.emplace_back(good.begin(), good.end() - 1);
    for (int s = 0; s < 6; ++s)
    {
        std::vector<std::uint8_t> noise(good.size() + static_cast<size_t>(s) * 37);
        for (auto& byte : noise)
            byte = static_cast<std::uint8_t>(rng());
        // Half of them carry our version word, so the reader goes deep into the noise.
        if (s % 2 == 0) std::memcpy(noise.data(), good.data(), 4);
        states.push_back(noise);
    }
    // Our own header fields, then noise where the parameter values are: NaNs and huge numbers
    // among them must not reach the parameters.
    for (int s = 0; s < 3; ++s)
    {
        std::vector<std::uint8_t> values(good);
        for (size_t i = good.size() - kNumParams * sizeof(double); i < values.size(); ++i)
            values[i] = static_cast<std::uint8_t>(rng());
        if (s == 0)
            for (size_t i = good.size() - kNumParams * sizeof(double); i < values.size(); i += 8)
                std::memcpy(values.data() + i, &kQuietNaN, sizeof(double));
        states.push_back(values);
    }

    plug.Start(44100.0, 512, kSample32);
    for (size_t k = 0; k < states.size(); ++k)
    {
        SCOPED_TRACE(k);
        MemoryStream stream(states[k]);
        const tresult result = plug.component->setState(&stream);
        EXPECT_TRUE(result == kResultOk || result == kResultFalse) << result;
        MemoryStream controllerStream(states[k]);
        plug.controller->setState(&controllerStream);
        for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
        {
            const ParamValue v = plug.controller->getParamNormalized(id);
            ASSERT_TRUE(v >= 0.0 && v <= 1.0) << "parameter " << id << " = " << v;
        }
        EXPECT_TRUE(ProcessNoise<float>(plug, 512, rng));
        EXPECT_FALSE(plug.ComponentState().empty());
    }
    MemoryStream stream(good);
    ASSERT_EQ(plug.component->setState(&stream), kResultOk);
    EXPECT_EQ(plug.ComponentState(), good);
    plug.Stop();
}

TEST(HostLoad, InactiveSidechainBus)
{
    Instance plug;
    plug.Start(44100.0, 256, kSample64);
    std::mt19937 rng(19);
    EXPECT_TRUE(ProcessNoise<double>(plug, 256, rng));
    plug.Stop();
    plug.component->activateBus(kAudio, kInput, 1, false);
    plug.component->setActive(true);
    plug.processor->setProcessing(true);
    // The host hands over no sidechain buffers at all, then a bus with null channel pointers.
    AudioRig<double> rig(256, {2, 2}, {2});
    FillNoise(rig, rng, 1);
    rig.InBus(1).channelBuffers64 = nullptr;
    rig.InBus(1).numChannels = 0;
    ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
    double* nulls[2] = {nullptr, nullptr};
    rig.InBus(1).channelBuffers64 = nulls;
    rig.InBus(1).numChannels = 2;
    ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
    rig.data.numInputs = 1;
    ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
    for (int ch = 0; ch < 2; ++ch)
        for (double v : rig.Out(0, ch))
            ASSERT_TRUE(IsClean(v));
    plug.Stop();
}

TEST(HostLoad, ProcessCallsOfEverySizeAndShape)
{
    Instance plug;
    plug.Start(48000.0, 8192, kSample32);
    std::mt19937 rng(23);
    for (int n : {0, 1, 2, 31, 33, 64, 127, 1024, 4095, 8192})
        EXPECT_TRUE(ProcessNoise<float>(plug, n, rng)) << n;

    // Zero samples with null buffers; no buses at all; zero-channel buses.
    ProcessData empty;
    empty.symbolicSampleSize = kSample32;
    EXPECT_EQ(plug.processor->process(empty), kResultOk);
    AudioBusBuffers none[2];
    AudioBusBuffers noneOut[1];
    ProcessData hollow;
    hollow.symbolicSampleSize = kSample32;
    hollow.numSamples = 64;
    hollow.numInputs = 2;
    hollow.numOutputs = 1;
    hollow.inputs = none;
    hollow.outputs = noneOut;
    EXPECT_EQ(plug.processor->process(hollow), kResultOk);
    hollow.numInputs = 0;
    hollow.numOutputs = 0;
    hollow.inputs = nullptr;
    hollow.outputs = nullptr;
    EXPECT_EQ(plug.processor->process(hollow), kResultOk);

    // Silence flags on silent input: accepted, output clean and flags not claimed falsely.
    AudioRig<float> silent(256, {2, 2}, {2});
    silent.InBus(0).silenceFlags = 3;
    silent.InBus(1).silenceFlags = 3;
    silent.OutBus(0).silenceFlags = 3;
    ASSERT_EQ(plug.processor->process(silent.data), kResultOk);
    for (int ch = 0; ch < 2; ++ch)
    {
        const bool allZero = std::all_of(silent.Out(0, ch).begin(), silent.Out(0, ch).end(),
                                         [](float v) { return v == 0.0f; });
        if (silent.OutBus(0).silenceFlags & (1ull << ch))
        {
            EXPECT_TRUE(allZero) << ch;
        }
        for (float v : silent.Out(0, ch))
            ASSERT_TRUE(IsClean(v));
    }
    plug.Stop();
}

TEST(HostLoad, SuspendResumeAndReinitialiseCycles)
{
    Instance plug;
    std::mt19937 rng(29);
    for (int cycle = 0; cycle < 3; ++cycle)
    {
        plug.Start(cycle == 1 ? 96000.0 : 44100.0, 512, kSample32);
        EXPECT_TRUE(ProcessNoise<float>(plug, 512, rng));
        plug.processor->setProcessing(false);
        plug.processor->setProcessing(true);
        EXPECT_TRUE(ProcessNoise<float>(plug, 100, rng));
        plug.Stop();
        // Repeated transitions are harmless.
        EXPECT_EQ(plug.component->setActive(false), kResultOk);
    }

    // Terminate and initialise again: the plug-in is the same plug-in afterwards.
    const auto state = plug.ComponentState();
    for (int cycle = 0; cycle < 2; ++cycle)
    {
        ASSERT_EQ(plug.component->terminate(), kResultOk);
        ASSERT_EQ(plug.component->initialize(&plug.host), kResultOk);
        EXPECT_EQ(plug.controller->getParameterCount(), kNumParams + 2);
        EXPECT_EQ(plug.component->getBusCount(kAudio, kInput), 2);
        EXPECT_EQ(plug.units->getUnitCount(), 2);
        plug.Start(48000.0, 256, kSample64);
        EXPECT_TRUE(ProcessNoise<double>(plug, 256, rng));
        plug.Stop();
    }
    EXPECT_EQ(plug.ComponentState(), state);
    // An initialised component is not initialised twice.
    EXPECT_NE(plug.component->initialize(&plug.host), kResultOk);
    EXPECT_EQ(plug.controller->getParameterCount(), kNumParams + 2);
}

TEST(HostLoad, AnInstanceThatIsNeverInitialisedIsReleasedCleanly)
{
    Instance plug(false);
    EXPECT_EQ(plug.component->getBusCount(kAudio, kInput), 0);
    EXPECT_EQ(plug.controller->getParameterCount(), 0);
}

TEST(HostLoad, ProcessingOnAnotherThreadWhileTheHostWorksTheController)
{
    Instance plug;
    plug.Start(44100.0, 512, kSample32);
    std::atomic<bool> clean{true};
    std::atomic<bool> done{false};
    std::thread audio(
        [&]
        {
            std::mt19937 rng(31);
            ParameterChanges changes;
            for (int block = 0; block < 200; ++block)
            {
                changes.Clear();
                changes.Add(static_cast<ParamID>(rng() % kNumParams), 0,
                            std::uniform_real_distribution<double>(0, 1)(rng));
                if (!ProcessNoise<float>(plug, 256, rng, &changes)) clean = false;
            }
            done = true;
        });
    const auto state = plug.ComponentState();
    String128 text{};
    for (int k = 0; !done && k < 100000; ++k)
    {
        plug.controller->setParamNormalized(kFeedback1, (k % 100) / 100.0);
        plug.controller->getParamStringByValue(kLfoRate1, 0.5, text);
        plug.controller->getParamNormalized(static_cast<ParamID>(k % kNumParams));
        if (k % 50 == 0)
        {
            MemoryStream stream(state);
            plug.component->setState(&stream);
            plug.ComponentState();
        }
    }
    audio.join();
    EXPECT_TRUE(clean);
    plug.Stop();
}

TEST(HostLoad, UnitsAndTheProgramList)
{
    Instance plug;
    IUnitInfo* u = plug.units;
    ASSERT_EQ(u->getUnitCount(), 2);
    UnitInfo root{};
    ASSERT_EQ(u->getUnitInfo(0, root), kResultTrue);
    EXPECT_EQ(root.id, kRootUnitId);
    EXPECT_EQ(root.parentUnitId, kNoParentUnitId);
    EXPECT_EQ(root.programListId, kNoProgramListId);
    EXPECT_EQ(Text(root.name), u"Root Unit");
    UnitInfo lfo{};
    ASSERT_EQ(u->getUnitInfo(1, lfo), kResultTrue);
    EXPECT_EQ(lfo.id, 1);
    EXPECT_EQ(lfo.parentUnitId, kRootUnitId);
    EXPECT_EQ(lfo.programListId, kNoProgramListId);
    EXPECT_EQ(Text(lfo.name), u"lfo_rate");
    EXPECT_NE(u->getUnitInfo(2, lfo), kResultTrue);

    // Every parameter's unit exists; exactly the four LFO rates live in "lfo_rate".
    int inLfoUnit = 0;
    for (int32 i = 0; i < plug.controller->getParameterCount(); ++i)
    {
        ParameterInfo info{};
        plug.controller->getParameterInfo(i, info);
        EXPECT_TRUE(info.unitId == 0 || info.unitId == 1) << info.id;
        if (info.unitId == 1)
        {
            ++inLfoUnit;
            EXPECT_GE(info.id, kLfoRate1);
            EXPECT_LT(info.id, kLfoRate1 + 4);
        }
    }
    EXPECT_EQ(inLfoUnit, 4);

    ASSERT_EQ(u->getProgramListCount(), 1);
    ProgramListInfo list{};
    ASSERT_EQ(u->getProgramListInfo(0, list), kResultTrue);
    EXPECT_EQ(list.id, static_cast<ProgramListID>(kPresetId));
    EXPECT_EQ(Text(list.name), u"Factory Presets");
    EXPECT_EQ(list.programCount, 1);
    String128 name{};
    ASSERT_EQ(u->getProgramName(list.id, 0, name), kResultTrue);
    EXPECT_EQ(Text(name), u"user preset 1");
    EXPECT_NE(u->getProgramName(list.id, 1, name), kResultTrue);
    EXPECT_NE(u->getProgramName(12, 0, name), kResultTrue);
    EXPECT_NE(u->getProgramListInfo(1, list), kResultTrue);
    EXPECT_EQ(u->selectUnit(1), kResultTrue);
    EXPECT_EQ(u->getSelectedUnit(), 1);
}

TEST(HostLoad, NoiseUnderRandomAutomationStaysClean)
{
    for (double rate : {44100.0, 48000.0, 96000.0})
    {
        SCOPED_TRACE(rate);
        Instance plug;
        plug.Start(rate, 1024, kSample32);
        std::mt19937 rng(static_cast<unsigned>(rate));
        std::uniform_int_distribution<int> blockSize(64, 1024);
        std::uniform_int_distribution<int> anyParam(0, kNumParams - 1);
        std::uniform_real_distribution<double> anyValue(0.0, 1.0);
        ParameterChanges changes;
        int done = 0;
        bool useDouble = false;
        while (done < static_cast<int>(rate / 2))
        {
            const int n = blockSize(rng);
            changes.Clear();
            // A point every 32 samples, each for a parameter drawn at random.
            for (int offset = 0; offset < n; offset += 32)
                changes.Add(static_cast<ParamID>(anyParam(rng)), offset, anyValue(rng));
            const auto clean = useDouble ? ProcessNoise<double>(plug, n, rng, &changes)
                                         : ProcessNoise<float>(plug, n, rng, &changes);
            ASSERT_TRUE(clean) << "after " << done << " samples";
            useDouble = !useDouble;
            done += n;
        }
        plug.Stop();
    }
}

// One host buffer of NaN and infinities counts as silence: the run is the run with that buffer
// zeroed, sample for sample. One of 1e300 (64-bit processing) is bounded: every output sample stays
// finite. The default patch, and echoes at 60 % feedback into the master hall.
TEST(HostLoad, ABadBufferDoesNotPoisonTheOutput)
{
    constexpr double kRate = 48000.0;
    constexpr int kBlock = 256;
    const Take clean = NoiseTake(static_cast<std::size_t>(2 * kRate), 0.3, 41);
    const std::size_t at = static_cast<std::size_t>(0.5 * kRate);
    const auto withBurst = [&](double a, double b)
    {
        Take t = clean;
        for (std::size_t k = 0; k < 64; ++k)
        {
            t.l[at + k] = k % 2 == 0 ? a : b;
            t.r[at + k] = k % 2 == 0 ? b : a;
        }
        return t;
    };
    const Take zeroed = withBurst(0.0, 0.0);
    const Take nonFinite = withBurst(std::numeric_limits<double>::infinity(), kQuietNaN);
    const Take negative = withBurst(-std::numeric_limits<double>::infinity(), kQuietNaN);
    const Take huge = withBurst(1e300, -1e300);
    for (bool hall : {false, true})
    {
        SCOPED_TRACE(hall ? "feedback 60 % into the hall" : "default patch");
        const auto render = [&](const Take& in, bool useFloat)
        {
            Instance plug;
            plug.Start(kRate, kBlock, useFloat ? kSample32 : kSample64);
            ParameterChanges changes;
            if (hall)
                AddPlain(plug, changes,
                         {{kDirectIn1, 50.0}, {kFeedback1, 60.0}, {kMasterFx, 2.0 /* REVERB */}});
            Take out = useFloat ? Render<float>(plug, in, kBlock, &changes)
                                : Render<double>(plug, in, kBlock, &changes);
            plug.Stop();
            return out;
        };
        for (bool useFloat : {false, true})
        {
            SCOPED_TRACE(useFloat ? "32-bit" : "64-bit");
            const Take expected = render(zeroed, useFloat);
            for (const Take* bad : {&nonFinite, &negative})
            {
                const Take got = render(*bad, useFloat);
                ASSERT_EQ(FirstNonFinite(got), -1);
                EXPECT_EQ(got.l, expected.l);
                EXPECT_EQ(got.r, expected.r);
            }
        }
        const Take got = render(huge, false);
        ASSERT_EQ(FirstNonFinite(got), -1);
        // The burst is heard, and bounded at +60 dBFS before the limiter and hall.
        double peak = 0.0;
        for (std::size_t i = at; i < at + 4096; ++i)
            peak = std::max({peak, std::abs(got.l[i]), std::abs(got.r[i])});
        EXPECT_GT(peak, 1.0);
        EXPECT_LT(peak, 1e5);
    }
}
} // namespace

namespace
{
// The state chunk's fields up to the preset-menu selection: version, colour set, page, attenuator,
// preset name, folder label, then the menu index and the menu folder.
struct MenuFields
{
    std::size_t indexAt = 0;   // offset of the menu index
    std::size_t folderEnd = 0; // offset after the menu folder
    std::int32_t index = 0;
    std::string folder;
};

std::int32_t ReadInt(const std::vector<std::uint8_t>& b, std::size_t at)
{
    std::int32_t v = 0;
    std::memcpy(&v, b.data() + at, sizeof v);
    return v;
}

MenuFields FindMenuFields(const std::vector<std::uint8_t>& b)
{
    std::size_t at = 4 + 4 + 4 + 8;
    for (int text = 0; text < 2; ++text)
        at += 4 + static_cast<std::size_t>(std::max(0, ReadInt(b, at)));
    MenuFields f;
    f.indexAt = at;
    f.index = ReadInt(b, at);
    const auto length = static_cast<std::size_t>(std::max(0, ReadInt(b, at + 4)));
    f.folder.assign(reinterpret_cast<const char*>(b.data() + at + 8), length);
    f.folderEnd = at + 8 + length;
    return f;
}

std::vector<std::uint8_t> WithMenuFields(const std::vector<std::uint8_t>& b, std::int32_t index,
                                         const std::string& folder)
{
    const MenuFields f = FindMenuFields(b);
    std::vector<std::uint8_t> out(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(f.indexAt));
    const auto put = [&](std::int32_t v)
    {
        const auto* p = reinterpret_cast<const std::uint8_t*>(&v);
        out.insert(out.end(), p, p + sizeof v);
    };
    put(index);
    put(static_cast<std::int32_t>(folder.size()));
    out.insert(out.end(), folder.begin(), folder.end());
    out.insert(out.end(), b.begin() + static_cast<std::ptrdiff_t>(f.folderEnd), b.end());
    return out;
}

TEST(HostLoad, TypedTextsOfListsMustNameAnEntry)
{
    Instance plug;
    IEditController* c = plug.controller;
    const auto parse = [&](ParamID id, const char16_t* text, ParamValue& normalized)
    {
        String128 wide{};
        for (int i = 0; text[i] != 0 && i < 127; ++i)
            wide[i] = static_cast<char16>(text[i]);
        return c->getParamValueByString(id, wide, normalized) == kResultTrue;
    };
    ParamValue n = -1.0;
    // Lists: their display texts only.
    EXPECT_FALSE(parse(kTimebase1, u"1/17", n));
    EXPECT_FALSE(parse(kTimebase1, u"3", n));
    ASSERT_TRUE(parse(kTimebase1, u"1/16", n));
    EXPECT_EQ(c->normalizedParamToPlain(kTimebase1, n), 2.0);
    EXPECT_FALSE(parse(kDelayTaps1, u"08", n));
    EXPECT_FALSE(parse(kDelayTaps1, u"17", n));
    ASSERT_TRUE(parse(kDelayTaps1, u"8", n));
    String128 shown{};
    ASSERT_EQ(c->getParamStringByValue(kDelayTaps1, n, shown), kResultTrue);
    EXPECT_EQ(Text(shown), u"8");
    EXPECT_FALSE(parse(kLimiterOn, u"2", n));
    EXPECT_FALSE(parse(kMasterFx, u"1", n));
    // Plain numbers: typed numbers in their unit.
    ASSERT_TRUE(parse(kFeedback1, u"60", n));
    EXPECT_NEAR(c->normalizedParamToPlain(kFeedback1, n), 60.0, 1e-9);
    ASSERT_TRUE(parse(kDelayLopass1, u"3000", n));
    EXPECT_NEAR(c->normalizedParamToPlain(kDelayLopass1, n), 3000.0, 1e-6);
    EXPECT_FALSE(parse(kFeedback1, u"loud", n));
}

TEST(HostLoad, InfinitiesInAStateAreCutToTheRange)
{
    Instance source;
    auto state = source.ComponentState();
    const auto put = [&](ParamID id, double v)
    {
        const std::size_t at = state.size() - static_cast<std::size_t>(kNumParams - static_cast<int>(id)) * 8;
        std::memcpy(state.data() + at, &v, sizeof v);
    };
    put(kDelayLopass1, std::numeric_limits<double>::infinity());
    put(kFeedback1, -std::numeric_limits<double>::infinity());
    Instance target;
    MemoryStream stream(state);
    ASSERT_EQ(target.component->setState(&stream), kResultOk);
    IEditController* c = target.controller;
    EXPECT_EQ(c->normalizedParamToPlain(kDelayLopass1, c->getParamNormalized(kDelayLopass1)), 20000.0);
    EXPECT_EQ(c->normalizedParamToPlain(kFeedback1, c->getParamNormalized(kFeedback1)), 0.0);
}

TEST(HostLoad, AMenuSelectionNoMenuHoldsIsNotEchoed)
{
    Instance source;
    const auto fresh = source.ComponentState();
    const MenuFields before = FindMenuFields(fresh);
    EXPECT_EQ(before.index, -1);
    EXPECT_EQ(before.folder, "");
    const auto foreign = WithMenuFields(fresh, 5, "/Factory Presets/No Such Folder Here/");
    ASSERT_EQ(FindMenuFields(foreign).folder, "/Factory Presets/No Such Folder Here/");
    Instance target;
    MemoryStream stream(foreign);
    ASSERT_EQ(target.component->setState(&stream), kResultOk);
    const MenuFields after = FindMenuFields(target.ComponentState());
    EXPECT_EQ(after.index, -1);
    EXPECT_EQ(after.folder, "");
}

// The reported tail: forever while a heard delay feeds back or the ambience loops at full gain;
// otherwise the longest delay plus the hall's decay, at the present rate and settings. A render
// that stops at the reported tail after the input keeps every echo: past it the output is below
// -100 dB of the echoes.
TEST(HostLoad, TheReportedTailHoldsTheEchoesAndTheHall)
{
    for (double rate : {44100.0, 96000.0})
    {
        SCOPED_TRACE(rate);
        Instance plug;
        plug.Start(rate, 512, kSample64);
        EXPECT_NE(plug.processor->getTailSamples(), kInfiniteTail); // the default: no delay heard
        ParameterChanges changes;
        AddPlain(plug, changes,
                 {{kTimebase1, 0.0 /* MS */},
                  {kDirectIn1, 50.0},
                  {kFeedback1, 0.0},
                  {kDelayTimeL1, 400.0},
                  {kDelayTimeR1, 700.0},
                  {kMasterFx, 2.0 /* REVERB */},
                  {kMasterFxP1, 20.0},
                  {kMasterFxP2, 10.0},
                  {kMasterFxLevel, 100.0}});
        Render(plug, Take{std::vector<double>(512), std::vector<double>(512)}, 512, &changes);
        const uint32 tail = plug.processor->getTailSamples();
        ASSERT_NE(tail, kInfiniteTail);
        // At least the 700 ms echo; at most a few seconds of a 2.2 s hall.
        EXPECT_GT(tail, static_cast<uint32>(0.7 * rate));
        EXPECT_LT(tail, static_cast<uint32>(10.0 * rate));

        // A click once the start's fade-in is over, then silence for the tail and two seconds more.
        const auto click = static_cast<std::size_t>(0.25 * rate);
        const std::size_t end = click + 1;
        const auto n = static_cast<std::size_t>(end + tail + static_cast<uint32>(2.0 * rate));
        Take in{std::vector<double>(n), std::vector<double>(n)};
        in.l[click] = in.r[click] = 1.0;
        const Take out = Render(plug, in, 512);
        double kept = 0.0;
        double lost = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            (i < end + tail ? kept : lost) =
                std::max({i < end + tail ? kept : lost, std::abs(out.l[i]), std::abs(out.r[i])});
        // The echoes are there, at 400 and 700 ms...
        const auto echoAt = [&](double sec, const std::vector<double>& x)
        {
            const auto from = click + static_cast<std::size_t>((sec - 0.01) * rate);
            const auto to = click + static_cast<std::size_t>((sec + 0.01) * rate);
            double peak = 0.0;
            for (std::size_t i = from; i < to; ++i)
                peak = std::max(peak, std::abs(x[i]));
            return peak;
        };
        EXPECT_GT(echoAt(0.4, out.l), 0.05);
        EXPECT_GT(echoAt(0.7, out.r), 0.05);
        // ...and nothing worth hearing comes after the tail.
        EXPECT_GT(kept, 0.1);
        EXPECT_LT(lost, kept * 1e-5) << "tail " << tail;

        // The tail follows the settings: a longer delay lengthens it.
        changes.Clear();
        AddPlain(plug, changes, {{kDelayTimeL1, 2400.0}});
        Render(plug, Take{std::vector<double>(512), std::vector<double>(512)}, 512, &changes);
        const uint32 longer = plug.processor->getTailSamples();
        ASSERT_NE(longer, kInfiniteTail);
        EXPECT_GE(longer, tail + static_cast<uint32>(1.7 * rate));

        // Feedback, its own or the master's, sustains: forever.
        changes.Clear();
        AddPlain(plug, changes, {{kFeedback1, 30.0}});
        Render(plug, Take{std::vector<double>(512), std::vector<double>(512)}, 512, &changes);
        EXPECT_EQ(plug.processor->getTailSamples(), kInfiniteTail);
        changes.Clear();
        AddPlain(plug, changes, {{kFeedback1, 0.0}, {kMasterFx, 1.0 /* QUORVEX */}, {kMasterFxP2, 100.0}});
        Render(plug, Take{std::vector<double>(512), std::vector<double>(512)}, 512, &changes);
        EXPECT_EQ(plug.processor->getTailSamples(), kInfiniteTail);
        changes.Clear();
        AddPlain(plug, changes, {{kMasterFxP2, 30.0}});
        Render(plug, Take{std::vector<double>(512), std::vector<double>(512)}, 512, &changes);
        EXPECT_NE(plug.processor->getTailSamples(), kInfiniteTail);
        plug.Stop();
    }
}

// Plain value of a list entry, through the plug-in's own texts.
double ListValue(Instance& plug, ParamID id, const char16_t* text)
{
    String128 wide{};
    for (int i = 0; text[i] != 0 && i < 127; ++i)
        wide[i] = static_cast<char16>(text[i]);
    ParamValue normalized = 0.0;
    EXPECT_EQ(plug.controller->getParamValueByString(id, wide, normalized), kResultTrue);
    return plug.controller->normalizedParamToPlain(id, normalized);
}

// Everything that keeps state of its own between blocks: echoes with feedback, an S&H LFO on the
// delay time, a second LFO on the pan, a gate on the level, the main modulator, the envelope
// follower, NOISE in the feedback path, LOFI II after the delay, the chaotic ambience.
void SetStatefulPatch(Instance& plug, ParameterChanges& changes)
{
    AddPlain(plug, changes,
             {{kTimebase1, 0.0},
              {kDirectIn1, 50.0},
              {kFeedback1, 55.0},
              {kDelayTimeL1, 90.0},
              {kDelayTimeR1, 130.0},
              {832 /* LFO On 1 */, 1.0},
              {836 /* LFO Wave 1 */, ListValue(plug, 836, u"S&H")},
              {864 /* LFO Rate 1 */, 40.0},
              {352 /* DelayTimeL ModSource1 */, 1.0 /* LFO1 */},
              {348 /* Delay TimeL ModDepth 1 */, 30.0},
              {833 /* LFO On 2 */, 1.0},
              {865 /* LFO Rate 2 */, 30.0},
              {64 /* Panning ModSource1 */, 2.0 /* LFO2 */},
              {60 /* Panning ModDepth 1 */, 80.0},
              {892 /* Gate1 On */, 1.0},
              {88 /* Level ModSource1 */, 5.0 /* GATE1 */},
              {84 /* Level ModDepth 1 */, -60.0},
              {20 /* Modulation 1 */, 80.0},
              {1059 /* Main ModDepth */, 90.0},
              {988 /* ENV1 On */, 1.0},
              {300 /* FXOn FB 1 */, 1.0},
              {108 /* FX1 FB */, ListValue(plug, 108, u"NOISE")},
              {304 /* FXOn PO 1 */, 1.0},
              {112 /* FX1 PO */, ListValue(plug, 112, u"LOFI II")},
              {kMasterFx, 1.0 /* QUORVEX */},
              {kMasterFxP1, 40.0},
              {kMasterFxP2, 60.0},
              {kMasterFxLevel, 100.0}});
}

// The hall, the FAST limiter, the equalisers' filters, echoes, after a run that ended inside an
// internal block: restarted, they too start over.
TEST(HostLoad, ActivationRestartsTheHallTheLimiterTheFiltersAndTheRings)
{
    constexpr double kRate = 44100.0;
    constexpr int kBlock = 256;
    for (double masterType : {2.0 /* REVERB */, 6.0 /* LO/HI SHELF */, 4.0 /* FIX EQ */})
    {
        SCOPED_TRACE(masterType);
        Instance plug;
        plug.Start(kRate, kBlock, kSample64);
        ParameterChanges changes;
        AddPlain(plug, changes,
                 {{kSlotOn1, 1.0},
                  {kDirectIn1, 30.0},
                  {kFeedback1, 40.0},
                  {kLimiterOn, 3.0 /* FAST */},
                  {kTimebase1, 0.0},
                  {kDelayTimeL1, 250.0},
                  {kDelayTimeR1, 375.0},
                  {kMasterFx, masterType},
                  {kMasterFxP1, 30.0},
                  {kMasterFxP2, 70.0},
                  {kMasterFxLevel, 80.0}});
        // An odd length: the last call ends inside an internal block.
        const Take noise = NoiseTake(static_cast<std::size_t>(kRate) + 68, 0.5, 81);
        Render(plug, noise, kBlock, &changes);
        plug.Stop();
        plug.Start(kRate, kBlock, kSample64);
        const Take first = Render(plug, noise, kBlock);
        plug.Stop();
        plug.Start(kRate, kBlock, kSample64);
        const Take again = Render(plug, noise, kBlock);
        EXPECT_EQ(again.l, first.l);
        EXPECT_EQ(again.r, first.r);
        plug.Stop();
    }
}

// Re-activation starts the engine from one state: two renders of the same input after
// deactivate/activate, after a new setupProcessing and after a change of process mode are
// identical to the bit, whatever ran before.
TEST(HostLoad, EveryActivationStartsFromTheSameState)
{
    constexpr double kRate = 48000.0;
    constexpr int kBlock = 512;
    Instance plug;
    plug.Start(kRate, kBlock, kSample64);
    ParameterChanges changes;
    SetStatefulPatch(plug, changes);
    const Take noise = NoiseTake(static_cast<std::size_t>(1.5 * kRate), 0.4, 51);
    Render(plug, noise, kBlock, &changes);
    // Effect types arriving with automation are built off the audio thread; let that happen.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    Render(plug, noise, kBlock);

    plug.Stop();
    plug.Start(kRate, kBlock, kSample64);
    const Take first = Render(plug, noise, kBlock);
    ASSERT_EQ(FirstNonFinite(first), -1);
    double peak = 0.0;
    for (double v : first.l)
        peak = std::max(peak, std::abs(v));
    ASSERT_GT(peak, 0.05);

    // Deactivate and activate again.
    plug.Stop();
    plug.Start(kRate, kBlock, kSample64);
    Take again = Render(plug, noise, kBlock);
    EXPECT_EQ(again.l, first.l);
    EXPECT_EQ(again.r, first.r);

    // A new set-up while inactive, same rate.
    plug.processor->setProcessing(false);
    plug.component->setActive(false);
    ProcessSetup setup{kRealtime, kSample64, kBlock, kRate};
    ASSERT_EQ(plug.processor->setupProcessing(setup), kResultOk);
    plug.component->setActive(true);
    plug.processor->setProcessing(true);
    again = Render(plug, noise, kBlock);
    EXPECT_EQ(again.l, first.l);
    EXPECT_EQ(again.r, first.r);

    // The host switches to offline rendering without a new set-up: the mode of the process call.
    again = Render(plug, noise, kBlock, nullptr, kOffline);
    EXPECT_EQ(again.l, first.l);
    EXPECT_EQ(again.r, first.r);
    plug.Stop();
}

// Offset of TapOnMask[0] in a state chunk: behind the menu folder and the focused parameter.
std::size_t TapMaskOffset(const std::vector<std::uint8_t>& state)
{
    return FindMenuFields(state).folderEnd + 4;
}

// Peak of each of the eight taps of slot 1 after a click, per side: tap t sounds (t + 1) x 50 ms
// after the click (the default tap step), plus the plug-in's latency.
struct TapPeaks
{
    std::array<double, 8> l{}, r{};
};

TapPeaks ClickTaps(Instance& plug, double rate)
{
    const auto click = static_cast<std::size_t>(0.2 * rate);
    const auto n = click + static_cast<std::size_t>(0.6 * rate);
    Take in{std::vector<double>(n), std::vector<double>(n)};
    in.l[click] = in.r[click] = 1.0;
    const Take out = Render(plug, in, 256);
    const auto latency = static_cast<std::size_t>(plug.processor->getLatencySamples());
    TapPeaks peaks;
    for (std::size_t t = 0; t < 8; ++t)
    {
        const std::size_t at =
            click + latency + static_cast<std::size_t>(static_cast<double>(t + 1) * 0.05 * rate);
        const auto half = static_cast<std::size_t>(0.01 * rate);
        for (std::size_t i = at - half; i < at + half; ++i)
        {
            peaks.l[t] = std::max(peaks.l[t], std::abs(out.l[i]));
            peaks.r[t] = std::max(peaks.r[t], std::abs(out.r[i]));
        }
    }
    return peaks;
}

// The tap on/off masks drive each tap's left and right on flags, heard per side; a fresh instance
// stores all taps on and plays all of them.
TEST(HostLoad, TapMasksSwitchEachTapPerSide)
{
    constexpr double kRate = 48000.0;
    Instance plug;
    plug.Start(kRate, 256, kSample64);
    ParameterChanges changes;
    AddPlain(plug, changes,
             {{kDelayMode1, 3.0 /* TAPPED */}, {kDirectIn1, 50.0}, {kFeedback1, 0.0}, {kDryLevel, 0.0}});
    Render(plug, Take{std::vector<double>(256), std::vector<double>(256)}, 256, &changes);

    auto state = plug.ComponentState();
    const std::size_t maskAt = TapMaskOffset(state);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(ReadInt(state, maskAt + 4 * static_cast<std::size_t>(i)), 0xFFFF) << "mask " << i;
    const TapPeaks fresh = ClickTaps(plug, kRate);
    for (int t = 0; t < 8; ++t)
    {
        EXPECT_GT(fresh.l[t], 0.05) << "tap " << t;
        EXPECT_GT(fresh.r[t], 0.05) << "tap " << t;
    }

    const std::pair<std::int32_t, std::int32_t> masks[] = {
        {0x0055, 0x00AA}, {0x000F, 0x00F0}, {0x0081, 0x0000}, {0x00FE, 0x007F}};
    for (const auto& [left, right] : masks)
    {
        SCOPED_TRACE(::testing::Message() << std::hex << left << " / " << right);
        std::memcpy(state.data() + maskAt, &left, 4);
        std::memcpy(state.data() + maskAt + 4, &right, 4);
        MemoryStream stream(state);
        ASSERT_EQ(plug.component->setState(&stream), kResultOk);
        const TapPeaks p = ClickTaps(plug, kRate);
        for (int t = 0; t < 8; ++t)
        {
            const bool onL = ((left >> t) & 1) != 0;
            const bool onR = ((right >> t) & 1) != 0;
            if (onL)
                EXPECT_GT(p.l[t], 0.5 * fresh.l[t]) << "tap " << t << " left";
            else
                EXPECT_LT(p.l[t], 1e-3 * fresh.l[t]) << "tap " << t << " left";
            if (onR)
                EXPECT_GT(p.r[t], 0.5 * fresh.r[t]) << "tap " << t << " right";
            else
                EXPECT_LT(p.r[t], 1e-3 * fresh.r[t]) << "tap " << t << " right";
        }
        // The state the host saves holds the masks that play.
        const auto saved = plug.ComponentState();
        EXPECT_EQ(ReadInt(saved, maskAt), left);
        EXPECT_EQ(ReadInt(saved, maskAt + 4), right);
    }
    plug.Stop();
}

// Automated effect-type changes in an offline render: each takes effect in the host block where it
// arrives, so two renders of the same automation are identical and the output first departs from
// a render without the change within that block (plus the latency).
TEST(HostLoad, OfflineEffectTypeChangesTakeEffectWhereTheyArrive)
{
    constexpr double kRate = 48000.0;
    constexpr int kBlock = 256;
    const Take noise = NoiseTake(static_cast<std::size_t>(1.0 * kRate), 0.4, 61);
    // Host block at which each type change arrives, and the POST type it asks for.
    const std::vector<std::pair<int, const char16_t*>> changesAt = {{20, u"RING MOD"}, {41, u"PHASE"},
                                                                    {42, u"COMB"},     {90, u"FREQ SHIFT"},
                                                                    {91, u"OFF"},      {120, u"LOFI II"}};
    const auto render = [&](bool withChanges)
    {
        Instance plug;
        plug.ActivateBuses();
        ProcessSetup setup{kOffline, kSample64, kBlock, kRate};
        EXPECT_EQ(plug.processor->setupProcessing(setup), kResultOk);
        plug.component->setActive(true);
        plug.processor->setProcessing(true);
        Take out{std::vector<double>(noise.Size()), std::vector<double>(noise.Size())};
        const int blocks = static_cast<int>(noise.Size()) / kBlock;
        for (int k = 0; k < blocks; ++k)
        {
            ParameterChanges changes;
            if (k == 0)
                AddPlain(plug, changes,
                         {{kSlotOn1, 1.0},
                          {304 /* FXOn PO 1 */, 1.0},
                          {kDryLevel, 0.0},
                          {124, 60.0},
                          {160, 70.0},
                          {196, 40.0},
                          {232, 55.0},
                          {268, 100.0} /* FXParam1..5 PO 1 */});
            for (const auto& [at, type] : changesAt)
                if (withChanges && at == k)
                    changes.Add(112 /* FX1 PO */, 0,
                                plug.controller->plainParamToNormalized(112, ListValue(plug, 112, type)));
            AudioRig<double> rig(kBlock, {2, 2}, {2});
            for (int i = 0; i < kBlock; ++i)
            {
                rig.In(0, 0)[i] = noise.l[static_cast<std::size_t>(k * kBlock + i)];
                rig.In(0, 1)[i] = noise.r[static_cast<std::size_t>(k * kBlock + i)];
            }
            rig.data.processMode = kOffline;
            rig.data.inputParameterChanges = &changes;
            EXPECT_EQ(plug.processor->process(rig.data), kResultOk);
            // A host rendering offline runs far faster than real time; give a worker no chance.
            for (int i = 0; i < kBlock; ++i)
            {
                out.l[static_cast<std::size_t>(k * kBlock + i)] = rig.Out(0, 0)[i];
                out.r[static_cast<std::size_t>(k * kBlock + i)] = rig.Out(0, 1)[i];
            }
        }
        plug.Stop();
        return out;
    };
    const Take plain = render(false);
    const Take first = render(true);
    const Take second = render(true);
    EXPECT_EQ(first.l, second.l);
    EXPECT_EQ(first.r, second.r);
    std::size_t departs = 0;
    while (departs < plain.Size() && plain.l[departs] == first.l[departs] &&
           plain.r[departs] == first.r[departs])
        ++departs;
    const std::size_t arrives = 20 * kBlock;
    EXPECT_GE(departs, arrives);
    EXPECT_LT(departs, arrives + kBlock + 200) << "the first change was heard late";
}

// States loaded again and again while another thread processes audio: the output stays finite
// throughout (the FAST limiter included), and afterwards the last state is in force: the saved
// state is its bytes, and a render equals that of a fresh instance given the same state.
TEST(HostLoad, StatesLoadedWhileAudioRunsLeaveTheLastInForce)
{
    constexpr double kRate = 44100.0;
    constexpr int kBlock = 256;
    const auto stateWith = [&](std::initializer_list<std::pair<ParamID, double>> values)
    {
        Instance maker;
        maker.Start(kRate, kBlock, kSample64);
        ParameterChanges changes;
        AddPlain(maker, changes, values);
        Render(maker, Take{std::vector<double>(kBlock), std::vector<double>(kBlock)}, kBlock, &changes);
        auto state = maker.ComponentState();
        maker.Stop();
        return state;
    };
    const auto a = stateWith({{kSlotOn1, 1.0},
                              {kDirectIn1, 50.0},
                              {kFeedback1, 120.0},
                              {kLimiterOn, 3.0 /* FAST */},
                              {kTimebase1, 0.0},
                              {kDelayTimeL1, 7.0},
                              {kDelayTimeR1, 3000.0},
                              {kMasterFx, 2.0 /* REVERB */},
                              {kMasterFxLevel, 150.0}});
    const auto b = stateWith({{kSlotOn1, 1.0},
                              {kDirectIn1, 30.0},
                              {kFeedback1, 40.0},
                              {kLimiterOn, 3.0 /* FAST */},
                              {kTimebase1, 0.0},
                              {kDelayTimeL1, 250.0},
                              {kDelayTimeR1, 375.0},
                              {kMasterFx, 2.0 /* REVERB */},
                              {kMasterFxLevel, 80.0}});
    ASSERT_NE(a, b);

    Instance plug;
    plug.Start(kRate, kBlock, kSample64);
    std::atomic<bool> done{false};
    std::atomic<long> badAt{-1};
    std::thread audio(
        [&]
        {
            const Take noise = NoiseTake(kBlock, 0.5, 71);
            long blocks = 0;
            while (!done)
            {
                const Take out = Render<double>(plug, noise, kBlock);
                if (FirstNonFinite(out) >= 0 && badAt < 0) badAt = blocks;
                ++blocks;
            }
        });
    for (int k = 0; k < 80; ++k)
    {
        MemoryStream stream(k % 2 == 0 ? a : b);
        ASSERT_EQ(plug.component->setState(&stream), kResultOk);
        std::this_thread::sleep_for(std::chrono::microseconds(300 + 97 * (k % 7)));
    }
    done = true;
    audio.join();
    EXPECT_EQ(badAt, -1) << "a non-finite sample in block " << badAt;
    EXPECT_EQ(plug.ComponentState(), b);

    // The last state plays: the same render as a fresh instance given it.
    Instance fresh;
    MemoryStream stream(b);
    ASSERT_EQ(fresh.component->setState(&stream), kResultOk);
    fresh.Start(kRate, kBlock, kSample64);
    plug.Stop();
    plug.Start(kRate, kBlock, kSample64);
    const Take noise = NoiseTake(static_cast<std::size_t>(kRate), 0.5, 73);
    const Take got = Render<double>(plug, noise, kBlock);
    const Take expected = Render<double>(fresh, noise, kBlock);
    ASSERT_EQ(FirstNonFinite(got), -1);
    EXPECT_EQ(got.l, expected.l);
    EXPECT_EQ(got.r, expected.r);
    plug.Stop();
    fresh.Stop();
}

// Plain value of a parameter as the saved state holds it (the chunk's value in its own unit).
double SavedValue(const std::vector<std::uint8_t>& state, ParamID id)
{
    double v = 0.0;
    std::memcpy(&v,
                state.data() + state.size() - static_cast<std::size_t>(kNumParams - static_cast<int>(id)) * 8,
                sizeof v);
    return v;
}

// Values the plug-in writes by itself reach the host on its next call from the UI thread, with no
// editor open; and where the host set such a value in the same call, the host's value stands and
// is what the saved state holds, in either order of the queues.
TEST(HostLoad, ValuesThePlugInWritesReachTheHostAndTheHostsOwnWin)
{
    for (bool timeFirst : {false, true})
    {
        SCOPED_TRACE(timeFirst ? "time queue first" : "time base queue first");
        Instance plug;
        plug.Start(48000.0, 256, kSample64);
        ParameterChanges changes;
        const double ms = plug.controller->plainParamToNormalized(kTimebase1, 0.0 /* MS */);
        const double time = plug.controller->plainParamToNormalized(kDelayTimeL1, 500.0);
        if (timeFirst) changes.Add(kDelayTimeL1, 0, time);
        changes.Add(kTimebase1, 0, ms);
        if (!timeFirst) changes.Add(kDelayTimeL1, 0, time);
        Render(plug, Take{std::vector<double>(256), std::vector<double>(256)}, 256, &changes);
        // 500 up to the normalised round trip of the host's own value (far below 499.99998).
        EXPECT_NEAR(plug.controller->normalizedParamToPlain(
                        kDelayTimeL1, plug.controller->getParamNormalized(kDelayTimeL1)),
                    500.0, 1e-9);
        EXPECT_NEAR(SavedValue(plug.ComponentState(), kDelayTimeL1), 500.0, 1e-9);
        plug.Stop();
    }

    // The switch alone: the right time, rewritten by the plug-in, reaches the handler.
    Instance plug;
    plug.Start(48000.0, 256, kSample64);
    ParameterChanges changes;
    changes.Add(kTimebase1, 0, plug.controller->plainParamToNormalized(kTimebase1, 0.0));
    plug.handler.Clear();
    Render(plug, Take{std::vector<double>(256), std::vector<double>(256)}, 256, &changes);
    const double right = plug.controller->getParamNormalized(kDelayTimeR1); // a host's UI-thread call
    bool told = false;
    for (const auto& edit : plug.handler.Edits())
        told = told || (edit.kind == 'p' && edit.id == kDelayTimeR1 && edit.value == right);
    EXPECT_TRUE(told);
    EXPECT_EQ(SavedValue(plug.ComponentState(), kDelayTimeR1),
              plug.controller->normalizedParamToPlain(kDelayTimeR1, right));
    plug.Stop();
}

// The last value of each queue a plug-in wrote into a host's output changes, by id.
std::map<ParamID, ParamValue> Written(ParameterChanges& out)
{
    std::map<ParamID, ParamValue> values;
    for (int32 i = 0; i < out.getParameterCount(); ++i)
    {
        IParamValueQueue* queue = out.getParameterData(i);
        int32 offset = 0;
        ParamValue value = 0.0;
        if (queue && queue->getPoint(queue->getPointCount() - 1, offset, value) == kResultTrue)
            values[queue->getParameterId()] = value;
    }
    return values;
}

// One call of silence carrying `in`, with an output queue as a host that reads it gives.
std::map<ParamID, ParamValue> ProcessTelling(Instance& plug, IParameterChanges* in,
                                             ProcessModes mode = kRealtime)
{
    AudioRig<double> rig(256, {2, 2}, {2});
    ParameterChanges out;
    out.Prepare(static_cast<ParamID>(kNumParams));
    rig.data.inputParameterChanges = in;
    rig.data.outputParameterChanges = &out;
    rig.data.processMode = mode;
    EXPECT_EQ(plug.processor->process(rig.data), kResultOk);
    return Written(out);
}

ParamValue FromText(Instance& plug, ParamID id, std::u16string text)
{
    ParamValue normalized = -1.0;
    EXPECT_EQ(plug.controller->getParamValueByString(id, text.data(), normalized), kResultTrue) << id;
    return normalized;
}

// Values the plug-in writes itself come back in the very process call that made them, through the
// output changes of a host that offers them (no editor, no UI-thread call needed), each once: a
// later UI-thread call doesn't tell the host again.
TEST(HostLoad, ValuesThePlugInWritesComeBackInTheProcessCall)
{
    constexpr ParamID kLink1 = 760;
    constexpr ParamID kLfoSync1 = 844;
    const auto toldOnlyThere = [](Instance& plug, const std::map<ParamID, ParamValue>& written)
    {
        plug.handler.Clear();
        for (const auto& [id, value] : written)
            EXPECT_EQ(value, plug.controller->getParamNormalized(id)) << id; // a UI-thread call
        for (const auto& edit : plug.handler.Edits())
            EXPECT_EQ(written.count(edit.id), 0u) << "told twice: " << edit.id;
    };

    Instance plug;
    plug.Start(48000.0, 256, kSample64);
    // The time base switch: a synced slot set free plays its synced times: four eighths (the
    // factors' default) at 120 bpm, 1000 ms.
    ParameterChanges synced;
    synced.Add(kTimebase1, 0, FromText(plug, kTimebase1, u"1/8"));
    AddPlain(plug, synced, {{kDelayTimeL1, 200.0}, {kDelayTimeR1, 300.0}});
    ProcessTelling(plug, &synced);
    ParameterChanges free;
    AddPlain(plug, free, {{kTimebase1, 0.0}});
    auto written = ProcessTelling(plug, &free);
    ASSERT_EQ(written.count(kDelayTimeL1), 1u);
    ASSERT_EQ(written.count(kDelayTimeR1), 1u);
    EXPECT_NEAR(plug.controller->normalizedParamToPlain(kDelayTimeL1, written[kDelayTimeL1]), 1000.0, 1e-9);
    EXPECT_NEAR(plug.controller->normalizedParamToPlain(kDelayTimeR1, written[kDelayTimeR1]), 1000.0, 1e-9);
    EXPECT_EQ(written.count(kTimebase1), 0u) << "the host's own change isn't echoed";
    toldOnlyThere(plug, written);

    // The link: the right time follows the left.
    ParameterChanges link;
    AddPlain(plug, link, {{kLink1, 1.0}});
    ProcessTelling(plug, &link);
    ParameterChanges left;
    AddPlain(plug, left, {{kDelayTimeL1, 250.0}});
    written = ProcessTelling(plug, &left);
    ASSERT_EQ(written.count(kDelayTimeR1), 1u);
    EXPECT_NEAR(plug.controller->normalizedParamToPlain(kDelayTimeR1, written[kDelayTimeR1]), 250.0, 1e-9);
    toldOnlyThere(plug, written);

    // An LFO switched from hertz to note values gets the rate in the new unit.
    const ParamValue hertz = plug.controller->getParamNormalized(kLfoRate1);
    ParameterChanges sync;
    sync.Add(kLfoSync1, 0, 1.0);
    written = ProcessTelling(plug, &sync);
    ASSERT_EQ(written.count(kLfoRate1), 1u);
    EXPECT_NE(written[kLfoRate1], hertz);
    toldOnlyThere(plug, written);

    plug.Stop();
}

// A host that keeps parameter values in single precision (as some DAWs do) saves them beside the
// state and sets them again after loading it, also after a time base switch and a host change of
// the time in the same call: the reopened session renders bit for bit as the saved one.
TEST(HostLoad, ASessionSavedByASinglePrecisionHostReopensBitIdentical)
{
    constexpr int kBlock = 256;
    std::map<ParamID, float> shadow; // what the host shows and saves
    const auto hostSets = [&](Instance& plug, ParameterChanges& changes)
    {
        for (const auto& [id, value] : Written(changes))
            shadow[id] = static_cast<float>(value);
        for (const auto& [id, value] : ProcessTelling(plug, &changes))
            shadow[id] = static_cast<float>(value);
    };

    Instance saved;
    saved.Start(48000.0, kBlock, kSample64);
    for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
        shadow[id] = static_cast<float>(saved.controller->getParamNormalized(id));
    ParameterChanges first;
    first.Add(kTimebase1, 0, FromText(saved, kTimebase1, u"1/8"));
    AddPlain(saved, first, {{kDelayTimeL1, 200.0}, {kDelayTimeR1, 300.0}, {kFeedback1, 40.0}});
    hostSets(saved, first);
    ParameterChanges second;
    AddPlain(saved, second, {{kTimebase1, 0.0}, {kDelayTimeL1, 123.4}});
    hostSets(saved, second);
    const std::vector<std::uint8_t> state = saved.ComponentState();
    EXPECT_NEAR(SavedValue(state, kDelayTimeL1), 123.4, 1e-9) << "the host's time stands";
    EXPECT_NEAR(SavedValue(state, kDelayTimeR1), 1000.0, 1e-9) << "the synced time, free";

    Take impulse{std::vector<double>(48000), std::vector<double>(48000)};
    impulse.l[100] = impulse.r[100] = 1.0;
    saved.Stop();
    saved.Start(48000.0, kBlock, kSample64);
    const Take before = Render(saved, impulse, kBlock);
    saved.Stop();

    // Reopening: the host's values, the state, then its values once more with the first call.
    Instance reopened;
    ParameterChanges values;
    for (const auto& [id, value] : shadow)
    {
        reopened.controller->setParamNormalized(id, value);
        values.Add(id, 0, value);
    }
    MemoryStream stream(state);
    ASSERT_EQ(reopened.component->setState(&stream), kResultOk);
    reopened.Start(48000.0, kBlock, kSample64);
    const Take after = Render(reopened, impulse, kBlock, &values);
    EXPECT_NEAR(reopened.controller->normalizedParamToPlain(
                    kDelayTimeR1, reopened.controller->getParamNormalized(kDelayTimeR1)),
                1000.0, 1e-9);
    EXPECT_EQ(after.l, before.l);
    EXPECT_EQ(after.r, before.r);
    reopened.Stop();
}
} // namespace
