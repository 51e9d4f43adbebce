#pragma once
// Laws of the editor's level readouts and their per-frame ballistics. A readout is the peak
// magnitude of a block in dB over a 60 dB range, mapped to 0..1 (0 for silence and below -60 dB,
// 1 at full scale and above), then smoothed once per editor frame by a one-pole whose time is set
// in editor frames, so the needle moves alike at every sample rate.
// Threads: the laws are pure; a LevelMeter ticks on the UI thread, SetFrameRate may run on the
// reset path (audio thread or with audio held off).

#include "dsp/Relaxed.h"

inline constexpr double kMeterRangeDb = 60.0;
// Slot and master-effect readouts sit 3.5 dB hotter than the output meters.
inline constexpr double kBusMeterBoost = 1.5;
// Refresh rate the editor's timer runs at, in frames a second.
inline constexpr double kEditorFrameRate = 25.0;

// Peak magnitude of n samples; 0 for an empty or missing block.
double BlockPeak(const double* x, int n);
// Peak v to the meter scale: clamp(20 log10(v) / 60, -1, 0) + 1.
double MeterLaw(double peak);
// The larger peak of a stereo pair, times kBusMeterBoost, on the meter scale.
double PairMeterLaw(const double* l, const double* r, int n);
// A slot's meter from its peak: with v the peak's magnitude times kBusMeterBoost, v * 4 / (v * 3 + 1), so
// small echoes show and loud ones saturate towards 4/3 (the meter clamps at 1).
double SlotActivityLaw(double peak);

class LevelMeter
{
  public:
    LevelMeter() { SetFrameRate(kEditorFrameRate); }

    // Smoothing time of frameRate * 50 * 32 / gSampleRate ms: the coefficient per frame is
    // exp(-2 pi / (1.6 * frameRate)) whatever the sample rate (exp(-2 pi / 40) at 25 frames).
    void SetFrameRate(double frameRate);
    // One editor frame towards the reading m; returns the value to show.
    double Tick(double m);
    double Value() const { return mY - kGuard; }
    void Clear() { mY = 0.0; }
    double Coef() const { return mCoef; }

  private:
    static constexpr double kGuard = 1e-15;
    Relaxed<double> mCoef{0.0};
    Relaxed<double> mGain{1.0};
    double mY = 0.0;
};
