// The shipped bundle, loaded and driven the way hosts and their validators do: module entry points,
// factory and class record, buses and arrangements, parameters and their texts, units, processing
// in both sample sizes at many rates and block sizes, parameter queues, bypass, state, lifecycle
// cycles, threads, and output hygiene (no NaN, infinity or subnormal numbers). Then what it plays:
// the reported tail, restarts, tap masks, effect types automated offline, states loaded while audio
// runs, and the values the plug-in writes by itself as hosts see and save them.

#include "host/load/BundleRig.h"

#include "pluginterfaces/vst/vstspeaker.h"

#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <thread>
#include <tuple>

using namespace bundlerig;

namespace
{
constexpr double kQuietNaN = std::numeric_limits<double>::quiet_NaN();

// The module, its factory and one class record as a host scans them, and an instance of it.
TEST(HostLoad, ModuleFactoryAndInstanceAsAHostFindsThem)
{
    ASSERT_TRUE(gModule.entered && gModule.factory);
    // A second host user of the same module: entry and exit nest, and it gets the same factory.
    EXPECT_TRUE(gModule.entry(gModule.handle) && gModule.exit());
    EXPECT_TRUE(std::filesystem::is_directory(BundleDir() + "/Contents/Resources"));
    IPluginFactory* factory = gModule.getFactory();
    EXPECT_EQ(factory, gModule.factory);
    factory->release();
    PFactoryInfo info;
    PClassInfo basic;
    ASSERT_TRUE(factory->getFactoryInfo(&info) == kResultOk && factory->getClassInfo(0, &basic) == kResultOk);
    EXPECT_EQ(std::string(info.vendor) + "|" + basic.category + "|" + basic.name,
              "qelmar-audio|Audio Module Class|Quorvex");
    ASSERT_EQ(factory->countClasses(), 1);
    EXPECT_NE(factory->getClassInfo(1, &basic), kResultOk);
    // The unicode record says the same as the narrow one.
    auto* factory3 = Query<IPluginFactory3>(factory);
    ASSERT_NE(factory3, nullptr);
    PClassInfoW infoW;
    ASSERT_EQ(factory3->getClassInfoUnicode(0, &infoW), kResultOk);
    EXPECT_EQ(Text(infoW.name) + u"|" + Text(infoW.vendor) + u"|" + Text(infoW.version),
              u"Quorvex|qelmar-audio|1.2.0r14");
    EXPECT_EQ(std::tuple(std::string(infoW.subCategories), infoW.classFlags), std::tuple("Fx|Delay", 2u));
    factory3->release();
    void* obj = reinterpret_cast<void*>(1);
    TUID unknown = {};
    EXPECT_NE(factory->createInstance(unknown, IComponent::iid, &obj), kResultOk);
    EXPECT_EQ(obj, nullptr);
    EXPECT_EQ(factory->createInstance(basic.cid, IPluginFactory::iid, &obj), kNoInterface);

    // One object serves every side.
    Instance plug;
    ASSERT_TRUE(plug.processor && plug.controller && plug.units);
    FUnknown *a = Query<FUnknown>(plug.component), *b = Query<FUnknown>(plug.controller);
    EXPECT_EQ(a, b);
    a->release();
    b->release();
    auto* needs = Query<IProcessContextRequirements>(plug.processor);
    ASSERT_NE(needs, nullptr);
    using R = IProcessContextRequirements;
    const uint32 wanted =
        R::kNeedTempo | R::kNeedTimeSignature | R::kNeedProjectTimeMusic | R::kNeedTransportState;
    EXPECT_EQ(needs->getProcessContextRequirements() & wanted, wanted);
    needs->release();
    TUID controllerClass;
    EXPECT_NE(plug.component->getControllerClassId(controllerClass), kResultOk);
    // The editor's view is made under its name only.
    IPlugView* view = plug.controller->createView("editor");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->isPlatformTypeSupported("X11EmbedWindowID"), kResultTrue);
    EXPECT_NE(view->isPlatformTypeSupported("HWND"), kResultTrue);
    view->release();
    for (const char* name : {"other", "Editor", static_cast<const char*>(nullptr)})
        EXPECT_EQ(plug.controller->createView(name), nullptr);
    // An instance that is never initialised answers empty and is released cleanly.
    Instance bare(false);
    EXPECT_EQ(bare.component->getBusCount(kAudio, kInput) + bare.controller->getParameterCount(), 0);
}

// Two stereo inputs, main and aux, and a stereo output. The channel pairs are 2-2, 3-2 and 4-2
// with a sidechain of up to two channels: the host gets what it asks for within them, and a
// refusal changes nothing.
TEST(HostLoad, BusesAndArrangementsIncludingTheSidechain)
{
    Instance plug;
    IComponent* c = plug.component;
    IAudioProcessor* p = plug.processor;
    ASSERT_EQ(std::tuple(c->getBusCount(kAudio, kInput), c->getBusCount(kAudio, kOutput),
                         c->getBusCount(kEvent, kInput)),
              std::tuple(2, 1, 0));
    const auto busOf = [&](BusDirection dir, int32 index)
    {
        BusInfo info{};
        SpeakerArrangement arr = 0;
        EXPECT_TRUE(c->getBusInfo(kAudio, dir, index, info) == kResultTrue &&
                    p->getBusArrangement(dir, index, arr) == kResultTrue);
        EXPECT_EQ(
            std::tuple(info.channelCount, info.direction, info.busType),
            std::tuple(SpeakerArr::getChannelCount(arr), dir, dir == kInput && index == 1 ? kAux : kMain));
        return std::make_pair(Text(info.name), arr);
    };
    EXPECT_EQ(c->activateBus(kAudio, kInput, 1, false), kResultTrue);
    // Buses that don't exist: refused, whatever the call.
    BusInfo info{};
    SpeakerArrangement arr = 0;
    for (const auto& [type, dir, index] : {std::tuple{kAudio, kInput, 2},
                                           {kAudio, kInput, -1},
                                           {kAudio, kOutput, 1},
                                           {kEvent, kInput, 0},
                                           {kEvent, kOutput, 0}})
    {
        EXPECT_NE(c->getBusInfo(type, dir, index, info), kResultTrue) << type << dir << index;
        EXPECT_NE(c->activateBus(type, dir, index + 3, true), kResultTrue) << type << dir << index;
        EXPECT_TRUE(type == kEvent || p->getBusArrangement(dir, index, arr) != kResultTrue) << dir << index;
    }
    // Each row: main and sidechain asked for (0: no sidechain bus given), the output, the answer,
    // and the buses afterwards. Three main channels and a mono sidechain rebuild both buses under
    // new names; a mono output or five main channels are not among the pairs and change nothing;
    // four get the plug-in's own four-channel arrangement.
    constexpr SpeakerArrangement kStereo = SpeakerArr::kStereo, kMono = SpeakerArr::kMono, kThree = 0x103;
    using Bus = std::pair<std::u16string, SpeakerArrangement>;
    const std::array<Bus, 3> after[] = {
        {Bus{u"Main Input", kStereo}, {u"Aux Input", kStereo}, {u"Output", kStereo}},
        {Bus{u"Input", kThree}, {u"Sidechain Input", kMono}, {u"Output", kStereo}},
        {Bus{u"Input", 0xF00000}, {u"Sidechain Input", kMono}, {u"Output", kStereo}},
        {Bus{u"", kStereo}, {u"", kStereo}, {u"Output", kStereo}}};
    const std::tuple<SpeakerArrangement, SpeakerArrangement, SpeakerArrangement, tresult, int> rows[] = {
        {kStereo, kStereo, kStereo, kResultTrue, 0},
        {kStereo, 0, kStereo, kResultTrue, 0},
        {kThree, kMono, kStereo, kResultTrue, 1},
        {kThree, kMono, kMono, kResultFalse, 1},
        {SpeakerArr::k40Music, 0, kStereo, kResultFalse, 2},
        {SpeakerArr::k50, 0, kStereo, kResultFalse, 2},
        {kStereo, kStereo, kStereo, kResultTrue, 3}};
    for (const auto& [main, side, output, answer, buses] : rows)
    {
        SCOPED_TRACE(::testing::Message() << std::hex << main << " " << side << " " << output);
        SpeakerArrangement in[2] = {main, side}, out[1] = {output};
        EXPECT_EQ(p->setBusArrangements(in, side ? 2 : 1, out, 1), answer);
        std::array<Bus, 3> got{busOf(kInput, 0), busOf(kInput, 1), busOf(kOutput, 0)};
        if (buses == 3) got[0].first = got[1].first = u""; // the input names back in stereo are not pinned
        EXPECT_EQ(got, after[buses]);
    }
    SpeakerArrangement out[1] = {kStereo};
    EXPECT_EQ(p->setBusArrangements(nullptr, 1, out, 1), kInvalidArgument);
    // The processor runs with the sidechain that was set.
    plug.Start(44100.0, 256, kSample32);
    std::mt19937 rng(7);
    EXPECT_TRUE(ProcessNoise<float>(plug, 256, rng));
    plug.Stop();
}

