#include "host/PluginFactory.h"

#include <cstring>
#include <new>

using namespace Steinberg;

PluginFactory::PluginFactory(const PFactoryInfo& info) : mInfo(info) {}

void PluginFactory::RegisterClass(const PClassInfo2& info, CreateFunction create)
{
    mClasses.push_back({info, create});
}

const PluginFactory::Entry* PluginFactory::Find(int32 index) const
{
    if (index < 0 || index >= static_cast<int32>(mClasses.size())) return nullptr;
    return &mClasses[static_cast<size_t>(index)];
}

tresult PLUGIN_API PluginFactory::getFactoryInfo(PFactoryInfo* info)
{
    if (!info) return kInvalidArgument;
    *info = mInfo;
    return kResultOk;
}

int32 PLUGIN_API PluginFactory::countClasses()
{
    return static_cast<int32>(mClasses.size());
}

tresult PLUGIN_API PluginFactory::getClassInfo(int32 index, PClassInfo* info)
{
    const Entry* entry = Find(index);
    if (!info || !entry) return kInvalidArgument;
    *info = PClassInfo(entry->info.cid, entry->info.cardinality, entry->info.category, entry->info.name);
    return kResultOk;
}

tresult PLUGIN_API PluginFactory::getClassInfo2(int32 index, PClassInfo2* info)
{
    const Entry* entry = Find(index);
    if (!info || !entry) return kInvalidArgument;
    *info = entry->info;
    return kResultOk;
}

tresult PLUGIN_API PluginFactory::getClassInfoUnicode(int32 index, PClassInfoW* info)
{
    const Entry* entry = Find(index);
    if (!info || !entry) return kInvalidArgument;
    *info = PClassInfoW{};
    info->fromAscii(entry->info);
    return kResultOk;
}

tresult PLUGIN_API PluginFactory::createInstance(FIDString cid, FIDString iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    *obj = nullptr;
    if (!cid || !iid) return kInvalidArgument;
    for (const Entry& entry : mClasses)
    {
        if (std::memcmp(entry.info.cid, cid, sizeof(TUID)) != 0) continue;
        try
        {
            FUnknown* instance = entry.create();
            if (!instance) return kOutOfMemory;
            const tresult result = instance->queryInterface(reinterpret_cast<const char*>(iid), obj);
            instance->release();
            if (result != kResultOk) *obj = nullptr;
            return result;
        }
        catch (const std::bad_alloc&)
        {
            return kOutOfMemory;
        }
        catch (...)
        {
            return kInternalError;
        }
    }
    return kNoInterface;
}

tresult PLUGIN_API PluginFactory::setHostContext(FUnknown* context)
{
    if (context) context->addRef();
    if (mHostContext) mHostContext->release();
    mHostContext = context;
    return kResultOk;
}

tresult PLUGIN_API PluginFactory::queryInterface(const TUID iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    QUERY_INTERFACE(iid, obj, FUnknown::iid, IPluginFactory)
    QUERY_INTERFACE(iid, obj, IPluginFactory::iid, IPluginFactory)
    QUERY_INTERFACE(iid, obj, IPluginFactory2::iid, IPluginFactory2)
    QUERY_INTERFACE(iid, obj, IPluginFactory3::iid, IPluginFactory3)
    *obj = nullptr;
    return kNoInterface;
}

uint32 PLUGIN_API PluginFactory::addRef()
{
    return ++mRefCount;
}

uint32 PLUGIN_API PluginFactory::release()
{
    if (mRefCount.load() == 0) return 0;
    const uint32 left = --mRefCount;
    if (left == 0) setHostContext(nullptr);
    return left;
}
