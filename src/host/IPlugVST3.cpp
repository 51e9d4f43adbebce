#include "host/IPlugVST3.h"

#include "dsp/Denormals.h"
#include "host/HostText.h"
#include "host/IEditorWindow.h"
#include "host/IPlugParameter.h"
#include "host/IPlugVST3View.h"
#include "params/IParamRecord.h"

#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/vst/ivstcontextmenu.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"
#include "pluginterfaces/vst/vstspeaker.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <thread>

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
constexpr int kTextUnits = 128;
// Host block sizes above this are processed in pieces; it bounds the per-channel buffers.
constexpr int kMaxBlockSize = 8192;
// A state stream longer than this is not ours.
constexpr int kMaxStateBytes = 64 << 20;
constexpr int kStateReadStep = 4096;

// Runs a host entry point; whatever it throws becomes an error code.
template <typename F> tresult Guarded(F&& body) noexcept
{
    try
    {
        return body();
    }
    catch (const std::bad_alloc&)
    {
        return kOutOfMemory;
    }
    catch (...)
    {
        return kInternalError;
    }
}

// Hosts that keep parameter values in single precision hand our own values back rounded: a
// session reload sets every parameter after the state. Such an echo is no change, or a reloaded
// session would play 499.99998 ms where the saved one played 500.
bool IsSinglePrecisionEcho(const IParamRecord& record, double normalized)
{
    const double current = record.GetNormalized();
    return normalized != current && static_cast<float>(normalized) == static_cast<float>(current);
}

bool HasBuffers(const AudioBusBuffers& bus)
{
    return bus.numChannels > 0 && bus.channelBuffers32 != nullptr;
}

// Silence in host buffers that the plug-in doesn't otherwise write.
void ZeroHostChannels(AudioBusBuffers& bus, int firstChannel, int nFrames, int32 sampleSize)
{
    if (!HasBuffers(bus) || nFrames <= 0) return;
    for (int ch = std::max(firstChannel, 0); ch < bus.numChannels; ++ch)
    {
        if (sampleSize == kSample64 && bus.channelBuffers64[ch])
            std::fill_n(bus.channelBuffers64[ch], nFrames, 0.0);
        else if (sampleSize == kSample32 && bus.channelBuffers32[ch])
            std::fill_n(bus.channelBuffers32[ch], nFrames, 0.0f);
    }
}
} // namespace

IPlugVST3::IPlugVST3(const IPlugConfig& config) : IPlugBase(config)
{
    SetInputChannelConnections(0, NInChannels(), false);
    SetOutputChannelConnections(0, NOutChannels(), false);
    SetInputLabel(0, "Main Input");
    if (NSidechainChannels() > 0) SetInputLabel(1, "Aux Input");
    SetOutputLabel(0, "Output");
}

IPlugVST3::~IPlugVST3() = default;

SpeakerArrangement IPlugVST3::ArrangementForChannels(int n)
{
    switch (n)
    {
    case 1:
        return 0x80000;
    case 2:
        return 0x3;
    case 3:
        return 0x103;
    case 4:
        return 0xF00000;
    case 5:
        return 0x37;
    case 6:
        return 0x3F;
    default:
        return 0;
    }
}

// ---- Set-up -----------------------------------------------------------------------------------

tresult PLUGIN_API IPlugVST3::initialize(FUnknown* context)
{
    return Guarded(
        [&]() -> tresult
        {
            const tresult result = SingleComponentEffect::initialize(context);
            if (result != kResultOk) return result;
            IdentifyHost(context);
            if (mBuilt) return kResultOk;
            try
            {
                BuildBusesAndParameters();
            }
            catch (...)
            {
                // A half-built plug-in must not be mistaken for a built one by the next initialize.
                removeAllBusses();
                parameters.removeAll();
                mUnits.clear();
                throw;
            }
            mBuilt = true;
            OnHostIdentified();
            RestorePreset(0);
            return kResultOk;
        });
}

void IPlugVST3::IdentifyHost(FUnknown* context)
{
    if (!context) return;
    IHostApplication* app = nullptr;
    if (context->queryInterface(IHostApplication::iid, reinterpret_cast<void**>(&app)) != kResultOk || !app)
        return;
    String128 name{};
    if (app->getName(name) == kResultOk) SetHost(NarrowText(name, kTextUnits), 0);
    app->release();
}

