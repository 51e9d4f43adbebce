// What the loaded bundle plays: the reported tail, restarts, tap masks, effect types automated
// offline, states loaded while audio runs, and the values the plug-in writes by itself as hosts see
// and save them.

#include "host/load/BundleRig.h"

#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <thread>
#include <tuple>

using namespace bundlerig;

namespace
{
// The reported tail: forever while a heard delay feeds back or the ambience loops at full gain;
// otherwise the longest delay plus the hall's decay, at the present rate and settings. A render
// that stops at the reported tail after the input keeps every echo: past it the output is below
// -100 dB of the echoes.
TEST(HostLoad, TheReportedTailHoldsTheEchoesAndTheHall)
{
    for (double rate : {44100.0, 96000.0})
    {
        SCOPED_TRACE(rate);
        Instance plug(rate, 512, kSample64);
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
        Instance plug(kRate, kBlock, kSample64);
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
    Instance plug(kRate, 256, kSample64);
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
        Instance plug(48000.0, kBlock, kSample64, kOffline);
        ParameterChanges changes;
        const auto changesFor = [&](int k) -> IParameterChanges*
        {
            changes.Clear();
            if (k == 0) AddPlain(plug, changes, start);
            if (withChanges && changesAt.count(k) > 0)
                AddPlain(plug, changes, {{kFxPost1, plug.ListValue(kFxPost1, changesAt.at(k))}});
            return &changes;
        };
        return RenderWith(plug, noise, kBlock, changesFor, kOffline);
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
    Instance plug(48000.0, 256, kSample64);
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
}

// A host that keeps parameter values in single precision (as some DAWs do) saves them beside the
// state and sets them again after loading it, also after a time base switch and a host change of
// the time in the same call: the reopened session renders bit for bit as the saved one.
TEST(HostLoad, ASessionSavedByASinglePrecisionHostReopensBitIdentical)
{
    constexpr int kBlock = 256;
    Instance saved(48000.0, kBlock, kSample64);
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
}
} // namespace
