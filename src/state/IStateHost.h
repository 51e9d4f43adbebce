#pragma once
// What the state chunk needs of the plug-in: its parameter table and change handler, the fields
// beyond the parameters, the message panel, and the editor refresh steps of a state load. The
// refresh steps have empty defaults: without an editor there is nothing to show.
// Called on the UI (host) thread only.

#include <cstdint>
#include <mutex>
#include <string>

class ByteChunk;
class IParamRecord;
struct StateFields;

class IStateHost
{
  public:
    virtual ~IStateHost() = default;

    // The plug-in's parameter mutex (recursive).
    virtual std::recursive_mutex& StateMutex() = 0;
    virtual int ParamCount() const = 0;
    // Null for an id out of range.
    virtual IParamRecord* Param(int id) = 0;
    // The plug-in's OnParamChange.
    virtual void ParamChanged(int id) = 0;
    // All values in id order as float64 / read back cut to range, with ParamChanged for each id.
    virtual bool WriteParamValues(ByteChunk& chunk) = 0;
    virtual int ReadParamValues(const ByteChunk& chunk, int pos) = 0;
    // Pushes every parameter into the editor's controls.
    virtual void RedrawControls() = 0;
    virtual void ShowMessage(int code) = 0;
    virtual StateFields& Fields() = 0;
    // Selects item index in the preset menu of folder; without such a menu nothing changes.
    virtual void SelectPresetMenuItem(const std::string& folder, int index) = 0;

    // Editor refresh steps, in the order a state load calls them.
    virtual void SetAttenuatorControl(double position) {}
    // Sets the dry-kill button and answers its state read back.
    virtual bool SetDryKillControl(bool on) { return on; }
    virtual void RefreshPageControl() {}
    // Expands a tap mask into the tap engine's on flags and the 16 step buttons.
    virtual void ApplyTapMask(int index, std::int32_t mask) {}
    virtual void ShowColorSetAndPage(int colorSet, int page) {}
    virtual void RebuildStepViews() {}
    virtual void FlushTimedLabels() {}
    // After LoadingState is cleared: slot displays, and the DSP state reset to silence.
    virtual void FinishStateLoad() {}
};
