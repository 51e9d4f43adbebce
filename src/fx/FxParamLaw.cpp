#include "fx/FxParamLaw.h"

#include "fx/EffectTable.h"

#include <algorithm>
#include <cmath>

double FxModuleValue(int type, int p, double percent)
{
    const double x = std::clamp(percent * 0.01, 0.0, 1.0);
    const FxTypeInfo* info = FindFxType(type);
    if (info == nullptr || p < 0 || p >= kFxParams || !info->isList[p]) return x;
    // The small offset lets a knob stored at exactly k / count land on entry k despite rounding.
    const int count = info->listCount[p];
    const double index = std::floor(x * count + 1e-6);
    return std::clamp(index, 0.0, static_cast<double>(count));
}
