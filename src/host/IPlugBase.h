#pragma once
// Host-independent half of the plug-in: the parameter table, the channel configuration, the
// presets of the host interface, the audio buffer plumbing (host buffers, silence for unconnected
// channels, the float-to-double path, the latency-matched bypass) and the link to the editor.
// A host binding derives from it and fills the host-facing virtuals; the engine derives from that.
//
// Threads: ProcessBuffers, PassThroughBuffers, the Attach/connection calls and the virtual
// ProcessDoubleReplacing run on the audio thread (QUORVEX_NONBLOCKING: no allocation, lock or
// system call); everything else on the UI (host) thread, OnParamChange on both.
// paramsMutex guards the parameter table, the host's parameter calls on the UI side and the state
// chunk; its holder may take it again. The audio thread never takes it: automation writes the
// records' atomic values directly. SetParameterFromGUI does not take it either.

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/EngineHost.h"
#include "dsp/Relaxed.h"
#include "host/Nonblocking.h"
#include "state/ByteChunk.h"

class IParamRecord;

// Four characters as one int, first character in the highest byte ("Qvrz").
constexpr int FourCharCode(const char (&code)[5])
{
    return (static_cast<int>(static_cast<unsigned char>(code[0])) << 24) |
           (static_cast<int>(static_cast<unsigned char>(code[1])) << 16) |
           (static_cast<int>(static_cast<unsigned char>(code[2])) << 8) |
           static_cast<int>(static_cast<unsigned char>(code[3]));
}

// The construction values of a plug-in.
struct IPlugConfig
{
    int nParams = 0;
    const char* channelIOStr = ""; // blank-separated "in-out" pairs, e.g. "2-2 3-2 4-2"
    int nPresets = 0;
    const char* effectName = "";
    const char* productName = "";
    const char* mfrName = "";
    int vendorVersion = 0;
    int uniqueID = 0;
    int mfrID = 0;
    int latency = 0; // samples
    bool plugDoesMidi = false;
    bool plugDoesChunks = false;
    bool plugIsInst = false;
    int plugScChans = 0; // the last inputs that form the sidechain
};

// What the base needs of an editor: the editor's graphics class implements it. UI thread only.
class IEditorLink
{
  public:
    virtual ~IEditorLink() = default;
    // Moves the controls bound to id to value (normalised when the flag says so), host not told.
    virtual void SetParameterFromPlug(int id, double value, bool normalized) = 0;
    // Prepares the editor's drawing once it is attached.
    virtual void PrepDraw() = 0;
};

// A preset of the host interface.
struct IPreset
{
    bool initialized = false;
    std::string name = "empty"; // up to 256 characters
    ByteChunk chunk;
};

// One audio channel: the host's pointer of the current call, and an own buffer that stands in as
// silence for an unconnected input, as a sink for an unconnected output and as the double-precision
// copy of the float path.
struct IChannel
{
    bool connected = false;
    double* mHostDouble = nullptr;
    float* mHostFloat = nullptr;
    std::vector<double> mOwn;
};

class IPlugBase : public IEngineHost
{
  public:
    explicit IPlugBase(const IPlugConfig& config);
    virtual ~IPlugBase();
    IPlugBase(const IPlugBase&) = delete;
    IPlugBase& operator=(const IPlugBase&) = delete;