void IPlugVST3::BuildBusesAndParameters()
{
    String128 name{};
    const int scChannels = NSidechainChannels();

    WidenText(GetInputLabel(0), name, kTextUnits);
    addAudioInput(name, ArrangementForChannels(NInChannels() - scChannels));
    WidenText(GetOutputLabel(0), name, kTextUnits);
    addAudioOutput(name, ArrangementForChannels(NOutChannels()));
    if (scChannels > 0)
        addAudioInput(STR16("Aux Input"), ArrangementForChannels(std::min(scChannels, 2)), kAux, 0);
    if (DoesMidi()) addEventInput(STR16("MIDI Input"), 1);

    if (NPresets() > 0)
        parameters.addParameter(new Parameter(STR16("Preset"), kPresetParamId, nullptr, 0.0, NPresets(),
                                              ParameterInfo::kIsProgramChange, kRootUnitId));
    if (!IsInst())
    {
        auto* bypass = new StringListParameter(STR16("Bypass"), kBypassParamId, nullptr,
                                               ParameterInfo::kCanAutomate | ParameterInfo::kIsBypass |
                                                   ParameterInfo::kIsList);
        bypass->appendString(STR16("off"));
        bypass->appendString(STR16("on"));
        parameters.addParameter(bypass);
    }

    UnitInfo root{};
    root.id = kRootUnitId;
    root.parentUnitId = kNoParentUnitId;
    root.programListId = kNoProgramListId;
    WidenText("Root Unit", root.name, kTextUnits);
    mUnits.assign(1, root);

    mPending.Resize(NParams());
    for (int id = 0; id < NParams(); ++id)
    {
        IParamRecord* record = GetParam(id);
        parameters.addParameter(
            new IPlugParameter(*record, static_cast<ParamID>(id), UnitForGroup(record->group)));
    }
}

UnitID IPlugVST3::UnitForGroup(const char* group)
{
    if (!group || group[0] == '\0') return kRootUnitId;
    String128 wanted{};
    WidenText(group, wanted, kTextUnits);
    for (const UnitInfo& unit : mUnits)
        if (unit.id != kRootUnitId && std::char_traits<char16>::compare(unit.name, wanted, kTextUnits) == 0)
            return unit.id;
    UnitInfo unit{};
    unit.id = static_cast<UnitID>(mUnits.size());
    unit.parentUnitId = kRootUnitId;
    unit.programListId = kNoProgramListId;
    std::copy(std::begin(wanted), std::end(wanted), unit.name);
    mUnits.push_back(unit);
    return unit.id;
}

tresult PLUGIN_API IPlugVST3::activateBus(MediaType type, BusDirection dir, int32 index, TBool state)
{
    const tresult result = SingleComponentEffect::activateBus(type, dir, index, state);
    if (result == kResultTrue && type == kAudio && index < kMaxBuses)
        (dir == kInput ? mInputBusActive : mOutputBusActive)[static_cast<size_t>(index)] = state != 0;
    return result;
}

tresult PLUGIN_API IPlugVST3::setActive(TBool state)
{
    return Guarded(
        [&]() -> tresult
        {
            // Processing is off here, so the audio thread does not hold the bypass delay.
            if (state != 0) RestartBypassDelay();
            OnActivate(state != 0);
            return kResultOk;
        });
}

tresult PLUGIN_API IPlugVST3::setBusArrangements(SpeakerArrangement* inputs, int32 numIns,
                                                 SpeakerArrangement* outputs, int32 numOuts)
{
    if (numIns < 0 || numOuts < 0 || (numIns > 0 && !inputs) || (numOuts > 0 && !outputs))
        return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            const int nIn = numIns > 0 ? SpeakerArr::getChannelCount(inputs[0]) : 0;
            const int nOut = numOuts > 0 ? SpeakerArr::getChannelCount(outputs[0]) : 0;
            const auto channelsOf = [this](BusDirection dir, int32 index)
            {
                const AudioBus* bus = getAudioBus(dir, index);
                return bus ? SpeakerArr::getChannelCount(bus->getArrangement()) : -1;
            };
            if (LegalIO(nIn, nOut))
            {
                if (channelsOf(kInput, 0) != nIn)
                    replaceAudioBus(kInput, 0, STR16("Input"), ArrangementForChannels(nIn));
                if (channelsOf(kOutput, 0) != nOut)
                    replaceAudioBus(kOutput, 0, STR16("Output"), ArrangementForChannels(nOut));
                if (NSidechainChannels() > 0 && numIns >= 2)
                {
                    const int nAux = std::min(SpeakerArr::getChannelCount(inputs[1]), 2);
                    if (channelsOf(kInput, 1) != nAux)
                        replaceAudioBus(kInput, 1, STR16("Sidechain Input"), ArrangementForChannels(nAux));
                }
            }
            // Agreement means the buses now are exactly what was asked for.
            for (int32 i = 0; i < numIns; ++i)
            {
                const AudioBus* bus = getAudioBus(kInput, i);
                if (!bus || bus->getArrangement() != inputs[i]) return kResultFalse;
            }
            for (int32 i = 0; i < numOuts; ++i)
            {
                const AudioBus* bus = getAudioBus(kOutput, i);
                if (!bus || bus->getArrangement() != outputs[i]) return kResultFalse;
            }
            return kResultTrue;
        });
}

