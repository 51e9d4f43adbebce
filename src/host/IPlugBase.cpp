#include "host/IPlugBase.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "params/IParamRecord.h"

namespace
{
// The frames of one engine call: the size of the channels' own buffers, fixed at construction, and
// the block size noted until the host states its own.
constexpr int kPieceFrames = 1024;
// Longest bypass delay in samples. The engine reports at most 32 + 96 (1 ms at the top rate).
constexpr int kMaxLatencyDelay = 4096;
constexpr int kMaxLabels = 2;

std::vector<std::pair<int, int>> ParseChannelIO(const char* text)
{
    std::vector<std::pair<int, int>> pairs;
    std::istringstream words(text != nullptr ? text : "");
    std::string word;
    while (words >> word)
    {
        int nIn = 0;
        int nOut = 0;
        if (std::sscanf(word.c_str(), "%d-%d", &nIn, &nOut) == 2) pairs.emplace_back(nIn, nOut);
    }
    return pairs;
}

const std::string kNoLabel;
} // namespace

IPlugBase::IPlugBase(const IPlugConfig& config)
    : channelIO(ParseChannelIO(config.channelIOStr)), latency(config.latency),
      mEffectName(config.effectName != nullptr ? config.effectName : ""),
      mProductName(config.productName != nullptr ? config.productName : ""),
      mMfrName(config.mfrName != nullptr ? config.mfrName : ""), mVendorVersion(config.vendorVersion),
      mUniqueID(config.uniqueID), mMfrID(config.mfrID), mDoesMidi(config.plugDoesMidi),
      mDoesChunks(config.plugDoesChunks), mIsInst(config.plugIsInst), mScChans(config.plugScChans)
{
    params.resize(static_cast<std::size_t>(std::max(config.nParams, 0)));
    for (auto& param : params)
        param = std::make_unique<IParamRecord>();
    presets.resize(static_cast<std::size_t>(std::max(config.nPresets, 0)));

    int maxIn = 0;
    int maxOut = 0;
    for (const auto& [nIn, nOut] : channelIO)
    {
        maxIn = std::max(maxIn, nIn);
        maxOut = std::max(maxOut, nOut);
    }
    inChannels.resize(static_cast<std::size_t>(maxIn));
    outChannels.resize(static_cast<std::size_t>(maxOut));
    mInPtrs.assign(inChannels.size(), nullptr);
    mOutPtrs.assign(outChannels.size(), nullptr);
    for (auto* side : {&inChannels, &outChannels})
        for (IChannel& ch : *side)
            ch.mOwn.assign(kPieceFrames, 0.0);
    SetBlockSize(kPieceFrames);

    if (maxIn > 0)
    {
        latencyDelay.mCapacity = kMaxLatencyDelay;
        latencyDelay.mRing.assign(static_cast<std::size_t>(maxIn) * kMaxLatencyDelay, 0.0);
    }
}

IPlugBase::~IPlugBase() = default;

// ---- Parameters -------------------------------------------------------------------------------

IParamRecord* IPlugBase::GetParam(int id)
{
    return id >= 0 && id < NParams() ? params[static_cast<std::size_t>(id)].get() : nullptr;
}

const IParamRecord* IPlugBase::GetParam(int id) const
{
    return id >= 0 && id < NParams() ? params[static_cast<std::size_t>(id)].get() : nullptr;
}

void IPlugBase::SetParameterFromGUI(int id, double normalized)
{
    IParamRecord* param = GetParam(id);
    if (param == nullptr) return;
    param->SetNormalized(normalized);
    InformHostOfParamChange(id, normalized);
    OnParamChange(id);
}

bool IPlugBase::SerializeParams(ByteChunk& chunk)
{
    for (const auto& param : params)
    {
        if (param == nullptr) return false;
        const double value = param->value;
        chunk.Put(value);
    }
    return true;
}

int IPlugBase::UnserializeParams(const ByteChunk& chunk, int startPos)
{
    std::lock_guard lock(paramsMutex);
    int pos = startPos;
    if (startPos >= 0)
    {
        for (auto& param : params)
        {
            double value = 0.0;
            pos = chunk.Get(value, pos);
            // NaN says nothing and counts as a missing value, 0; an infinity still says which end
            // of the range was meant and is cut to it like any finite value.
            if (std::isnan(value)) value = 0.0;
            if (param != nullptr) param->value = std::clamp(value, param->min, param->max);
        }
    }
    for (int id = 0; id < NParams(); ++id)
        OnParamChange(id);
    return pos;
}

