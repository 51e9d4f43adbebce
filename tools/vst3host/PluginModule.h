#pragma once
// One loaded VST 3 module: the shared object opened with dlopen, its entry called, its factory
// held. Destruction releases the factory, calls the exit function and closes the object, so every
// instance made from the factory must be gone first. Single-threaded use.

#include "pluginterfaces/base/ipluginbase.h"

#include <memory>
#include <string>

namespace vst3host
{
class PluginModule
{
  public:
    // path is a bundle folder (Name.vst3) or the binary inside it. Null with error set on failure.
    static std::unique_ptr<PluginModule> Load(const std::string& path, std::string& error);
    ~PluginModule();
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    Steinberg::IPluginFactory* Factory() const { return mFactory; }
    const std::string& BinaryPath() const { return mBinary; }

  private:
    PluginModule() = default;

    std::string mBinary;
    void* mHandle = nullptr;
    bool mEntered = false;
    Steinberg::IPluginFactory* mFactory = nullptr;
};
} // namespace vst3host
