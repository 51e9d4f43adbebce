#pragma once
// One Quorvex instance from the built VST 3 bundle with a patch of BenchPatches.h, for the speed
// measurements that must see exactly what ships: the patch goes in as one list of parameter
// changes (plain values turned normalised by the plug-in's own controller), then 512-frame blocks
// of 64-bit audio at 48 kHz. The module must outlive the runner.

#include "BenchPatches.h"
#include "PluginInstance.h"
#include "PluginModule.h"

#include <memory>
#include <string>

namespace bench_bundle
{
inline constexpr double kRate = 48000.0;
inline constexpr int kHostBlock = 512;

class BundleRunner
{
  public:
    static std::unique_ptr<BundleRunner> Open(vst3host::PluginModule& module, bench_patches::Patch patch,
                                              std::string& error);
    ~BundleRunner();
    BundleRunner(const BundleRunner&) = delete;
    BundleRunner& operator=(const BundleRunner&) = delete;

    // One host call of kHostBlock frames.
    bool Call(const double* inL, const double* inR, double* outL, double* outR);

  private:
    BundleRunner() = default;
    std::unique_ptr<vst3host::PluginInstance> mPlug;
};
} // namespace bench_bundle
