#pragma once
// The whole engine driven as a host drives it, for the speed measurements: a patch set through the
// parameter records and OnParamChange, Reset at 48 kHz, then 512-frame host calls cycling through
// pre-generated noise, so that no signal generator is inside what is measured.

#include "BenchNoise.h"
#include "BenchPatches.h"
#include "BenchPlug.h"
#include "engine/Quorvex.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench_engine
{
inline constexpr double kRate = 48000.0;
inline constexpr int kHostBlock = 512;
inline constexpr int kNoiseBlocks = 16;
// Two seconds before measuring, so feedback paths and lines are full when the clock starts.
inline constexpr int kWarmupCalls = int(2.0 * kRate) / kHostBlock;

using bench_noise::Noise;

class EngineDriver
{
  public:
    explicit EngineDriver(bench_patches::Patch patch) : mPlug(new Quorvex())
    {
        mPlug->SetSampleRate(kRate);
        for (const auto& [id, value] : bench_patches::PatchSettings(patch))
            bench_plug::Set(*mPlug, id, value);
        mPlug->Reset();
        const std::size_t len = std::size_t(kNoiseBlocks) * kHostBlock;
        mInL = Noise(len, 11);
        mInR = Noise(len, 23);
    }

    // One host call of kHostBlock frames, the next block of noise in.
    void Call()
    {
        const std::size_t at = std::size_t(mBlock) * kHostBlock;
        double* inputs[4] = {mInL.data() + at, mInR.data() + at, mSilence.data(), mSilence.data()};
        double* outputs[2] = {mOutL.data(), mOutR.data()};
        mPlug->ProcessDoubleReplacing(inputs, outputs, kHostBlock);
        mBlock = (mBlock + 1) % kNoiseBlocks;
    }

    void WarmUp()
    {
        for (int i = 0; i < kWarmupCalls; ++i)
            Call();
    }

    const double* OutL() const { return mOutL.data(); }
    const double* OutR() const { return mOutR.data(); }

  private:
    bench_plug::QuorvexPtr mPlug;
    std::vector<double> mInL, mInR;
    std::vector<double> mSilence = std::vector<double>(kHostBlock, 0.0);
    std::vector<double> mOutL = std::vector<double>(kHostBlock, 0.0);
    std::vector<double> mOutR = std::vector<double>(kHostBlock, 0.0);
    int mBlock = 0;
};
} // namespace bench_engine
