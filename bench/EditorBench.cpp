// The editor's redraw: a full frame and a typical dirty frame (one knob moved, as in a drag) at
// 100 % and 200 %, into the offscreen raster with the generated art.
#include <benchmark/benchmark.h>

#include "editor/MainLayout.h"
#include "editor/QuorvexEditor.h"
#include "host/IPlugBase.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{
constexpr const char* kWaves[] = {"SINE"};

class BenchPlug : public IPlugBase
{
  public:
    BenchPlug() : IPlugBase(IPlugConfig{.nParams = kNumParams, .channelIOStr = "2-2"})
    {
        InitParams(params, kWaves);
    }
};

struct Editor
{
    BenchPlug plug;
    QuorvexEditor editor{&plug, QUORVEX_ART_DIR};
    explicit Editor(double scale)
    {
        plug.AttachGraphics(&editor);
        editor.SetScale(scale);
        editor.OnTimerTick();
    }
    ~Editor() { plug.AttachGraphics(nullptr); }
    IControl* Knob(int param)
    {
        for (int i = 0; i < editor.NControls(); ++i)
            if (editor.GetControl(i)->ParamIdx() == param) return editor.GetControl(i);
        return nullptr;
    }
};

void BM_EditorFullRedraw(benchmark::State& state)
{
    Editor e(state.range(0) / 100.0);
    for (auto _ : state)
    {
        e.editor.SetAllControlsDirty();
        benchmark::DoNotOptimize(e.editor.OnTimerTick());
    }
}
BENCHMARK(BM_EditorFullRedraw)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);

// One frame of a knob drag: the value moves, the plug-in is told, the knob's rectangle is drawn.
void BM_EditorKnobDragFrame(benchmark::State& state)
{
    Editor e(state.range(0) / 100.0);
    IControl* knob = e.Knob(kDryLevel);
    double v = 0.0;
    for (auto _ : state)
    {
        v = v > 0.99 ? 0.0 : v + 0.01;
        knob->SetValue(v);
        knob->SetDirty(true);
        benchmark::DoNotOptimize(e.editor.OnTimerTick());
    }
}
BENCHMARK(BM_EditorKnobDragFrame)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);

// A tick with nothing changed: what an open, idle editor costs per frame.
void BM_EditorIdleTick(benchmark::State& state)
{
    Editor e(1.0);
    for (auto _ : state)
        benchmark::DoNotOptimize(e.editor.OnTimerTick());
}
BENCHMARK(BM_EditorIdleTick)->Unit(benchmark::kMicrosecond);
} // namespace
