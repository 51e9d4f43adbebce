#pragma once
// The plug-in base as a VST 3 single-component effect: buses, the host's parameters (one per record
// plus "Preset" and "Bypass"), units and the program list, the process call with its parameter queues
// and sidechain wiring, the state streams, views, and the host-facing virtuals of IPlugBase.
// Threads: `process` on the host's audio thread (any thread, one at a time); everything else on the
// UI thread, except the parameter calls that hosts may make from anywhere: paramsMutex covers those.
// `process` never locks, allocates or calls the host: it applies parameter queues through the
// records' atomic values and OnParamChange, and leaves editor updates, host edits, preset changes
// and latency notices to the next UI-thread call (FlushPendingHostNotices).
// Nothing throws across the host boundary.

#include "dsp/ThreadMark.h"
#include "host/IPlugBase.h"
#include "host/Nonblocking.h"
#include "host/PendingNotices.h"
#include "host/SingleComponentEffect.h"

#include "pluginterfaces/vst/ivstprocesscontext.h"
#include "pluginterfaces/vst/ivstunits.h"

#include <array>
#include <atomic>
#include <thread>
#include <vector>

class IPlugVST3View;
class IEditorWindow;

class IPlugVST3 : public IPlugBase, public Steinberg::Vst::IUnitInfo, public SingleComponentEffect
{
  public:
    // Ids of the two host parameters that have no record.
    static constexpr Steinberg::Vst::ParamID kPresetParamId = 0x70727374;       // "prst"
    static constexpr Steinberg::Vst::ParamID kBypassParamId = 0x62706173;       // "bpas"
    static constexpr Steinberg::Vst::ProgramListID kProgramListId = 0x70727374; // "prst"

    explicit IPlugVST3(const IPlugConfig& config);
    ~IPlugVST3() override;

    // Speaker arrangement used for a bus of n channels; 0 for counts without one.
    static Steinberg::Vst::SpeakerArrangement ArrangementForChannels(int n);

    // ---- IPluginBase / IComponent ----
    Steinberg::tresult PLUGIN_API initialize(Steinberg::FUnknown* context) override;
    Steinberg::tresult PLUGIN_API activateBus(Steinberg::Vst::MediaType type,
                                              Steinberg::Vst::BusDirection dir, Steinberg::int32 index,
                                              Steinberg::TBool state) override;
    Steinberg::tresult PLUGIN_API setActive(Steinberg::TBool state) override;