TEST(HostLoad, ParametersUnitsAndProgramsAsTheHostScansThem)
{
    Instance plug;
    IEditController* c = plug.controller;
    ASSERT_EQ(c->getParameterCount(), kNumParams + 2);
    std::set<ParamID> ids;
    std::vector<ParamID> bypass, inLfoUnit;
    for (int32 i = 0; i < c->getParameterCount(); ++i)
    {
        ParameterInfo info{};
        ASSERT_EQ(c->getParameterInfo(i, info), kResultTrue);
        SCOPED_TRACE(info.id);
        EXPECT_TRUE(ids.insert(info.id).second) << "duplicate id";
        EXPECT_TRUE(info.defaultNormalizedValue >= 0.0 && info.defaultNormalizedValue <= 1.0);
        EXPECT_TRUE(info.stepCount >= 0 && !Text(info.title).empty());
        if (info.flags & ParameterInfo::kIsBypass) bypass.push_back(info.id);
        // Every parameter's unit exists; the LFO rates live in the second.
        EXPECT_TRUE(info.unitId == kRootUnitId || info.unitId == 1);
        if (info.unitId == 1) inLfoUnit.push_back(info.id);
        // The default the host is told is what the plug-in holds at start, and its text reads back
        // to it: exactly for steps, within half a unit of the last digit shown for the others (a
        // text that only shows, like the empty "off" of a switch, is not taken back).
        const ParamValue start = c->getParamNormalized(info.id);
        EXPECT_NEAR(start, info.defaultNormalizedValue, 1e-9);
        String128 text{};
        ParamValue back = -1.0;
        ASSERT_EQ(c->getParamStringByValue(info.id, start, text), kResultTrue);
        if (info.id >= kNumParams || c->getParamValueByString(info.id, text, back) != kResultTrue) continue;
        const std::u16string digits = Text(text).substr(std::min(Text(text).find(u'.'), Text(text).size()));
        const double halfDigit = 0.5 * std::pow(10.0, -std::max<double>(0.0, digits.size() - 1.0)) + 1e-9;
        if (info.stepCount > 0)
            EXPECT_NEAR(back, start, 1e-12);
        else
            EXPECT_NEAR(c->normalizedParamToPlain(info.id, back), c->normalizedParamToPlain(info.id, start),
                        halfDigit);
    }
    EXPECT_EQ(bypass, std::vector<ParamID>{kBypassId});
    EXPECT_EQ(inLfoUnit, (std::vector<ParamID>{kLfoRate1, kLfoRate1 + 1, kLfoRate1 + 2, kLfoRate1 + 3}));
    for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
        ASSERT_EQ(ids.count(id), 1u) << id;
    ParameterInfo none{};
    EXPECT_TRUE(c->getParameterInfo(kNumParams + 2, none) != kResultTrue &&
                c->getParameterInfo(-1, none) != kResultTrue);

    // A sample of the list as the host shows it (parameter n sits at index n + 2).
    // {index, title, units, steps, normalised default, flags, unit}
    const std::tuple<int32, const char16_t*, const char16_t*, int32, double, int32, UnitID> rows[] = {
        {0, u"Preset", u"", 1, 0.0, ParameterInfo::kIsProgramChange, kRootUnitId},
        {1, u"Bypass", u"", 1, 0.0,
         ParameterInfo::kCanAutomate | ParameterInfo::kIsBypass | ParameterInfo::kIsList, kRootUnitId},
        {2 + kSlotOn1, u"SlotOn 1", u"", 1, 1.0, ParameterInfo::kCanAutomate, kRootUnitId},
        {2 + kFeedback1, u"Feedback 1", u"%", 0, 50.0 / 160.0, ParameterInfo::kCanAutomate, kRootUnitId},
        // 0.5 Hz on 0.001..500 Hz, taken to the fourth root to give the low rates room.
        {2 + kLfoRate1, u"LFO Rate 1", u"Hz", 0, std::pow((0.5 - 0.001) / (500.0 - 0.001), 0.25),
         ParameterInfo::kCanAutomate, 1},
    };
    for (const auto& [index, title, units, steps, normalizedDefault, flags, unit] : rows)
    {
        ParameterInfo info{};
        ASSERT_EQ(c->getParameterInfo(index, info), kResultTrue);
        EXPECT_EQ(std::tuple(Text(info.title), Text(info.units), info.stepCount, info.flags, info.unitId),
                  std::tuple(title, units, steps, flags, unit));
        EXPECT_NEAR(info.defaultNormalizedValue, normalizedDefault, 1e-12) << info.id;
    }

    IUnitInfo* u = plug.units;
    UnitInfo unit{};
    ProgramListInfo list{};
    String128 name{};
    ASSERT_EQ(u->getUnitCount(), 2);
    ASSERT_EQ(u->getUnitInfo(1, unit), kResultTrue);
    EXPECT_EQ(std::tuple(unit.id, unit.parentUnitId, Text(unit.name)),
              std::tuple(1, kRootUnitId, u"lfo_rate"));
    ASSERT_EQ(u->getProgramListCount(), 1);
    ASSERT_EQ(u->getProgramListInfo(0, list), kResultTrue);
    EXPECT_EQ(std::tuple(list.id, list.programCount), std::tuple(static_cast<ProgramListID>(kPresetId), 1));
    ASSERT_EQ(u->getProgramName(list.id, 0, name), kResultTrue);
    EXPECT_EQ(Text(name), u"user preset 1");
    EXPECT_TRUE(u->getUnitInfo(2, unit) != kResultTrue &&
                u->getProgramName(list.id, 1, name) != kResultTrue &&
                u->getProgramName(12, 0, name) != kResultTrue);
}

