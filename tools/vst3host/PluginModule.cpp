#include "PluginModule.h"

#include <dlfcn.h>

#include <filesystem>

namespace vst3host
{
namespace
{
using EntryFn = bool (*)(void*);
using ExitFn = bool (*)();
using FactoryFn = Steinberg::IPluginFactory* (*)();

// A bundle keeps its Linux binary at Contents/x86_64-linux/<bundle name without .vst3>.so.
std::string BinaryOf(const std::string& path)
{
    namespace fs = std::filesystem;
    const fs::path p(path);
    std::error_code ec;
    if (!fs::is_directory(p, ec)) return path;
    const fs::path bundle = p.filename().empty() ? p.parent_path() : p;
    return (bundle / "Contents" / "x86_64-linux" / (bundle.stem().string() + ".so")).string();
}
} // namespace

std::unique_ptr<PluginModule> PluginModule::Load(const std::string& path, std::string& error)
{
    std::unique_ptr<PluginModule> module(new PluginModule);
    module->mBinary = BinaryOf(path);
    if (!std::filesystem::is_regular_file(module->mBinary))
    {
        error = "no plug-in binary at " + module->mBinary;
        return nullptr;
    }
    module->mHandle = dlopen(module->mBinary.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module->mHandle)
    {
        const char* why = dlerror();
        error = "cannot load " + module->mBinary + ": " + (why ? why : "unknown reason");
        return nullptr;
    }
    const auto entry = reinterpret_cast<EntryFn>(dlsym(module->mHandle, "ModuleEntry"));
    const auto getFactory = reinterpret_cast<FactoryFn>(dlsym(module->mHandle, "GetPluginFactory"));
    if (!getFactory)
    {
        error = module->mBinary + " exports no GetPluginFactory";
        return nullptr;
    }
    if (entry)
    {
        if (!entry(module->mHandle))
        {
            error = module->mBinary + ": ModuleEntry failed";
            return nullptr;
        }
        module->mEntered = true;
    }
    module->mFactory = getFactory();
    if (!module->mFactory)
    {
        error = module->mBinary + " gave no plug-in factory";
        return nullptr;
    }
    return module;
}

PluginModule::~PluginModule()
{
    if (mFactory) mFactory->release();
    if (mEntered)
        if (const auto exit = reinterpret_cast<ExitFn>(dlsym(mHandle, "ModuleExit"))) exit();
    if (mHandle) dlclose(mHandle);
}
} // namespace vst3host
