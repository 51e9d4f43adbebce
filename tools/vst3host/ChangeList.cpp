#include "ChangeList.h"

#include "QueryAnswer.h"

namespace vst3host
{
using namespace Steinberg;
using namespace Steinberg::Vst;

tresult PLUGIN_API ChangeQueue::queryInterface(const TUID iid, void** obj)
{
    return QueryAnswer<IParamValueQueue>(this, iid, obj);
}

int32 PLUGIN_API ChangeQueue::getPointCount()
{
    return static_cast<int32>(mPoints.size());
}

tresult PLUGIN_API ChangeQueue::getPoint(int32 index, int32& sampleOffset, ParamValue& value)
{
    if (index < 0 || index >= getPointCount()) return kResultFalse;
    sampleOffset = mPoints[static_cast<size_t>(index)].first;
    value = mPoints[static_cast<size_t>(index)].second;
    return kResultTrue;
}

tresult PLUGIN_API ChangeQueue::addPoint(int32 sampleOffset, ParamValue value, int32& index)
{
    // A later point at the same offset replaces the earlier one; points stay in offset order.
    for (size_t i = 0; i < mPoints.size(); ++i)
    {
        if (mPoints[i].first == sampleOffset)
        {
            mPoints[i].second = value;
            index = static_cast<int32>(i);
            return kResultTrue;
        }
        if (mPoints[i].first > sampleOffset) return kResultFalse;
    }
    index = getPointCount();
    mPoints.emplace_back(sampleOffset, value);
    return kResultTrue;
}

tresult PLUGIN_API ChangeList::queryInterface(const TUID iid, void** obj)
{
    return QueryAnswer<IParameterChanges>(this, iid, obj);
}

int32 PLUGIN_API ChangeList::getParameterCount()
{
    return static_cast<int32>(mQueues.size());
}

IParamValueQueue* PLUGIN_API ChangeList::getParameterData(int32 index)
{
    return index >= 0 && index < getParameterCount() ? &mQueues[static_cast<size_t>(index)] : nullptr;
}

IParamValueQueue* PLUGIN_API ChangeList::addParameterData(const ParamID& id, int32& index)
{
    for (size_t i = 0; i < mQueues.size(); ++i)
        if (mQueues[i].getParameterId() == id)
        {
            index = static_cast<int32>(i);
            return &mQueues[i];
        }
    index = getParameterCount();
    return &mQueues.emplace_back(id);
}

void ChangeList::Add(ParamID id, int32 offset, ParamValue value)
{
    int32 index = 0;
    addParameterData(id, index)->addPoint(offset, value, index);
}
} // namespace vst3host
