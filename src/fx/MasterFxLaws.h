#pragma once
// Laws of the four master-effect knobs ("MasterFX P1".."P4", 0..100): for each master type 39..45,
// which SetParam number of the module a knob drives and the value in the module's unit, plus the
// text the hint line shows. The pre-delay reads the present gSampleRate, so a rate change needs the
// knobs sent again (the engine re-sends every parameter after a reset). Any thread.

#include <string>

inline constexpr int kMasterFxKnobs = 4;

struct MasterFxSetting
{
    int id;       // SetParam number of the module; -1: the knob drives nothing
    double value; // in the module's unit
};

MasterFxSetting MasterFxParam(int type, int p, double percent);
// Display of the knob's value in its own unit ("2.4 s", "120 ms", "1200 Hz", "+3.0 dB", ...);
// empty where the knob drives nothing.
std::string MasterFxDisplay(int type, int p, double percent);

// Gain of the equaliser knobs: 0..100 to -18..+18 dB.
double MasterEqGainDb(double percent);
