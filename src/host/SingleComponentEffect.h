#pragma once
// One object that is component, audio processor and edit controller at once, the way hosts expect
// a plug-in that names no separate controller class. It owns the bus lists and answers the bus,
// activation and arrangement queries; a derived class adds the buses, the parameters and `process`.
// Host threads: `process` (and `setProcessing`) on the audio thread, everything else on the UI thread.

#include "base/source/fobject.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "public.sdk/source/vst/vstbus.h"
#include "public.sdk/source/vst/vsteditcontroller.h"

// The component side's state. IComponent and IEditController both name their state calls getState
// and setState; this layer gives the component's pair its own names so that the two can differ.
class ComponentStateSide : public Steinberg::Vst::IComponent
{
  public:
    Steinberg::tresult PLUGIN_API getState(Steinberg::IBStream* state) final
    {
        return getComponentState(state);
    }
    Steinberg::tresult PLUGIN_API setState(Steinberg::IBStream* state) final
    {
        return setComponentStateFromHost(state);
    }

  protected:
    virtual Steinberg::tresult getComponentState(Steinberg::IBStream* state) = 0;
    virtual Steinberg::tresult setComponentStateFromHost(Steinberg::IBStream* state) = 0;
};

// The controller side's state, renamed the same way.
class ControllerStateSide : public Steinberg::Vst::EditController
{
  public:
    Steinberg::tresult PLUGIN_API getState(Steinberg::IBStream* state) final
    {
        return getControllerState(state);
    }
    Steinberg::tresult PLUGIN_API setState(Steinberg::IBStream* state) final
    {
        return setControllerState(state);
    }

  protected:
    virtual Steinberg::tresult getControllerState(Steinberg::IBStream* state) = 0;
    virtual Steinberg::tresult setControllerState(Steinberg::IBStream* state) = 0;
};

class SingleComponentEffect : public ControllerStateSide,
                              public ComponentStateSide,
                              public Steinberg::Vst::IAudioProcessor,
                              public Steinberg::Vst::IProcessContextRequirements
{
  public:
    SingleComponentEffect();
    ~SingleComponentEffect() override;

    // IPluginBase (one body for the component and the controller side).
    Steinberg::tresult PLUGIN_API initialize(Steinberg::FUnknown* context) override;
    Steinberg::tresult PLUGIN_API terminate() override;

    // IComponent
    Steinberg::tresult PLUGIN_API getControllerClassId(Steinberg::TUID classId) override;
    Steinberg::tresult PLUGIN_API setIoMode(Steinberg::Vst::IoMode mode) override;
    Steinberg::int32 PLUGIN_API getBusCount(Steinberg::Vst::MediaType type,
                                            Steinberg::Vst::BusDirection dir) override;
    Steinberg::tresult PLUGIN_API getBusInfo(Steinberg::Vst::MediaType type, Steinberg::Vst::BusDirection dir,
                                             Steinberg::int32 index, Steinberg::Vst::BusInfo& bus) override;
    Steinberg::tresult PLUGIN_API getRoutingInfo(Steinberg::Vst::RoutingInfo& inInfo,
                                                 Steinberg::Vst::RoutingInfo& outInfo) override;
    Steinberg::tresult PLUGIN_API activateBus(Steinberg::Vst::MediaType type,
                                              Steinberg::Vst::BusDirection dir, Steinberg::int32 index,
                                              Steinberg::TBool state) override;
    Steinberg::tresult PLUGIN_API setActive(Steinberg::TBool state) override;

    // IAudioProcessor
    Steinberg::tresult PLUGIN_API setBusArrangements(Steinberg::Vst::SpeakerArrangement* inputs,
                                                     Steinberg::int32 numIns,
                                                     Steinberg::Vst::SpeakerArrangement* outputs,
                                                     Steinberg::int32 numOuts) override;
    Steinberg::tresult PLUGIN_API getBusArrangement(Steinberg::Vst::BusDirection dir, Steinberg::int32 index,
                                                    Steinberg::Vst::SpeakerArrangement& arr) override;
    Steinberg::tresult PLUGIN_API canProcessSampleSize(Steinberg::int32 symbolicSampleSize) override;
    Steinberg::uint32 PLUGIN_API getLatencySamples() override;
    Steinberg::tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) override;
    Steinberg::tresult PLUGIN_API setProcessing(Steinberg::TBool state) override;
    Steinberg::uint32 PLUGIN_API getTailSamples() override;

    // IEditController: the SDK's version indexes its list unchecked and throws past its end.
    Steinberg::tresult PLUGIN_API getParameterInfo(Steinberg::int32 paramIndex,
                                                   Steinberg::Vst::ParameterInfo& info) override;

    // IProcessContextRequirements: what the host should fill in ProcessContext.
    Steinberg::uint32 PLUGIN_API getProcessContextRequirements() override;

    // FUnknown: one reference count for all sides.
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return EditController::addRef(); }
    Steinberg::uint32 PLUGIN_API release() override { return EditController::release(); }

    OBJ_METHODS(SingleComponentEffect, EditController)

  protected:
    // Bus set-up, for initialize and arrangement changes (UI thread, never while processing).
    Steinberg::Vst::AudioBus* addAudioInput(const Steinberg::Vst::TChar* name,
                                            Steinberg::Vst::SpeakerArrangement arr,
                                            Steinberg::Vst::BusType busType = Steinberg::Vst::kMain,
                                            Steinberg::int32 flags = Steinberg::Vst::BusInfo::kDefaultActive);
    Steinberg::Vst::AudioBus*
    addAudioOutput(const Steinberg::Vst::TChar* name, Steinberg::Vst::SpeakerArrangement arr,
                   Steinberg::Vst::BusType busType = Steinberg::Vst::kMain,
                   Steinberg::int32 flags = Steinberg::Vst::BusInfo::kDefaultActive);
    Steinberg::Vst::EventBus* addEventInput(const Steinberg::Vst::TChar* name, Steinberg::int32 channels,
                                            Steinberg::Vst::BusType busType = Steinberg::Vst::kMain,
                                            Steinberg::int32 flags = Steinberg::Vst::BusInfo::kDefaultActive);
    // Replaces the audio bus at `index` by a new one with the given name and arrangement, keeping its
    // type, flags and activation.
    bool replaceAudioBus(Steinberg::Vst::BusDirection dir, Steinberg::int32 index,
                         const Steinberg::Vst::TChar* name, Steinberg::Vst::SpeakerArrangement arr);
    void removeAllBusses();

    Steinberg::Vst::BusList* getBusList(Steinberg::Vst::MediaType type, Steinberg::Vst::BusDirection dir);
    Steinberg::Vst::AudioBus* getAudioBus(Steinberg::Vst::BusDirection dir, Steinberg::int32 index);

    Steinberg::Vst::BusList mAudioInputs{Steinberg::Vst::kAudio, Steinberg::Vst::kInput};
    Steinberg::Vst::BusList mAudioOutputs{Steinberg::Vst::kAudio, Steinberg::Vst::kOutput};
    Steinberg::Vst::BusList mEventInputs{Steinberg::Vst::kEvent, Steinberg::Vst::kInput};
    Steinberg::Vst::BusList mEventOutputs{Steinberg::Vst::kEvent, Steinberg::Vst::kOutput};
    Steinberg::Vst::ProcessSetup mProcessSetup{Steinberg::Vst::kRealtime, Steinberg::Vst::kSample32, 1024,
                                               44100.0};
};