tresult PLUGIN_API IPlugVST3::setupProcessing(ProcessSetup& setup)
{
    if (setup.symbolicSampleSize != kSample32 && setup.symbolicSampleSize != kSample64) return kResultFalse;
    if (!std::isfinite(setup.sampleRate) || setup.sampleRate <= 0.0) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            SetSampleRate(setup.sampleRate);
            if (setup.maxSamplesPerBlock > 0)
                SetBlockSize(std::min(static_cast<int>(setup.maxSamplesPerBlock), kMaxBlockSize));
            Reset();
            mProcessMode = setup.processMode;
            return SingleComponentEffect::setupProcessing(setup);
        });
}

uint32 PLUGIN_API IPlugVST3::getLatencySamples()
{
    return static_cast<uint32>(GetLatency());
}

uint32 PLUGIN_API IPlugVST3::getTailSamples()
{
    // TailSamples reads caches only: nothing in it allocates or throws.
    const int tail = TailSamples();
    return tail == kTailForever ? kInfiniteTail : static_cast<uint32>(std::max(tail, 0));
}

uint32 PLUGIN_API IPlugVST3::getProcessContextRequirements()
{
    using R = IProcessContextRequirements;
    return R::kNeedTempo | R::kNeedTimeSignature | R::kNeedProjectTimeMusic | R::kNeedBarPositionMusic |
           R::kNeedCycleMusic | R::kNeedTransportState;
}

// ---- Audio ------------------------------------------------------------------------------------

tresult PLUGIN_API IPlugVST3::process(ProcessData& data) QUORVEX_NONBLOCKING
{
    return Guarded(
        [&]() -> tresult
        {
            ScopedFlushDenormals flushDenormals;
            const ThreadMark::Scope scope(mProcessThread);

            // A holder sets its flag and then waits for this mark to clear; marked first and
            // testing after, a call either sees the flag or is waited for.
            if (IsAudioHeld())
            {
                SilenceOutputs(data);
                return kResultOk;
            }
            if (data.processContext) CopyContext(*data.processContext);
            if (data.processMode != mProcessMode)
            {
                mProcessMode = data.processMode;
                OnProcessModeChange();
            }
            ApplyParameterChanges(data.inputParameterChanges);
            ConnectInputs(data);
            ConnectOutputs(data);

            const int nFrames = data.numSamples;
            if (nFrames <= 0)
            {
                ReportHostEdits(data.outputParameterChanges);
                return kResultOk;
            }
            if (data.symbolicSampleSize == kSample64)
            {
                if (IsBypassed())
                    PassThroughBuffers(0.0, nFrames);
                else
                    ProcessBuffers(0.0, nFrames);
            }
            else if (data.symbolicSampleSize == kSample32)
            {
                if (IsBypassed())
                    PassThroughBuffers(0.0f, nFrames);
                else
                    ProcessBuffers(0.0f, nFrames);
            }
            else
                return kResultFalse;

            SilenceUnusedOutputs(data);
            for (int32 b = 0; data.outputs && b < data.numOutputs; ++b)
                data.outputs[b].silenceFlags = 0;
            ReportHostEdits(data.outputParameterChanges);
            return kResultOk;
        });
}

void IPlugVST3::CopyContext(const ProcessContext& context)
{
    mTransport.state = context.state;
    mTransport.samplePos = static_cast<double>(context.projectTimeSamples);
    // Zero or missing musical fields keep the last good value: the engine divides by the tempo.
    if (std::isfinite(context.tempo) && context.tempo > 0.0) mTransport.tempo = context.tempo;
    if (context.timeSigNumerator > 0 && context.timeSigDenominator > 0)
    {
        mTransport.numerator = context.timeSigNumerator;
        mTransport.denominator = context.timeSigDenominator;
    }
    if (std::isfinite(context.projectTimeMusic)) mTransport.quarterPos = context.projectTimeMusic;
    if (std::isfinite(context.barPositionMusic)) mTransport.lastBarStart = context.barPositionMusic;
    if (std::isfinite(context.cycleStartMusic) && std::isfinite(context.cycleEndMusic))
    {
        mTransport.cycleStart = context.cycleStartMusic;
        mTransport.cycleEnd = context.cycleEndMusic;
    }
}

