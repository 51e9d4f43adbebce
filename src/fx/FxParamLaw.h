#pragma once
// The law from an effect knob (percent) to the value a module's SetParam takes: the knob fraction
// x = percent / 100, or for a list parameter the index of the entry the knob points at. The type's
// own law (Hz, dB, spread) is applied inside the module. Any thread.

// Value for SetParam(p, ...) of every module of a position of `type`, p = 0..4.
double FxModuleValue(int type, int p, double percent);
