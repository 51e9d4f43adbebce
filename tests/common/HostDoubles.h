#pragma once
// The host's side of the VST 3 conversation, small enough to read in one go: a memory stream,
// parameter queues, a component handler that records what it hears, a host application, a plug
// frame, and audio buffers wired into ProcessData. They live on the test's stack and ignore
// reference counting; a test releases the plug-in before they go.

#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace hostdoubles
{
using namespace Steinberg;
using namespace Steinberg::Vst;

// Answers queryInterface for FUnknown and the one interface I; counts nothing.
template <typename I> class StackUnknown : public I
{
  public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (FUnknownPrivate::iidEqual(iid, FUnknown::iid) || FUnknownPrivate::iidEqual(iid, I::iid))
        {
            *obj = static_cast<I*>(this);
            return kResultOk;
        }
        *obj = nullptr;
        return kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
};

class MemoryStream : public StackUnknown<IBStream>
{
  public:
    MemoryStream() = default;
    explicit MemoryStream(std::vector<std::uint8_t> bytes) : mBytes(std::move(bytes)) {}

    tresult PLUGIN_API read(void* buffer, int32 numBytes, int32* numBytesRead) override
    {
        const int64 left = static_cast<int64>(mBytes.size()) - mPos;
        const int32 n = static_cast<int32>(std::clamp<int64>(numBytes, 0, std::max<int64>(left, 0)));
        if (n > 0) std::memcpy(buffer, mBytes.data() + mPos, static_cast<size_t>(n));
        mPos += n;
        if (numBytesRead) *numBytesRead = n;
        return n == numBytes ? kResultOk : kResultFalse;
    }
    tresult PLUGIN_API write(void* buffer, int32 numBytes, int32* numBytesWritten) override
    {
        if (mFailWrites || numBytes < 0)
        {
            if (numBytesWritten) *numBytesWritten = 0;
            return kResultFalse;
        }
        if (static_cast<size_t>(mPos + numBytes) > mBytes.size())
            mBytes.resize(static_cast<size_t>(mPos + numBytes));
        if (numBytes > 0) std::memcpy(mBytes.data() + mPos, buffer, static_cast<size_t>(numBytes));
        mPos += numBytes;
        if (numBytesWritten) *numBytesWritten = numBytes;
        return kResultOk;
    }
    tresult PLUGIN_API seek(int64 pos, int32 mode, int64* result) override
    {
        const int64 base = mode == kIBSeekSet   ? 0
                           : mode == kIBSeekCur ? mPos
                                                : static_cast<int64>(mBytes.size());
        mPos = std::clamp<int64>(base + pos, 0, static_cast<int64>(mBytes.size()));
        if (result) *result = mPos;
        return kResultOk;
    }
    tresult PLUGIN_API tell(int64* pos) override
    {
        if (pos) *pos = mPos;
        return kResultOk;
    }

    const std::vector<std::uint8_t>& Bytes() const { return mBytes; }
    bool mFailWrites = false;

  private:
    std::vector<std::uint8_t> mBytes;
    int64 mPos = 0;
};

class ParamValueQueue final : public StackUnknown<IParamValueQueue>
{
  public:
    explicit ParamValueQueue(ParamID id) : mId(id) {}
    ParamID PLUGIN_API getParameterId() override { return mId; }
    int32 PLUGIN_API getPointCount() override { return static_cast<int32>(mPoints.size()); }
    tresult PLUGIN_API getPoint(int32 index, int32& sampleOffset, ParamValue& value) override
    {
        if (index < 0 || index >= getPointCount()) return kResultFalse;
        sampleOffset = mPoints[static_cast<size_t>(index)].first;
        value = mPoints[static_cast<size_t>(index)].second;
        return kResultTrue;
    }
    tresult PLUGIN_API addPoint(int32 sampleOffset, ParamValue value, int32& index) override
    {
        index = getPointCount();
        mPoints.emplace_back(sampleOffset, value);
        return kResultTrue;
    }
    void Reserve(std::size_t points) { mPoints.reserve(points); }

  private:
    ParamID mId;
    std::vector<std::pair<int32, ParamValue>> mPoints;
};

class ParameterChanges : public StackUnknown<IParameterChanges>
{
  public:
    ParameterChanges() { mQueues.reserve(2048); } // queue addresses stay valid while filling
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(mQueues.size()); }
    IParamValueQueue* PLUGIN_API getParameterData(int32 index) override
    {
        return index >= 0 && index < getParameterCount() ? &mQueues[static_cast<size_t>(index)] : nullptr;
    }
    IParamValueQueue* PLUGIN_API addParameterData(const ParamID& id, int32& index) override
    {
        for (size_t i = 0; i < mQueues.size(); ++i)
            if (mQueues[i].getParameterId() == id)
            {
                index = static_cast<int32>(i);
                return &mQueues[i];
            }
        index = getParameterCount();
        mQueues.emplace_back(id);
        return &mQueues.back();
    }
    // Adds a point to the queue of id, making the queue if needed.
    void Add(ParamID id, int32 offset, ParamValue value)
    {
        int32 index = 0;
        addParameterData(id, index)->addPoint(offset, value, index);
    }
    void Clear() { mQueues.clear(); }
    // An empty queue with room for a few points for each id below n, as a host makes its output
    // changes before processing: a plug-in writing them allocates nothing.
    void Prepare(ParamID n)
    {
        for (ParamID id = 0; id < n; ++id)
        {
            int32 index = 0;
            static_cast<ParamValueQueue*>(addParameterData(id, index))->Reserve(8);
        }
    }

  private:
    std::vector<ParamValueQueue> mQueues;
};