// Audio thread, without paramsMutex: a record's value is atomic, and what can't be done here (the
// editor, a preset's recording) is marked for the UI thread.
void IPlugVST3::HoldAudio(std::atomic<bool>& flag)
{
    // Sleeps in short steps: a host keeps a process call under way for one host block at most.
    constexpr auto kPoll = std::chrono::microseconds(200);
    flag.store(true);
    if (mProcessThread.IsCurrent()) return;
    while (mProcessThread.IsHeld())
        std::this_thread::sleep_for(kPoll);
}

void IPlugVST3::SilenceOutputs(ProcessData& data)
{
    if (data.numSamples <= 0 || data.outputs == nullptr) return;
    const auto frames = static_cast<std::size_t>(data.numSamples);
    for (int32 b = 0; b < data.numOutputs; ++b)
    {
        AudioBusBuffers& bus = data.outputs[b];
        for (int32 ch = 0; ch < bus.numChannels; ++ch)
        {
            if (data.symbolicSampleSize == kSample64 && bus.channelBuffers64 && bus.channelBuffers64[ch])
                std::fill_n(bus.channelBuffers64[ch], frames, 0.0);
            else if (data.symbolicSampleSize == kSample32 && bus.channelBuffers32 && bus.channelBuffers32[ch])
                std::fill_n(bus.channelBuffers32[ch], frames, 0.0f);
        }
    }
}

void IPlugVST3::ApplyParameterChanges(IParameterChanges* changes)
{
    if (!changes) return;
    const int32 count = changes->getParameterCount();
    // Only where the block ends matters: earlier points of each queue are dropped.
    const auto lastPoint = [&](int32 i, ParamID& id, ParamValue& value)
    {
        IParamValueQueue* queue = changes->getParameterData(i);
        if (!queue) return false;
        const int32 points = queue->getPointCount();
        int32 offset = 0;
        if (points <= 0 || queue->getPoint(points - 1, offset, value) != kResultTrue || !std::isfinite(value))
            return false;
        value = std::clamp(value, 0.0, 1.0);
        id = queue->getParameterId();
        return true;
    };
    for (int32 i = 0; i < count; ++i)
    {
        ParamID id = 0;
        ParamValue value = 0.0;
        if (!lastPoint(i, id, value)) continue;
        if (id == kBypassParamId)
            SetBypassed(value > 0.5);
        else if (id == kPresetParamId)
            mPending.MarkPreset(static_cast<int>(value * NPresets()));
        else if (id < static_cast<ParamID>(NParams()))
        {
            const int param = static_cast<int>(id);
            if (IsSinglePrecisionEcho(*GetParam(param), value)) continue;
            GetParam(param)->SetNormalized(value);
            mPending.Mark(param, PendingNotices::kEditor);
            OnParamChange(param);
        }
    }
    // A change may make the plug-in rewrite another parameter (a time base switch rewrites the
    // delay times, a link its twin). Where the host set that parameter in the same call, the
    // host's value stands, whatever the order of the queues.
    for (int32 i = 0; i < count; ++i)
    {
        ParamID id = 0;
        ParamValue value = 0.0;
        if (!lastPoint(i, id, value) || id >= static_cast<ParamID>(NParams())) continue;
        IParamRecord* record = GetParam(static_cast<int>(id));
        if (IsSinglePrecisionEcho(*record, value)) continue;
        const double wanted = record->QuantizedFromNormalized(value);
        if (record->value == wanted) continue;
        record->value = wanted;
        OnParamChange(static_cast<int>(id));
    }
}

// Without a host queue (or with a full one) the marks stay for the next UI-thread call, which
// tells the host through the component handler.
void IPlugVST3::ReportHostEdits(IParameterChanges* changes)
{
    if (!changes) return;
    mPending.TakeHostEdits(
        [&](int id)
        {
            int32 index = 0;
            IParamValueQueue* queue = changes->addParameterData(static_cast<ParamID>(id), index);
            int32 point = 0;
            if (!queue || queue->addPoint(0, GetParam(id)->GetNormalized(), point) != kResultOk)
                mPending.Mark(id, PendingNotices::kHostEdit);
        });
}

