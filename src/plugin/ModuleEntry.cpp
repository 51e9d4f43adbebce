// The module's three exported entry points on Linux: ModuleEntry and ModuleExit bracket the module's
// use by a host, GetPluginFactory hands out the one factory. Called on the host's UI thread.

#include "host/IPlugVST3.h"
#include "host/PlugClassInfo.h"
#include "host/PlugInstance.h"
#include "host/PluginFactory.h"

#include <cstring>
#include <mutex>

using namespace Steinberg;

namespace
{
std::mutex gModuleMutex;
int gModuleUsers = 0;

FUnknown* CreateEffect()
{
    // The host gets the audio processor side; it asks for every other side through queryInterface.
    IPlugVST3* plug = CreatePlugInstance();
    return plug ? static_cast<Vst::IAudioProcessor*>(plug) : nullptr;
}

PluginFactory& Factory()
{
    static PluginFactory factory(PFactoryInfo(PlugClassInfo::kVendor, PlugClassInfo::kUrl,
                                              PlugClassInfo::kEmail, PlugClassInfo::kFactoryFlags));
    static const bool registered = []
    {
        TUID cid;
        std::memcpy(cid, PlugClassInfo::kClassId, sizeof(cid));
        factory.RegisterClass(PClassInfo2(cid, PlugClassInfo::kCardinality, PlugClassInfo::kCategory,
                                          PlugClassInfo::kName, PlugClassInfo::kClassFlags,
                                          PlugClassInfo::kSubCategories, PlugClassInfo::kVendor,
                                          PlugClassInfo::kVersion, PlugClassInfo::kSdkVersion),
                              &CreateEffect);
        return true;
    }();
    (void)registered;
    return factory;
}
} // namespace

extern "C"
{

    __attribute__((visibility("default"))) bool ModuleEntry(void*)
    {
        std::lock_guard<std::mutex> lock(gModuleMutex);
        ++gModuleUsers;
        return true;
    }

    __attribute__((visibility("default"))) bool ModuleExit()
    {
        std::lock_guard<std::mutex> lock(gModuleMutex);
        if (gModuleUsers <= 0) return false;
        --gModuleUsers;
        return true;
    }

    __attribute__((visibility("default"))) IPluginFactory* PLUGIN_API GetPluginFactory()
    {
        try
        {
            PluginFactory& factory = Factory();
            factory.addRef();
            return &factory;
        }
        catch (...)
        {
            return nullptr;
        }
    }
}
