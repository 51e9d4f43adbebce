// Times Quorvex's patches beside free LV2 plug-ins doing comparable work, in one process and under
// the same conditions: pinned to one CPU, thread CPU time, two seconds of warm-up for everyone,
// then rounds in which every contestant plays the same pre-generated noise in turn (the order
// rotating each round), 48 kHz, 512-frame blocks. For every pair the ratio Quorvex / peer is taken
// within each round, so slow phases of a shared machine hit both sides of a ratio alike.
// Quorvex runs from the built VST 3 bundle in 64-bit; the peers run in LV2's 32-bit float.
//   quorvex_sidebyside [--rounds N] [--blocks N] [--cpu N] [--bundle path/Quorvex.vst3]

#include "BenchPatches.h"
#include "BundleRunner.h"
#include "Lv2Host.h"

#include <sched.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{
using bench_patches::Patch;
constexpr double kRate = 48000.0;
constexpr int kBlock = 512;
constexpr int kNoiseBlocks = 16;
constexpr int kWarmupBlocks = int(2.0 * kRate) / kBlock;

struct Contestant
{
    std::string label;
    std::function<void(int noiseBlock)> run;
    std::vector<double> nsPerFrame; // one per round
    const double* outD = nullptr;   // its left output, in one of the two formats
    const float* outF = nullptr;
};

double LeftRms(const Contestant& c, int n)
{
    double energy = 0.0;
    for (int i = 0; i < n; ++i)
    {
        const double v = c.outD != nullptr ? c.outD[i] : double(c.outF[i]);
        energy += v * v;
    }
    return std::sqrt(energy / n);
}

struct Stats
{
    double median, low, high;
};

Stats Summary(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    const double median = n % 2 != 0 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
    return {median, v.front(), v.back()};
}

double ThreadSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

bool PinToCpu(int cpu)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(cpu, &set);
    return sched_setaffinity(0, sizeof(set), &set) == 0;
}

std::map<std::string, float> Numbered(const std::map<std::string, float>& perLine, int lines)
{
    std::map<std::string, float> out;
    for (int i = 0; i < lines; ++i)
        for (const auto& [symbol, value] : perLine)
            out[symbol + std::to_string(i)] = value;
    return out;
}

// Four lines of the artistic delay, each with its low and high cut and feedback on. The lines'
// equalisers stay off: flat, they change nothing of the sound and only add work.
std::map<std::string, float> ArtDelayFourLines()
{
    std::map<std::string, float> c =
        Numbered({{"on", 1.0f}, {"lc", 1.0f}, {"hc", 1.0f}, {"fbe", 1.0f}, {"fbg", 0.4f}}, 4);
    for (int i = 0; i < 4; ++i)
        c["frac" + std::to_string(i)] = 0.25f * float(i + 1);
    return c;
}

// Sixteen taps of the slapback delay in time mode, each with its low and high cut. Here the cuts
// work with the tap's equaliser off, and it stays off: our taps have no equaliser either.
std::map<std::string, float> SlapbackSixteenTaps()
{
    std::map<std::string, float> c = Numbered({{"dm", 1.0f}, {"lfc", 1.0f}, {"hfc", 1.0f}}, 16);
    for (int i = 0; i < 16; ++i)
        c["dt" + std::to_string(i)] = 20.0f + 50.0f * float(i);
    return c;
}

const char* const kCalfVintage = "http://calf.sourceforge.net/plugins/VintageDelay";
const char* const kLspArtDelay = "http://lsp-plug.in/plugins/lv2/art_delay_stereo";
const char* const kLspSlapback = "http://lsp-plug.in/plugins/lv2/slap_delay_stereo";
const char* const kX42Dpl = "http://gareus.org/oss/lv2/dpl#stereo";
const char* const kZitaRev1 = "http://guitarix.sourceforge.net/plugins/gx_zita_rev1_stereo#_zita_rev1_stereo";

struct Row
{
    std::string patch;
    int quorvex;
    int quorvexBase; // subtracted from quorvex each round, or -1
    int peer;
};
} // namespace