TEST(HostLoad, ParameterTextsAndValuesConvertBothWays)
{
    Instance plug;
    IEditController* c = plug.controller;
    // Typed texts: numbers in their unit; for lists, only their entries' texts. Each row gives the
    // plain value the text stands for (NaN: the text is refused) and the text that value shows. A
    // blank entry of a list (FX1 FB, 108, past COMPRESSOR) can't be typed and shows its number.
    const std::tuple<ParamID, const char16_t*, double, const char16_t*> rows[] = {
        {kFeedback1, u"80.0", 80.0, u"80.0"},
        {kFeedback1, u"loud", kQuietNaN, nullptr},
        {kDelayLopass1, u"3000", 3000.0, nullptr},
        {kLimiterOn, u"SLOW II", 2.0, u"SLOW II"},
        {kLimiterOn, u"FAST", 3.0, u"FAST"},
        {kLimiterOn, u"2", kQuietNaN, nullptr},
        {kMasterFx, u"1", kQuietNaN, nullptr},
        {kTimebase1, u"1/16", 2.0, u"1/16"},
        {kTimebase1, u"1/17", kQuietNaN, nullptr},
        {kDelayTaps1, u"8", 7.0 /* the eighth count */, u"8"},
        {kDelayTaps1, u"08", kQuietNaN, nullptr},
        {kDelayTaps1, u"17", kQuietNaN, nullptr},
        {kBypassId, u"on", 1.0, u"on"},
        {108, u"COMPRESSOR", 13.0, u"COMPRESSOR"},
        {108, u"", 14.0, u"14"},
    };
    String128 text{};
    for (const auto& [id, typed, plain, shown] : rows)
    {
        const std::u16string entry = typed;
        SCOPED_TRACE(::testing::Message() << id << " " << std::string(entry.begin(), entry.end()));
        const ParamValue n = entry.empty() ? c->plainParamToNormalized(id, plain) : plug.FromText(id, entry);
        EXPECT_EQ(n < 0.0, std::isnan(plain)) << "taken or refused";
        if (n < 0.0 || std::isnan(plain)) continue;
        EXPECT_NEAR(c->normalizedParamToPlain(id, n), plain, 1e-6);
        ASSERT_EQ(c->getParamStringByValue(id, n, text), kResultTrue);
        EXPECT_EQ(Text(text), shown ? shown : Text(text));
    }
    EXPECT_NE(c->getParamStringByValue(kNumParams, 0.5, text), kResultTrue);
    // A value between a list's entries shows the entry it selects: 0.6 of 0..3 is 2.
    ASSERT_EQ(c->getParamStringByValue(kLimiterOn, 0.6, text), kResultTrue);
    EXPECT_EQ(Text(text), u"SLOW II");

    EXPECT_NEAR(c->plainParamToNormalized(kDryLevel, 75.0), 0.75, 1e-12);
    EXPECT_NEAR(c->normalizedParamToPlain(kDryLevel, 0.75), 75.0, 1e-12);
    EXPECT_EQ(c->normalizedParamToPlain(kNumParams + 7, 0.25), 0.25);
}

// Every rate, both sample sizes, blocks of many sizes; processing suspended and resumed, repeated
// transitions; then terminated and initialised again: the plug-in is the same plug-in afterwards.
TEST(HostLoad, SetupAtEveryRateSuspendResumeAndReinitialise)
{
    Instance plug;
    for (int32 size : {int32(kSample32), int32(kSample64), 2})
        EXPECT_EQ(plug.processor->canProcessSampleSize(size) == kResultTrue, size != 2) << size;
    for (ProcessSetup wrong :
         {ProcessSetup{kRealtime, 2, 512, 44100.0}, ProcessSetup{kRealtime, kSample64, 512, 0.0}})
        EXPECT_NE(plug.processor->setupProcessing(wrong), kResultOk);
    std::mt19937 rng(11);
    for (double rate : {22050.0, 44100.0, 48000.0, 96000.0, 176400.0, 192000.0, 384000.0, 1234.5678})
    {
        SCOPED_TRACE(rate);
        const uint32 latencyBefore = plug.processor->getLatencySamples();
        const int restartsBefore = plug.handler.mLatencyRestarts;
        plug.Start(rate, 1024, kSample64);
        for (int n : {1, 32, 512, 1000})
            EXPECT_TRUE(ProcessNoise<double>(plug, n, rng) && ProcessNoise<float>(plug, n, rng)) << n;
        plug.processor->setProcessing(false);
        plug.processor->setProcessing(true);
        EXPECT_TRUE(ProcessNoise<float>(plug, 100, rng));
        plug.Stop();
        EXPECT_EQ(plug.component->setActive(false), kResultOk);
        // A latency that moved with the rate has been told to the host by its next UI-thread call.
        plug.controller->getParamNormalized(0);
        EXPECT_TRUE(plug.processor->getLatencySamples() == latencyBefore ||
                    plug.handler.mLatencyRestarts > restartsBefore)
            << "a latency change the host was not told of";
    }
    const auto state = plug.ComponentState();
    for (int cycle = 0; cycle < 2; ++cycle)
    {
        ASSERT_EQ(plug.component->terminate(), kResultOk);
        ASSERT_EQ(plug.component->initialize(&plug.host), kResultOk);
        EXPECT_EQ(std::tuple(plug.controller->getParameterCount(),
                             plug.component->getBusCount(kAudio, kInput), plug.units->getUnitCount()),
                  std::tuple(kNumParams + 2, 2, 2));
        plug.Start(48000.0, 256, kSample64);
        EXPECT_TRUE(ProcessNoise<double>(plug, 256, rng));
        plug.Stop();
    }
    EXPECT_EQ(plug.ComponentState(), state);
    // An initialised component is not initialised twice.
    EXPECT_NE(plug.component->initialize(&plug.host), kResultOk);
    EXPECT_EQ(plug.controller->getParameterCount(), kNumParams + 2);
}

TEST(HostLoad, TheLastPointOfEachQueueIsApplied)
{
    Instance plug;
    plug.Start(48000.0, 512, kSample32);
    ParameterChanges changes;
    AddPoints(changes, {{kFeedback1, 0, 0.9},
                        {kFeedback1, 100, 0.2},
                        {kFeedback1, 511, 0.375},
                        {kLimiterOn, 3, 1.0},
                        {kLimiterOn, 300, 0.34},
                        {kBypassId, 0, 1.0},
                        {kBypassId, 200, 0.5}});
    std::mt19937 rng(3);
    EXPECT_TRUE(ProcessNoise<float>(plug, 512, rng, &changes));
    EXPECT_NEAR(plug.Plain(kFeedback1), 60.0, 1e-9);
    // An integer parameter snaps to its step: 0.34 of 0..3 is 1.
    EXPECT_NEAR(plug.controller->getParamNormalized(kLimiterOn), 1.0 / 3.0, 1e-12);
    EXPECT_EQ(plug.controller->getParamNormalized(kBypassId), 0.0) << "bypass needs more than one half";

    // Parameters only, no audio, as hosts send while the transport is stopped; a point out of range
    // is cut to it, one that is not a number is dropped.
    changes.Clear();
    AddPoints(changes,
              {{kDryLevel, 0, 0.1}, {kFeedback1, 0, 7.0}, {kLimiterOn, 0, kQuietNaN}, {kBypassId, 0, 0.51}});
    ProcessData flush;
    flush.symbolicSampleSize = kSample32;
    flush.inputParameterChanges = &changes;
    EXPECT_EQ(plug.processor->process(flush), kResultOk);
    EXPECT_NEAR(plug.controller->getParamNormalized(kDryLevel), 0.1, 1e-12);
    EXPECT_NEAR(plug.Plain(kFeedback1), 160.0, 1e-9);
    EXPECT_NEAR(plug.controller->getParamNormalized(kLimiterOn), 1.0 / 3.0, 1e-12) << "NaN dropped";
    EXPECT_EQ(plug.controller->getParamNormalized(kBypassId), 1.0);
    plug.Stop();
}

