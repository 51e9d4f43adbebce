// The editor with the engine behind it, on its busiest page: the large delay view of a slot with
// all 16 taps in use while audio plays, so the meters move every frame. Measured: one editor tick
// (readouts taken, controls pushed, the dirty part redrawn), a full redraw of that page, and what
// an open window costs the audio thread.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "BenchPlug.h"
#include "editor/QuorvexEditor.h"
#include "params/ParamIds.h"

namespace
{
using bench_plug::QuorvexPtr;
using bench_plug::Set;

constexpr int kFrameSamples = 1920; // one editor frame of audio at 48 kHz and 25 frames a second

struct Session
{
    QuorvexPtr plug{new Quorvex()};
    QuorvexEditor* editor = nullptr;
    std::vector<double> inL, inR, outL, outR;
    double phase = 0.0;

    Session(double scale, bool windowOpen)
        : inL(kFrameSamples), inR(kFrameSamples), outL(kFrameSamples), outR(kFrameSamples)
    {
        plug->SetSampleRate(48000.0);
        plug->SetBlockSize(kFrameSamples);
        Set(*plug, kDelayMode1, 3.0);  // TAPPED
        Set(*plug, kDelayTaps1, 15.0); // all 16 taps
        Set(*plug, kDirectIn1, 50.0);
        Set(*plug, kFeedback1, 40.0);
        editor = dynamic_cast<QuorvexEditor*>(plug->GetGUI());
        editor->SetScale(scale);
        editor->ShowPage(kPageLargeLevels, false);
        if (windowOpen) static_cast<IPlugBase&>(*plug).OnGUIOpen();
        editor->OnTimerTick();
    }
    ~Session() { static_cast<IPlugBase&>(*plug).OnGUIClose(); }

    void Play()
    {
        for (int i = 0; i < kFrameSamples; ++i)
        {
            inL[i] = inR[i] = 0.5 * std::sin(phase);
            phase += 2.0 * M_PI * 440.0 / 48000.0;
        }
        double* inputs[4] = {inL.data(), inR.data(), inL.data(), inR.data()};
        double* outputs[2] = {outL.data(), outR.data()};
        plug->ProcessDoubleReplacing(inputs, outputs, kFrameSamples);
    }
};

// One frame of the open editor while audio plays: the audio is not timed, the tick is.
void BM_EditorTickBusiestPage(benchmark::State& state)
{
    Session s(state.range(0) / 100.0, true);
    for (auto _ : state)
    {
        state.PauseTiming();
        s.Play();
        state.ResumeTiming();
        benchmark::DoNotOptimize(s.editor->OnTimerTick());
    }
}
BENCHMARK(BM_EditorTickBusiestPage)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);

void BM_EditorFullRedrawBusiestPage(benchmark::State& state)
{
    Session s(state.range(0) / 100.0, true);
    for (auto _ : state)
    {
        s.editor->SetAllControlsDirty();
        benchmark::DoNotOptimize(s.editor->OnTimerTick());
    }
}
BENCHMARK(BM_EditorFullRedrawBusiestPage)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);

// The audio thread with the window closed (0) and open (1): per stereo frame, the readouts'
// share is the difference.
void BM_EngineWithEditorWindow(benchmark::State& state)
{
    Session s(1.0, state.range(0) != 0);
    for (auto _ : state)
        s.Play();
    state.SetItemsProcessed(state.iterations() * kFrameSamples);
}
BENCHMARK(BM_EngineWithEditorWindow)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
} // namespace