int main(int argc, char** argv)
{
    int rounds = 15;
    int blocks = 94; // about one second of audio per turn
    int cpu = -1;
    std::string bundle = QUORVEX_BUNDLE_DIR;
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const std::string key = argv[i];
        if (key == "--rounds")
            rounds = std::max(1, std::atoi(argv[i + 1]));
        else if (key == "--blocks")
            blocks = std::max(1, std::atoi(argv[i + 1]));
        else if (key == "--cpu")
            cpu = std::atoi(argv[i + 1]);
        else if (key == "--bundle")
            bundle = argv[i + 1];
        else
        {
            std::fprintf(stderr, "unknown option %s\n", key.c_str());
            return 2;
        }
    }
    // Pinned before anything loads, so that threads the plug-ins start share the one CPU.
    if (cpu < 0) cpu = sched_getcpu();
    if (!PinToCpu(cpu))
    {
        std::fprintf(stderr, "could not pin to CPU %d\n", cpu);
        return 1;
    }

    // One more block after the noise, left silent: the look at the contestants' tails plays it.
    const std::size_t len = std::size_t(kNoiseBlocks + 1) * kBlock;
    std::vector<double> dL(len), dR(len);
    std::uint32_t x = 11;
    for (std::size_t i = 0; i < std::size_t(kNoiseBlocks) * kBlock; ++i)
    {
        x = x * 1664525u + 1013904223u;
        dL[i] = 0.5 * (double(x >> 8) / 8388608.0 - 1.0);
        x = x * 1664525u + 1013904223u;
        dR[i] = 0.5 * (double(x >> 8) / 8388608.0 - 1.0);
    }
    std::vector<float> fL(dL.begin(), dL.end()), fR(dR.begin(), dR.end());
    std::vector<double> qOutL(kBlock), qOutR(kBlock);
    std::vector<float> pOutL(kBlock), pOutR(kBlock), sumL(kBlock), sumR(kBlock);

    std::string error;
    std::unique_ptr<vst3host::PluginModule> module = vst3host::PluginModule::Load(bundle, error);
    if (module == nullptr)
    {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    lv2time::Lv2World world(kRate, kBlock);

    std::vector<std::unique_ptr<bench_bundle::BundleRunner>> runners;
    std::vector<std::unique_ptr<lv2time::Lv2Instance>> instances;
    std::vector<Contestant> contestants;
    bool failed = false;

    const auto addQuorvex = [&](Patch patch)
    {
        auto runner = bench_bundle::BundleRunner::Open(*module, patch, error);
        if (runner == nullptr)
        {
            std::fprintf(stderr, "Quorvex %s: %s\n", bench_patches::kPatchNames[patch].data(), error.c_str());
            failed = true;
            return -1;
        }
        bench_bundle::BundleRunner* r = runner.get();
        runners.push_back(std::move(runner));
        contestants.push_back({"Quorvex " + std::string(bench_patches::kPatchNames[patch]),
                               [&, r](int b)
                               {
                                   const std::size_t at = std::size_t(b) * kBlock;
                                   r->Call(dL.data() + at, dR.data() + at, qOutL.data(), qOutR.data());
                               },
                               {},
                               qOutL.data(),
                               nullptr});
        return int(contestants.size()) - 1;
    };
    // One peer, or several on the same input with their outputs summed.
    const auto addPeer = [&](const std::string& label,
                             const std::vector<std::pair<const char*, std::map<std::string, float>>>& chain)
    {
        std::vector<lv2time::Lv2Instance*> parts;
        for (const auto& [uri, controls] : chain)
        {
            auto instance = lv2time::Lv2Instance::Create(world, uri, controls, error);
            if (instance == nullptr)
            {
                std::fprintf(stderr, "%s\n", error.c_str());
                failed = true;
                return -1;
            }
            parts.push_back(instance.get());
            instances.push_back(std::move(instance));
        }
        contestants.push_back({label,
                               [&, parts](int b)
                               {
                                   const std::size_t at = std::size_t(b) * kBlock;
                                   if (parts.size() == 1)
                                   {
                                       parts[0]->Run(fL.data() + at, fR.data() + at, pOutL.data(),
                                                     pOutR.data());
                                       return;
                                   }
                                   std::fill(sumL.begin(), sumL.end(), 0.0f);
                                   std::fill(sumR.begin(), sumR.end(), 0.0f);
                                   for (lv2time::Lv2Instance* p : parts)
                                   {
                                       p->Run(fL.data() + at, fR.data() + at, pOutL.data(), pOutR.data());
                                       for (int i = 0; i < kBlock; ++i)
                                       {
                                           sumL[std::size_t(i)] += pOutL[std::size_t(i)];
                                           sumR[std::size_t(i)] += pOutR[std::size_t(i)];
                                       }
                                   }
                               },
                               {},
                               nullptr,
                               parts.size() == 1 ? pOutL.data() : sumL.data()});
        return int(contestants.size()) - 1;
    };

    std::vector<Row> rows;
    const int qDefault = addQuorvex(bench_patches::kPatchDefault);
    rows.push_back({"default", qDefault, -1,
                    addPeer("Calf Vintage Delay (ping-pong, tape)",
                            {{kCalfVintage, {{"mix_mode", 1.0f}, {"medium", 1.0f}}}})});
    rows.push_back(
        {"4 x FORWARD, DI 50", addQuorvex(bench_patches::kPatchFourForward), -1,
         addPeer("LSP Artistic Delay stereo, 4 lines, lo/hi cut", {{kLspArtDelay, ArtDelayFourLines()}})});
    rows.push_back(
        {"TAPPED 16, swell 100", addQuorvex(bench_patches::kPatchTapped16Swell), -1,
         addPeer("LSP Slapback stereo, 16 taps, lo/hi cut", {{kLspSlapback, SlapbackSixteenTaps()}})});
    const int qLimiter = addQuorvex(bench_patches::kPatchLimiterSlowI);
    const int dpl = addPeer("x42 dpl stereo", {{kX42Dpl, {}}});
    rows.push_back({"limiter SLOW I alone", qLimiter, -1, dpl});
    // The limiter's own share: the engine with its slots off costs something without it.
    rows.push_back(
        {"limiter SLOW I share (minus all off)", qLimiter, addQuorvex(bench_patches::kPatchAllOff), dpl});
    rows.push_back(
        {"heavy", addQuorvex(bench_patches::kPatchHeavy), -1,
         addPeer(
             "LSP 4 lines + LSP Slapback 16 + zita-rev1",
             {{kLspArtDelay, ArtDelayFourLines()}, {kLspSlapback, SlapbackSixteenTaps()}, {kZitaRev1, {}}})});
    rows.push_back({"hall added to default", addQuorvex(bench_patches::kPatchDefaultHall), qDefault,
                    addPeer("zita-rev1 stereo (guitarix)", {{kZitaRev1, {}}})});
    if (failed) return 1;

    std::printf("CPU %d, %d rounds of %d blocks of %d frames at %.0f Hz per contestant, thread CPU time\n",
                cpu, rounds, blocks, kBlock, kRate);
    std::printf("Quorvex: VST 3 bundle %s (64-bit); peers: LV2 (32-bit float)\n\n", bundle.c_str());

    // Warm-up, then a look at the output: with noise in, and the tail with one block of silence in
    // (a delay or reverb that only passed the dry signal would be timed doing nothing; a limiter's
    // tail is its look-ahead). A few more blocks of noise then settle everyone again.
    int block = 0;
    const auto play = [&](Contestant& c, int blocks)
    {
        for (int i = 0; i < blocks; ++i)
        {
            c.run(block);
            block = (block + 1) % kNoiseBlocks;
        }
    };
    for (Contestant& c : contestants)
    {
        play(c, kWarmupBlocks);
        const double rms = LeftRms(c, kBlock);
        c.run(kNoiseBlocks);
        const double tail = LeftRms(c, kBlock);
        play(c, kNoiseBlocks);
        std::printf("  %-48s output RMS %.4f, tail RMS %.4f%s\n", c.label.c_str(), rms, tail,
                    rms > 1e-6 && std::isfinite(rms) && std::isfinite(tail) ? ""
                                                                            : "  <- silent or not finite");
    }
    std::printf("\n");

    const int n = int(contestants.size());
    for (int r = 0; r < rounds; ++r)
        for (int k = 0; k < n; ++k)
        {
            Contestant& c = contestants[std::size_t((k + r) % n)];
            const double start = ThreadSeconds();
            for (int i = 0; i < blocks; ++i)
            {
                c.run(block);
                block = (block + 1) % kNoiseBlocks;
            }
            c.nsPerFrame.push_back((ThreadSeconds() - start) * 1e9 / (double(blocks) * kBlock));
        }

    std::printf(
        "| Patch | Quorvex ns/frame | peer | peer ns/frame | ratio Quorvex/peer median (min-max) |\n");
    std::printf("|---|---|---|---|---|\n");
    for (const Row& row : rows)
    {
        const Contestant& q = contestants[std::size_t(row.quorvex)];
        const Contestant& p = contestants[std::size_t(row.peer)];
        std::vector<double> qv(q.nsPerFrame), ratio;
        for (int r = 0; r < rounds; ++r)
        {
            if (row.quorvexBase >= 0)
                qv[std::size_t(r)] -= contestants[std::size_t(row.quorvexBase)].nsPerFrame[std::size_t(r)];
            ratio.push_back(qv[std::size_t(r)] / p.nsPerFrame[std::size_t(r)]);
        }
        const Stats qs = Summary(qv), ps = Summary(p.nsPerFrame), rs = Summary(ratio);
        std::printf("| %s | %.1f (%.1f-%.1f) | %s | %.1f (%.1f-%.1f) | %.2f (%.2f-%.2f) |\n",
                    row.patch.c_str(), qs.median, qs.low, qs.high, p.label.c_str(), ps.median, ps.low,
                    ps.high, rs.median, rs.low, rs.high);
    }
    return 0;
}