template <typename Sample> void CheckBypassDelaysByTheLatency(double rate)
{
    Instance plug;
    const int32 size = sizeof(Sample) == 8 ? kSample64 : kSample32;
    plug.Start(rate, 1000, size);
    ParameterChanges bypassOn, bypassOff;
    AddPoints(bypassOn, {{kBypassId, 0, 1.0}});
    AddPoints(bypassOff, {{kBypassId, 0, 0.0}});
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> noise(-1.0, 1.0);
    // The later runs follow a restart, still bypassed: the delay starts empty again rather than
    // playing the end of the run before. At twice the rate the engine plays one call first and
    // reports its longer latency, which the bypass then takes up.
    std::size_t before = 0;
    for (int run = 0; run < 3; ++run)
    {
        SCOPED_TRACE(run == 0 ? "first run" : run == 1 ? "after a restart" : "at twice the rate");
        if (run > 0)
        {
            plug.Stop();
            plug.Start(run * rate, 1000, size);
        }
        AudioRig<Sample> warm(64, {2, 2}, {2});
        warm.data.inputParameterChanges = &bypassOff;
        if (run == 2)
        {
            ASSERT_EQ(plug.processor->process(warm.data), kResultOk);
        }
        std::vector<Sample> in[2], out[2];
        // Calls shorter and longer than the latency: the ring wraps within calls and across them.
        for (int n : {1, 32, 511, 1000, 77, 300})
        {
            AudioRig<Sample> rig(n, {2, 2}, {2});
            rig.data.inputParameterChanges = in[0].empty() && run != 1 ? &bypassOn : nullptr;
            for (int ch = 0; ch < 2; ++ch)
                for (auto& v : rig.In(0, ch))
                    v = static_cast<Sample>(noise(rng));
            ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
            for (int ch = 0; ch < 2; ++ch)
            {
                in[ch].insert(in[ch].end(), rig.In(0, ch).begin(), rig.In(0, ch).end());
                out[ch].insert(out[ch].end(), rig.Out(0, ch).begin(), rig.Out(0, ch).end());
            }
        }
        const auto latency = static_cast<std::size_t>(plug.processor->getLatencySamples());
        ASSERT_TRUE(latency > (run == 2 ? before : 0u) && latency < 1000u) << latency;
        before = latency;
        for (int ch = 0; ch < 2; ++ch)
            for (std::size_t i = 0; i < in[ch].size(); ++i)
                ASSERT_EQ(out[ch][i], i < latency ? Sample(0) : in[ch][i - latency])
                    << "channel " << ch << ", sample " << i << ", latency " << latency;
        EXPECT_EQ(plug.controller->getParamNormalized(kBypassId), 1.0);
    }
    plug.Stop();
}

TEST(HostLoad, BypassIsTheInputDelayedByTheReportedLatency)
{
    CheckBypassDelaysByTheLatency<float>(44100.0);
    CheckBypassDelaysByTheLatency<double>(96000.0);
}

// The component's state read back gives the same bytes and values; the controller's is the same
// chunk plus the bypass word, which only it carries, so a session reopens bypassed if saved so. The
// chunk before the word is as long as its preset name makes it, longer here than the receiver's.
TEST(HostLoad, StatesRoundTripToTheByteAndKeepTheBypass)
{
    Instance source;
    source.Start(48000.0, 128, kSample32);
    ParameterChanges changes;
    AddPoints(changes,
              {{kFeedback1, 0, 0.6}, {kLimiterOn, 0, 1.0}, {kLfoRate1, 0, 0.3}, {kBypassId, 0, 1.0}});
    std::mt19937 rng(9);
    EXPECT_TRUE(ProcessNoise<float>(source, 128, rng, &changes));
    auto named = source.ComponentState();
    const std::string name = "a much longer preset name than the one of the receiving instance";
    const auto nameAt = named.begin() + kPresetNameAt + 4;
    named.insert(named.erase(nameAt, nameAt + ReadInt(named, kPresetNameAt)), name.begin(), name.end());
    const auto length = static_cast<std::int32_t>(name.size());
    std::memcpy(named.data() + kPresetNameAt, &length, sizeof length);
    ASSERT_EQ(source.LoadState(named), kResultOk);
    const auto state = source.ComponentState();
    ASSERT_EQ(state, named);
    const auto controllerState = source.ControllerState();
    source.Stop();
    ASSERT_EQ(controllerState.size(), state.size() + 4);
    EXPECT_TRUE(std::equal(state.begin(), state.end(), controllerState.begin()));

    Instance target;
    const auto fresh = target.ComponentState();
    EXPECT_NE(fresh, state);
    // The controller's state alone, into an instance whose own preset name is shorter.
    MemoryStream stream(controllerState);
    ASSERT_EQ(target.controller->setState(&stream), kResultOk);
    EXPECT_EQ(target.controller->getParamNormalized(kBypassId), 1.0);
    EXPECT_TRUE(target.ComponentState() == state && target.ControllerState() == controllerState);
    for (ParamID id : {kFeedback1, kLimiterOn, kLfoRate1, kDryLevel})
        EXPECT_NEAR(target.controller->getParamNormalized(id), source.controller->getParamNormalized(id),
                    1e-12)
            << id;
    // setComponentState on the controller side changes nothing: the component already has it. The
    // component's own state, without the word, leaves the bypass as it is, on or off.
    MemoryStream again(fresh);
    target.controller->setComponentState(&again);
    EXPECT_EQ(target.ComponentState(), state);
    ASSERT_EQ(target.LoadState(state), kResultOk);
    EXPECT_EQ(target.controller->getParamNormalized(kBypassId), 1.0);
    Instance other;
    ASSERT_EQ(other.LoadState(state), kResultOk);
    EXPECT_EQ(other.controller->getParamNormalized(kBypassId), 0.0);
    // And it really bypasses: the output is the delayed input.
    target.Start(48000.0, 128, kSample64);
    const Take in = NoiseTake(128, 0.5, 13);
    const Take out = Render(target, in, 128);
    const auto latency = static_cast<std::size_t>(target.processor->getLatencySamples());
    ASSERT_LT(latency, 128u);
    for (std::size_t i = latency; i < 128; ++i)
        ASSERT_EQ(out.l[i], in.l[i - latency]) << i;
    target.Stop();
}

