#include "PluginInstance.h"

#include "QueryAnswer.h"
#include "Utf16.h"

#include "pluginterfaces/vst/ivsthostapplication.h"
#include "public.sdk/source/common/memorystream.h"

#include <algorithm>
#include <cctype>

namespace vst3host
{
using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
template <typename I> I* Query(FUnknown* object)
{
    void* obj = nullptr;
    if (!object || object->queryInterface(I::iid, &obj) != kResultOk) return nullptr;
    return static_cast<I*>(obj);
}

bool SameIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [](char x, char y) {
                                                  return std::tolower(static_cast<unsigned char>(x)) ==
                                                         std::tolower(static_cast<unsigned char>(y));
                                              });
}
} // namespace

// The host application the plug-in is initialised with; it makes no objects for the plug-in.
class PluginInstance::Host final : public IHostApplication
{
  public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        return QueryAnswer<IHostApplication>(this, iid, obj);
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
    tresult PLUGIN_API getName(String128 name) override
    {
        const std::u16string text = u"quorvex-render";
        std::copy(text.begin(), text.end() + 1, name); // with the terminating zero
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(TUID, TUID, void** obj) override
    {
        *obj = nullptr;
        return kResultFalse;
    }
};

// An offline host has no automation lanes: edits are accepted and dropped, and the latency is
// read again after every start, so restarts need no action.
class PluginInstance::Handler final : public IComponentHandler
{
  public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        return QueryAnswer<IComponentHandler>(this, iid, obj);
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
    tresult PLUGIN_API beginEdit(ParamID) override { return kResultOk; }
    tresult PLUGIN_API performEdit(ParamID, ParamValue) override { return kResultOk; }
    tresult PLUGIN_API endEdit(ParamID) override { return kResultOk; }
    tresult PLUGIN_API restartComponent(int32) override { return kResultOk; }
};

std::unique_ptr<PluginInstance> PluginInstance::Create(PluginModule& module, std::string& error)
{
    IPluginFactory* factory = module.Factory();
    std::unique_ptr<PluginInstance> plug(new PluginInstance);
    plug->mHost = std::make_unique<Host>();
    plug->mHandler = std::make_unique<Handler>();

    PClassInfo info;
    int32 index = 0;
    for (; index < factory->countClasses(); ++index)
        if (factory->getClassInfo(index, &info) == kResultOk &&
            std::string_view(info.category) == kVstAudioEffectClass)
            break;
    if (index == factory->countClasses())
    {
        error = module.BinaryPath() + " holds no audio effect class";
        return nullptr;
    }
    void* obj = nullptr;
    if (factory->createInstance(info.cid, IComponent::iid, &obj) != kResultOk || !obj)
    {
        error = "the factory of " + module.BinaryPath() + " made no instance";
        return nullptr;
    }
    plug->mComponent = static_cast<IComponent*>(obj);
    plug->mProcessor = Query<IAudioProcessor>(plug->mComponent);
    plug->mController = Query<IEditController>(plug->mComponent);
    if (!plug->mProcessor || !plug->mController)
    {
        error = "the plug-in is not a single component with processor and controller";
        return nullptr;
    }
    if (plug->mComponent->initialize(plug->mHost.get()) != kResultOk)
    {
        error = "the plug-in refused to initialise";
        return nullptr;
    }
    plug->mInitialized = true;
    plug->mController->setComponentHandler(plug->mHandler.get());

    for (int32 i = 0; i < plug->mController->getParameterCount(); ++i)
    {
        ParameterInfo p{};
        if (plug->mController->getParameterInfo(i, p) != kResultOk) continue;
        ParamEntry entry;
        entry.id = p.id;
        entry.title = ToUtf8(p.title);
        entry.units = ToUtf8(p.units);
        entry.stepCount = p.stepCount;
        std::copy_if(entry.title.begin(), entry.title.end(), std::back_inserter(entry.key),
                     [](char c) { return c != ' '; });
        plug->mParams.push_back(std::move(entry));
    }
    return plug;
}

PluginInstance::~PluginInstance()
{
    Stop();
    if (mController)
    {
        mController->setComponentHandler(nullptr);
        mController->release();
    }
    if (mInitialized) mComponent->terminate();
    if (mProcessor) mProcessor->release();
    if (mComponent) mComponent->release();
}

const ParamEntry* PluginInstance::Find(std::string_view nameOrKey) const
{
    const auto first = [&](auto&& match) -> const ParamEntry*
    {
        const auto it = std::find_if(mParams.begin(), mParams.end(), match);
        return it == mParams.end() ? nullptr : &*it;
    };
    if (const auto* p = first([&](const ParamEntry& e) { return e.title == nameOrKey; })) return p;
    if (const auto* p = first([&](const ParamEntry& e) { return e.key == nameOrKey; })) return p;
    return first([&](const ParamEntry& e)
                 { return SameIgnoringCase(e.title, nameOrKey) || SameIgnoringCase(e.key, nameOrKey); });
}

std::string PluginInstance::ValueText(const ParamEntry& param, ParamValue normalized)
{
    String128 text{};
    if (mController->getParamStringByValue(param.id, normalized, text) != kResultOk) return "?";
    std::string shown = ToUtf8(text);
    if (!param.units.empty()) shown += " " + param.units;
    return shown;
}

bool PluginInstance::Start(double rate, int32 maxBlock, std::string& error)
{
    const auto channels = [&](BusDirection dir, int32 bus)
    {
        BusInfo info{};
        return mComponent->getBusInfo(kAudio, dir, bus, info) == kResultOk ? info.channelCount : 0;
    };
    mInChannels = channels(kInput, 0);
    mSideChannels = mComponent->getBusCount(kAudio, kInput) > 1 ? channels(kInput, 1) : 0;
    mOutChannels = channels(kOutput, 0);
    if (mOutChannels < 1)
    {
        error = "the plug-in has no audio output";
        return false;
    }
    mComponent->activateBus(kAudio, kInput, 0, true);
    if (mSideChannels > 0) mComponent->activateBus(kAudio, kInput, 1, false);
    mComponent->activateBus(kAudio, kOutput, 0, true);

    mUseDouble = mProcessor->canProcessSampleSize(kSample64) == kResultTrue;
    ProcessSetup setup{kOffline, mUseDouble ? kSample64 : kSample32, maxBlock, rate};
    if (mProcessor->setupProcessing(setup) != kResultOk)
    {
        error = "the plug-in refused the set-up (rate " + std::to_string(rate) + " Hz, block " +
                std::to_string(maxBlock) + ")";
        return false;
    }
    if (mComponent->setActive(true) != kResultOk)
    {
        error = "the plug-in refused to activate";
        return false;
    }
    mActive = true;
    mProcessor->setProcessing(true);

    mMaxBlock = maxBlock;
    const size_t total = static_cast<size_t>(mInChannels + mSideChannels + mOutChannels);
    const size_t frames = static_cast<size_t>(maxBlock);
    mBuffers64.assign(mUseDouble ? total : 0, std::vector<double>(frames, 0.0));
    mBuffers32.assign(mUseDouble ? 0 : total, std::vector<float>(frames, 0.0f));
    mPtrs64.clear();
    mPtrs32.clear();
    for (auto& b : mBuffers64)
        mPtrs64.push_back(b.data());
    for (auto& b : mBuffers32)
        mPtrs32.push_back(b.data());
    const auto wire = [&](AudioBusBuffers& bus, int32 first, int32 count)
    {
        bus.numChannels = count;
        bus.silenceFlags = 0;
        if (mUseDouble)
            bus.channelBuffers64 = count > 0 ? mPtrs64.data() + first : nullptr;
        else
            bus.channelBuffers32 = count > 0 ? mPtrs32.data() + first : nullptr;
    };
    wire(mInBuses[0], 0, mInChannels);
    wire(mInBuses[1], mInChannels, mSideChannels);
    wire(mOutBus, mInChannels + mSideChannels, mOutChannels);
    // The sidechain is silent throughout.
    mInBuses[1].silenceFlags = (uint64(1) << mSideChannels) - 1;
    return true;
}

void PluginInstance::Stop()
{
    if (!mActive) return;
    mProcessor->setProcessing(false);
    mComponent->setActive(false);
    mActive = false;
}

uint32 PluginInstance::Latency() const
{
    return mProcessor->getLatencySamples();
}

bool PluginInstance::Process(const double* const in[2], double* const out[2], int32 n,
                             IParameterChanges* changes, ProcessContext* context)
{
    if (n < 0 || n > mMaxBlock) return false;
    const size_t frames = static_cast<size_t>(n);
    // A mono main input takes the left channel; more than two channels repeat the right one.
    for (int32 ch = 0; ch < mInChannels; ++ch)
    {
        const double* src = in[std::min(ch, 1)];
        if (mUseDouble)
            std::copy(src, src + frames, mBuffers64[static_cast<size_t>(ch)].begin());
        else
            std::transform(src, src + frames, mBuffers32[static_cast<size_t>(ch)].begin(),
                           [](double v) { return static_cast<float>(v); });
    }
    ProcessData data;
    data.processMode = kOffline;
    data.symbolicSampleSize = mUseDouble ? kSample64 : kSample32;
    data.numSamples = n;
    data.numInputs = mSideChannels > 0 ? 2 : 1;
    data.inputs = mInBuses;
    data.numOutputs = 1;
    data.outputs = &mOutBus;
    data.inputParameterChanges = changes;
    data.processContext = context;
    if (mProcessor->process(data) != kResultOk) return false;

    const size_t firstOut = static_cast<size_t>(mInChannels + mSideChannels);
    for (size_t ch = 0; ch < 2; ++ch)
    {
        // A mono output feeds both channels.
        const size_t src = firstOut + std::min(ch, static_cast<size_t>(mOutChannels - 1));
        if (mUseDouble)
            std::copy_n(mBuffers64[src].begin(), frames, out[ch]);
        else
            std::copy_n(mBuffers32[src].begin(), frames, out[ch]);
    }
    return true;
}

bool PluginInstance::Flush(IParameterChanges* changes)
{
    ProcessData data;
    data.processMode = kOffline;
    data.symbolicSampleSize = mUseDouble ? kSample64 : kSample32;
    data.inputParameterChanges = changes;
    return mProcessor->process(data) == kResultOk;
}
bool PluginInstance::GetState(std::vector<std::uint8_t>& bytes)
{
    Steinberg::MemoryStream stream;
    if (mComponent->getState(&stream) != kResultOk) return false;
    const auto* data = reinterpret_cast<const std::uint8_t*>(stream.getData());
    bytes.assign(data, data + stream.getSize());
    return true;
}

bool PluginInstance::SetState(const std::vector<std::uint8_t>& bytes)
{
    std::vector<std::uint8_t> copy = bytes;
    Steinberg::MemoryStream stream(copy.data(), static_cast<Steinberg::TSize>(copy.size()));
    return mComponent->setState(&stream) == kResultOk;
}

} // namespace vst3host
