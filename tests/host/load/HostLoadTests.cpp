// The shipped bundle, loaded and driven the way hosts and their validators do: module entry points,
// factory and class record, buses and arrangements, parameters and their texts, units, processing
// in both sample sizes at many rates and block sizes, parameter queues, bypass, state, lifecycle
// cycles, and output hygiene (no NaN, infinity or subnormal numbers).

#include "host/load/BundleRig.h"

#include "pluginterfaces/vst/vstspeaker.h"

#include <array>
#include <filesystem>
#include <limits>
#include <set>
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
    Instance plug(48000.0, 512, kSample32);
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
}

template <typename Sample> void CheckBypassDelaysByTheLatency(double rate)
{
    const int32 size = sizeof(Sample) == 8 ? kSample64 : kSample32;
    Instance plug(rate, 1000, size);
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
    Instance source(48000.0, 128, kSample32);
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
    Instance plug(48000.0, 8192, kSample32);
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
}
} // namespace