// Short and empty states, and states whose values are noise, NaN or huge: the plug-in takes what
// it can, keeps every parameter in range and plays on. Any bytes at all as a state chunk are the
// state fuzz target's (tests/fuzz).
TEST(HostLoad, ShortEmptyAndRandomStatesAreSurvived)
{
    Instance plug;
    const auto good = plug.ComponentState();
    std::mt19937 rng(17);
    std::vector<std::vector<std::uint8_t>> states;
    states.emplace_back();
    for (std::size_t keep : {std::size_t{3}, good.size() / 2, good.size() - 1})
        states.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(keep));
    // Our own header fields, then noise (or NaN) where the parameter values are.
    for (int s = 0; s < 3; ++s)
    {
        std::vector<std::uint8_t> values(good);
        for (std::size_t i = ValueOffset(good, 0); i < values.size(); ++i)
            values[i] = static_cast<std::uint8_t>(rng());
        for (ParamID id = 0; s == 0 && id < static_cast<ParamID>(kNumParams); ++id)
            PutValue(values, id, kQuietNaN);
        states.push_back(values);
    }
    plug.Start(44100.0, 512, kSample32);
    for (std::size_t k = 0; k < states.size(); ++k)
    {
        SCOPED_TRACE(k);
        const tresult result = plug.LoadState(states[k]);
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
    plug.Stop();
    ASSERT_EQ(plug.LoadState(good), kResultOk);
    EXPECT_EQ(plug.ComponentState(), good);
}

// Blocks of every size up to the largest; and the shapes hosts send: no buffers, buses without
// channels, no buses, silence flags, an unknown sample size, a switched-off sidechain handed over
// as no buffers, null channel pointers or no bus at all.
TEST(HostLoad, ProcessCallsOfEverySizeAndShape)
{
    Instance plug;
    plug.Start(48000.0, 8192, kSample32);
    std::mt19937 rng(23);
    for (int n : {0, 1, 2, 31, 33, 64, 127, 1024, 4095, 8192})
        EXPECT_TRUE(ProcessNoise<float>(plug, n, rng)) << n;
    AudioBusBuffers none[3];
    ProcessData hollow;
    hollow.symbolicSampleSize = kSample32;
    EXPECT_EQ(plug.processor->process(hollow), kResultOk);
    std::tie(hollow.numSamples, hollow.numInputs, hollow.numOutputs, hollow.inputs, hollow.outputs) =
        std::tuple(64, 2, 1, none, none + 2);
    EXPECT_EQ(plug.processor->process(hollow), kResultOk);
    std::tie(hollow.numInputs, hollow.numOutputs, hollow.inputs, hollow.outputs) =
        std::tuple(0, 0, nullptr, nullptr);
    EXPECT_EQ(plug.processor->process(hollow), kResultOk);
    // Silence flags on silent input: the output is clean and claimed silent only if it is.
    AudioRig<float> silent(256, {2, 2}, {2});
    silent.InBus(0).silenceFlags = silent.InBus(1).silenceFlags = silent.OutBus(0).silenceFlags = 3;
    ASSERT_EQ(plug.processor->process(silent.data), kResultOk);
    for (int ch = 0; ch < 2; ++ch)
    {
        const auto& out = silent.Out(0, ch);
        const bool claimed = (silent.OutBus(0).silenceFlags & (1ull << ch)) != 0;
        EXPECT_TRUE(!claimed || std::all_of(out.begin(), out.end(), [](float v) { return v == 0.0f; })) << ch;
        EXPECT_TRUE(std::all_of(out.begin(), out.end(), IsClean<float>));
    }
    silent.data.symbolicSampleSize = 7;
    EXPECT_NE(plug.processor->process(silent.data), kResultOk);
    plug.Stop();

    plug.Start(44100.0, 256, kSample64, kRealtime, false);
    AudioRig<double> rig(256, {2, 2}, {2});
    for (int ch = 0; ch < 2; ++ch)
        for (auto& v : rig.In(0, ch))
            v = std::uniform_real_distribution<double>(-1.0, 1.0)(rng);
    double* nulls[2] = {nullptr, nullptr};
    for (const auto& [buffers, channels, buses] :
         {std::tuple<double**, int, int>{nullptr, 0, 2}, {nulls, 2, 2}, {nulls, 2, 1}})
    {
        std::tie(rig.InBus(1).channelBuffers64, rig.InBus(1).numChannels, rig.data.numInputs) =
            std::tuple(buffers, channels, buses);
        ASSERT_EQ(plug.processor->process(rig.data), kResultOk);
        for (int ch = 0; ch < 2; ++ch)
            EXPECT_TRUE(std::all_of(rig.Out(0, ch).begin(), rig.Out(0, ch).end(), IsClean<double>));
    }
    plug.Stop();
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
        // Slot 1 free (MS) at 400 and 700 ms without feedback, into the reverb.
        const PlainValues echoes = {{kTimebase1, 0.0},     {kDirectIn1, 50.0},    {kFeedback1, 0.0},
                                    {kDelayTimeL1, 400.0}, {kDelayTimeR1, 700.0}, {kMasterFx, kReverb},
                                    {kMasterFxP1, 20.0},   {kMasterFxP2, 10.0},   {kMasterFxLevel, 100.0}};
        Apply(plug, echoes, 512);
        // At least the 700 ms echo; at most a few seconds of a 2.2 s hall.
        const uint32 tail = plug.processor->getTailSamples();
        ASSERT_TRUE(tail > static_cast<uint32>(0.7 * rate) && tail < static_cast<uint32>(10.0 * rate))
            << tail;

        // A click once the start's fade-in is over, then silence for the tail and two seconds more.
        const auto click = static_cast<std::size_t>(0.25 * rate);
        const std::size_t end = click + 1 + tail;
        const Take out = Render(plug, Click(end + static_cast<std::size_t>(2.0 * rate), click), 512);
        // The echoes are there, at 400 and 700 ms, and nothing worth hearing comes after the tail.
        EXPECT_GT(Peak(out.l, click + std::size_t(0.39 * rate), click + std::size_t(0.41 * rate)), 0.05);
        EXPECT_GT(Peak(out.r, click + std::size_t(0.69 * rate), click + std::size_t(0.71 * rate)), 0.05);
        const double kept = std::max(Peak(out.l, 0, end), Peak(out.r, 0, end));
        const double lost = std::max(Peak(out.l, end), Peak(out.r, end));
        EXPECT_GT(kept, 0.1);
        EXPECT_LT(lost, kept * 1e-5) << "tail " << tail;

        // The tail follows the settings: a longer delay lengthens it...
        Apply(plug, {{kDelayTimeL1, 2400.0}}, 512);
        EXPECT_NE(plug.processor->getTailSamples(), kInfiniteTail);
        EXPECT_GE(plug.processor->getTailSamples(), tail + static_cast<uint32>(1.7 * rate));
        // ...and feedback, the slot's own or the ambience's at full gain, sustains: forever.
        Apply(plug, {{kFeedback1, 30.0}}, 512);
        EXPECT_EQ(plug.processor->getTailSamples(), kInfiniteTail);
        Apply(plug, {{kFeedback1, 0.0}, {kMasterFx, kQuorvexHall}, {kMasterFxP2, 100.0}}, 512);
        EXPECT_EQ(plug.processor->getTailSamples(), kInfiniteTail);
        Apply(plug, {{kMasterFxP2, 30.0}}, 512);
        EXPECT_NE(plug.processor->getTailSamples(), kInfiniteTail);
        plug.Stop();
    }
}

