// Preset costs on the UI thread: loading a file that names all 1095 parameters into a whole
// plug-in (read, parse, apply with every parameter's handler, engine reset), the parse and apply
// alone on a bare parameter table, and rebuilding the preset menu over 1000 files in 40 folders.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

#include <unistd.h>

#include "BenchPlug.h"
#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"
#include "state/IStateHost.h"
#include "state/PresetBrowser.h"
#include "state/PresetFile.h"

namespace
{
namespace fs = std::filesystem;

fs::path ScratchFolder(const char* name)
{
    const fs::path path = fs::temp_directory_path() / (std::string(name) + "-" + std::to_string(::getpid()));
    fs::create_directories(path);
    return path;
}

// Every parameter named, each away from its default, within range and on its step.
std::string FullPresetText()
{
    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, kWaveMenuNames);
    std::string text = "Quorvex V. 1.2.0r14 PresetFile!\nPresetVersion: 14\n\nADDPARAMS:\n\nEParams:\n";
    char number[32];
    for (int id = 0; id < kNumParams; ++id)
    {
        const IParamRecord& p = *params[static_cast<std::size_t>(id)];
        double v = p.min + (p.max - p.min) * 0.37;
        if (p.type != IParamRecord::kTypeDouble) v = std::round(v);
        std::snprintf(number, sizeof(number), "%g", v);
        text += std::string(ParamKey(id)) + " " + number + "\n";
    }
    return text;
}

// A parameter table without an engine: the state layer's share of a load.
class TableHost : public IStateHost
{
  public:
    TableHost() { InitParams(mParams, kWaveMenuNames); }
    std::recursive_mutex& StateMutex() override { return mMutex; }
    int ParamCount() const override { return static_cast<int>(mParams.size()); }
    IParamRecord* Param(int id) override { return mParams[static_cast<std::size_t>(id)].get(); }
    void ParamChanged(int) override {}
    bool WriteParamValues(ByteChunk&) override { return true; }
    int ReadParamValues(const ByteChunk&, int pos) override { return pos; }
    void RedrawControls() override {}
    void ShowMessage(int) override {}
    StateFields& Fields() override { return mFields; }
    void SelectPresetMenuItem(const std::string&, int) override {}

  private:
    std::vector<std::unique_ptr<IParamRecord>> mParams;
    StateFields mFields;
    std::recursive_mutex mMutex;
};

void BM_LoadPresetNamingEveryParameter(benchmark::State& state)
{
    const fs::path base = ScratchFolder("quorvex-bench-presets");
    fs::create_directories(base / "User Presets");
    std::ofstream(base / "User Presets" / "Full.txt") << FullPresetText();
    setenv("QUORVEX_PRESET_DIR", base.c_str(), 1);
    bench_plug::QuorvexPtr plug(new Quorvex());
    plug->SetSampleRate(48000.0);
    plug->LoadPreset("/User Presets/Full.txt"); // effect types built once, outside the timing
    for (auto _ : state)
        benchmark::DoNotOptimize(plug->LoadPreset("/User Presets/Full.txt"));
    plug.reset();
    fs::remove_all(base);
}
BENCHMARK(BM_LoadPresetNamingEveryParameter)->Unit(benchmark::kMillisecond);

void BM_ParseAndApplyEveryParameterOnATable(benchmark::State& state)
{
    const std::string text = FullPresetText();
    TableHost host;
    for (auto _ : state)
    {
        PresetData data;
        ParsePresetText(text, data);
        ApplyPresetParams(host, data);
        benchmark::DoNotOptimize(data.keys.size());
    }
}
BENCHMARK(BM_ParseAndApplyEveryParameterOnATable)->Unit(benchmark::kMillisecond);

void BM_RebuildMenuOverAThousandFilesInFortyFolders(benchmark::State& state)
{
    const fs::path base = ScratchFolder("quorvex-bench-menu");
    for (int folder = 0; folder < 40; ++folder)
    {
        const fs::path dir = base / (folder % 2 == 0 ? "User Presets" : "Factory Presets") /
                             ("Folder " + std::to_string(folder));
        fs::create_directories(dir);
        for (int file = 0; file < 25; ++file)
            std::ofstream(dir / ("Preset " + std::to_string((file * 7) % 25) + ".txt")) << "Quorvex";
    }
    IPresetMenu menu;
    for (auto _ : state)
    {
        menu.Rebuild(base.string());
        benchmark::DoNotOptimize(menu.FlatList().size());
    }
    state.counters["files"] = static_cast<double>(menu.FlatList().size());
    fs::remove_all(base);
}
BENCHMARK(BM_RebuildMenuOverAThousandFilesInFortyFolders)->Unit(benchmark::kMillisecond);
} // namespace