void IPlugVST3::ConnectInputs(const ProcessData& data)
{
    const int nIn = NInChannels();
    const int scChannels = NSidechainChannels();
    const int mainCapacity = nIn - scChannels;
    const int nFrames = data.numSamples;
    const bool useDouble = data.symbolicSampleSize == kSample64;

    const auto attach = [&](int first, int n, const AudioBusBuffers& bus)
    {
        if (useDouble)
            AttachInputBuffers(first, n, bus.channelBuffers64, nFrames);
        else
            AttachInputBuffers(first, n, bus.channelBuffers32, nFrames);
    };

    SetInputChannelConnections(0, nIn, false);
    bool auxActive = false;
    if (data.numInputs > 0 && data.inputs)
    {
        const AudioBusBuffers& main = data.inputs[0];
        int nMain = HasBuffers(main) ? main.numChannels : 0;
        if (scChannels == 0)
            nMain = std::min(nMain, nIn);
        else
        {
            // The host's width is judged by its first output; the engine finds the sidechain
            // right behind its own main inputs.
            const int hostWidth = data.numOutputs > 0 && data.outputs ? data.outputs[0].numChannels : 0;
            nMain = std::min({nMain, mainCapacity, hostWidth});
        }
        nMain = std::max(nMain, 0);
        SetInputChannelConnections(0, nMain, true);
        attach(0, nMain, main);

        auxActive = scChannels > 0 && data.numInputs > 1 && mInputBusActive[1];
        if (auxActive)
        {
            const AudioBusBuffers& aux = data.inputs[1];
            const int nAux = HasBuffers(aux) ? std::min(aux.numChannels, scChannels) : 0;
            SetInputChannelConnections(mainCapacity, nAux, true);
            attach(mainCapacity, nAux, aux);
        }
    }
    // A sidechain that went away must leave nothing behind in the buffers that stand in for it.
    if (mSidechainWasActive && !auxActive) ZeroScratchBuffers();
    mSidechainWasActive = auxActive;
}

void IPlugVST3::ConnectOutputs(const ProcessData& data)
{
    const int nFrames = data.numSamples;
    const bool useDouble = data.symbolicSampleSize == kSample64;

    SetOutputChannelConnections(0, NOutChannels(), false);
    int first = 0;
    for (int32 b = 0; data.outputs && b < data.numOutputs; ++b)
    {
        const AudioBusBuffers& bus = data.outputs[b];
        const int n = ConnectedOutputs(data, b, first);
        SetOutputChannelConnections(first, n, true);
        if (useDouble)
            AttachOutputBuffers(first, n, bus.channelBuffers64, nFrames);
        else
            AttachOutputBuffers(first, n, bus.channelBuffers32, nFrames);
        first += std::max(bus.numChannels, 0);
    }
}

int IPlugVST3::ConnectedOutputs(const ProcessData& data, int32 bus, int firstChannel) const
{
    const bool active = bus < kMaxBuses && mOutputBusActive[static_cast<size_t>(bus)];
    return active && HasBuffers(data.outputs[bus])
               ? std::clamp(NOutChannels() - firstChannel, 0, data.outputs[bus].numChannels)
               : 0;
}

// Host channels the plug-in didn't fill (an inactive bus, surplus channels) are left silent rather
// than as the host handed them over. Done after processing: hosts may process in place.
void IPlugVST3::SilenceUnusedOutputs(ProcessData& data)
{
    int first = 0;
    for (int32 b = 0; data.outputs && b < data.numOutputs; ++b)
    {
        ZeroHostChannels(data.outputs[b], ConnectedOutputs(data, b, first), data.numSamples,
                         data.symbolicSampleSize);
        first += std::max(data.outputs[b].numChannels, 0);
    }
}

// ---- Parameters -------------------------------------------------------------------------------

tresult PLUGIN_API IPlugVST3::setComponentState(IBStream*)
{
    return kResultOk;
}

ParamValue PLUGIN_API IPlugVST3::getParamNormalized(ParamID tag)
{
    try
    {
        FlushPendingHostNotices();
        if (tag == kBypassParamId) return IsBypassed() ? 1.0 : 0.0;
        if (tag == kPresetParamId)
            return NPresets() > 0 ? static_cast<double>(GetCurrentPresetIdx()) / NPresets() : 0.0;
        std::lock_guard lock(paramsMutex);
        if (tag < static_cast<ParamID>(NParams())) return GetParam(static_cast<int>(tag))->GetNormalized();
    }
    catch (...)
    {
    }
    return 0.0;
}

