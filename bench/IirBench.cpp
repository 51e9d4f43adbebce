#include "dsp/Iir.h"
#include "dsp/Vec.h"

#include <benchmark/benchmark.h>

#include <cmath>

// Per-sample cost of the recursive filters on 32-sample blocks, and the cost of a redesign as a
// Chebyshev filter module pays it on the audio thread. Items are samples throughout: a redesign
// counts the 64 samples it serves at most (one redesign every second block), so its items rate is
// the amortised per-sample cost during a sweep; the time column is the cost of one redesign.
namespace
{
constexpr int kN = 32;

struct Filter
{
    Filter()
    {
        int bytes = 0;
        IirStateSize(kIirMaxOrder, &bytes);
        work = VecAllocBytes(bytes);
    }
    ~Filter() { VecFree(work); }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    unsigned char* work = nullptr;
    IirState* state = nullptr;
    double taps[6 * kIirMaxOrder] = {};
    double delay[2 * kIirMaxOrder] = {};
};

void FillSignal(double* x)
{
    for (int i = 0; i < kN; ++i)
        x[i] = std::sin(0.37 * i) + 0.25 * std::sin(2.9 * i);
}

// Runs blocks the way the filter modules do: load the memory, run, store it back.
void RunBlocks(benchmark::State& state, Filter& f)
{
    alignas(64) double x[kN], y[kN];
    FillSignal(x);
    for (auto _ : state)
    {
        IirSetDelay(f.state, f.delay);
        IirRun(x, y, kN, f.state);
        IirGetDelay(f.state, f.delay);
        benchmark::DoNotOptimize(y);
    }
    state.SetItemsProcessed(state.iterations() * kN);
}

void BM_IirDirectButterworth12(benchmark::State& state)
{
    Filter f;
    IirDesignLowpass(15000.0 / 48000.0, 0.0, 12, f.taps, 0, f.work);
    IirInit(&f.state, f.taps, 12, f.delay, f.work);
    RunBlocks(state, f);
}
BENCHMARK(BM_IirDirectButterworth12);

void BM_IirBiquadCascade(benchmark::State& state)
{
    const int sections = static_cast<int>(state.range(0));
    Filter f;
    // The same low-pass section (1 kHz, Q 2 at 48 kHz) in every position.
    const double w = 2.0 * 3.141592653589793 * 1000.0 / 48000.0;
    const double c = std::cos(w), alpha = std::sin(w) / 4.0;
    for (int s = 0; s < sections; ++s)
    {
        double* t = f.taps + 6 * s;
        t[0] = (1.0 - c) / 2.0;
        t[1] = 1.0 - c;
        t[2] = (1.0 - c) / 2.0;
        t[3] = 1.0 + alpha;
        t[4] = -2.0 * c;
        t[5] = 1.0 - alpha;
    }
    IirInitBiquad(&f.state, f.taps, sections, f.delay, f.work);
    RunBlocks(state, f);
}
BENCHMARK(BM_IirBiquadCascade)->Arg(1)->Arg(12);

// One design and init of a Chebyshev low-pass of order 4, the corner moving a little each time as
// in a sweep.
void BM_IirChebyshev4Redesign(benchmark::State& state)
{
    Filter f;
    double corner = 0.01;
    for (auto _ : state)
    {
        corner = corner < 0.4 ? corner * 1.01 : 0.01;
        IirDesignLowpass(corner, 3.0, 4, f.taps, 1, f.work);
        IirInit(&f.state, f.taps, 4, f.delay, f.work);
        benchmark::DoNotOptimize(f.state);
    }
    state.SetItemsProcessed(state.iterations() * 2 * kN);
}
BENCHMARK(BM_IirChebyshev4Redesign);

// IirInit of order-4 taps that no design left in this working memory: the roots are found from the
// taps (what a caller with taps of its own pays).
void BM_IirChebyshev4InitFromTaps(benchmark::State& state)
{
    Filter f;
    constexpr int kTables = 64;
    double taps[kTables][10];
    for (int i = 0; i < kTables; ++i)
        IirDesignLowpass(0.01 * std::pow(40.0, i / double(kTables)), 3.0, 4, taps[i], 1, nullptr);
    int i = 0;
    for (auto _ : state)
    {
        IirInit(&f.state, taps[i], 4, f.delay, f.work);
        i = (i + 1) % kTables;
        benchmark::DoNotOptimize(f.state);
    }
    state.SetItemsProcessed(state.iterations() * 2 * kN);
}
BENCHMARK(BM_IirChebyshev4InitFromTaps);

// The master band limit's redesign at a sample-rate reset: Butterworth order 12 (once per reset;
// items as above for comparison only).
void BM_IirButterworth12Redesign(benchmark::State& state)
{
    Filter f;
    for (auto _ : state)
    {
        IirDesignLowpass(15000.0 / 48000.0, 0.0, 12, f.taps, 0, f.work);
        IirInit(&f.state, f.taps, 12, f.delay, f.work);
        benchmark::DoNotOptimize(f.state);
    }
    state.SetItemsProcessed(state.iterations() * 2 * kN);
}
BENCHMARK(BM_IirButterworth12Redesign);
} // namespace