    // ---- IAudioProcessor ----
    Steinberg::tresult PLUGIN_API setBusArrangements(Steinberg::Vst::SpeakerArrangement* inputs,
                                                     Steinberg::int32 numIns,
                                                     Steinberg::Vst::SpeakerArrangement* outputs,
                                                     Steinberg::int32 numOuts) override;
    Steinberg::tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) override;
    Steinberg::tresult PLUGIN_API process(Steinberg::Vst::ProcessData& data) QUORVEX_NONBLOCKING override;
    Steinberg::uint32 PLUGIN_API getLatencySamples() override;
    // Answered from the present settings at each call: VST 3 has no notice for a changed tail,
    // hosts ask again when they start a render or after setActive.
    Steinberg::uint32 PLUGIN_API getTailSamples() override;
    Steinberg::uint32 PLUGIN_API getProcessContextRequirements() override;

    // ---- IEditController ----
    Steinberg::tresult PLUGIN_API setComponentState(Steinberg::IBStream* state) override;
    Steinberg::Vst::ParamValue PLUGIN_API getParamNormalized(Steinberg::Vst::ParamID tag) override;
    Steinberg::tresult PLUGIN_API setParamNormalized(Steinberg::Vst::ParamID tag,
                                                     Steinberg::Vst::ParamValue value) override;
    Steinberg::Vst::ParamValue PLUGIN_API
    normalizedParamToPlain(Steinberg::Vst::ParamID tag, Steinberg::Vst::ParamValue valueNormalized) override;
    Steinberg::Vst::ParamValue PLUGIN_API
    plainParamToNormalized(Steinberg::Vst::ParamID tag, Steinberg::Vst::ParamValue plainValue) override;
    Steinberg::tresult PLUGIN_API getParamStringByValue(Steinberg::Vst::ParamID tag,
                                                        Steinberg::Vst::ParamValue valueNormalized,
                                                        Steinberg::Vst::String128 string) override;
    Steinberg::tresult PLUGIN_API getParamValueByString(Steinberg::Vst::ParamID tag,
                                                        Steinberg::Vst::TChar* string,
                                                        Steinberg::Vst::ParamValue& valueNormalized) override;
    Steinberg::IPlugView* PLUGIN_API createView(Steinberg::FIDString name) override;

    // ---- IUnitInfo ----
    Steinberg::int32 PLUGIN_API getUnitCount() override;
    Steinberg::tresult PLUGIN_API getUnitInfo(Steinberg::int32 unitIndex,
                                              Steinberg::Vst::UnitInfo& info) override;
    Steinberg::int32 PLUGIN_API getProgramListCount() override;
    Steinberg::tresult PLUGIN_API getProgramListInfo(Steinberg::int32 listIndex,
                                                     Steinberg::Vst::ProgramListInfo& info) override;
    Steinberg::tresult PLUGIN_API getProgramName(Steinberg::Vst::ProgramListID listId,
                                                 Steinberg::int32 programIndex,
                                                 Steinberg::Vst::String128 name) override;
    Steinberg::tresult PLUGIN_API getProgramInfo(Steinberg::Vst::ProgramListID listId,
                                                 Steinberg::int32 programIndex,
                                                 Steinberg::Vst::CString attributeId,
                                                 Steinberg::Vst::String128 attributeValue) override;
    Steinberg::tresult PLUGIN_API hasProgramPitchNames(Steinberg::Vst::ProgramListID listId,
                                                       Steinberg::int32 programIndex) override;
    Steinberg::tresult PLUGIN_API getProgramPitchName(Steinberg::Vst::ProgramListID listId,
                                                      Steinberg::int32 programIndex,
                                                      Steinberg::int16 midiPitch,
                                                      Steinberg::Vst::String128 name) override;
    Steinberg::Vst::UnitID PLUGIN_API getSelectedUnit() override;
    Steinberg::tresult PLUGIN_API selectUnit(Steinberg::Vst::UnitID unitId) override;
    Steinberg::tresult PLUGIN_API getUnitByBus(Steinberg::Vst::MediaType type,
                                               Steinberg::Vst::BusDirection dir, Steinberg::int32 busIndex,
                                               Steinberg::int32 channel,
                                               Steinberg::Vst::UnitID& unitId) override;
    Steinberg::tresult PLUGIN_API setUnitProgramData(Steinberg::int32 listOrUnitId,
                                                     Steinberg::int32 programIndex,
                                                     Steinberg::IBStream* data) override;

    // ---- FUnknown ----
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return SingleComponentEffect::addRef(); }
    Steinberg::uint32 PLUGIN_API release() override { return SingleComponentEffect::release(); }

    // ---- IPlugBase's host-facing virtuals ----
    // The value entry item stays usable only while this plug-in lives: a host may keep the menu.
    bool PopupHostContextMenuForParam(int id, int x, int y, std::function<void()> ownEntry) override;
    // Called inside `process` (a linked parameter following automation), the edit is held back
    // and reaches the host as begin, perform (with the value then current) and end from the UI thread.
    void BeginInformHostOfParamChange(int id) override;
    void InformHostOfParamChange(int id, double normalized) override;
    void EndInformHostOfParamChange(int id) override;
    bool IsRenderingOffline() override;
    // Transport of the last process call (audio thread, or any thread for a consistent-enough view).
    double GetSamplePos() override;
    double GetTempo() override;
    void GetTimeSig(int& numerator, int& denominator) override;
    void GetTime(TransportInfo& info) override;
    void ResizeGraphics(int width, int height) override;
    // Stores the latency and, when it changed, asks the host to restart. From inside `process` the
    // request waits for the next UI-thread call (hosts want it on their UI thread).
    void SetLatency(int samples) override;
    // Delivers what `process` had to hold back: latency notice, preset change, host edits and
    // editor updates. UI thread; the editor's tick calls it.
    void FlushPendingHostNotices();

    // ---- Views ----
    IEditorWindow* GetEditorWindow();
    void RemoveView(IPlugVST3View* view);

    OBJ_METHODS(IPlugVST3, SingleComponentEffect)

  protected:
    Steinberg::tresult getComponentState(Steinberg::IBStream* state) override;
    Steinberg::tresult setComponentStateFromHost(Steinberg::IBStream* state) override;
    Steinberg::tresult getControllerState(Steinberg::IBStream* state) override;
    Steinberg::tresult setControllerState(Steinberg::IBStream* state) override;
    // The mark of the thread inside `process`; the engine sets it too when it is driven directly.
    ThreadMark& ProcessThread() { return mProcessThread; }
    // Sets `flag`, then waits until no process call is under way: from then on every call sees
    // the flag, and none touches the engine until it clears. Not on the audio thread.
    void HoldAudio(std::atomic<bool>& flag);
    // True on the thread that is inside `process` right now.
    bool InsideProcess() const;

  private:
    static constexpr int kMaxBuses = 4;

    // Transport as last seen by `process`, readable from other threads field by field.
    struct Transport
    {
        Relaxed<double> samplePos{0.0};
        Relaxed<double> tempo{120.0};
        Relaxed<double> quarterPos{0.0};
        Relaxed<double> lastBarStart{0.0};
        Relaxed<double> cycleStart{0.0};
        Relaxed<double> cycleEnd{0.0};
        Relaxed<int> numerator{4};
        Relaxed<int> denominator{4};
        Relaxed<unsigned> state{0};
    };

    void IdentifyHost(Steinberg::FUnknown* context);
    void BuildBusesAndParameters();
    Steinberg::Vst::UnitID UnitForGroup(const char* group);
    void ApplyParameterChanges(Steinberg::Vst::IParameterChanges* changes);
    // Hands the host what the plug-in wrote itself during the call (a time base switch rewriting
    // the delay times, a link's twin, a step preset, an effect type's defaults).
    void ReportHostEdits(Steinberg::Vst::IParameterChanges* changes);
    static void SilenceOutputs(Steinberg::Vst::ProcessData& data);
    void ConnectInputs(const Steinberg::Vst::ProcessData& data);
    void ConnectOutputs(const Steinberg::Vst::ProcessData& data);
    // Channels of output bus `bus`, starting at plug-in channel firstChannel, that the plug-in fills.
    int ConnectedOutputs(const Steinberg::Vst::ProcessData& data, Steinberg::int32 bus,
                         int firstChannel) const;
    void SilenceUnusedOutputs(Steinberg::Vst::ProcessData& data);
    void CopyContext(const Steinberg::Vst::ProcessContext& context);
    // Writes the component's chunk; the controller's adds the bypass word.
    Steinberg::tresult WriteState(Steinberg::IBStream* stream, bool withBypassWord);
    Steinberg::tresult ReadState(Steinberg::IBStream* stream, bool withBypassWord);
    void NotifyLatencyChange();

    bool mBuilt = false;
    std::vector<Steinberg::Vst::UnitInfo> mUnits;
    Steinberg::Vst::UnitID mSelectedUnit = Steinberg::Vst::kRootUnitId;
    std::vector<IPlugVST3View*> mViews;
    std::shared_ptr<int> mAlive = std::make_shared<int>(0); // context menu items watch it

    // Bus activation as the audio thread sees it (the SDK's bus objects belong to the UI thread).
    std::array<Relaxed<bool>, kMaxBuses> mInputBusActive{};
    std::array<Relaxed<bool>, kMaxBuses> mOutputBusActive{};
    bool mSidechainWasActive = false; // audio thread only
    Relaxed<int> mProcessMode{Steinberg::Vst::kRealtime};
    Transport mTransport;
    std::atomic<bool> mLatencyNoticePending{false};
    // The thread inside `process`: host notices made from it wait for the UI thread.
    ThreadMark mProcessThread;
    PendingNotices mPending;
};
