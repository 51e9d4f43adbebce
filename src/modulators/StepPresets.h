#pragma once
// The step patterns of a gate's preset menu, as values to write into its step parameters. These are
// plain functions: the caller writes the parameters (so that the host is told) and snaps nothing
// itself. Random patterns come from the modulators' own generator, so they are alike on every
// platform.

#include "modulators/Rand15.h"

#include <array>
#include <cstdint>

enum StepPreset : int
{
    kStepPresetAllOff = 0,
    kStepPresetAllOn,
    kStepPresetRamp,
    kStepPresetExponential,
    kStepPresetTriangle,
    kStepPresetSinus,
    kStepPresetHalf,
    kStepPresetRandomize,
    kNumStepPresets
};

inline constexpr std::array<const char*, kNumStepPresets> kStepPresetNames{
    "ALL OFF", "ALL ON", "RAMP", "EXPONENTIAL", "TRIANGLE", "SINUS", "HALF", "RANDOMIZE"};

struct StepPattern
{
    std::array<double, 16> levels{}; // 0..1
    int count = 0;                   // steps 0 .. count - 1 are to be written
};

// Pattern of `preset` for a gate of `length` steps (1..16); RANDOMIZE fills all 16 from `seed`.
// gridSteps: the step count of the step controls' grid, 0 for none; each value is then moved to
// the nearest grid point. With one step the shaped patterns give 0 (TRIANGLE and SINUS too).
StepPattern MakeStepPattern(int preset, int length, int gridSteps, std::uint32_t seed);

// A 0..1 value on a grid of `steps` steps (nearest point); unchanged for steps <= 0.
double SnapToGrid(double value, int steps);