tresult PLUGIN_API IPlugVST3::setParamNormalized(ParamID tag, ParamValue value)
{
    // Bypass reaches the plug-in through `process` and the state only.
    if (tag == kBypassParamId) return kResultOk;
    if (!std::isfinite(value)) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            std::lock_guard lock(paramsMutex);
            if (tag >= static_cast<ParamID>(NParams())) return kResultFalse;
            IParamRecord* record = GetParam(static_cast<int>(tag));
            if (!IsSinglePrecisionEcho(*record, value)) record->SetNormalized(std::clamp(value, 0.0, 1.0));
            return kResultOk;
        });
}

ParamValue PLUGIN_API IPlugVST3::normalizedParamToPlain(ParamID tag, ParamValue valueNormalized)
{
    try
    {
        std::lock_guard lock(paramsMutex);
        if (const Parameter* parameter = getParameterObject(tag)) return parameter->toPlain(valueNormalized);
    }
    catch (...)
    {
    }
    return valueNormalized;
}

ParamValue PLUGIN_API IPlugVST3::plainParamToNormalized(ParamID tag, ParamValue plainValue)
{
    try
    {
        std::lock_guard lock(paramsMutex);
        if (const Parameter* parameter = getParameterObject(tag)) return parameter->toNormalized(plainValue);
    }
    catch (...)
    {
    }
    return plainValue;
}

tresult PLUGIN_API IPlugVST3::getParamStringByValue(ParamID tag, ParamValue valueNormalized, String128 string)
{
    if (!string) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            FlushPendingHostNotices();
            std::lock_guard lock(paramsMutex);
            const Parameter* parameter = getParameterObject(tag);
            if (!parameter) return kResultFalse;
            parameter->toString(valueNormalized, string);
            return kResultTrue;
        });
}

tresult PLUGIN_API IPlugVST3::getParamValueByString(ParamID tag, TChar* string, ParamValue& valueNormalized)
{
    if (!string) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            std::lock_guard lock(paramsMutex);
            const Parameter* parameter = getParameterObject(tag);
            if (!parameter) return kResultFalse;
            return parameter->fromString(string, valueNormalized) ? kResultTrue : kResultFalse;
        });
}

// ---- State ------------------------------------------------------------------------------------

tresult IPlugVST3::getComponentState(IBStream* state)
{
    return WriteState(state, false);
}

tresult IPlugVST3::setComponentStateFromHost(IBStream* state)
{
    return ReadState(state, false);
}

tresult IPlugVST3::getControllerState(IBStream* state)
{
    return WriteState(state, true);
}

tresult IPlugVST3::setControllerState(IBStream* state)
{
    return ReadState(state, true);
}

tresult IPlugVST3::WriteState(IBStream* stream, bool withBypassWord)
{
    if (!stream) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            FlushPendingHostNotices();
            ByteChunk chunk;
            if (!SerializeState(chunk)) return kResultFalse;
            if (withBypassWord) chunk.Put(static_cast<int32>(IsBypassed() ? 1 : 0));
            int32 written = 0;
            const tresult result = stream->write(chunk.Data(), chunk.Size(), &written);
            return result == kResultOk && written == chunk.Size() ? kResultOk : kResultFalse;
        });
}

// The whole stream is read, whatever length it has: the chunk's strings make its length vary, so
// where the chunk reader stops, not the size of our own chunk, tells where the bypass word is.
tresult IPlugVST3::ReadState(IBStream* stream, bool withBypassWord)
{
    if (!stream) return kInvalidArgument;
    return Guarded(
        [&]() -> tresult
        {
            FlushPendingHostNotices();
            ByteChunk chunk;
            int size = 0;
            while (size < kMaxStateBytes)
            {
                chunk.Resize(size + kStateReadStep);
                int32 got = 0;
                const tresult result = stream->read(chunk.Data() + size, kStateReadStep, &got);
                size += std::clamp(got, 0, kStateReadStep);
                if (result != kResultOk || got < kStateReadStep) break;
            }
            chunk.Resize(size);

            // The bypass word is the stream's last word, right behind a chunk that was read to its end.
            const int end = UnserializeState(chunk, 0);
            if (withBypassWord && end >= 0 && end + static_cast<int>(sizeof(int32)) == chunk.Size())
            {
                int32 word = 0;
                if (chunk.Get(word, end) >= 0) SetBypassed(word != 0);
            }
            RedrawParamControls();
            return kResultOk;
        });
}

// ---- Units and programs -----------------------------------------------------------------------

int32 PLUGIN_API IPlugVST3::getUnitCount()
{
    return static_cast<int32>(mUnits.size());
}