// Everything that keeps state of its own between blocks: echoes with feedback (328 Timebase 1 = MS,
// 16 Direct In 1, 68 Feedback 1, 344 and 356 the delay times), an S&H LFO on the delay time (832 LFO On 1,
// 836 its wave, 864 its rate, 352 and 348 Delay TimeL ModSource1 = LFO1 and ModDepth 1), a second LFO on the
// pan (833, 865, 64 and 60: Panning ModSource1 = LFO2), a gate on the level (892 Gate1 On, 88 and 84: Level
// ModSource1 = GATE1), the main modulator (20 Modulation 1, 1059 Main ModDepth), the envelope follower (988
// ENV1 On), NOISE in the feedback path (300 FXOn FB 1, 108 FX1 FB), LOFI II after the delay, the chaotic
// ambience.
void AddStatefulPatch(Instance& plug, ParameterChanges& changes)
{
    const double sh = plug.ListValue(836, u"S&H"), nz = plug.ListValue(108, u"NOISE");
    const double lofi = plug.ListValue(kFxPost1, u"LOFI II");
    const PlainValues mods = {{328, 0.0},   {16, 50.0},  {68, 55.0}, {344, 90.0}, {356, 130.0}, {832, 1.0},
                              {836, sh},    {864, 40.0}, {352, 1.0}, {348, 30.0}, {833, 1.0},   {865, 30.0},
                              {64, 2.0},    {60, 80.0},  {892, 1.0}, {88, 5.0},   {84, -60.0},  {20, 80.0},
                              {1059, 90.0}, {988, 1.0},  {300, 1.0}, {108, nz}};
    const PlainValues fx = {{kFxOnPost1, 1.0},   {kFxPost1, lofi},    {kMasterFx, kQuorvexHall},
                            {kMasterFxP1, 40.0}, {kMasterFxP2, 60.0}, {kMasterFxLevel, 100.0}};
    for (const PlainValues& values : {mods, fx})
        AddPlain(plug, changes, values);
}

// Re-activation starts the engine from one state: renders of the same input after
// deactivate/activate, after a new setupProcessing and after a change of process mode are
// identical to the bit, whatever ran before, even a run that ended inside an internal block. Each
// master type in turn: the chaotic ambience, the hall, the shelves, the fixed equaliser, behind
// the FAST limiter.
TEST(HostLoad, EveryActivationStartsFromTheSameState)
{
    constexpr double kRate = 48000.0;
    constexpr int kBlock = 512;
    const Take noise = NoiseTake(static_cast<std::size_t>(kRate) + 68, 0.4, 51);
    const PlainValues plainPatch = {{kDirectIn1, 30.0},  {kFeedback1, 40.0},    {kLimiterOn, kFast},
                                    {kTimebase1, 0.0},   {kDelayTimeL1, 250.0}, {kDelayTimeR1, 375.0},
                                    {kMasterFxP1, 30.0}, {kMasterFxP2, 70.0},   {kMasterFxLevel, 80.0}};
    for (double masterType : {kQuorvexHall, kReverb, 6.0 /* LO/HI SHELF */, 4.0 /* FIX EQ */})
    {
        SCOPED_TRACE(masterType);
        Instance plug;
        plug.Start(kRate, kBlock, kSample64);
        ParameterChanges changes;
        if (masterType == kQuorvexHall)
            AddStatefulPatch(plug, changes);
        else
        {
            AddPlain(plug, changes, {{kMasterFx, masterType}});
            AddPlain(plug, changes, plainPatch);
        }
        Render(plug, noise, kBlock, &changes);
        // Effect types arriving with automation are built off the audio thread; let that happen.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        Render(plug, noise, kBlock);

        plug.Stop();
        plug.Start(kRate, kBlock, kSample64);
        const Take first = Render(plug, noise, kBlock);
        ASSERT_EQ(FirstNonFinite(first), -1);
        ASSERT_GT(Peak(first.l), 0.05);
        // Deactivate and activate again, with no new set-up.
        plug.Stop();
        plug.component->setActive(true);
        plug.processor->setProcessing(true);
        EXPECT_TRUE(Same(Render(plug, noise, kBlock), first)) << "after a new activation";
        // A new set-up at the same rate, the host staying in real time, its calls now longer than
        // the engine's largest block: they reach it in pieces.
        plug.Stop();
        plug.Start(kRate, 9000, kSample64);
        EXPECT_TRUE(Same(Render(plug, noise, 9000), first)) << "after a new set-up";
        // The host switches to offline rendering without a new set-up: the mode of the process call.
        EXPECT_TRUE(Same(Render(plug, noise, kBlock, nullptr, kOffline), first)) << "offline";
        plug.Stop();
    }
}
// Offset of the tap masks in a state chunk: behind the preset name and folder label (texts of a
// length word and their bytes), the menu index, the menu folder and the focused parameter.
std::size_t TapMaskOffset(const std::vector<std::uint8_t>& b)
{
    std::size_t at = kPresetNameAt;
    for (int text = 0; text < 2; ++text)
        at += 4 + static_cast<std::size_t>(std::max(0, ReadInt(b, at)));
    at += 4;
    return at + 4 + static_cast<std::size_t>(std::max(0, ReadInt(b, at))) + 4;
}

// Peak of each of the eight taps of slot 1 after a click, per side: tap t sounds (t + 1) x 50 ms
// after the click (the default tap step), plus the plug-in's latency.
std::array<std::array<double, 8>, 2> ClickTaps(Instance& plug, double rate)
{
    const auto click = static_cast<std::size_t>(0.2 * rate);
    const Take out = Render(plug, Click(click + static_cast<std::size_t>(0.6 * rate), click), 256);
    const auto latency = static_cast<std::size_t>(plug.processor->getLatencySamples());
    const auto half = static_cast<std::size_t>(0.01 * rate);
    std::array<std::array<double, 8>, 2> peaks{};
    for (std::size_t t = 0; t < 8; ++t)
    {
        const std::size_t at = click + latency + static_cast<std::size_t>(double(t + 1) * 0.05 * rate);
        std::tie(peaks[0][t], peaks[1][t]) =
            std::tuple(Peak(out.l, at - half, at + half), Peak(out.r, at - half, at + half));
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
    Apply(plug, {{kDelayMode1, 3.0 /* TAPPED */}, {kDirectIn1, 50.0}, {kFeedback1, 0.0}, {kDryLevel, 0.0}});
    auto state = plug.ComponentState();
    const std::size_t maskAt = TapMaskOffset(state);
    const auto fresh = ClickTaps(plug, kRate);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(ReadInt(state, maskAt + 4 * (i / 2)), 0xFFFF) << "mask " << i / 2;
        EXPECT_GT(fresh[i % 2][i / 2], 0.05) << "tap " << i / 2 << " side " << i % 2;
    }

    const std::array<std::int32_t, 2> masks[] = {
        {0x0055, 0x00AA}, {0x000F, 0x00F0}, {0x0081, 0x0000}, {0x00FE, 0x007F}};
    for (const auto& mask : masks)
    {
        SCOPED_TRACE(::testing::Message() << std::hex << mask[0] << " / " << mask[1]);
        std::memcpy(state.data() + maskAt, mask.data(), 8);
        ASSERT_EQ(plug.LoadState(state), kResultOk);
        const auto p = ClickTaps(plug, kRate);
        for (int side = 0; side < 2; ++side)
            for (int t = 0; t < 8; ++t)
                EXPECT_EQ(p[side][t] > (((mask[side] >> t) & 1) != 0 ? 0.5 : 1e-3) * fresh[side][t],
                          ((mask[side] >> t) & 1) != 0)
                    << "tap " << t << " side " << side;
        // The state the host saves holds the masks that play.
        const auto saved = plug.ComponentState();
        EXPECT_EQ(std::tuple(ReadInt(saved, maskAt), ReadInt(saved, maskAt + 4)),
                  std::tuple(mask[0], mask[1]));
    }
    plug.Stop();
}