// Records the plug-in's calls; counters may be read from any thread.
class ComponentHandler : public StackUnknown<IComponentHandler>
{
  public:
    struct Edit
    {
        char kind; // 'b'egin, 'p'erform, 'e'nd
        ParamID id;
        ParamValue value;
    };
    tresult PLUGIN_API beginEdit(ParamID id) override { return Log({'b', id, 0.0}); }
    tresult PLUGIN_API performEdit(ParamID id, ParamValue value) override { return Log({'p', id, value}); }
    tresult PLUGIN_API endEdit(ParamID id) override { return Log({'e', id, 0.0}); }
    tresult PLUGIN_API restartComponent(int32 flags) override
    {
        if (flags & kLatencyChanged) ++mLatencyRestarts;
        ++mRestarts;
        return kResultOk;
    }
    std::vector<Edit> Edits()
    {
        std::lock_guard lock(mMutex);
        return mEdits;
    }
    void Clear()
    {
        std::lock_guard lock(mMutex);
        mEdits.clear();
        mRestarts = 0;
        mLatencyRestarts = 0;
    }
    std::atomic<int> mRestarts{0};
    std::atomic<int> mLatencyRestarts{0};

  private:
    tresult Log(const Edit& edit)
    {
        std::lock_guard lock(mMutex);
        mEdits.push_back(edit);
        return kResultOk;
    }
    std::mutex mMutex;
    std::vector<Edit> mEdits;
};

class HostApplication : public StackUnknown<IHostApplication>
{
  public:
    tresult PLUGIN_API getName(String128 name) override
    {
        const char text[] = "Quorvex Test Host";
        for (size_t i = 0; i < sizeof(text); ++i)
            name[i] = static_cast<char16>(text[i]);
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(TUID, TUID, void** obj) override
    {
        *obj = nullptr;
        return kResultFalse;
    }
};

class PlugFrame : public StackUnknown<IPlugFrame>
{
  public:
    tresult PLUGIN_API resizeView(IPlugView* view, ViewRect* newSize) override
    {
        ++mResizes;
        mLast = *newSize;
        view->onSize(newSize);
        return kResultTrue;
    }
    int mResizes = 0;
    ViewRect mLast;
};

// Audio buffers for one process call: input buses and output buses of given widths, wired into a
// ProcessData. Sample is float (32-bit processing) or double (64-bit).
template <typename Sample> class AudioRig
{
  public:
    AudioRig(int frames, std::vector<int> inWidths, std::vector<int> outWidths)
        : mFrames(frames), mIn(Make(inWidths, frames)), mOut(Make(outWidths, frames))
    {
        Wire(mIn, mInPtrs, mInBuses);
        Wire(mOut, mOutPtrs, mOutBuses);
        data.processMode = kRealtime;
        data.symbolicSampleSize = sizeof(Sample) == sizeof(double) ? kSample64 : kSample32;
        data.numSamples = frames;
        data.numInputs = static_cast<int32>(mInBuses.size());
        data.numOutputs = static_cast<int32>(mOutBuses.size());
        data.inputs = mInBuses.empty() ? nullptr : mInBuses.data();
        data.outputs = mOutBuses.empty() ? nullptr : mOutBuses.data();
    }
    AudioRig(const AudioRig&) = delete;
    AudioRig& operator=(const AudioRig&) = delete;

    std::vector<Sample>& In(int bus, int ch)
    {
        return mIn[static_cast<size_t>(bus)][static_cast<size_t>(ch)];
    }
    std::vector<Sample>& Out(int bus, int ch)
    {
        return mOut[static_cast<size_t>(bus)][static_cast<size_t>(ch)];
    }
    AudioBusBuffers& InBus(int bus) { return mInBuses[static_cast<size_t>(bus)]; }
    AudioBusBuffers& OutBus(int bus) { return mOutBuses[static_cast<size_t>(bus)]; }
    int Frames() const { return mFrames; }
    // Fills every output sample with v, to see what the plug-in leaves alone.
    void PoisonOutputs(Sample v)
    {
        for (auto& bus : mOut)
            for (auto& ch : bus)
                std::fill(ch.begin(), ch.end(), v);
    }

    ProcessData data;

  private:
    using Buses = std::vector<std::vector<std::vector<Sample>>>;
    static Buses Make(const std::vector<int>& widths, int frames)
    {
        Buses buses;
        for (int w : widths)
            buses.emplace_back(static_cast<size_t>(w),
                               std::vector<Sample>(static_cast<size_t>(std::max(frames, 1)), 0));
        return buses;
    }
    static void Wire(Buses& buses, std::vector<std::vector<Sample*>>& ptrs, std::vector<AudioBusBuffers>& out)
    {
        ptrs.resize(buses.size());
        out.resize(buses.size());
        for (size_t b = 0; b < buses.size(); ++b)
        {
            for (auto& ch : buses[b])
                ptrs[b].push_back(ch.data());
            out[b].numChannels = static_cast<int32>(buses[b].size());
            out[b].silenceFlags = 0;
            if constexpr (sizeof(Sample) == sizeof(double))
                out[b].channelBuffers64 = ptrs[b].empty() ? nullptr : ptrs[b].data();
            else
                out[b].channelBuffers32 = ptrs[b].empty() ? nullptr : ptrs[b].data();
        }
    }

    int mFrames;
    Buses mIn;
    Buses mOut;
    std::vector<std::vector<Sample*>> mInPtrs;
    std::vector<std::vector<Sample*>> mOutPtrs;
    std::vector<AudioBusBuffers> mInBuses;
    std::vector<AudioBusBuffers> mOutBuses;
};
} // namespace hostdoubles
