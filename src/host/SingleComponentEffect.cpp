#include "host/SingleComponentEffect.h"

#include "pluginterfaces/vst/vstspeaker.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

SingleComponentEffect::SingleComponentEffect() = default;

SingleComponentEffect::~SingleComponentEffect() = default;

tresult PLUGIN_API SingleComponentEffect::initialize(FUnknown* context)
{
    return EditController::initialize(context);
}

tresult PLUGIN_API SingleComponentEffect::terminate()
{
    // Buses and parameters describe the plug-in, not the session: they stay for a later initialize,
    // which builds them only once. Only the host's objects are let go.
    setComponentHandler(nullptr);
    return ComponentBase::terminate();
}

tresult PLUGIN_API SingleComponentEffect::getControllerClassId(TUID)
{
    // The controller is this very object; there is no class to create.
    return kNotImplemented;
}

tresult PLUGIN_API SingleComponentEffect::setIoMode(IoMode)
{
    return kNotImplemented;
}

BusList* SingleComponentEffect::getBusList(MediaType type, BusDirection dir)
{
    if (type == kAudio) return dir == kInput ? &mAudioInputs : dir == kOutput ? &mAudioOutputs : nullptr;
    if (type == kEvent) return dir == kInput ? &mEventInputs : dir == kOutput ? &mEventOutputs : nullptr;
    return nullptr;
}

AudioBus* SingleComponentEffect::getAudioBus(BusDirection dir, int32 index)
{
    BusList* list = getBusList(kAudio, dir);
    if (!list || index < 0 || index >= static_cast<int32>(list->size())) return nullptr;
    return FCast<AudioBus>(list->at(static_cast<size_t>(index)).get());
}

int32 PLUGIN_API SingleComponentEffect::getBusCount(MediaType type, BusDirection dir)
{
    const BusList* list = getBusList(type, dir);
    return list ? static_cast<int32>(list->size()) : 0;
}

tresult PLUGIN_API SingleComponentEffect::getBusInfo(MediaType type, BusDirection dir, int32 index,
                                                     BusInfo& info)
{
    BusList* list = getBusList(type, dir);
    if (!list || index < 0 || index >= static_cast<int32>(list->size())) return kInvalidArgument;
    info = BusInfo{};
    info.mediaType = type;
    info.direction = dir;
    return list->at(static_cast<size_t>(index))->getInfo(info) ? kResultTrue : kResultFalse;
}

tresult PLUGIN_API SingleComponentEffect::getRoutingInfo(RoutingInfo&, RoutingInfo&)
{
    return kNotImplemented;
}

tresult PLUGIN_API SingleComponentEffect::activateBus(MediaType type, BusDirection dir, int32 index,
                                                      TBool state)
{
    BusList* list = getBusList(type, dir);
    if (!list || index < 0 || index >= static_cast<int32>(list->size())) return kInvalidArgument;
    list->at(static_cast<size_t>(index))->setActive(state);
    return kResultTrue;
}

tresult PLUGIN_API SingleComponentEffect::setActive(TBool)
{
    return kResultOk;
}

tresult PLUGIN_API SingleComponentEffect::setBusArrangements(SpeakerArrangement* inputs, int32 numIns,
                                                             SpeakerArrangement* outputs, int32 numOuts)
{
    // Without an opinion of its own the effect only agrees to what it already has.
    if (numIns != static_cast<int32>(mAudioInputs.size()) ||
        numOuts != static_cast<int32>(mAudioOutputs.size()))
        return kResultFalse;
    for (int32 i = 0; i < numIns; ++i)
        if (!inputs || getAudioBus(kInput, i)->getArrangement() != inputs[i]) return kResultFalse;
    for (int32 i = 0; i < numOuts; ++i)
        if (!outputs || getAudioBus(kOutput, i)->getArrangement() != outputs[i]) return kResultFalse;
    return kResultTrue;
}

tresult PLUGIN_API SingleComponentEffect::getBusArrangement(BusDirection dir, int32 index,
                                                            SpeakerArrangement& arr)
{
    const AudioBus* bus = getAudioBus(dir, index);
    if (!bus) return kInvalidArgument;
    arr = bus->getArrangement();
    return kResultTrue;
}

tresult PLUGIN_API SingleComponentEffect::canProcessSampleSize(int32 symbolicSampleSize)
{
    return symbolicSampleSize == kSample32 || symbolicSampleSize == kSample64 ? kResultTrue : kResultFalse;
}

uint32 PLUGIN_API SingleComponentEffect::getLatencySamples()
{
    return 0;
}

tresult PLUGIN_API SingleComponentEffect::setupProcessing(ProcessSetup& setup)
{
    if (canProcessSampleSize(setup.symbolicSampleSize) != kResultTrue) return kResultFalse;
    mProcessSetup = setup;
    return kResultOk;
}

tresult PLUGIN_API SingleComponentEffect::setProcessing(TBool)
{
    return kResultOk;
}

uint32 PLUGIN_API SingleComponentEffect::getTailSamples()
{
    return kNoTail;
}

tresult PLUGIN_API SingleComponentEffect::getParameterInfo(int32 paramIndex, ParameterInfo& info)
{
    if (paramIndex < 0 || paramIndex >= parameters.getParameterCount()) return kInvalidArgument;
    info = parameters.getParameterByIndex(paramIndex)->getInfo();
    return kResultTrue;
}

uint32 PLUGIN_API SingleComponentEffect::getProcessContextRequirements()
{
    return 0;
}

tresult PLUGIN_API SingleComponentEffect::queryInterface(const TUID iid, void** obj)
{
    QUERY_INTERFACE(iid, obj, IComponent::iid, IComponent)
    QUERY_INTERFACE(iid, obj, IAudioProcessor::iid, IAudioProcessor)
    QUERY_INTERFACE(iid, obj, IProcessContextRequirements::iid, IProcessContextRequirements)
    return EditController::queryInterface(iid, obj);
}

AudioBus* SingleComponentEffect::addAudioInput(const TChar* name, SpeakerArrangement arr, BusType busType,
                                               int32 flags)
{
    auto* bus = new AudioBus(name, busType, flags, arr);
    mAudioInputs.emplace_back(owned(bus));
    return bus;
}

AudioBus* SingleComponentEffect::addAudioOutput(const TChar* name, SpeakerArrangement arr, BusType busType,
                                                int32 flags)
{
    auto* bus = new AudioBus(name, busType, flags, arr);
    mAudioOutputs.emplace_back(owned(bus));
    return bus;
}

EventBus* SingleComponentEffect::addEventInput(const TChar* name, int32 channels, BusType busType,
                                               int32 flags)
{
    auto* bus = new EventBus(name, busType, flags, channels);
    mEventInputs.emplace_back(owned(bus));
    return bus;
}

bool SingleComponentEffect::replaceAudioBus(BusDirection dir, int32 index, const TChar* name,
                                            SpeakerArrangement arr)
{
    AudioBus* old = getAudioBus(dir, index);
    if (!old) return false;
    BusInfo info{};
    old->getInfo(info);
    auto* bus = new AudioBus(name, info.busType, static_cast<int32>(info.flags), arr);
    bus->setActive(old->isActive());
    getBusList(kAudio, dir)->at(static_cast<size_t>(index)) = owned(bus);
    return true;
}

void SingleComponentEffect::removeAllBusses()
{
    mAudioInputs.clear();
    mAudioOutputs.clear();
    mEventInputs.clear();
    mEventOutputs.clear();
}
