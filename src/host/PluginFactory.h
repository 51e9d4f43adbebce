#pragma once
// The module's class factory: describes the registered classes to the host (in ASCII and UTF-16
// forms) and creates instances of them. The module owns the one factory object for its lifetime; the
// host's references only count, and when the last is given back the host context is let go.
// All calls come on the host's UI thread. Nothing thrown by a creation function reaches the host.

#include "pluginterfaces/base/ipluginbase.h"

#include <atomic>
#include <vector>

class PluginFactory : public Steinberg::IPluginFactory3
{
  public:
    // Makes a new object holding one reference for the caller, or null.
    using CreateFunction = Steinberg::FUnknown* (*)();

    explicit PluginFactory(const Steinberg::PFactoryInfo& info);
    virtual ~PluginFactory() = default;
    PluginFactory(const PluginFactory&) = delete;
    PluginFactory& operator=(const PluginFactory&) = delete;

    // Set-up, before the factory is handed to the host.
    void RegisterClass(const Steinberg::PClassInfo2& info, CreateFunction create);

    // IPluginFactory
    Steinberg::tresult PLUGIN_API getFactoryInfo(Steinberg::PFactoryInfo* info) override;
    Steinberg::int32 PLUGIN_API countClasses() override;
    Steinberg::tresult PLUGIN_API getClassInfo(Steinberg::int32 index, Steinberg::PClassInfo* info) override;
    Steinberg::tresult PLUGIN_API createInstance(Steinberg::FIDString cid, Steinberg::FIDString iid,
                                                 void** obj) override;
    // IPluginFactory2
    Steinberg::tresult PLUGIN_API getClassInfo2(Steinberg::int32 index,
                                                Steinberg::PClassInfo2* info) override;
    // IPluginFactory3
    Steinberg::tresult PLUGIN_API getClassInfoUnicode(Steinberg::int32 index,
                                                      Steinberg::PClassInfoW* info) override;
    Steinberg::tresult PLUGIN_API setHostContext(Steinberg::FUnknown* context) override;

    // FUnknown
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override;
    Steinberg::uint32 PLUGIN_API release() override;

  private:
    struct Entry
    {
        Steinberg::PClassInfo2 info;
        CreateFunction create;
    };
    const Entry* Find(Steinberg::int32 index) const;

    Steinberg::PFactoryInfo mInfo;
    std::vector<Entry> mClasses;
    Steinberg::FUnknown* mHostContext = nullptr;
    std::atomic<Steinberg::uint32> mRefCount{0};
};