bool IPlugBase::SerializeState(ByteChunk& chunk)
{
    std::lock_guard lock(paramsMutex);
    return SerializeParams(chunk);
}

int IPlugBase::UnserializeState(const ByteChunk& chunk, int startPos)
{
    return UnserializeParams(chunk, startPos);
}

void IPlugBase::RedrawParamControls()
{
    if (graphics == nullptr) return;
    for (int id = 0; id < NParams(); ++id)
        graphics->SetParameterFromPlug(id, params[static_cast<std::size_t>(id)]->GetNormalized(), true);
}

void IPlugBase::AttachGraphics(IEditorLink* editor)
{
    if (editor != nullptr)
    {
        for (int id = 0; id < NParams(); ++id)
            editor->SetParameterFromPlug(id, params[static_cast<std::size_t>(id)]->GetNormalized(), true);
        editor->PrepDraw();
    }
    graphics = editor;
}

// ---- Presets ----------------------------------------------------------------------------------

bool IPlugBase::RestorePreset(int idx)
{
    if (idx < 0 || idx >= NPresets()) return false;
    IPreset& preset = presets[static_cast<std::size_t>(idx)];
    if (preset.initialized) return false;

    static constexpr std::string_view kUserPreset = "user preset";
    int named = 0;
    for (const IPreset& other : presets)
        if (std::string_view(other.name).starts_with(kUserPreset)) ++named;

    preset.initialized = true;
    preset.name = std::string(kUserPreset) + " " + std::to_string(named + 1);
    preset.chunk.Clear();
    SerializeState(preset.chunk);
    currentPresetIdx = idx;
    return true;
}

const IPreset* IPlugBase::GetPreset(int idx) const
{
    return idx >= 0 && idx < NPresets() ? &presets[static_cast<std::size_t>(idx)] : nullptr;
}

// ---- Channels ---------------------------------------------------------------------------------

bool IPlugBase::LegalIO(int nIn, int nOut) const
{
    return std::any_of(channelIO.begin(), channelIO.end(),
                       [&](const std::pair<int, int>& io)
                       { return (nIn < 0 || nIn == io.first) && (nOut < 0 || nOut == io.second); });
}

bool IPlugBase::IsInChannelConnected(int idx) const
{
    return idx >= 0 && idx < NInChannels() && inChannels[static_cast<std::size_t>(idx)].connected;
}

bool IPlugBase::IsOutChannelConnected(int idx) const
{
    return idx >= 0 && idx < NOutChannels() && outChannels[static_cast<std::size_t>(idx)].connected;
}

void IPlugBase::SetInputLabel(int idx, std::string_view text)
{
    if (idx >= 0 && idx < kMaxLabels) mInputLabels[idx] = text;
}

void IPlugBase::SetOutputLabel(int idx, std::string_view text)
{
    if (idx >= 0 && idx < kMaxLabels) mOutputLabels[idx] = text;
}

const std::string& IPlugBase::GetInputLabel(int idx) const
{
    return idx >= 0 && idx < kMaxLabels ? mInputLabels[idx] : kNoLabel;
}

const std::string& IPlugBase::GetOutputLabel(int idx) const
{
    return idx >= 0 && idx < kMaxLabels ? mOutputLabels[idx] : kNoLabel;
}

namespace
{
// Runs f over the channels idx .. idx + n - 1 that exist, with their index within the run.
template <typename F> void ForRun(std::vector<IChannel>& channels, int idx, int n, F&& f)
{
    const int first = std::max(idx, 0);
    const int last = std::min(idx + n, static_cast<int>(channels.size()));
    for (int ch = first; ch < last; ++ch)
        f(channels[static_cast<std::size_t>(ch)], ch - idx);
}
} // namespace

void IPlugBase::SetInputChannelConnections(int idx, int n, bool connected)
{
    ForRun(inChannels, idx, n, [&](IChannel& ch, int) { ch.connected = connected; });
}

