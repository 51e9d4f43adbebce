#pragma once
// The parameter changes a host hands to one process call: one queue per parameter id, each a list
// of (sample offset, normalised value) points in offset order. Owned by the host on its stack;
// reference counting is not used. Filled and cleared by the thread that calls process.

#include "pluginterfaces/vst/ivstparameterchanges.h"

#include <deque>
#include <utility>
#include <vector>

namespace vst3host
{
class ChangeQueue final : public Steinberg::Vst::IParamValueQueue
{
  public:
    explicit ChangeQueue(Steinberg::Vst::ParamID id) : mId(id) {}

    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

    Steinberg::Vst::ParamID PLUGIN_API getParameterId() override { return mId; }
    Steinberg::int32 PLUGIN_API getPointCount() override;
    Steinberg::tresult PLUGIN_API getPoint(Steinberg::int32 index, Steinberg::int32& sampleOffset,
                                           Steinberg::Vst::ParamValue& value) override;
    Steinberg::tresult PLUGIN_API addPoint(Steinberg::int32 sampleOffset, Steinberg::Vst::ParamValue value,
                                           Steinberg::int32& index) override;

  private:
    Steinberg::Vst::ParamID mId;
    std::vector<std::pair<Steinberg::int32, Steinberg::Vst::ParamValue>> mPoints;
};

class ChangeList : public Steinberg::Vst::IParameterChanges
{
  public:
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

    Steinberg::int32 PLUGIN_API getParameterCount() override;
    Steinberg::Vst::IParamValueQueue* PLUGIN_API getParameterData(Steinberg::int32 index) override;
    Steinberg::Vst::IParamValueQueue* PLUGIN_API addParameterData(const Steinberg::Vst::ParamID& id,
                                                                  Steinberg::int32& index) override;

    // Adds a point to the queue of id, making the queue when it is the first for id.
    void Add(Steinberg::Vst::ParamID id, Steinberg::int32 offset, Steinberg::Vst::ParamValue value);
    bool Empty() const { return mQueues.empty(); }
    void Clear() { mQueues.clear(); }

  private:
    std::deque<ChangeQueue> mQueues; // a deque keeps handed-out queue addresses valid while it grows
};
} // namespace vst3host