tresult PLUGIN_API IPlugVST3::getUnitInfo(int32 unitIndex, UnitInfo& info)
{
    if (unitIndex < 0 || unitIndex >= static_cast<int32>(mUnits.size())) return kResultFalse;
    info = mUnits[static_cast<size_t>(unitIndex)];
    return kResultTrue;
}

int32 PLUGIN_API IPlugVST3::getProgramListCount()
{
    return 1;
}

tresult PLUGIN_API IPlugVST3::getProgramListInfo(int32 listIndex, ProgramListInfo& info)
{
    if (listIndex != 0) return kResultFalse;
    info = ProgramListInfo{};
    info.id = kProgramListId;
    WidenText("Factory Presets", info.name, kTextUnits);
    info.programCount = NPresets();
    return kResultTrue;
}

tresult PLUGIN_API IPlugVST3::getProgramName(ProgramListID listId, int32 programIndex, String128 name)
{
    if (listId != kProgramListId || !name) return kResultFalse;
    const IPreset* preset = GetPreset(programIndex);
    if (!preset) return kResultFalse;
    WidenText(preset->name, name, kTextUnits);
    return kResultTrue;
}

tresult PLUGIN_API IPlugVST3::getProgramInfo(ProgramListID, int32, Vst::CString, String128)
{
    return kResultFalse;
}

tresult PLUGIN_API IPlugVST3::hasProgramPitchNames(ProgramListID, int32)
{
    return kResultFalse;
}

tresult PLUGIN_API IPlugVST3::getProgramPitchName(ProgramListID, int32, int16, String128)
{
    return kResultFalse;
}

UnitID PLUGIN_API IPlugVST3::getSelectedUnit()
{
    return mSelectedUnit;
}

tresult PLUGIN_API IPlugVST3::selectUnit(UnitID unitId)
{
    mSelectedUnit = unitId;
    return kResultTrue;
}

tresult PLUGIN_API IPlugVST3::getUnitByBus(MediaType, BusDirection, int32, int32, UnitID&)
{
    return kResultFalse;
}

tresult PLUGIN_API IPlugVST3::setUnitProgramData(int32, int32, IBStream*)
{
    return kResultFalse;
}

tresult PLUGIN_API IPlugVST3::queryInterface(const TUID iid, void** obj)
{
    QUERY_INTERFACE(iid, obj, IUnitInfo::iid, IUnitInfo)
    return SingleComponentEffect::queryInterface(iid, obj);
}

// ---- Views ------------------------------------------------------------------------------------

IPlugView* PLUGIN_API IPlugVST3::createView(FIDString name)
{
    if (!name || std::strcmp(name, ViewType::kEditor) != 0 || !GetEditorWindow()) return nullptr;
    try
    {
        auto* view = new IPlugVST3View(*this);
        mViews.push_back(view);
        return view;
    }
    catch (...)
    {
        return nullptr;
    }
}

IEditorWindow* IPlugVST3::GetEditorWindow()
{
    return dynamic_cast<IEditorWindow*>(GetGUI());
}

void IPlugVST3::RemoveView(IPlugVST3View* view)
{
    mViews.erase(std::remove(mViews.begin(), mViews.end(), view), mViews.end());
}

void IPlugVST3::ResizeGraphics(int width, int height)
{
    if (!mViews.empty()) mViews.front()->RequestResize(width, height);
}

namespace
{
// Our own item in the host's context menu. The host may keep it past the menu's life, so it
// holds only a watch on the plug-in and does nothing once the plug-in is gone.
class OwnMenuItem final : public IContextMenuTarget
{
  public:
    OwnMenuItem(std::weak_ptr<int> alive, std::function<void()> action)
        : mAlive(std::move(alive)), mAction(std::move(action))
    {
    }
    tresult PLUGIN_API executeMenuItem(int32 tag) override
    {
        if (mAlive.expired() || !mAction) return kResultFalse;
        mAction();
        return kResultOk;
    }
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (FUnknownPrivate::iidEqual(iid, IContextMenuTarget::iid) ||
            FUnknownPrivate::iidEqual(iid, FUnknown::iid))
        {
            addRef();
            *obj = static_cast<IContextMenuTarget*>(this);
            return kResultOk;
        }
        *obj = nullptr;
        return kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return ++mRefs; }
    uint32 PLUGIN_API release() override
    {
        const uint32 refs = --mRefs;
        if (refs == 0) delete this;
        return refs;
    }