void IPlugBase::SetOutputChannelConnections(int idx, int n, bool connected)
{
    ForRun(outChannels, idx, n, [&](IChannel& ch, int) { ch.connected = connected; });
}

namespace
{
// Enters the host's pointers of one sample type for a run of channels; an unconnected channel
// keeps none and reads as silence.
void AttachRun(std::vector<IChannel>& channels, int idx, int n, double** buffers)
{
    ForRun(channels, idx, n,
           [&](IChannel& ch, int k)
           {
               ch.mHostDouble = ch.connected ? buffers[k] : nullptr;
               ch.mHostFloat = nullptr;
           });
}
void AttachRun(std::vector<IChannel>& channels, int idx, int n, float** buffers)
{
    ForRun(channels, idx, n,
           [&](IChannel& ch, int k)
           {
               ch.mHostFloat = ch.connected ? buffers[k] : nullptr;
               ch.mHostDouble = nullptr;
           });
}
} // namespace

void IPlugBase::AttachInputBuffers(int idx, int n, double** buffers, int)
{
    AttachRun(inChannels, idx, n, buffers);
}
void IPlugBase::AttachInputBuffers(int idx, int n, float** buffers, int)
{
    AttachRun(inChannels, idx, n, buffers);
}
void IPlugBase::AttachOutputBuffers(int idx, int n, double** buffers, int)
{
    AttachRun(outChannels, idx, n, buffers);
}
void IPlugBase::AttachOutputBuffers(int idx, int n, float** buffers, int)
{
    AttachRun(outChannels, idx, n, buffers);
}

void IPlugBase::ZeroScratchBuffers()
{
    for (auto* side : {&inChannels, &outChannels})
        for (IChannel& ch : *side)
            std::fill(ch.mOwn.begin(), ch.mOwn.end(), 0.0);
}

// Only noted: the own buffers never move, and a set-up allocates nothing. A host that announces a
// new block size while its audio thread is still inside a call (which hosts must not do) then
// finds nothing freed under that call.
void IPlugBase::SetBlockSize(int samples)
{
    if (samples <= 0) return;
    blockSize = samples;
}

void IPlugBase::SetLatency(int samples)
{
    latency = std::max(samples, 0);
}

void IPlugBase::SetHost(std::string_view name, int version)
{
    host = name;
    hostVersion = version;
}

// ---- Audio ------------------------------------------------------------------------------------

void IPlugBase::ProcessDoubleReplacing(double** inputs, double** outputs, int nFrames) QUORVEX_NONBLOCKING
{
    const int nIn = NInChannels();
    for (int ch = 0; ch < NOutChannels(); ++ch)
    {
        if (ch < nIn)
            std::copy_n(inputs[ch], nFrames, outputs[ch]);
        else
            std::fill_n(outputs[ch], nFrames, 0.0);
    }
}

// The engine's view of input ch from sample offset on: the host's doubles, or the own buffer
// (silence for an unconnected channel, the converted floats otherwise).
double* IPlugBase::InputSource(int ch, int offset)
{
    IChannel& channel = inChannels[static_cast<std::size_t>(ch)];
    if (channel.connected && channel.mHostDouble != nullptr) return channel.mHostDouble + offset;
    return channel.mOwn.data();
}

double* IPlugBase::OutputTarget(int ch, int offset)
{
    IChannel& channel = outChannels[static_cast<std::size_t>(ch)];
    if (channel.connected && channel.mHostDouble != nullptr) return channel.mHostDouble + offset;
    return channel.mOwn.data();
}

void IPlugBase::ProcessBuffers(double, int nFrames) QUORVEX_NONBLOCKING
{
    ProcessInPieces(nFrames, false);
}
void IPlugBase::ProcessBuffers(float, int nFrames) QUORVEX_NONBLOCKING
{
    ProcessInPieces(nFrames, true);
}

