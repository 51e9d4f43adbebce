#include "BundleRunner.h"

#include "ChangeList.h"

namespace bench_bundle
{
std::unique_ptr<BundleRunner> BundleRunner::Open(vst3host::PluginModule& module, bench_patches::Patch patch,
                                                 std::string& error)
{
    std::unique_ptr<BundleRunner> runner(new BundleRunner());
    runner->mPlug = vst3host::PluginInstance::Create(module, error);
    if (runner->mPlug == nullptr) return nullptr;
    if (!runner->mPlug->Start(kRate, kHostBlock, error)) return nullptr;

    vst3host::ChangeList changes;
    Steinberg::Vst::IEditController& controller = runner->mPlug->Controller();
    for (const auto& [id, value] : bench_patches::PatchSettings(patch))
    {
        const auto param = static_cast<Steinberg::Vst::ParamID>(id);
        changes.Add(param, 0, controller.plainParamToNormalized(param, value));
    }
    if (!changes.Empty() && !runner->mPlug->Flush(&changes))
    {
        error = "the bundle refused the patch's parameter changes";
        return nullptr;
    }
    return runner;
}

BundleRunner::~BundleRunner()
{
    if (mPlug != nullptr) mPlug->Stop();
}

bool BundleRunner::Call(const double* inL, const double* inR, double* outL, double* outR)
{
    const double* in[2] = {inL, inR};
    double* out[2] = {outL, outR};
    return mPlug->Process(in, out, kHostBlock, nullptr, nullptr);
}
} // namespace bench_bundle