  private:
    ~OwnMenuItem() = default;
    std::atomic<uint32> mRefs{1};
    std::weak_ptr<int> mAlive;
    std::function<void()> mAction;
};

constexpr const char16_t* kOwnEntryName = u"Enter value...";
} // namespace

bool IPlugVST3::PopupHostContextMenuForParam(int id, int x, int y, std::function<void()> ownEntry)
{
    if (!componentHandler || mViews.empty()) return false;
    IComponentHandler3* handler = nullptr;
    if (componentHandler->queryInterface(IComponentHandler3::iid, reinterpret_cast<void**>(&handler)) !=
            kResultOk ||
        !handler)
        return false;
    const ParamID param = static_cast<ParamID>(id);
    IContextMenu* menu = handler->createContextMenu(mViews.front(), &param);
    if (menu)
    {
        if (ownEntry)
        {
            IContextMenuItem item{};
            for (int i = 0; kOwnEntryName[i] && i < 127; ++i)
                item.name[i] = static_cast<char16>(kOwnEntryName[i]);
            item.tag = 1;
            auto* target = new OwnMenuItem(mAlive, std::move(ownEntry));
            menu->addItem(item, target);
            target->release(); // the menu holds it now
        }
        menu->popup(x, y);
        menu->release();
    }
    handler->release();
    return menu != nullptr;
}

// ---- Host notices -----------------------------------------------------------------------------

void IPlugVST3::BeginInformHostOfParamChange(int id)
{
    if (!InsideProcess()) beginEdit(static_cast<ParamID>(id));
}

void IPlugVST3::InformHostOfParamChange(int id, double normalized)
{
    if (InsideProcess())
        mPending.Mark(id, PendingNotices::kHostEdit);
    else
        performEdit(static_cast<ParamID>(id), normalized);
}

void IPlugVST3::EndInformHostOfParamChange(int id)
{
    if (!InsideProcess()) endEdit(static_cast<ParamID>(id));
}

void IPlugVST3::SetLatency(int samples)
{
    const int before = GetLatency();
    IPlugBase::SetLatency(samples);
    if (GetLatency() == before) return;
    if (InsideProcess())
        mLatencyNoticePending = true;
    else
        NotifyLatencyChange();
}

bool IPlugVST3::InsideProcess() const
{
    return mProcessThread.IsCurrent();
}

void IPlugVST3::FlushPendingHostNotices()
{
    if (InsideProcess()) return;
    if (mLatencyNoticePending.exchange(false)) NotifyLatencyChange();
    if (const int preset = mPending.TakePreset(); preset != PendingNotices::kNoPreset) RestorePreset(preset);
    mPending.TakeParams(
        [this](int id, std::uint8_t kinds)
        {
            const IParamRecord* param = GetParam(id);
            if (param == nullptr) return;
            const double normalized = param->GetNormalized();
            if ((kinds & PendingNotices::kEditor) != 0)
                if (IEditorLink* gui = GetGUI()) gui->SetParameterFromPlug(id, normalized, true);
            if ((kinds & PendingNotices::kHostEdit) != 0)
            {
                const ParamID tag = static_cast<ParamID>(id);
                beginEdit(tag);
                performEdit(tag, normalized);
                endEdit(tag);
            }
        });
}

void IPlugVST3::NotifyLatencyChange()
{
    if (componentHandler) componentHandler->restartComponent(kLatencyChanged);
}

// ---- Transport --------------------------------------------------------------------------------

bool IPlugVST3::IsRenderingOffline()
{
    return mProcessMode == kOffline;
}

double IPlugVST3::GetSamplePos()
{
    return mTransport.samplePos;
}

double IPlugVST3::GetTempo()
{
    return mTransport.tempo;
}

void IPlugVST3::GetTimeSig(int& numerator, int& denominator)
{
    numerator = mTransport.numerator;
    denominator = mTransport.denominator;
}

void IPlugVST3::GetTime(TransportInfo& info)
{
    info.mSamplePos = mTransport.samplePos;
    info.mTempo = mTransport.tempo;
    info.mQuarterPos = mTransport.quarterPos;
    info.mLastBarStart = mTransport.lastBarStart;
    info.mCycleStart = mTransport.cycleStart;
    info.mCycleEnd = mTransport.cycleEnd;
    info.mNumerator = mTransport.numerator;
    info.mDenominator = mTransport.denominator;
    const unsigned state = mTransport.state;
    info.mPlaying = (state & ProcessContext::kPlaying) != 0;
    info.mCycleActive = (state & ProcessContext::kCycleActive) != 0;
}