// The engine always works on doubles: a double host's buffers are used in place, a float host's
// are converted into the channels' own buffers and back. Runs longer than those buffers go
// through in pieces, whatever block size the host announced.
void IPlugBase::ProcessInPieces(int nFrames, bool floatHost)
{
    nFrames = std::max(nFrames, 0);
    const int piece = kPieceFrames;
    int done = 0;
    do
    {
        const int n = std::min(nFrames - done, piece);
        for (int ch = 0; ch < NInChannels(); ++ch)
        {
            IChannel& channel = inChannels[static_cast<std::size_t>(ch)];
            double* own = channel.mOwn.data();
            if (floatHost && channel.connected && channel.mHostFloat != nullptr)
                std::copy_n(channel.mHostFloat + done, n, own);
            else if (floatHost || !channel.connected || channel.mHostDouble == nullptr)
                std::fill_n(own, n, 0.0);
            mInPtrs[static_cast<std::size_t>(ch)] = floatHost ? own : InputSource(ch, done);
        }
        for (int ch = 0; ch < NOutChannels(); ++ch)
            mOutPtrs[static_cast<std::size_t>(ch)] =
                floatHost ? outChannels[static_cast<std::size_t>(ch)].mOwn.data() : OutputTarget(ch, done);
        ProcessDoubleReplacing(mInPtrs.data(), mOutPtrs.data(), n);
        if (floatHost)
            for (IChannel& channel : outChannels)
                if (channel.connected && channel.mHostFloat != nullptr)
                    for (int i = 0; i < n; ++i)
                        channel.mHostFloat[done + i] =
                            static_cast<float>(channel.mOwn[static_cast<std::size_t>(i)]);
        done += n;
    } while (done < nFrames);
}

void IPlugBase::AdoptLatency()
{
    const int wanted = std::min(static_cast<int>(latency), latencyDelay.mCapacity);
    if (wanted == latencyDelay.mLength) return;
    latencyDelay.mLength = wanted;
    RestartBypassDelay();
}

void IPlugBase::RestartBypassDelay()
{
    latencyDelay.mPos = 0;
    std::fill(latencyDelay.mRing.begin(), latencyDelay.mRing.end(), 0.0);
}

namespace
{
template <typename Sample> Sample* HostPointer(IChannel& channel);
template <> double* HostPointer<double>(IChannel& channel)
{
    return channel.mHostDouble;
}
template <> float* HostPointer<float>(IChannel& channel)
{
    return channel.mHostFloat;
}
} // namespace

// Input channel c goes to output channel c; outputs without an input get silence.
template <typename Sample> void IPlugBase::PassThrough(int nFrames)
{
    nFrames = std::max(nFrames, 0);
    AdoptLatency();
    const int nIn = NInChannels();
    const int nOut = NOutChannels();
    const int length = latencyDelay.mLength;
    const int startPos = latencyDelay.mPos;

    for (int ch = 0; ch < std::max(nIn, nOut); ++ch)
    {
        const Sample* src = nullptr;
        if (ch < nIn)
        {
            IChannel& in = inChannels[static_cast<std::size_t>(ch)];
            if (in.connected) src = HostPointer<Sample>(in);
        }
        Sample* dst = nullptr;
        if (ch < nOut)
        {
            IChannel& out = outChannels[static_cast<std::size_t>(ch)];
            if (out.connected) dst = HostPointer<Sample>(out);
        }

        if (length == 0 || ch >= nIn)
        {
            if (dst != nullptr)
                for (int i = 0; i < nFrames; ++i)
                    dst[i] = src != nullptr ? src[i] : Sample(0);
            continue;
        }

        // Read before write, sample by sample, so that in-place host buffers are safe.
        double* ring = latencyDelay.mRing.data() + static_cast<std::size_t>(ch) * latencyDelay.mCapacity;
        int pos = startPos;
        for (int i = 0; i < nFrames; ++i)
        {
            const double x = src != nullptr ? static_cast<double>(src[i]) : 0.0;
            const double y = ring[pos];
            ring[pos] = x;
            if (dst != nullptr) dst[i] = static_cast<Sample>(y);
            if (++pos == length) pos = 0;
        }
    }
    if (length > 0)
        latencyDelay.mPos = static_cast<int>((startPos + static_cast<long long>(nFrames)) % length);
}

void IPlugBase::PassThroughBuffers(double, int nFrames) QUORVEX_NONBLOCKING
{
    PassThrough<double>(nFrames);
}

void IPlugBase::PassThroughBuffers(float, int nFrames) QUORVEX_NONBLOCKING
{
    PassThrough<float>(nFrames);
}
