#pragma once
// One instance of the first audio-effect class of a module, driven as a host drives it: initialise,
// list the parameters, set up, activate, process blocks of 64-bit (or, if refused, 32-bit) audio
// with parameter queues and a process context, stop. The plug-in must be a single component (its
// component also answers IEditController). Every call comes from one thread; the module must
// outlive the instance.

#include "ChangeList.h"
#include "PluginModule.h"

#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivstprocesscontext.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vst3host
{
// What the controller says of one parameter, with its key: the title without blanks.
struct ParamEntry
{
    Steinberg::Vst::ParamID id = 0;
    std::string title;
    std::string key;
    std::string units;
    Steinberg::int32 stepCount = 0;
};

class PluginInstance
{
  public:
    static std::unique_ptr<PluginInstance> Create(PluginModule& module, std::string& error);
    ~PluginInstance();
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;

    const std::vector<ParamEntry>& Params() const { return mParams; }
    // By title, then by key, then either without regard to case; null when nothing matches.
    const ParamEntry* Find(std::string_view nameOrKey) const;
    Steinberg::Vst::IEditController& Controller() { return *mController; }
    // The plug-in's own text for a normalised value of id, with the unit when there is one.
    std::string ValueText(const ParamEntry& param, Steinberg::Vst::ParamValue normalized);

    // Buses, set-up, activation, processing on; the sidechain input stays inactive and silent.
    bool Start(double rate, Steinberg::int32 maxBlock, std::string& error);
    void Stop();
    Steinberg::uint32 Latency() const;
    // One block of n <= maxBlock frames, two channels in and out; changes and context may be null.
    bool Process(const double* const in[2], double* const out[2], Steinberg::int32 n,
                 Steinberg::Vst::IParameterChanges* changes, Steinberg::Vst::ProcessContext* context);
    // Parameter changes only, no audio: what hosts send while nothing plays.
    bool Flush(Steinberg::Vst::IParameterChanges* changes);
    // The component's state as a host stores it in a project, and a stored state given back.
    bool GetState(std::vector<std::uint8_t>& bytes);
    bool SetState(const std::vector<std::uint8_t>& bytes);

  private:
    PluginInstance() = default;
    class Host;
    class Handler;

    std::unique_ptr<Host> mHost;
    std::unique_ptr<Handler> mHandler;
    Steinberg::Vst::IComponent* mComponent = nullptr;
    Steinberg::Vst::IAudioProcessor* mProcessor = nullptr;
    Steinberg::Vst::IEditController* mController = nullptr;
    bool mInitialized = false;
    bool mActive = false;
    std::vector<ParamEntry> mParams;

    bool mUseDouble = true;
    Steinberg::int32 mMaxBlock = 0;
    Steinberg::int32 mInChannels = 0;
    Steinberg::int32 mSideChannels = 0;
    Steinberg::int32 mOutChannels = 0;
    std::vector<std::vector<double>> mBuffers64; // main in, sidechain, out channels in that order
    std::vector<std::vector<float>> mBuffers32;
    std::vector<double*> mPtrs64;
    std::vector<float*> mPtrs32;
    Steinberg::Vst::AudioBusBuffers mInBuses[2] = {};
    Steinberg::Vst::AudioBusBuffers mOutBus = {};
};
} // namespace vst3host
