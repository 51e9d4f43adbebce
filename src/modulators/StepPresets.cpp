#include "modulators/StepPresets.h"

#include <algorithm>
#include <cmath>
#include <numbers>

double SnapToGrid(double value, int steps)
{
    if (steps <= 0) return value;
    return std::clamp(std::floor(value * steps + 0.5) / steps, 0.0, 1.0);
}

StepPattern MakeStepPattern(int preset, int length, int gridSteps, std::uint32_t seed)
{
    StepPattern p;
    length = std::clamp(length, 1, 16);
    const int n = length - 1;
    p.count = length;
    for (int i = 0; i < length; ++i)
    {
        // Position along the pattern, 0..1; a single step sits at its start.
        const double x = n > 0 ? static_cast<double>(i) / n : 0.0;
        double v = 0.0;
        switch (preset)
        {
        case kStepPresetAllOn:
            v = 1.0;
            break;
        case kStepPresetRamp:
            v = x;
            break;
        case kStepPresetExponential:
            v = x * x;
            break;
        case kStepPresetTriangle:
            v = n > 0 ? 1.0 - std::fabs(2.0 * x - 1.0) : 0.0;
            break;
        case kStepPresetSinus:
            v = std::sin(std::numbers::pi * x);
            break;
        case kStepPresetHalf:
            v = 0.5;
            break;
        default:
            v = 0.0;
            break;
        }
        p.levels[i] = v;
    }
    if (preset == kStepPresetRandomize)
    {
        p.count = 16;
        std::uint32_t state = seed;
        for (double& v : p.levels)
            v = static_cast<double>(NextRand15(state)) / kRand15Max;
    }
    for (int i = 0; i < p.count; ++i)
        p.levels[i] = SnapToGrid(p.levels[i], gridSteps);
    return p;
}