// Automated effect-type changes in an offline render: each takes effect in the host block where it
// arrives, so two renders of the same automation are identical and the output first departs from
// a render without the change within that block (plus the latency). A host rendering offline runs
// far faster than real time and gives a worker thread no chance.
TEST(HostLoad, OfflineEffectTypeChangesTakeEffectWhereTheyArrive)
{
    constexpr int kBlock = 256;
    const Take noise = NoiseTake(48000, 0.4, 61);
    // Host block at which each type change arrives, and the POST type it asks for.
    const std::map<int, const char16_t*> changesAt = {{20, u"RING MOD"},   {41, u"PHASE"}, {42, u"COMB"},
                                                      {90, u"FREQ SHIFT"}, {91, u"OFF"},   {120, u"LOFI II"}};
    // Slot 1's POST effect on, no dry, and its five parameters (124 ... 268: FXParam1..5 PO 1).
    const PlainValues start = {{kSlotOn1, 1.0}, {kFxOnPost1, 1.0}, {kDryLevel, 0.0}, {124, 60.0},
                               {160, 70.0},     {196, 40.0},       {232, 55.0},      {268, 100.0}};
    const auto render = [&](bool withChanges)
    {
        Instance plug;
        plug.Start(48000.0, kBlock, kSample64, kOffline);
        ParameterChanges changes;
        const auto changesFor = [&](int k) -> IParameterChanges*
        {
            changes.Clear();
            if (k == 0) AddPlain(plug, changes, start);
            if (withChanges && changesAt.count(k) > 0)
                AddPlain(plug, changes, {{kFxPost1, plug.ListValue(kFxPost1, changesAt.at(k))}});
            return &changes;
        };
        const Take out = RenderWith(plug, noise, kBlock, changesFor, kOffline);
        plug.Stop();
        return out;
    };
    const Take plain = render(false);
    const Take first = render(true);
    EXPECT_TRUE(Same(render(true), first));
    const auto departs = static_cast<std::size_t>(
        std::min(std::mismatch(plain.l.begin(), plain.l.end(), first.l.begin()).first - plain.l.begin(),
                 std::mismatch(plain.r.begin(), plain.r.end(), first.r.begin()).first - plain.r.begin()));
    const std::size_t arrives = 20 * kBlock;
    EXPECT_GE(departs, arrives);
    EXPECT_LT(departs, arrives + kBlock + 200) << "the first change was heard late";
}

// The host works the controller and loads states while another thread processes noise under
// random automation; once the automation has stopped, states are loaded again and again. The
// output stays finite throughout (the FAST limiter included), and afterwards the last state is in
// force: the saved state is its bytes, and a render equals that of a fresh instance given it.
TEST(HostLoad, StatesLoadedWhileAudioRunsLeaveTheLastInForce)
{
    constexpr double kRate = 44100.0;
    constexpr int kBlock = 256;
    Instance plug;
    const auto stateWith = [&](double feedback, double left, double right, double hallLevel)
    {
        auto state = plug.ComponentState();
        for (const auto& [id, plain] : PlainValues{{kFeedback1, feedback},
                                                   {kDelayTimeL1, left},
                                                   {kDelayTimeR1, right},
                                                   {kMasterFxLevel, hallLevel},
                                                   {kDirectIn1, 50.0},
                                                   {kLimiterOn, kFast},
                                                   {kTimebase1, 0.0},
                                                   {kMasterFx, kReverb}})
            PutValue(state, id, plain);
        return state;
    };
    const auto a = stateWith(120.0, 7.0, 3000.0, 150.0), b = stateWith(40.0, 250.0, 375.0, 80.0);
    plug.Start(kRate, kBlock, kSample64);
    std::atomic<bool> automate{true}, done{false};
    std::atomic<long> badAt{-1}, quietBlocks{0};
    std::thread audio(
        [&]
        {
            std::mt19937 rng(31);
            ParameterChanges changes;
            for (long block = 0; !done; ++block)
            {
                const bool automated = automate;
                changes.Clear();
                if (automated)
                    changes.Add(static_cast<ParamID>(rng() % kNumParams), 0,
                                std::uniform_real_distribution<double>(0, 1)(rng));
                const bool clean = block % 2 == 0 ? ProcessNoise<double>(plug, kBlock, rng, &changes)
                                                  : ProcessNoise<float>(plug, kBlock, rng, &changes);
                if (!clean && badAt < 0) badAt = block;
                quietBlocks += automated ? 0 : 1;
            }
        });
    String128 text{};
    for (int k = 0; k < 2000; ++k)
    {
        plug.controller->setParamNormalized(kFeedback1, (k % 100) / 100.0);
        plug.controller->getParamStringByValue(kLfoRate1, 0.5, text);
        plug.controller->getParamNormalized(static_cast<ParamID>(k % kNumParams));
        if (k % 50 == 0) plug.LoadState(plug.ComponentState());
    }
    automate = false;
    while (quietBlocks == 0)
        std::this_thread::yield();
    for (int k = 0; k < 80; ++k)
    {
        ASSERT_EQ(plug.LoadState(k % 2 == 0 ? a : b), kResultOk);
        std::this_thread::sleep_for(std::chrono::microseconds(300 + 97 * (k % 7)));
    }
    done = true;
    audio.join();
    EXPECT_EQ(badAt, -1) << "a non-finite sample in block " << badAt;
    EXPECT_EQ(plug.ComponentState(), b);

    Instance fresh;
    ASSERT_EQ(fresh.LoadState(b), kResultOk);
    const Take noise = NoiseTake(static_cast<std::size_t>(kRate), 0.5, 73);
    Take got[2];
    for (Instance* one : {&plug, &fresh})
    {
        one->Stop();
        one->Start(kRate, kBlock, kSample64);
        got[one == &fresh] = Render<double>(*one, noise, kBlock);
        one->Stop();
    }
    ASSERT_EQ(FirstNonFinite(got[0]), -1);
    EXPECT_TRUE(Same(got[0], got[1]));
}