    // ---- Virtual operations --------------------------------------------------------------------
    // Host sets up processing (UI thread).
    virtual void Reset() {}
    // Samples the output may go on sounding after the input falls silent, at the host's rate;
    // kTailForever while something can sustain sound. Any thread.
    static constexpr int kTailForever = -1;
    virtual int TailSamples() { return 0; }
    // A parameter's value changed: host automation calls it on the audio thread, the editor and
    // the state on the UI thread. It must therefore be real-time safe (no allocation, lock or
    // system call); host notices it sends from inside `process` are held back by the binding.
    virtual void OnParamChange(int id) {}
    // Audio thread. The base copies inputs to outputs and zeroes the outputs it has no input for.
    virtual void ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) QUORVEX_NONBLOCKING;
    virtual void OnGUIOpen() {}
    virtual void OnGUIClose() {}
    virtual void OnActivate(bool active) {}
    // The host's process calls switched between real-time and offline rendering. Audio thread.
    virtual void OnProcessModeChange() {}
    // True while the plug-in rewrites its whole state (a session or preset being loaded): a
    // process call then outputs silence and applies none of its parameter changes. Any thread.
    virtual bool IsAudioHeld() { return false; }
    // State chunk (UI thread). The base stores the parameter values only.
    virtual bool SerializeState(ByteChunk& chunk);
    virtual int UnserializeState(const ByteChunk& chunk, int startPos);
    virtual void OnHostIdentified() {}
    // Host-facing operations, filled by the binding; the base answers as if there were no host.
    // The host's context menu of a parameter at (x, y) in the view's pixels, with `ownEntry` added
    // as an item of our own (the editor's value entry); false when the host offers no menu.
    virtual bool PopupHostContextMenuForParam(int id, int x, int y, std::function<void()> ownEntry)
    {
        return false;
    }
    virtual void BeginInformHostOfParamChange(int id) {}
    virtual void InformHostOfParamChange(int id, double normalized) {}
    virtual void EndInformHostOfParamChange(int id) {}
    virtual bool IsRenderingOffline() { return false; }
    virtual double GetSamplePos() { return 0.0; }
    double GetTempo() override { return 120.0; }
    virtual void GetTimeSig(int& numerator, int& denominator)
    {
        numerator = 4;
        denominator = 4;
    }
    void GetTime(TransportInfo& info) override { info = TransportInfo{}; }
    virtual void ResizeGraphics(int width, int height) {}
    // Stores the latency; a binding also tells the host. May be called from the audio thread:
    // the bypass delay adopts the new length at its next run.
    virtual void SetLatency(int samples);
    // Pushes every normalised value into the editor, if any, without telling the host.
    virtual void RedrawParamControls();
    // Notes the largest block the host announced; the channels' own buffers keep their size.
    virtual void SetBlockSize(int samples);

    // ---- Parameters ----------------------------------------------------------------------------
    // Null for an id out of range.
    IParamRecord* GetParam(int id);
    const IParamRecord* GetParam(int id) const;
    int NParams() const { return static_cast<int>(params.size()); }
    // Editor control moved (UI thread): record, host, engine, in this order; no lock, no queue.
    void SetParameterFromGUI(int id, double normalized);
    // Appends every value as a float64 in id order; false if a record is missing.
    bool SerializeParams(ByteChunk& chunk);
    // Under paramsMutex: reads a float64 per id (a read past the end gives 0), stores it cut to
    // min..max, then calls OnParamChange for each id in order. A negative start position means
    // nothing is left to read: values stay, the notifications still run. Returns the final position.
    int UnserializeParams(const ByteChunk& chunk, int startPos);
    std::recursive_mutex& ParamsMutex() { return paramsMutex; }

    // ---- Presets -------------------------------------------------------------------------------
    // Records the current state in a preset that isn't initialized yet and makes it current;
    // false for an initialized preset or an index out of range.
    bool RestorePreset(int idx);
    int NPresets() const { return static_cast<int>(presets.size()); }
    int GetCurrentPresetIdx() const { return currentPresetIdx; }
    const IPreset* GetPreset(int idx) const;

    // ---- Channels and buffers ------------------------------------------------------------------
    // True if a pair of the channel text matches; -1 for either count means "any".
    bool LegalIO(int nIn, int nOut) const;
    int NInChannels() const { return static_cast<int>(inChannels.size()); }
    int NOutChannels() const { return static_cast<int>(outChannels.size()); }
    const std::vector<std::pair<int, int>>& ChannelIO() const { return channelIO; }
    bool IsInChannelConnected(int idx) const;
    bool IsOutChannelConnected(int idx) const;
    void SetInputLabel(int idx, std::string_view text);
    void SetOutputLabel(int idx, std::string_view text);
    const std::string& GetInputLabel(int idx) const;
    const std::string& GetOutputLabel(int idx) const;
    // Audio thread: mark a run of channels, then enter the host's pointers for a run of channels.
    void SetInputChannelConnections(int idx, int n, bool connected);
    void SetOutputChannelConnections(int idx, int n, bool connected);
    void AttachInputBuffers(int idx, int n, double** buffers, int nFrames);
    void AttachInputBuffers(int idx, int n, float** buffers, int nFrames);
    void AttachOutputBuffers(int idx, int n, double** buffers, int nFrames);
    void AttachOutputBuffers(int idx, int n, float** buffers, int nFrames);
    // Clears the own buffers, so no stale data survives a channel going away.
    void ZeroScratchBuffers();
    // Runs ProcessDoubleReplacing on the attached buffers; the float form converts to double and
    // back. A run longer than the block size is processed in block-size pieces.
    void ProcessBuffers(double, int nFrames) QUORVEX_NONBLOCKING;
    void ProcessBuffers(float, int nFrames) QUORVEX_NONBLOCKING;
    // Bypass: inputs to outputs delayed by the latency (plain copy at latency 0).
    void PassThroughBuffers(double, int nFrames) QUORVEX_NONBLOCKING;
    void PassThroughBuffers(float, int nFrames) QUORVEX_NONBLOCKING;
    // Empties the bypass delay, so that a new run does not play the end of the one before.
    void RestartBypassDelay();

    // ---- Plain accessors -----------------------------------------------------------------------
    double GetSampleRate() const { return sampleRate; }
    void SetSampleRate(double rate) { sampleRate = rate; }
    int GetBlockSize() const { return blockSize; }
    int GetLatency() const { return latency; }
    bool IsBypassed() const { return isBypassed; }
    void SetBypassed(bool bypassed) { isBypassed = bypassed; }
    IEditorLink* GetGUI() { return graphics; }
    // Pushes every normalised value into the editor, lets it prepare, then keeps the pointer.
    void AttachGraphics(IEditorLink* editor);
    void SetHost(std::string_view name, int version);
    const std::string& GetHost() const { return host; }
    int GetHostVersion() const { return hostVersion; }
    int GetEffectVersion() const { return mVendorVersion; }
    const std::string& GetEffectName() const { return mEffectName; }
    const std::string& GetProductName() const { return mProductName; }
    const std::string& GetMfrName() const { return mMfrName; }
    int GetUniqueID() const { return mUniqueID; }
    int GetMfrID() const { return mMfrID; }
    bool DoesMidi() const { return mDoesMidi; }
    bool DoesChunks() const { return mDoesChunks; }
    bool IsInst() const { return mIsInst; }
    int NSidechainChannels() const { return mScChans; }

  protected:
    std::vector<std::unique_ptr<IParamRecord>> params;
    std::vector<IPreset> presets;
    std::vector<std::pair<int, int>> channelIO;
    std::vector<IChannel> inChannels;
    std::vector<IChannel> outChannels;
    Relaxed<double> sampleRate{44100.0};
    Relaxed<int> blockSize{0};
    Relaxed<int> latency{0};
    Relaxed<bool> isBypassed{false};
    Relaxed<int> currentPresetIdx{0};
    std::string host;    // empty while unknown
    int hostVersion = 0; // 0 while unknown
    IEditorLink* graphics = nullptr;
    std::recursive_mutex paramsMutex;

  private:
    // Per-channel delay of the bypass path over all inputs. Its memory is made once; a change of
    // length (SetLatency) is adopted, with cleared contents, by the next run on the audio thread.
    struct LatencyDelay
    {
        std::vector<double> mRing; // channel c owns [c * mCapacity, (c + 1) * mCapacity)
        int mCapacity = 0;
        int mLength = 0;
        int mPos = 0;
    };

    template <typename Sample> void PassThrough(int nFrames);
    void AdoptLatency();
    void ProcessInPieces(int nFrames, bool floatHost);
    double* InputSource(int ch, int offset);
    double* OutputTarget(int ch, int offset);

    const std::string mEffectName;
    const std::string mProductName;
    const std::string mMfrName;
    const int mVendorVersion;
    const int mUniqueID;
    const int mMfrID;
    const bool mDoesMidi;
    const bool mDoesChunks;
    const bool mIsInst;
    const int mScChans;
    std::string mInputLabels[2];
    std::string mOutputLabels[2];
    std::vector<double*> mInPtrs;
    std::vector<double*> mOutPtrs;
    LatencyDelay latencyDelay;
};
