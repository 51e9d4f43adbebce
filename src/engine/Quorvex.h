#pragma once
// The plug-in: host component, engine and, later, owner of the editor, all in one object. So far
// it holds the construction of the frame (parameters from the catalogue, every cache applied once),
// the state that the host chunk stores, the pending user message, and an audio path that copies
// input to output except while it is being built or is restoring a state, when it is silent.
// Threads: ProcessDoubleReplacing on the audio thread; the constructor, OnParamChange and the state
// calls on the UI (host) thread, the state calls under paramsMutex.

#include "host/IPlugVST3.h"
#include "params/ParamIds.h"
#include "state/IStateHost.h"
#include "state/Messages.h"
#include "state/StateFields.h"

inline constexpr int kQuorvexVersion = 0x10200;

inline constexpr IPlugConfig kQuorvexConfig{
    .nParams = kNumParams,
    .channelIOStr = "2-2 3-2 4-2",
    .nPresets = 1,
    .effectName = "Quorvex",
    .productName = "",
    .mfrName = "qelmar-audio",
    .vendorVersion = kQuorvexVersion,
    .uniqueID = FourCharCode("Qvrz"),
    .mfrID = FourCharCode("Qlmz"),
    .latency = 44,
    .plugDoesMidi = false,
    .plugDoesChunks = true,
    .plugIsInst = false,
    .plugScChans = 2,
};

class Quorvex : public IPlugVST3, private IStateHost
{
  public:
    Quorvex();
    ~Quorvex() override;

    // Parameter handler: migration of old chunks while one is read, then the caches.
    void OnParamChange(int id) override;
    // The base's copy, or silence while constructing or restoring a state.
    void ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) override;
    bool SerializeState(ByteChunk& chunk) override;
    int UnserializeState(const ByteChunk& chunk, int startPos) override;

    // Keeps a message of the user message table for the editor's alert panel.
    void ShowMessage(int code) override;
    const PendingMessage& Message() const { return mMessage; }
    StateFields& Fields() override { return mFields; }

  private:
    // The state chunk's view of the plug-in.
    std::recursive_mutex& StateMutex() override { return paramsMutex; }
    int ParamCount() const override { return NParams(); }
    IParamRecord* Param(int id) override { return GetParam(id); }
    void ParamChanged(int id) override { OnParamChange(id); }
    bool WriteParamValues(ByteChunk& chunk) override { return SerializeParams(chunk); }
    int ReadParamValues(const ByteChunk& chunk, int pos) override { return UnserializeParams(chunk, pos); }
    void RedrawControls() override { RedrawParamControls(); }
    void SelectPresetMenuItem(const std::string& folder, int index) override;

    StateFields mFields;
    PendingMessage mMessage;
    Relaxed<bool> mConstructing{true};
};