// The last value of each queue a plug-in wrote into a host's output changes, by id.
// One call of silence carrying `in`, with an output queue as a host that reads it gives, or none;
// the last value of each queue the plug-in wrote into it, by id.
std::map<ParamID, ParamValue> ProcessTelling(Instance& plug, ParameterChanges& in, bool hostReads = true)
{
    AudioRig<double> rig(256, {2, 2}, {2});
    ParameterChanges out;
    out.Prepare(static_cast<ParamID>(kNumParams));
    rig.data.inputParameterChanges = &in;
    rig.data.outputParameterChanges = hostReads ? &out : nullptr;
    EXPECT_EQ(plug.processor->process(rig.data), kResultOk);
    std::map<ParamID, ParamValue> values;
    for (int32 i = 0, offset = 0; i < out.getParameterCount(); ++i)
    {
        IParamValueQueue* queue = out.getParameterData(i);
        ParamValue value = 0.0;
        if (queue && queue->getPoint(queue->getPointCount() - 1, offset, value) == kResultTrue)
            values[queue->getParameterId()] = value;
    }
    return values;
}
std::map<ParamID, ParamValue> ProcessTelling(Instance& plug, PlainValues values)
{
    ParameterChanges in;
    AddPlain(plug, in, values);
    return ProcessTelling(plug, in);
}

// Values the plug-in writes itself come back in the very process call that made them, through the
// output changes of a host that offers them (no editor, no UI-thread call needed), each once: a
// later UI-thread call doesn't tell the host again. A host that offers none hears of them on its
// next UI-thread call. Where the host set such a value in the same call, the host's value stands
// and is what the saved state holds, in either order of the queues.
TEST(HostLoad, ValuesThePlugInWritesReachTheHostAndTheHostsOwnWin)
{
    constexpr ParamID kLink1 = 760, kLfoSync1 = 844;
    Instance plug;
    plug.Start(48000.0, 256, kSample64);
    // Each value written came back through the output queue, and a UI-thread call tells the host
    // of none of them again.
    const auto toldOnlyThere = [&](const std::map<ParamID, ParamValue>& written)
    {
        plug.handler.Clear();
        for (const auto& [id, value] : written)
            EXPECT_EQ(value, plug.controller->getParamNormalized(id)) << id; // a UI-thread call
        for (const auto& edit : plug.handler.Edits())
            EXPECT_EQ(written.count(edit.id), 0u) << "told twice: " << edit.id;
    };
    // The time base switch: a synced slot set free plays its synced times, four eighths (the
    // factors' default) at 120 bpm: 1000 ms, unless the host sets the time in the same call.
    for (bool hostReads : {true, false})
    {
        SCOPED_TRACE(hostReads ? "time base queue first, output queue read" : "time queue first, none read");
        ProcessTelling(
            plug,
            {{kTimebase1, plug.ListValue(kTimebase1, u"1/8")}, {kDelayTimeL1, 200.0}, {kDelayTimeR1, 300.0}});
        ParameterChanges in;
        const double time = plug.controller->plainParamToNormalized(kDelayTimeL1, 500.0);
        if (!hostReads) in.Add(kDelayTimeL1, 0, time);
        in.Add(kTimebase1, 0, plug.controller->plainParamToNormalized(kTimebase1, 0.0));
        if (hostReads) in.Add(kDelayTimeL1, 0, time);
        plug.handler.Clear();
        auto written = ProcessTelling(plug, in, hostReads);
        EXPECT_EQ(written.count(kTimebase1), 0u) << "the host's own change isn't echoed";
        if (hostReads)
        {
            ASSERT_EQ(written.count(kDelayTimeR1), 1u);
            EXPECT_NEAR(plug.controller->normalizedParamToPlain(kDelayTimeR1, written[kDelayTimeR1]), 1000.0,
                        1e-9);
            toldOnlyThere(written);
        }
        const double right = plug.controller->getParamNormalized(kDelayTimeR1); // a UI-thread call
        const auto edits = plug.handler.Edits();
        EXPECT_EQ(hostReads,
                  std::none_of(edits.begin(), edits.end(),
                               [&](const ComponentHandler::Edit& e)
                               { return e.kind == 'p' && e.id == kDelayTimeR1 && e.value == right; }));
        EXPECT_NEAR(plug.Plain(kDelayTimeR1), 1000.0, 1e-9);
        // 500 up to the normalised round trip of the host's own value (far below 499.99998).
        EXPECT_NEAR(plug.Plain(kDelayTimeL1), 500.0, 1e-9);
        EXPECT_NEAR(SavedValue(plug.ComponentState(), kDelayTimeL1), 500.0, 1e-9);
    }
    // The link: the right time follows the left.
    ProcessTelling(plug, {{kLink1, 1.0}});
    auto written = ProcessTelling(plug, {{kDelayTimeL1, 250.0}});
    ASSERT_EQ(written.count(kDelayTimeR1), 1u);
    EXPECT_NEAR(plug.controller->normalizedParamToPlain(kDelayTimeR1, written[kDelayTimeR1]), 250.0, 1e-9);
    toldOnlyThere(written);
    // An LFO switched from hertz to note values gets the rate in the new unit.
    const ParamValue hertz = plug.controller->getParamNormalized(kLfoRate1);
    written = ProcessTelling(plug, {{kLfoSync1, 1.0}});
    ASSERT_EQ(written.count(kLfoRate1), 1u);
    EXPECT_NE(written[kLfoRate1], hertz);
    toldOnlyThere(written);
    plug.Stop();
}

// A host that keeps parameter values in single precision (as some DAWs do) saves them beside the
// state and sets them again after loading it, also after a time base switch and a host change of
// the time in the same call: the reopened session renders bit for bit as the saved one.
TEST(HostLoad, ASessionSavedByASinglePrecisionHostReopensBitIdentical)
{
    constexpr int kBlock = 256;
    Instance saved;
    saved.Start(48000.0, kBlock, kSample64);
    std::map<ParamID, float> shadow; // what the host shows and saves
    for (ParamID id = 0; id < static_cast<ParamID>(kNumParams); ++id)
        shadow[id] = static_cast<float>(saved.controller->getParamNormalized(id));
    const auto hostSets = [&](PlainValues values)
    {
        for (const auto& [id, plain] : values)
            shadow[id] = static_cast<float>(saved.controller->plainParamToNormalized(id, plain));
        for (const auto& [id, value] : ProcessTelling(saved, values))
            shadow[id] = static_cast<float>(value);
    };
    hostSets({{kTimebase1, saved.ListValue(kTimebase1, u"1/8")},
              {kDelayTimeL1, 200.0},
              {kDelayTimeR1, 300.0},
              {kFeedback1, 40.0}});
    hostSets({{kTimebase1, 0.0}, {kDelayTimeL1, 123.4}});
    const std::vector<std::uint8_t> state = saved.ComponentState();
    EXPECT_NEAR(SavedValue(state, kDelayTimeL1), 123.4, 1e-9) << "the host's time stands";
    EXPECT_NEAR(SavedValue(state, kDelayTimeR1), 1000.0, 1e-9) << "the synced time, free";
    saved.Stop();
    saved.Start(48000.0, kBlock, kSample64);
    const Take impulse = Click(48000, 100);
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
    ASSERT_EQ(reopened.LoadState(state), kResultOk);
    reopened.Start(48000.0, kBlock, kSample64);
    EXPECT_TRUE(Same(Render(reopened, impulse, kBlock, &values), before));
    EXPECT_NEAR(reopened.Plain(kDelayTimeR1), 1000.0, 1e-9);
    reopened.Stop();
}
} // namespace
